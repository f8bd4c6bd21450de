// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Side of memory, used as a bit mask together with `MEM_BOTH` and `MEM_MANAGED`.
enum class MEM : std::int32_t {
    CPU = 1,  ///< host memory
    GPU = 2,  ///< CUDA device memory
};

/// One host and one device buffer, synchronised by explicit copies.
constexpr MEM MEM_BOTH = static_cast<MEM>(3);
/// One CUDA managed buffer, which host and device address alike.
constexpr MEM MEM_MANAGED = static_cast<MEM>(4);

/// Direction of a copy: side of the source, then side of the destination.
enum class COPY_TYPE : std::int32_t {
    CPU_CPU = 0,  ///< host to host
    CPU_GPU = 1,  ///< host to device
    GPU_GPU = 2,  ///< device to device
    GPU_CPU = 3,  ///< device to host
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const MEM& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const COPY_TYPE& value);

}  // namespace vela

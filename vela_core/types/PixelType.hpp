// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstddef>
#include <cstdint>

namespace vela VELA_API {

/// Element type and channel count of a pixel.
enum class MAT_TYPE : std::int32_t {
    MAT_32F_C1 = 0,
    MAT_32F_C2 = 1,
    MAT_32F_C3 = 2,
    MAT_32F_C4 = 3,
    MAT_8U_C1 = 4,
    MAT_8U_C2 = 5,
    MAT_8U_C3 = 6,
    MAT_8U_C4 = 7,
    MAT_US16_C1 = 8,  ///< unsigned 16 bits
    MAT_8S_C4 = 9,
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const MAT_TYPE& value);

/// Channels per pixel; 0 for a value without enumerator.
std::size_t getChannels(MAT_TYPE type) noexcept;

/// Bytes per pixel, all channels; 0 for a value without enumerator.
std::size_t getPixelBytes(MAT_TYPE type) noexcept;

}  // namespace vela

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
    MAT_32F_C1 = 0,   ///< one float: depth, confidence
    MAT_32F_C2 = 1,   ///< two floats
    MAT_32F_C3 = 2,   ///< three floats: x, y, z of points or normals
    MAT_32F_C4 = 3,   ///< four floats: x, y, z and packed colour
    MAT_8U_C1 = 4,    ///< one unsigned byte: grey
    MAT_8U_C2 = 5,    ///< two unsigned bytes
    MAT_8U_C3 = 6,    ///< three unsigned bytes: blue, green, red
    MAT_8U_C4 = 7,    ///< four unsigned bytes: blue, green, red, alpha
    MAT_US16_C1 = 8,  ///< one unsigned 16-bit number
    MAT_8S_C4 = 9,    ///< four signed bytes
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const MAT_TYPE& value);

/// Channels per pixel; 0 for a value without enumerator.
std::size_t getChannels(MAT_TYPE type) noexcept;

/// Bytes per pixel, all channels; 0 for a value without enumerator.
std::size_t getPixelBytes(MAT_TYPE type) noexcept;

}  // namespace vela

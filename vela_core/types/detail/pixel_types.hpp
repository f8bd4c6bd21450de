// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/PixelType.hpp"

#include <cstddef>

namespace vela::detail {

/// The facts about a pixel type.
struct PixelType {
    MAT_TYPE value;
    const char* name;     ///< display name
    const char* element;  ///< type of one channel in the description of a Mat
    std::size_t channels;
    std::size_t bytes;  ///< of a whole pixel
};

/// Every pixel type, in the order of the values.
inline constexpr PixelType PIXEL_TYPES[] = {
    {MAT_TYPE::MAT_32F_C1, "32F C1", "float", 1, 4},   {MAT_TYPE::MAT_32F_C2, "32F C2", "float", 2, 8},
    {MAT_TYPE::MAT_32F_C3, "32F C3", "float", 3, 12},  {MAT_TYPE::MAT_32F_C4, "32F C4", "float", 4, 16},
    {MAT_TYPE::MAT_8U_C1, "8U C1", "uchar", 1, 1},     {MAT_TYPE::MAT_8U_C2, "8U C2", "uchar", 2, 2},
    {MAT_TYPE::MAT_8U_C3, "8U C3", "uchar", 3, 3},     {MAT_TYPE::MAT_8U_C4, "8U C4", "uchar", 4, 4},
    {MAT_TYPE::MAT_US16_C1, "US16 C1", "short", 1, 2},  // unsigned all the same
    {MAT_TYPE::MAT_8S_C4, "8S C4", "char", 4, 4},
};

}  // namespace vela::detail

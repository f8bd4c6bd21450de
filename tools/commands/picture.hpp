// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/utils/Mat.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace vela::tools {

/// A picture of red, green and blue bytes, row by row.
struct Picture {
    std::size_t width = 0;
    std::vector<unsigned char> rgb;

    const unsigned char* at(std::size_t x, std::size_t y) const { return &rgb[3 * (y * width + x)]; }
};

/// Reads a PNG file of any kind and of the depth map's size, by libpng, so that the tool loads no OpenCV.
/// Transparent pixels are blended with black. Throws Trouble.
Picture readPicture(const std::string& path, const Mat& depth);

}  // namespace vela::tools

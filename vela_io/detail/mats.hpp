// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/io.hpp"

#include <cstddef>

namespace vela::io::detail {

/// Sizes of Mats are 31-bit in the rest of the library.
constexpr std::size_t LARGEST_SIDE = 0x7fffffff;

/// Throws unless the Mat has a host side of whole rows and its pixel type is a real one.
void requireHostSide(const Mat& mat, const char* what);

/// A packed host Mat; too large a size throws `std::bad_alloc`.
Mat newMat(std::size_t width, std::size_t height, MAT_TYPE type);

/// Hands what was read over to the caller's Mat, which keeps its name.
void deliver(Mat& from, Mat& to);

inline const unsigned char* rowOf(const Mat& mat, std::size_t y) {
    return mat.ptrCPU + y * mat.stepBytesCPU;
}

}  // namespace vela::io::detail

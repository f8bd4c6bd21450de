// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/utils/Mat.hpp"

#include <opencv2/core.hpp>

namespace vela::detail {

/// An OpenCV matrix over the host side of an image of bytes or 16-bit samples, without a copy. A type that
/// OpenCV is not asked to write (floats, two channels) is logged and gives an empty matrix.
cv::Mat wrapAsCvMat(const Mat& mat);

}  // namespace vela::detail

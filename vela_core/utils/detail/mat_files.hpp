// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/utils/Mat.hpp"

#include <opencv2/core.hpp>

namespace vela::detail {

/// An OpenCV matrix over the host side of an image of bytes or 16-bit samples, without a copy. Types that
/// `Mat::write` does not leave to OpenCV (floats, two channels) are logged and give an empty matrix.
cv::Mat wrapAsCvMat(const Mat& mat);

}  // namespace vela::detail

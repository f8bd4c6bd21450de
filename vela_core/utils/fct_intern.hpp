// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/PixelType.hpp"

#include <opencv2/core.hpp>

#include <string>

namespace vela VELA_API {

/// The pixel type that a picture is read as: bytes of 1 to 4 channels, floats of 1 to 4 channels, 16 unsigned
/// bits of one channel, signed bytes of 4 channels; `MAT_8U_C1` for every other.
MAT_TYPE getMatTypeFromCvMat(const cv::Mat& mat);

/// Reads a parameter of a parameter file: text as it is, a number in the text that OpenCV writes for it. A
/// parameter that is not there is logged and leaves `value`, the default, as it is.
void getField(cv::FileNode& node, std::string name, std::string& value);

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/PixelType.hpp"

#include <opencv2/core.hpp>

#include <string>

namespace vela VELA_API {

/// The pixel type of a `cv::Mat`: unsigned bytes and floats of 1 to 4 channels, unsigned 16-bit numbers of
/// one channel, signed bytes of 4 channels; `MAT_8U_C1` for every other type.
MAT_TYPE getMatTypeFromCvMat(const cv::Mat& mat);

/// Reads a parameter from a parameter file: text as it stands, a number as the text that OpenCV writes for
/// it. A missing parameter is logged and leaves `value`, the default, unchanged.
void getField(cv::FileNode& node, std::string name, std::string& value);

}  // namespace vela

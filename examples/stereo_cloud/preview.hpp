// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vela_core/vela.hpp>

#include <opencv2/core.hpp>

namespace stereo {

/// One picture of three: the left picture, the depth in colours (red near, blue far, black unknown), and the
/// cloud seen from its right side, far to the right and up above. A wrong axis or colour order is seen at a
/// glance. Below them stand what each shows, the colours' depths and the scale of the side view, in metres.
/// The cloud's host side is read, in metres and RIGHT_HANDED_Y_UP_AND_Z_BACKWARD.
cv::Mat drawPreview(const cv::Mat& left, const vela::Mat& cloud);

}  // namespace stereo

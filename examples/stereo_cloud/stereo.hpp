// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Options.hpp"

#include <vela_core/vela.hpp>

#include <opencv2/core.hpp>

namespace stereo {

struct Pair {
    cv::Mat left;   ///< blue, green, red bytes
    cv::Mat right;  ///< the same size
    int bits = 8;   ///< bits used in the files; values of more than 8 were scaled to 8
    cv::Mat truth;  ///< measured disparity in pixels, bytes, 0 = unknown; may be empty
};

/// Reads the pictures; throws UserError.
Pair readPair(const Options& options);

/// Disparity of the left picture in pixels by semi-global matching, one float each; NaN where there is none.
/// The search covers a fifth of the width.
cv::Mat matchPair(const Pair& pair);

/// The camera's point cloud on both sides, in millimetres and the IMAGE frame: NaN where there is no depth,
/// the left picture's colour in the fourth float.
vela::Mat makeCloud(const Options& options, const cv::Mat& left, const cv::Mat& disparity);

/// The depth map in millimetres, one float each, on the host; NaN where there is no depth.
vela::Mat makeDepth(const Options& options, const cv::Mat& disparity);

/// How good the depth is.
struct Quality {
    std::size_t withDepth = 0;         ///< pixels
    double medianRelativeError = 0.0;  ///< where the truth is known; NaN without truth
};
Quality measure(const Options& options, const cv::Mat& disparity, const cv::Mat& truth);

}  // namespace stereo

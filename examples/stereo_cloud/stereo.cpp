// SPDX-License-Identifier: Apache-2.0
#include "stereo.hpp"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace stereo {
namespace {

// Limits of the matcher, whose disparities have 16 bits, four of them fractional.
constexpr int LARGEST_RANGE = 2032;
const cv::Size SMALLEST_PICTURE(64, 16);

cv::Mat readPicture(const std::filesystem::path& path, int mode, const char* which) {
    cv::Mat picture = cv::imread(path.string(), mode);
    if (picture.empty())
        throw UserError(std::string("cannot read the ") + which + " '" + path.string() + "'");
    return picture;
}

/// Colours of 8 or 16 bits a channel.
cv::Mat readColors(const std::filesystem::path& path, const char* which) {
    const cv::Mat picture = readPicture(path, cv::IMREAD_COLOR | cv::IMREAD_ANYDEPTH, which);
    return picture.depth() <= CV_16U ? picture : readPicture(path, cv::IMREAD_COLOR, which);
}

/// Brings pictures to 8 bits. Cameras store 10 or 12 bits in 16-bit files: the largest value shows how many.
void scaleTo8Bits(Pair& pair) {
    if (pair.left.depth() == CV_8U && pair.right.depth() == CV_8U) return;
    const double largest = std::max(cv::norm(pair.left, cv::NORM_INF), cv::norm(pair.right, cv::NORM_INF));
    while (pair.bits < 16 && largest >= 1 << pair.bits)
        ++pair.bits;
    for (cv::Mat* const picture : {&pair.left, &pair.right}) {
        const bool scaled = picture->depth() != CV_8U;
        picture->convertTo(*picture, CV_8U, scaled ? 255.0 / ((1 << pair.bits) - 1) : 1.0);
    }
}

std::string sizeText(const cv::Size& size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

void requireSize(const cv::Mat& picture, const cv::Mat& left, const char* which) {
    if (picture.size() == left.size()) return;
    throw UserError(std::string("the ") + which + " has " + sizeText(picture.size()) +
                    " pixels, the left picture has " + sizeText(left.size()));
}

/// Farther than anything that a picture shows; this limit keeps all numbers finite.
constexpr double FARTHEST_MM = 1e15;

/// NaN for a disparity without depth.
float depthOf(const Options& options, float disparity) {
    const double distance = static_cast<double>(disparity) + options.offset_px;
    const double depth = options.focal_px * options.baseline_mm / distance;
    return distance > 0.0 && depth < FARTHEST_MM ? static_cast<float>(depth)
                                                 : std::numeric_limits<float>::quiet_NaN();
}

/// Red in the lowest byte, as the exporters read it.
float packColor(const cv::Vec3b& bgr) {
    const std::uint32_t bits = 0xFF000000U | static_cast<std::uint32_t>(bgr[0]) << 16 |
                               static_cast<std::uint32_t>(bgr[1]) << 8 | bgr[2];
    float packed = 0.0F;
    std::memcpy(&packed, &bits, sizeof packed);
    return packed;
}

}  // namespace

Pair readPair(const Options& options) {
    Pair pair;
    pair.left = readColors(options.left, "left picture");
    pair.right = readColors(options.right, "right picture");
    requireSize(pair.right, pair.left, "right picture");
    scaleTo8Bits(pair);
    if (!options.truth.empty()) {
        pair.truth = readPicture(options.truth, cv::IMREAD_GRAYSCALE, "measured disparity");
        requireSize(pair.truth, pair.left, "measured disparity");
    }
    if (pair.left.cols < SMALLEST_PICTURE.width || pair.left.rows < SMALLEST_PICTURE.height) {
        throw UserError("the pictures have " + sizeText(pair.left.size()) +
                        " pixels; matching needs at least " + sizeText(SMALLEST_PICTURE));
    }
    return pair;
}

namespace {

/// Matches the pictures at half their width.
cv::Mat matchNarrowed(const Pair& pair) {
    Pair narrow;
    cv::resize(pair.left, narrow.left, {}, 0.5, 1.0, cv::INTER_AREA);
    cv::resize(pair.right, narrow.right, {}, 0.5, 1.0, cv::INTER_AREA);
    cv::Mat disparity;
    cv::resize(matchPair(narrow) * 2.0, disparity, pair.left.size(), 0.0, 0.0, cv::INTER_NEAREST);
    return disparity;
}

}  // namespace

cv::Mat matchPair(const Pair& pair) {
    constexpr int block = 5;
    constexpr int channels = 3;
    constexpr int subpixel = 16;  // the matcher's unit is a sixteenth of a pixel
    const int range = (pair.left.cols / 5 + 15) / 16 * 16;
    if (range > LARGEST_RANGE) return matchNarrowed(pair);
    const auto matcher =
        cv::StereoSGBM::create(0, range, block, 8 * channels * block * block, 32 * channels * block * block,
                               1, 63, 10, 100, 2, cv::StereoSGBM::MODE_SGBM_3WAY);
    // The matcher leaves out the columns where the search would cross the left edge; a border gives it room.
    cv::Mat left;
    cv::Mat right;
    cv::copyMakeBorder(pair.left, left, 0, 0, range, 0, cv::BORDER_REPLICATE);
    cv::copyMakeBorder(pair.right, right, 0, 0, range, 0, cv::BORDER_REPLICATE);
    cv::Mat withBorder;
    matcher->compute(left, right, withBorder);
    const cv::Mat fixedPoint = withBorder.colRange(range, withBorder.cols);
    cv::Mat disparity;
    fixedPoint.convertTo(disparity, CV_32F, 1.0 / subpixel);
    disparity.setTo(std::numeric_limits<float>::quiet_NaN(), fixedPoint <= 0);
    return disparity;
}

vela::Mat makeCloud(const Options& options, const cv::Mat& left, const cv::Mat& disparity) {
    const auto width = static_cast<std::size_t>(left.cols);
    const auto height = static_cast<std::size_t>(left.rows);
    vela::Mat cloud(width, height, vela::MAT_TYPE::MAT_32F_C4, vela::MEM_BOTH);
    const auto focal = static_cast<float>(options.focal_px);
    const auto cx = static_cast<float>(options.cx_px.value_or((left.cols - 1) / 2.0));
    const auto cy = static_cast<float>(options.cy_px.value_or((left.rows - 1) / 2.0));
    for (int y = 0; y < left.rows; ++y) {
        auto* const row = cloud.getPtr<vela::Vector4<float>>() + static_cast<std::size_t>(y) * width;
        for (int x = 0; x < left.cols; ++x) {
            const float depth = depthOf(options, disparity.at<float>(y, x));
            const float right = (static_cast<float>(x) - cx) / focal;
            const float down = (static_cast<float>(y) - cy) / focal;
            row[x] = {right * depth, down * depth, depth, packColor(left.at<cv::Vec3b>(y, x))};
        }
    }
    if (cloud.updateGPUfromCPU() != vela::ERROR_CODE::SUCCESS)
        throw UserError("copying the cloud to the GPU failed");
    return cloud;
}

vela::Mat makeDepth(const Options& options, const cv::Mat& disparity) {
    vela::Mat depth(static_cast<std::size_t>(disparity.cols), static_cast<std::size_t>(disparity.rows),
                    vela::MAT_TYPE::MAT_32F_C1);
    std::transform(disparity.begin<float>(), disparity.end<float>(), depth.getPtr<float>(),
                   [&](float value) { return depthOf(options, value); });
    return depth;
}

Quality measure(const Options& options, const cv::Mat& disparity, const cv::Mat& truth) {
    Quality quality;
    std::vector<double> errors;
    for (int y = 0; y < disparity.rows; ++y) {
        for (int x = 0; x < disparity.cols; ++x) {
            const auto depth = static_cast<double>(depthOf(options, disparity.at<float>(y, x)));
            if (std::isnan(depth)) continue;
            ++quality.withDepth;
            if (truth.empty() || truth.at<std::uint8_t>(y, x) == 0) continue;
            const auto measured = static_cast<double>(depthOf(options, truth.at<std::uint8_t>(y, x)));
            errors.push_back(std::abs(depth - measured) / measured);
        }
    }
    quality.medianRelativeError = std::numeric_limits<double>::quiet_NaN();
    if (!errors.empty()) {
        const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
        std::nth_element(errors.begin(), middle, errors.end());
        quality.medianRelativeError = *middle;
    }
    return quality;
}

}  // namespace stereo

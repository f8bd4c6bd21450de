#include "stereo.hpp"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace stereo {
namespace {

cv::Mat readPicture(const std::filesystem::path& path, int mode, const char* which) {
    cv::Mat picture = cv::imread(path.string(), mode);
    if (picture.empty())
        throw UserError(std::string("cannot read the ") + which + " '" + path.string() + "'");
    return picture;
}

void requireSize(const cv::Mat& picture, const cv::Mat& left, const char* which) {
    if (picture.size() == left.size()) return;
    const auto text = [](const cv::Mat& m) { return std::to_string(m.cols) + "x" + std::to_string(m.rows); };
    throw UserError(std::string("the ") + which + " has " + text(picture) + " pixels, the left picture has " +
                    text(left));
}

/// NaN for a disparity without depth.
float depthOf(const Options& options, float disparity) {
    const double distance = static_cast<double>(disparity) + options.offset_px;
    return distance > 0.0 ? static_cast<float>(options.focal_px * options.baseline_mm / distance)
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
    pair.left = readPicture(options.left, cv::IMREAD_COLOR, "left picture");
    pair.right = readPicture(options.right, cv::IMREAD_COLOR, "right picture");
    requireSize(pair.right, pair.left, "right picture");
    if (!options.truth.empty()) {
        pair.truth = readPicture(options.truth, cv::IMREAD_GRAYSCALE, "measured disparity");
        requireSize(pair.truth, pair.left, "measured disparity");
    }
    if (pair.left.cols < 64 || pair.left.rows < 16)
        throw UserError("the pictures are too small to be matched");
    return pair;
}

cv::Mat matchPair(const Pair& pair) {
    constexpr int block = 5;
    constexpr int channels = 3;
    constexpr int subpixel = 16;  // the matcher's unit is a sixteenth of a pixel
    const int range = (pair.left.cols / 5 + 15) / 16 * 16;
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
    for (int y = 0; y < left.rows; ++y) {
        auto* const row = cloud.getPtr<vela::Vector4<float>>() + static_cast<std::size_t>(y) * width;
        for (int x = 0; x < left.cols; ++x) {
            const float depth = depthOf(options, disparity.at<float>(y, x));
            const float right = (static_cast<float>(x) - static_cast<float>(left.cols - 1) / 2.0F) / focal;
            const float down = (static_cast<float>(y) - static_cast<float>(left.rows - 1) / 2.0F) / focal;
            row[x] = {right * depth, down * depth, depth, packColor(left.at<cv::Vec3b>(y, x))};
        }
    }
    if (cloud.updateGPUfromCPU() != vela::ERROR_CODE::SUCCESS) throw UserError("the GPU takes no upload");
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

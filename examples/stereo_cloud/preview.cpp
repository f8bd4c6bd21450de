#include "preview.hpp"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace stereo {
namespace {

using Point = vela::Vector4<float>;

const Point& pointAt(const vela::Mat& cloud, int y, int x) {
    return cloud.getPtr<Point>()[static_cast<std::size_t>(y) * cloud.width + static_cast<std::size_t>(x)];
}

cv::Vec3b colorOf(const Point& point) {
    std::uint8_t rgba[4];
    std::memcpy(rgba, &point.w, sizeof rgba);
    return {rgba[2], rgba[1], rgba[0]};
}

struct Range {
    float low;
    float high;
    /// 0 at the low end, 1 at the high end.
    float place(float value) const { return (value - low) / (high - low); }
};

/// The range that leaves out the outermost hundredth at both ends.
Range rangeOf(std::vector<float> values) {
    if (values.empty()) return {0.0F, 1.0F};
    std::sort(values.begin(), values.end());
    const std::size_t cut = values.size() / 100;
    const float low = values[cut];
    return {low, std::max(values[values.size() - 1 - cut], low + 1e-6F)};
}

cv::Mat drawDepth(const vela::Mat& cloud, const Range& depth, cv::Size size) {
    cv::Mat nearness(size, CV_8UC1, cv::Scalar(0));
    cv::Mat unknown(size, CV_8UC1, cv::Scalar(255));
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const float z = pointAt(cloud, y, x).z;
            if (std::isnan(z)) continue;
            nearness.at<std::uint8_t>(y, x) =
                cv::saturate_cast<std::uint8_t>(255.0F * (1.0F - depth.place(-z)));
            unknown.at<std::uint8_t>(y, x) = 0;
        }
    }
    cv::Mat colors;
    cv::applyColorMap(nearness, colors, cv::COLORMAP_JET);
    colors.setTo(cv::Scalar(0, 0, 0), unknown);
    return colors;
}

cv::Mat drawSide(const vela::Mat& cloud, const Range& depth, const Range& up, cv::Size size) {
    cv::Mat side(size, CV_8UC3, cv::Scalar(32, 32, 32));
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const Point& point = pointAt(cloud, y, x);
            if (std::isnan(point.z)) continue;
            const auto column = static_cast<int>(depth.place(-point.z) * static_cast<float>(size.width - 1));
            const auto row =
                static_cast<int>((1.0F - up.place(point.y)) * static_cast<float>(size.height - 1));
            if (column < 0 || column >= size.width || row < 0 || row >= size.height) continue;
            side.at<cv::Vec3b>(row, column) = colorOf(point);
        }
    }
    return side;
}

}  // namespace

cv::Mat drawPreview(const cv::Mat& left, const vela::Mat& cloud) {
    std::vector<float> depths;
    std::vector<float> heights;
    for (int y = 0; y < left.rows; ++y) {
        for (int x = 0; x < left.cols; ++x) {
            const Point& point = pointAt(cloud, y, x);
            if (std::isnan(point.z)) continue;
            depths.push_back(-point.z);
            heights.push_back(point.y);
        }
    }
    const Range depth = rangeOf(std::move(depths));
    const Range up = rangeOf(std::move(heights));
    cv::Mat preview;
    cv::hconcat(std::vector<cv::Mat>{left, drawDepth(cloud, depth, left.size()),
                                     drawSide(cloud, depth, up, left.size())},
                preview);
    return preview;
}

}  // namespace stereo

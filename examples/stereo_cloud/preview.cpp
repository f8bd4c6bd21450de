// SPDX-License-Identifier: Apache-2.0
#include "preview.hpp"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
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

const cv::Scalar WHITE(255, 255, 255);
constexpr int FONT = cv::FONT_HERSHEY_SIMPLEX;
constexpr const char* LONGEST_TEXT = "side view: 888.88 m high, 888.88 to 888.88 m away";

std::string metres(float value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.2f m", static_cast<double>(value));
    return text;
}

/// The strip below the three pictures: a line of text under each, and bars that the numbers belong to.
class Legend {
public:
    explicit Legend(cv::Size picture) : width_(picture.width) {
        const int widest = cv::getTextSize(LONGEST_TEXT, FONT, 1.0, 1, nullptr).width;
        scale_ = std::min(0.9 * width_ / widest, 2.0);
        line_ = std::max(static_cast<int>(40 * scale_), 8);
        strip_ = cv::Mat(3 * line_, 3 * width_, CV_8UC3, cv::Scalar(0, 0, 0));
    }

    void title(int panel, const std::string& text) { put(panel * width_ + line_ / 4, 1, text); }

    /// The colours from near to far, with the depths at both ends.
    void colors(int panel, const Range& depth) {
        cv::Mat ramp(1, width_, CV_8UC1);
        for (int x = 0; x < width_; ++x) {
            ramp.at<std::uint8_t>(x) =
                cv::saturate_cast<std::uint8_t>(255.0 * (width_ - 1 - x) / (width_ - 1));
        }
        cv::Mat colors;
        cv::applyColorMap(ramp, colors, cv::COLORMAP_JET);
        cv::repeat(colors, line_ / 2, 1)
            .copyTo(strip_(cv::Rect(panel * width_, 3 * line_ / 2, width_, line_ / 2)));
        ends(panel, depth);
    }

    /// A scale with a mark at each quarter and the depths at both ends.
    void marks(int panel, const Range& depth) {
        const int y = 3 * line_ / 2;
        const int left = panel * width_;
        cv::line(strip_, {left, y}, {left + width_ - 1, y}, WHITE);
        for (int quarter = 0; quarter <= 4; ++quarter) {
            const int x = left + quarter * (width_ - 1) / 4;
            cv::line(strip_, {x, y}, {x, y + line_ / 2}, WHITE);
        }
        ends(panel, depth);
    }

    const cv::Mat& picture() const { return strip_; }

private:
    void put(int x, int line, const std::string& text) {
        cv::putText(strip_, text, {x, line * line_ - line_ / 4}, FONT, scale_, WHITE, 1, cv::LINE_AA);
    }
    void ends(int panel, const Range& depth) {
        put(panel * width_ + line_ / 4, 3, metres(depth.low));
        const int right = cv::getTextSize(metres(depth.high), FONT, scale_, 1, nullptr).width + line_ / 4;
        put((panel + 1) * width_ - right, 3, metres(depth.high));
    }

    int width_;
    double scale_ = 1.0;
    int line_ = 1;
    cv::Mat strip_;
};

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
    Legend legend(left.size());
    legend.title(0, "left picture");
    legend.title(1, "depth; black: unknown");
    legend.colors(1, depth);
    legend.title(2, "side view: " + metres(up.high - up.low) + " high, " + metres(depth.low) + " to " +
                        metres(depth.high) + " away");
    legend.marks(2, depth);
    cv::Mat preview;
    cv::hconcat(std::vector<cv::Mat>{left, drawDepth(cloud, depth, left.size()),
                                     drawSide(cloud, depth, up, left.size())},
                preview);
    cv::vconcat(preview, legend.picture(), preview);
    return preview;
}

}  // namespace stereo

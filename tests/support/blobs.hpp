// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/geometry/mat_conversion.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <opencv2/core.hpp>
#include <random>
#include <string>
#include <vector>

namespace vela::test {

struct ColoredPoint {
    float x, y, z;
    cv::Vec3b color;  ///< red, green, blue
};

inline Mat cloudOf(const std::vector<ColoredPoint>& points) {
    Mat cloud(points.size(), 1, MAT_TYPE::MAT_32F_C4);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto& [x, y, z, color] = points[i];
        cloud.setValue(i, 0, Vector4<float>(x, y, z, 0));
        const unsigned char rgba[] = {color[0], color[1], color[2], 255};
        std::memcpy(cloud.ptrCPU + 16 * i + 12, rgba, sizeof rgba);
    }
    return cloud;
}

/// Blobs in the axes of a picture (x right, y down, z forward): four corners, and magenta in front of them.
inline const std::map<std::string, ColoredPoint> BLOBS = {{"red", {-1, -1, 4, {255, 0, 0}}},
                                                          {"green", {1, -1, 4, {0, 255, 0}}},
                                                          {"blue", {1, 1, 4, {0, 0, 255}}},
                                                          {"yellow", {-1, 1, 4, {255, 255, 0}}},
                                                          {"magenta", {0, 0, 2, {255, 0, 255}}}};

/// 2000 points of each blob, in the given axes.
inline Mat blobs(COORDINATE_SYSTEM axes) {
    std::mt19937 random(3);  // NOLINT(cert-msc51-cpp): the same every time
    std::vector<ColoredPoint> points;
    for (const auto& [name, centre] : BLOBS) {
        for (int i = 0; i < 2000; ++i) {
            const auto spread = [&] { return static_cast<float>(random() % 1000) / 5000 - 0.1F; };
            points.push_back({centre.x + spread(), centre.y + spread(), centre.z + spread(), centre.color});
        }
    }
    Mat cloud = cloudOf(points);
    convertCoordinateSystem(cloud, COORDINATE_SYSTEM::IMAGE, axes, MEM::CPU);
    return cloud;
}

/// The mean position of the pixels of a colour, and their number.
struct Spot {
    int x = 0, y = 0, count = 0;
};
using Spots = std::map<std::string, Spot>;

inline Spots spotsIn(const cv::Mat& picture) {
    Spots spots;
    for (const auto& [name, blob] : BLOBS) {
        cv::Mat mask;
        const cv::Vec3b bgr(blob.color[2], blob.color[1], blob.color[0]);
        cv::inRange(picture, bgr, bgr, mask);
        std::vector<cv::Point> pixels;
        cv::findNonZero(mask, pixels);
        if (pixels.empty()) continue;
        const cv::Scalar mean = cv::mean(pixels);
        spots[name] = {static_cast<int>(mean[0]), static_cast<int>(mean[1]), static_cast<int>(pixels.size())};
    }
    return spots;
}

/// The corners must surround the blob in front, and each blob must be where it is in `other`.
inline void expectFrontView(Spots spots, Spots other) {
    EXPECT_LT(spots["red"].x, spots["magenta"].x);
    EXPECT_LT(spots["red"].y, spots["magenta"].y);
    EXPECT_GT(spots["blue"].x, spots["magenta"].x);
    EXPECT_GT(spots["blue"].y, spots["magenta"].y);
    EXPECT_LT(spots["yellow"].x, spots["green"].x);
    EXPECT_GT(spots["yellow"].y, spots["green"].y);
    for (const auto& [name, blob] : BLOBS) {
        EXPECT_GT(spots[name].count, 100) << name;
        EXPECT_NEAR(spots[name].x, other[name].x, 1) << name;
        EXPECT_NEAR(spots[name].y, other[name].y, 1) << name;
    }
}

}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "support/scene.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace vela::bench {
namespace {

constexpr unsigned SEED = 20260;
constexpr double FOCAL_SHARE = 0.55;  // focal length over width

std::uint32_t alphaOf(Lane lane) {
    switch (lane) {
        case Lane::TRANSPARENT:
            return 0;
        case Lane::OPAQUE:
            return 255;
        case Lane::NORMAL:
            break;
    }
    return 63;
}

double surface(double x, double y) {
    return 2500 + 1500 * std::sin(x / 200) * std::cos(y / 150) + 2 * y;
}

}  // namespace

std::vector<float> makeCloud(Resolution resolution, double invalidShare, Lane lane) {
    std::mt19937 engine(SEED);
    std::normal_distribution<double> noise(0, 3);
    std::bernoulli_distribution invalid(invalidShare);
    const double focal = FOCAL_SHARE * static_cast<double>(resolution.width);
    std::vector<float> points;
    points.reserve(4 * resolution.width * resolution.height);
    for (std::size_t row = 0; row < resolution.height; ++row) {
        for (std::size_t column = 0; column < resolution.width; ++column) {
            const double x = static_cast<double>(column) - static_cast<double>(resolution.width) / 2;
            const double y = static_cast<double>(row) - static_cast<double>(resolution.height) / 2;
            const double z = invalid(engine) ? std::numeric_limits<double>::quiet_NaN()
                                             : std::fabs(surface(x, y) + noise(engine)) + 300;
            const std::uint32_t color = (engine() & 0xFFFFFFU) | alphaOf(lane) << 24;
            float fourth = 0;
            std::memcpy(&fourth, &color, sizeof fourth);
            for (const double coordinate : {x * z / focal, y * z / focal, z}) {
                points.push_back(static_cast<float>(coordinate));
            }
            points.push_back(fourth);
        }
    }
    return points;
}

std::vector<float> makeDepth(Resolution resolution, double invalidShare) {
    const std::vector<float> cloud = makeCloud(resolution, invalidShare, Lane::NORMAL);
    std::vector<float> depth(cloud.size() / 4);
    for (std::size_t i = 0; i < depth.size(); ++i) {
        depth[i] = cloud[4 * i + 2];
    }
    return depth;
}

std::vector<std::uint8_t> makePicture(Resolution resolution, int channels) {
    std::mt19937 engine(SEED);
    std::normal_distribution<double> noise(0, 1.5);
    std::vector<std::uint8_t> samples;
    for (std::size_t row = 0; row < resolution.height; ++row) {
        for (std::size_t column = 0; column < resolution.width; ++column) {
            const double light = surface(static_cast<double>(column), static_cast<double>(row)) / 30;
            for (int channel = 0; channel < channels; ++channel) {
                const double value = light + 20 * channel + noise(engine);
                samples.push_back(static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0)));
            }
        }
    }
    return samples;
}

}  // namespace vela::bench

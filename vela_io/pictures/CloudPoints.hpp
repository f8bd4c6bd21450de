// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/mats.hpp"
#include "vela_io/pictures/Canvas.hpp"

#include <cmath>
#include <cstring>
#include <vector>

namespace vela::io::detail {

struct CloudPoint {
    float xyz[3];
    Color color;
};

/// Calls `see(point)` for each finite point of a `MAT_32F_C3` or `MAT_32F_C4` cloud, row by row. Without
/// packed colour the points are black.
template <class See>
void forEachFinitePoint(const Mat& cloud, See see) {
    const bool colored = cloud.dataType == MAT_TYPE::MAT_32F_C4;
    for (std::size_t y = 0; y < cloud.height; ++y) {
        const unsigned char* pixel = rowOf(cloud, y);
        for (std::size_t x = 0; x < cloud.width; ++x, pixel += cloud.pixelBytes) {
            CloudPoint point{};
            std::memcpy(point.xyz, pixel, sizeof point.xyz);
            if (!std::isfinite(point.xyz[0]) || !std::isfinite(point.xyz[1]) || !std::isfinite(point.xyz[2]))
                continue;
            if (colored) point.color = {pixel[12], pixel[13], pixel[14]};
            see(point);
        }
    }
}

/// At most about 100,000 of the finite points, evenly spaced, for statistics: one list for each axis.
struct PointSample {
    std::vector<float> axes[3];
    std::size_t finite = 0;  ///< of all points
};
PointSample sampleOf(const Mat& cloud);

}  // namespace vela::io::detail

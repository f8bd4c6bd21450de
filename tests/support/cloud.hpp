#pragma once

#include "vela_core/utils/Mat.hpp"

#include <cstdint>
#include <utility>
#include <vector>

namespace vela::test {

/// A pixel of a cloud: position and the bytes of its colour, red lowest.
struct Point3 {
    float x, y, z;
    std::uint32_t color;
};

constexpr std::uint32_t rgb(unsigned red, unsigned green, unsigned blue, unsigned rest = 0) {
    return red | green << 8 | blue << 16 | rest << 24;
}

/// A one-row cloud and a Mat that refers to it.
struct Cloud {
    explicit Cloud(std::vector<Point3> points_)
        : points(std::move(points_)),
          mat(points.size(), 1, MAT_TYPE::MAT_32F_C4, reinterpret_cast<unsigned char*>(points.data()),
              points.size() * sizeof(Point3), MEM::CPU) {}
    Cloud(const Cloud& other) : points(other.points), mat(other.mat) { mat.ptrCPU = data(); }
    Cloud& operator=(const Cloud&) = delete;

    unsigned char* data() { return reinterpret_cast<unsigned char*>(points.data()); }

    std::vector<Point3> points;
    Mat mat;
};

}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#pragma once

// Templates over the cloud type: nothing of PCL is included, and any container with the same members will do.

#include "vela_core/utils/Mat.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vela::interop {

namespace detail {

template <class P, class = void>
struct HasColor : std::false_type {};
template <class P>
struct HasColor<P, std::void_t<decltype(P::r), decltype(P::g), decltype(P::b)>> : std::true_type {};
template <class P, class = void>
struct HasAlpha : std::false_type {};
template <class P>
struct HasAlpha<P, std::void_t<decltype(P::a)>> : std::true_type {};

/// Copies a pixel of x, y, z and, if `four`, the bytes red, green, blue, alpha. Returns whether x, y and z
/// are finite.
template <class Point>
bool toPclPoint(const unsigned char* pixel, bool four, Point& point) {
    float v[3];
    std::memcpy(v, pixel, sizeof v);
    point.x = v[0];
    point.y = v[1];
    point.z = v[2];
    if constexpr (HasColor<Point>::value) {
        constexpr unsigned char WHITE[] = {255, 255, 255, 255};
        const unsigned char* const color = four ? pixel + sizeof v : WHITE;
        point.r = color[0];
        point.g = color[1];
        point.b = color[2];
        if constexpr (HasAlpha<Point>::value) point.a = color[3];
    }
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

}  // namespace detail

/// Copies a cloud, `MAT_32F_C3` or `MAT_32F_C4`, into a `pcl::PointCloud` of any point type with x, y, z; no
/// memory can be shared, since PCL's points are 16 or 32 bytes with members of their own.
///
/// Width, height and invalid points are kept, and `is_dense` says whether all points are finite. A point type
/// with r, g, b gets the packed colour; red stays red. Clouds without colour are white. The header (frame,
/// time stamp), unit and axes are left to the caller. False, with `out` unchanged, for another type, no host
/// buffer or a size that PCL's 32 bits cannot hold.
///
///     pcl::PointCloud<pcl::PointXYZRGB> points;
///     if (!toPcl(cloud, points)) return 1;
template <class Cloud>
[[nodiscard]] bool toPcl(const Mat& cloud, Cloud& out) {
    const bool four = cloud.dataType == MAT_TYPE::MAT_32F_C4;
    constexpr std::size_t LIMIT = std::numeric_limits<std::uint32_t>::max();
    if (!cloud.isOnHost() || cloud.ptrCPU == nullptr || cloud.width > LIMIT || cloud.height > LIMIT)
        return false;
    if (!four && cloud.dataType != MAT_TYPE::MAT_32F_C3) return false;
    out.resize(cloud.width * cloud.height);
    out.width = static_cast<std::uint32_t>(cloud.width);
    out.height = static_cast<std::uint32_t>(cloud.height);
    out.is_dense = true;
    auto point = out.begin();
    for (std::size_t y = 0; y < cloud.height; ++y) {
        const unsigned char* pixel = cloud.ptrCPU + y * cloud.stepBytesCPU;
        for (std::size_t x = 0; x < cloud.width; ++x, ++point, pixel += cloud.pixelBytes) {
            if (!detail::toPclPoint(pixel, four, *point)) out.is_dense = false;
        }
    }
    return true;
}

/// Replaces `cloud` by the points of a `pcl::PointCloud`, as an owned `MAT_32F_C4` on the host.
///
/// Width, height and invalid points are kept. Points without r, g, b become white, without a opaque. False,
/// with `cloud` unchanged, when width times height is not the number of points.
///
///     Mat cloud;
///     if (!fromPcl(points, cloud)) return 1;
template <class Cloud>
[[nodiscard]] bool fromPcl(const Cloud& in, Mat& cloud) {
    if (std::uint64_t{in.width} * in.height != in.size()) return false;
    cloud.alloc(in.width, in.height, MAT_TYPE::MAT_32F_C4);
    unsigned char* pixel = cloud.ptrCPU;
    for (const auto& point : in) {
        using Point = std::decay_t<decltype(point)>;
        const float v[3] = {point.x, point.y, point.z};
        unsigned char color[] = {255, 255, 255, 255};
        if constexpr (detail::HasColor<Point>::value) {
            color[0] = point.r;
            color[1] = point.g;
            color[2] = point.b;
            if constexpr (detail::HasAlpha<Point>::value) color[3] = point.a;
        }
        std::memcpy(pixel, v, sizeof v);
        std::memcpy(pixel + sizeof v, color, sizeof color);
        pixel += sizeof v + sizeof color;
    }
    return true;
}

}  // namespace vela::interop

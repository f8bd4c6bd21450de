// SPDX-License-Identifier: Apache-2.0
#include "vela_interop/pcl.hpp"
#include "support/padded_mat.hpp"

#ifdef VELA_HAS_PCL
#include <pcl/point_cloud.h>
#include <pcl/point_types.h>
#endif
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace vela::interop {
namespace {

/// The members of a pcl::PointCloud that toPcl and fromPcl use.
template <class Point>
struct PlainCloud : std::vector<Point> {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool is_dense = false;
};
struct Xyz {
    float x = 0, y = 0, z = 0;
};
/// In PCL's order on little-endian machines.
struct XyzRgb : Xyz {
    std::uint8_t b = 0, g = 0, r = 0;
};
struct XyzRgba : XyzRgb {
    std::uint8_t a = 0;
};

template <class Cloud>
class PclTest : public testing::Test {};
#ifdef VELA_HAS_PCL
using Clouds =
    testing::Types<PlainCloud<Xyz>, PlainCloud<XyzRgb>, PlainCloud<XyzRgba>, pcl::PointCloud<pcl::PointXYZ>,
                   pcl::PointCloud<pcl::PointXYZRGB>, pcl::PointCloud<pcl::PointXYZRGBNormal>>;
#else
using Clouds = testing::Types<PlainCloud<Xyz>, PlainCloud<XyzRgb>, PlainCloud<XyzRgba>>;
#endif
TYPED_TEST_SUITE(PclTest, Clouds, );  // clang requires the third argument, even an empty one

constexpr unsigned char RGBA[] = {10, 20, 30, 40};

TYPED_TEST(PclTest, KeepsShapeInvalidPointsAndColours) {
    using Point = std::decay_t<decltype(*std::declval<TypeParam&>().begin())>;
    constexpr bool COLOR = detail::HasColor<Point>::value;
    test::PaddedMat<Vector4<float>> whole(5, 4);
    for (std::size_t i = 0; i < 20; ++i) {
        Vector4<float>& point = whole.at(i % 5, i / 5);
        point = {static_cast<float>(i), 1, 2, 0};
        std::memcpy(&point.w, RGBA, sizeof RGBA);
    }
    const Mat part = whole.part(1, 1, 3, 2);
    TypeParam points;
    ASSERT_TRUE(toPcl(part, points));
    EXPECT_EQ(points.width, 3U);
    EXPECT_EQ(points.height, 2U);
    EXPECT_TRUE(points.is_dense);
    EXPECT_EQ(points[4].x, 12) << "column 1 of row 1";
    if constexpr (COLOR) {
        EXPECT_EQ(points[4].r, 10);
        EXPECT_EQ(points[4].g, 20);
        EXPECT_EQ(points[4].b, 30);
    }

    whole.at(2, 1).z = std::numeric_limits<float>::infinity();
    ASSERT_TRUE(toPcl(part, points));
    EXPECT_FALSE(points.is_dense);
    Mat back;
    ASSERT_TRUE(fromPcl(points, back));
    EXPECT_EQ(back.width, 3U);
    EXPECT_EQ(back.height, 2U);
    Vector4<float> point;
    back.getValue(1, 0, &point);
    EXPECT_TRUE(std::isinf(point.z));
    back.getValue(1, 1, &point);
    EXPECT_EQ(point.x, 12);
    const auto* const color = reinterpret_cast<const unsigned char*>(&point.w);
    for (int i = 0; i < 4; ++i) {
        const bool kept = COLOR && (i < 3 || detail::HasAlpha<Point>::value);
        EXPECT_EQ(color[i], kept ? RGBA[i] : 255) << i;
    }
}

TEST(ToPcl, GivesWhiteToCloudsWithoutColour) {
    Mat cloud(2, 1, MAT_TYPE::MAT_32F_C3);
    cloud.setTo(Vector3<float>(1, 2, 3));
    PlainCloud<XyzRgba> points;
    ASSERT_TRUE(toPcl(cloud, points));
    EXPECT_EQ(points[1].z, 3);
    EXPECT_EQ(points[1].r & points[1].g & points[1].b & points[1].a, 255);
}

TEST(ToPcl, RefusesMatsThatAreNoClouds) {
    PlainCloud<Xyz> points;
    points.resize(7);
    unsigned char bytes[16] = {};
    EXPECT_FALSE(toPcl(Mat(), points));
    EXPECT_FALSE(toPcl(Mat(1, 1, MAT_TYPE::MAT_32F_C2), points));
    EXPECT_FALSE(toPcl(Mat(1, 1, MAT_TYPE::MAT_32F_C4, bytes, 16, MEM::GPU), points));
    EXPECT_FALSE(toPcl(Mat(0, std::size_t{1} << 32U, MAT_TYPE::MAT_32F_C4, bytes, 0, MEM::CPU), points));
    EXPECT_EQ(points.size(), 7U);
}

TEST(FromPcl, RefusesAShapeThatIsNotTheNumberOfPoints) {
    PlainCloud<Xyz> points;
    points.resize(6);
    points.width = points.height = 3;
    Mat cloud(2, 2, MAT_TYPE::MAT_8U_C1);
    EXPECT_FALSE(fromPcl(points, cloud));
    EXPECT_EQ(cloud.width, 2U);
}

}  // namespace
}  // namespace vela::interop

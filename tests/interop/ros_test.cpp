// SPDX-License-Identifier: Apache-2.0
#include "vela_interop/ros.hpp"
#include "support/padded_mat.hpp"
#include "vela_interop/view.hpp"

#ifdef VELA_HAS_ROS
#include <sensor_msgs/Image.h>
#include <sensor_msgs/PointCloud2.h>
#endif
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace vela::interop {
namespace {

// The members of sensor_msgs that every release has.
struct PlainImage {
    std::uint32_t height = 0, width = 0;
    std::string encoding;
    std::uint8_t is_bigendian = 0;
    std::uint32_t step = 0;
    std::vector<std::uint8_t> data;
};
struct PlainField {
    static constexpr std::uint8_t UINT32 = 6, FLOAT32 = 7, FLOAT64 = 8;
    std::string name;
    std::uint32_t offset = 0;
    std::uint8_t datatype = 0;
    std::uint32_t count = 0;
};
struct PlainCloud2 {
    std::uint32_t height = 0, width = 0;
    std::vector<PlainField> fields;
    bool is_bigendian = false;
    std::uint32_t point_step = 0, row_step = 0;
    std::vector<std::uint8_t> data;
    bool is_dense = false;
};
struct Plain {
    using Image = PlainImage;
    using Cloud = PlainCloud2;
};
#ifdef VELA_HAS_ROS
struct Real {
    using Image = sensor_msgs::Image;
    using Cloud = sensor_msgs::PointCloud2;
};
using Messages = testing::Types<Plain, Real>;
#else
using Messages = testing::Types<Plain>;
#endif

template <class M>
class RosTest : public testing::Test {};
TYPED_TEST_SUITE(RosTest, Messages, );  // clang requires the third argument, even an empty one

TYPED_TEST(RosTest, PacksAPartOfAnImageAndBack) {
    test::PaddedMat<Vector3<unsigned char>> whole(5, 4);
    whole.at(1, 2) = {1, 2, 3};
    whole.at(3, 3) = {4, 5, 6};
    typename TypeParam::Image message;
    ASSERT_TRUE(toRosImage(whole.part(1, 2, 3, 2), message));
    EXPECT_EQ(message.encoding, "bgr8");
    EXPECT_EQ(message.step, 9U);
    const std::vector<std::uint8_t> wanted = {1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 5, 6};
    EXPECT_EQ(message.data, wanted);
    Mat back;
    ASSERT_TRUE(fromRosImage(message, back));
    EXPECT_EQ(hostView<Vector3<unsigned char>>(back)(2, 1), Vector3<unsigned char>(4, 5, 6));
}

TYPED_TEST(RosTest, PacksAPartOfACloudAndBack) {
    test::PaddedMat<Vector4<float>> whole(5, 4);
    whole.at(1, 1) = {1, 2, 3, 0};
    whole.at(3, 2) = {4, 5, 6, 0};
    const unsigned char color[] = {10, 20, 30, 40};
    std::memcpy(&whole.at(3, 2).w, color, sizeof color);
    typename TypeParam::Cloud message;
    ASSERT_TRUE(toRosCloud(whole.part(1, 1, 3, 2), message));
    EXPECT_TRUE(message.is_dense);
    EXPECT_EQ(message.row_step, 48U);
    ASSERT_EQ(message.fields.size(), 4U);
    EXPECT_EQ(message.fields[3].name, "rgb");
    EXPECT_EQ(message.fields[3].offset, 12U);
    ASSERT_EQ(message.data.size(), 96U);
    std::uint32_t rgb = 0;
    std::memcpy(&rgb, message.data.data() + 80 + 12, sizeof rgb);
    EXPECT_EQ(rgb, 0x000A141EU) << "red in the third byte, blue in the first";

    whole.at(2, 1).y = std::numeric_limits<float>::quiet_NaN();
    ASSERT_TRUE(toRosCloud(whole.part(1, 1, 3, 2), message));
    EXPECT_FALSE(message.is_dense);
    Mat back;
    ASSERT_TRUE(fromRosCloud(message, back));
    const auto points = hostView<Vector4<float>>(back);
    EXPECT_TRUE(std::isnan(points(1, 0).y));
    EXPECT_EQ(points(2, 1).z, 6);
    const auto* const kept = reinterpret_cast<const unsigned char*>(&points(2, 1).w);
    EXPECT_EQ(kept[0] * 1000000 + kept[1] * 10000 + kept[2] * 100, 10203000) << "red, green, blue";
    EXPECT_EQ(kept[3], 255) << "rgb has no alpha";
}

TEST(RosImage, NamesEveryPixelType) {
    PlainImage message;
    int value = 0;
    for (const char* const name :
         {"32FC1", "32FC2", "32FC3", "32FC4", "mono8", "8UC2", "bgr8", "bgra8", "mono16", "8SC4"}) {
        const auto type = static_cast<MAT_TYPE>(value++);
        EXPECT_TRUE(toRosImage(Mat(2, 2, type), message));
        EXPECT_EQ(message.encoding, name);
        Mat back;
        EXPECT_TRUE(fromRosImage(message, back));
        EXPECT_EQ(back.dataType, type) << name;
    }
    const Mat depth(1, 1, MAT_TYPE::MAT_US16_C1);
    EXPECT_TRUE(toRosImage(depth, message, "16UC1"));
    EXPECT_EQ(message.encoding, "16UC1");
    EXPECT_FALSE(toRosImage(depth, message, "bgr8")) << "other pixels";
    EXPECT_FALSE(toRosImage(depth, message, "16UC7"));
    EXPECT_FALSE(toRosImage(Mat(), message));
    EXPECT_FALSE(toRosImage(Mat(2, 2, static_cast<MAT_TYPE>(10)), message));
    EXPECT_EQ(message.encoding, "16UC1") << "unchanged";
}

TEST(RosImage, ReordersRedFirstAndBigEndianPixels) {
    Mat mat;
    const PlainImage red = {1, 2, "rgba8", 0, 9, {1, 2, 3, 4, 5, 6, 7, 8, 0}};
    ASSERT_TRUE(fromRosImage(red, mat));
    EXPECT_EQ(hostView<Vector4<unsigned char>>(mat)(1, 0), Vector4<unsigned char>(7, 6, 5, 8));
    const PlainImage big = {1, 2, "16UC1", 1, 4, {1, 2, 3, 4}};
    ASSERT_TRUE(fromRosImage(big, mat));
    EXPECT_EQ(hostView<unsigned short>(mat)(0, 0), 0x0102);
    EXPECT_EQ(hostView<unsigned short>(mat)(1, 0), 0x0304);
}

/// After each of the changes the message must be refused and the Mat left unchanged.
template <class Message>
void expectRefused(const Message& good, bool take(const Message&, Mat&),
                   const std::vector<std::pair<const char*, void (*)(Message&)>>& changes) {
    Mat mat(3, 3, MAT_TYPE::MAT_8U_C1);
    for (const auto& [name, change] : changes) {
        Message message = good;
        change(message);
        EXPECT_FALSE(take(message, mat)) << name;
    }
    EXPECT_EQ(mat.width, 3U) << "unchanged";
}

TEST(RosImage, RefusesInconsistentMessages) {
    const PlainImage good = {2, 2, "bgr8", 0, 8, std::vector<std::uint8_t>(16)};
    Mat mat;
    EXPECT_TRUE(fromRosImage(good, mat));
    expectRefused<PlainImage>(good, fromRosImage<PlainImage>,
                              {{"data ends early", [](auto& m) { m.data.pop_back(); }},
                               {"rows overlap", [](auto& m) { m.step = 5; }},
                               {"products of 32 bits", [](auto& m) { m.height = m.step = 1U << 31U; }},
                               {"row of more than 32 bits", [](auto& m) { m.width = 0x55555556; }},
                               {"no rows", [](auto& m) { m.height = 0; }},
                               {"no columns", [](auto& m) { m.width = 0; }},
                               {"a Bayer pattern", [](auto& m) { m.encoding = "bayer_rggb8"; }}});
}

/// One row of two points, each with four unrelated bytes, z, y, x, colour.
PlainCloud2 foreignCloud() {
    PlainCloud2 message;
    message.width = 2;
    message.height = 1;
    message.point_step = 20;
    message.row_step = 40;
    message.fields = {{"intensity", 0, PlainField::FLOAT32, 1},
                      {"z", 4, PlainField::FLOAT32, 1},
                      {"y", 8, PlainField::FLOAT32, 1},
                      {"x", 12, PlainField::FLOAT32, 1},
                      {"rgba", 16, PlainField::UINT32, 1}};
    message.data.resize(40);
    const float zyx[] = {3, 2, 1};
    std::memcpy(message.data.data() + 24, zyx, sizeof zyx);
    const std::uint32_t argb = 0x40102030;
    std::memcpy(message.data.data() + 36, &argb, sizeof argb);
    return message;
}

TEST(RosCloud, FindsFieldsWhereverTheyAre) {
    PlainCloud2 message = foreignCloud();
    for (const bool big : {false, true}) {
        if (big) {
            for (std::size_t i = 0; i < 40; i += 4)
                std::reverse(&message.data[i], &message.data[i] + 4);
            message.is_bigendian = true;
        }
        Mat cloud;
        ASSERT_TRUE(fromRosCloud(message, cloud));
        const Vector4<float> point = hostView<Vector4<float>>(cloud)(1, 0);
        EXPECT_EQ(Vector3<float>(point.x, point.y, point.z), Vector3<float>(1, 2, 3)) << big;
        const auto* const color = reinterpret_cast<const unsigned char*>(&point.w);
        EXPECT_EQ(std::vector(color, color + 4), (std::vector<unsigned char>{0x10, 0x20, 0x30, 0x40})) << big;
    }
    message.fields.pop_back();
    Mat white;
    ASSERT_TRUE(fromRosCloud(message, white));
    EXPECT_EQ(white.ptrCPU[28] & white.ptrCPU[29] & white.ptrCPU[30] & white.ptrCPU[31], 255);
}

TEST(RosCloud, RefusesInconsistentMessages) {
    expectRefused<PlainCloud2>(
        foreignCloud(), fromRosCloud<PlainCloud2>,
        {{"data ends early", [](auto& m) { m.data.pop_back(); }},
         {"rows shorter than their points", [](auto& m) { m.row_step = 39; }},
         {"products of 32 bits", [](auto& m) { m.height = m.row_step = 1U << 31U; }},
         {"row of more than 32 bits", [](auto& m) { m.width = 0x0CCCCCCE; }},
         {"a coordinate beyond the point", [](auto& m) { m.fields[1].offset = 17; }},
         {"an offset that wraps", [](auto& m) { m.fields[2].offset = 0xFFFFFFFE; }},
         {"a colour beyond the point", [](auto& m) { m.fields[4].offset = 20; }},
         {"a colour of doubles", [](auto& m) { m.fields[4].datatype = PlainField::FLOAT64; }},
         {"coordinates of doubles", [](auto& m) { m.fields[3].datatype = PlainField::FLOAT64; }},
         {"no y", [](auto& m) { m.fields[2].name = "Y"; }},
         {"points of no size", [](auto& m) { m.point_step = 0; }},
         {"no rows", [](auto& m) { m.height = 0; }},
         {"no columns", [](auto& m) { m.width = 0; }}});
}

TEST(RosCloud, HasNoColourFieldForCloudsWithoutColour) {
    Mat cloud(2, 1, MAT_TYPE::MAT_32F_C3);
    cloud.setTo(Vector3<float>(1, 2, 3));
    PlainCloud2 message;
    ASSERT_TRUE(toRosCloud(cloud, message));
    EXPECT_EQ(message.fields.size(), 3U);
    EXPECT_EQ(message.point_step, 12U);
    EXPECT_FALSE(toRosCloud(Mat(1, 1, MAT_TYPE::MAT_32F_C2), message));
    EXPECT_FALSE(toRosCloud(Mat(), message));
    EXPECT_EQ(message.fields.size(), 3U) << "unchanged";
}

}  // namespace
}  // namespace vela::interop

// SPDX-License-Identifier: Apache-2.0
#include "vela_interop/eigen.hpp"
#include "support/padded_mat.hpp"

#include <gtest/gtest.h>

#include <utility>

namespace vela::interop {
namespace {

constexpr auto MAP = [](auto&& m) -> decltype(map(std::forward<decltype(m)>(m))) { return map(m); };
constexpr auto POINTS = [](auto&& m) -> decltype(mapPoints(std::forward<decltype(m)>(m))) {
    return mapPoints(m);
};
constexpr auto IMAGE = [](auto&& m) -> decltype(mapImage(std::forward<decltype(m)>(m))) {
    return mapImage(m);
};
constexpr auto TO_EIGEN = [](auto&& v) -> decltype(toEigen(v)) { return toEigen(v); };
template <class F, class T>
constexpr bool TAKES_LASTING_ONLY = std::is_invocable_v<F, T&>&& std::is_invocable_v<F, const T&> &&
                                    !std::is_invocable_v<F, T> && !std::is_invocable_v<F, const T>;
static_assert(TAKES_LASTING_ONLY<decltype(MAP), Matrix3f> && TAKES_LASTING_ONLY<decltype(MAP), Matrix4f>);
static_assert(TAKES_LASTING_ONLY<decltype(MAP), Rotation> && TAKES_LASTING_ONLY<decltype(MAP), Transform>);
static_assert(TAKES_LASTING_ONLY<decltype(POINTS), Mat> && TAKES_LASTING_ONLY<decltype(IMAGE), Mat>);
static_assert(!std::is_invocable_v<decltype(TO_EIGEN), const Rotation&>, "not silently a quaternion");
static_assert(std::is_const_v<std::remove_pointer_t<decltype(mapPoints(std::declval<const Mat&>()).data())>>);

/// A quarter turn about z, then a step.
const Transform QUARTER(Orientation(Vector4<float>(0, 0, 0.70710678F, 0.70710678F)), Translation(1, 2, 3));

TEST(Eigen, MapsMatricesRowByRow) {
    Transform t = QUARTER;
    EXPECT_EQ(map(t)(1, 3), 2);
    EXPECT_NEAR(map(t)(1, 0), 1, 1e-6);
    EXPECT_NEAR(map(t)(0, 1), -1, 1e-6);
    map(t)(0, 3) = 10;
    EXPECT_EQ(t.getTranslation().tx, 10);
    Matrix3f m;
    map(m) << 1, 2, 3, 4, 5, 6, 7, 8, 9;
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(m.m[i], static_cast<float>(i + 1));
}

TEST(Eigen, ConvertsPoses) {
    const Eigen::Isometry3f pose = toEigen(QUARTER);
    EXPECT_TRUE((pose * Eigen::Vector3f(1, 0, 0)).isApprox(Eigen::Vector3f(1, 3, 3), 1e-5F));
    EXPECT_EQ(fromEigen(pose), QUARTER);
    Transform skewed = QUARTER;
    skewed.m[12] = 5;
    EXPECT_EQ(toEigen(skewed).matrix().row(3), Eigen::RowVector4f(0, 0, 0, 1));

    const Eigen::Quaternionf q(Eigen::AngleAxisf(0.5F, Eigen::Vector3f(1, 2, 3).normalized()));
    const Orientation ours = fromEigen(q);
    EXPECT_EQ(ours.ow, q.w());
    EXPECT_EQ(toEigen(ours).coeffs(), q.coeffs());
    const Rotation rotation = ours.getRotationMatrix();
    EXPECT_TRUE(map(rotation).isApprox(q.matrix(), 1e-5F));
    EXPECT_EQ(toEigen(fromEigen(Eigen::Vector3f(4, 5, 6))), Eigen::Vector3f(4, 5, 6));
}

TEST(Eigen, MapsPointsAndSkipsColours) {
    Mat cloud(7, 5, MAT_TYPE::MAT_32F_C4);
    cloud.setTo(Vector4<float>(1, 2, 3, 9));
    mapPoints(cloud) = (toEigen(QUARTER) * mapPoints(cloud)).eval();
    Vector4<float> last;
    cloud.getValue(6, 4, &last);
    EXPECT_NEAR(last.x, 1 - 2, 1e-5);
    EXPECT_NEAR(last.y, 2 + 1, 1e-5);
    EXPECT_EQ(last.w, 9);
    const Mat& constant = cloud;
    EXPECT_EQ(mapPoints(constant).cols(), 35);

    test::PaddedMat<Vector3<float>> whole(4, 4);
    Mat part = whole.part(1, 1, 2, 2);
    EXPECT_EQ(mapPoints(part).cols(), 0) << "rows apart";
    Mat row = whole.part(1, 1, 2, 1);
    mapPoints(row).setConstant(4);
    EXPECT_EQ(whole.count([](const Vector3<float>& p) { return p.x == 4 && p.y == 4 && p.z == 4; }), 2U);
}

TEST(Eigen, MapsAPartOfADepthMap) {
    test::PaddedMat<float> whole(8, 6);
    Mat part = whole.part(1, 2, 3, 2);
    mapImage(part).array() += 1;
    mapImage(part)(1, 2) = 5;
    EXPECT_EQ(whole.at(3, 3), 5);
    EXPECT_EQ(whole.count([](float v) { return v != 0; }), 6U);
}

TEST(Eigen, MapsNoPixelsOfUnsupportedMats) {
    alignas(4) unsigned char bytes[64] = {};
    const auto points = [&](int type, unsigned char* data, MEM mem) {
        Mat mat(1, 2, static_cast<MAT_TYPE>(type), data, getPixelBytes(static_cast<MAT_TYPE>(type)), mem);
        return mapPoints(mat).cols() + mapImage(mat).cols();
    };
    EXPECT_EQ(points(3, bytes, MEM::CPU), 2);
    EXPECT_EQ(points(0, bytes, MEM::CPU), 1);
    EXPECT_EQ(points(3, bytes + 1, MEM::CPU), 0) << "not aligned";
    EXPECT_EQ(points(3, bytes, MEM::GPU), 0);
    EXPECT_EQ(points(7, bytes, MEM::CPU), 0) << "four bytes";
    EXPECT_EQ(points(1, bytes, MEM::CPU), 0) << "two floats";
}

}  // namespace
}  // namespace vela::interop

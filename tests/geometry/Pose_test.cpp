// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Pose.hpp"

#include "support/geometry.hpp"

#include <cstddef>
#include <cstring>
#include <new>
#include <sstream>
#include <tuple>

namespace vela::test {
namespace {

TEST(Pose, CopiesTheMotionWithoutCovarianceAndTwist) {
    const auto membersOf = [](const Pose& pose) {
        return std::tuple(pose.timestamp, pose.confidence, pose.valid, pose.pose_covariance[35],
                          pose.twist[5]);
    };
    constexpr unsigned long long STAMP = 0x123456789ABCDEF0;
    const Transform transform(Rotation(1, {1, 2, 3}), Translation(4, 5, 6));
    Pose pose(transform, STAMP, 80);
    EXPECT_EQ(membersOf(Pose()), std::tuple(0U, 0, false, 0.0F, 0.0F));
    EXPECT_EQ(membersOf(pose), std::tuple(STAMP, 80, false, 0.0F, 0.0F))
        << "only its producer makes it valid";
    pose.valid = true;
    Pose assigned;
    for (Pose* const p : {&pose, &assigned}) {
        p->pose_covariance[35] = p->twist[5] = 1;
    }
    assigned = pose;
    EXPECT_EQ(membersOf(assigned), std::tuple(STAMP, 80, true, 0.0F, 0.0F));
    expectNear(assigned.getRotation(), transform.getRotation(), 0.0F);
    const Pose copy(pose);
    EXPECT_EQ(membersOf(copy), std::tuple(STAMP, 80, true, 0.0F, 0.0F));
    expectNear(copy.getRotation(), transform.getRotation(), 0.0F);
    expectNear(copy.getTranslation(), transform.getTranslation(), 0.0F);
    expectNear(copy.getOrientation(), transform.getOrientation(), 0.0F);
    expectNear(copy.getRotationVector(), transform.getRotationVector(), 0.0F);
    expectNear(copy.getEulerAngles(), transform.getEulerAngles(true), 0.0F);
    expectNear(copy.getEulerAngles(false), transform.getEulerAngles(false), 0.0F);
}

TEST(Pose, LeavesAnInvalidIdentityBehind) {
    alignas(Pose) std::byte memory[sizeof(Pose)];
    auto* const pose = new (memory) Pose(Transform(Rotation(1, {1, 2, 3}), Translation(4, 5, 6)), 5, 80);
    pose->valid = true;
    const auto transformAt = reinterpret_cast<const std::byte*>(pose->transform.m) - memory;
    const auto validAt = reinterpret_cast<const std::byte*>(&pose->valid) - memory;
    pose->~Pose();
    float left[16];
    std::memcpy(left, memory + transformAt, sizeof left);
    expectNear(Matrix4f(left), Matrix4f(), 0.0F);
    EXPECT_EQ(memory[validAt], std::byte{0});
}

TEST(Geometry, IsPrintedElementByElement) {
    const auto text = [](const auto& value) {
        std::ostringstream stream;
        stream << value;
        return stream.str();
    };
    const Transform t(Rotation(), Translation(1, -2.5F, 1e9F));
    EXPECT_EQ(text(Matrix3f() * 0.5F), "[0.5 0 0; 0 0.5 0; 0 0 0.5]");
    EXPECT_EQ(text(t), "[1 0 0 1; 0 1 0 -2.5; 0 0 1 1e+09; 0 0 0 1]");
    EXPECT_EQ(text(t.getTranslation()), "(1, -2.5, 1e+09)");
    EXPECT_EQ(text(Orientation(Vector4<float>(1, 2, 3, 4))), "(1, 2, 3, 4)");
    EXPECT_EQ(text(Pose(Transform(), 5, 80)),
              "[1 0 0 0; 0 1 0 0; 0 0 1 0; 0 0 0 1] at 5 ns, confidence 80, not valid");
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Orientation.hpp"
#include "vela_core/geometry/Pose.hpp"

#include "support/eigen.hpp"

#include <Eigen/Geometry>

#include <cstddef>
#include <cstring>
#include <new>
#include <sstream>
#include <string>
#include <tuple>

namespace vela::test {
namespace {

constexpr double DEGREE = 3.14159265358979323846 / 180;

Eigen::Quaterniond wide(const Orientation& q) {
    return Eigen::Quaterniond(Eigen::Vector4f(q.ox, q.oy, q.oz, q.ow).cast<double>());
}
Eigen::Vector3d wide(const Translation& t) {
    return Eigen::Vector3f(t.tx, t.ty, t.tz).cast<double>();
}
Translation narrow(const Eigen::Vector3d& v) {
    const Eigen::Vector3f floats = v.cast<float>();
    return {floats.x(), floats.y(), floats.z()};
}

const Translation AXES[] = {{1, 0, 0}, {0, -2, 0}, {0, 0, 0.1F}, {1, -2, 2}, {4, 1, 0.5F}, {-0.3F, 2, 0.9F}};
constexpr float ANGLES[] = {0, 1e-4F, 0.5F, 1.5F, 2.9F, 3.13F, -2};
const Vector4<float> QUATERNIONS[] = {{1, 2, 3, 4}, {-0.5F, 0.1F, 0.7F, -0.2F}, {2, -4, 1, 6}, {0, 0, 0, 1}};

// The root of a rounding error where 0 is exact keeps only half of a float's digits.
constexpr float ROOT_TOLERANCE = 1e-3F;

TEST(Rotation, TurnsAboutAnAxisOfAnyLength) {
    for (const Translation& axis : AXES) {
        for (const float angle : ANGLES) {
            const Rotation rotation(angle, axis);
            const Eigen::AngleAxisd wanted(static_cast<double>(angle), wide(axis).normalized());
            expectNear(numbersOf(rotation), numbersOfEigen(wanted.toRotationMatrix()));
            // The diagonal must match bit for bit: t times the square of a component.
            const Translation u = Translation::normalize(axis);
            const float c = std::cos(angle);
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(rotation(i, i), c + (1.0F - c) * (u(i) * u(i)));
            }
            const Eigen::Vector3d vector = wanted.axis() * wanted.angle();
            const Translation narrowed = narrow(vector);
            Rotation ofVector;
            ofVector.setRotationVector({narrowed.tx, narrowed.ty, narrowed.tz});
            expectNear(ofVector, rotation);
            expectNear(numbersOf(ofVector.getRotationVector()), numbersOfEigen(vector), ROOT_TOLERANCE);
        }
    }
    expectNear(Rotation(1, {0, 0, 0}), Rotation() * std::cos(1.0F));
    EXPECT_NO_THROW(Rotation(Matrix3f() * NAN).getRotationVector());
}

TEST(Orientation, BecomesAMatrixAndBack) {
    for (const Vector4<float>& components : QUATERNIONS) {
        const Orientation q(components);
        const Eigen::Matrix3d wanted = wide(q).normalized().toRotationMatrix();
        expectNear(numbersOf(q.getRotation()), numbersOfEigen(wanted));
        expectNear(numbersOf(Rotation(q)), numbersOfEigen(wanted));
        Rotation rotation;
        rotation.setOrientation(q);
        expectNear(numbersOf(rotation), numbersOfEigen(wanted));
        Eigen::Quaterniond back = wide(q).normalized();
        if (back.w() < 0) back.coeffs() *= -1;
        expectNear(numbersOf(rotation.getOrientation()), numbersOfEigen(back.coeffs()));
        expectNear(numbersOf(Orientation(rotation)), numbersOfEigen(back.coeffs()));
    }
    expectNear(numbersOf(Orientation::zeros().getRotation()), Numbers(9, NAN));
}

TEST(Orientation, TakesSignsFromDifferencesAcrossTheDiagonal) {
    for (int axis = 0; axis < 3; ++axis) {
        const int i = (axis + 2) % 3;
        const int j = (axis + 1) % 3;
        Rotation halfTurn(Matrix3f() * -1);
        halfTurn(axis, axis) = 1;
        for (float& element : halfTurn.m) {
            element += 0.0F;  // no -0
        }
        EXPECT_FALSE(std::signbit(Orientation(halfTurn)(axis)));
        halfTurn(i, j) = -0.0F;  // -0 - 0 is -0
        EXPECT_TRUE(std::signbit(Orientation(halfTurn)(axis))) << axis;
        EXPECT_EQ(std::abs(Orientation(halfTurn)(axis)), 1);
    }
    // A negative sum under the root, here that of w, counts as 0, and nothing is normalised.
    const float half = std::sqrt(0.5F);
    expectNear(numbersOf(Orientation(Rotation(Matrix3f() * -1))), {half, half, half, 0});
}

TEST(Orientation, CalculatesAsEigenDoes) {
    for (const Vector4<float>& a : QUATERNIONS) {
        for (const Vector4<float>& b : QUATERNIONS) {
            expectNear(numbersOf(Orientation(a) * b), numbersOfEigen((wide(a) * wide(b)).coeffs()));
        }
        Orientation q(a);
        q.normalise();
        expectNear(numbersOf(q), numbersOfEigen(wide(a).normalized().coeffs()));
        for (const Translation& t : AXES) {
            // A quaternion that is not of unit length scales by its squared norm.
            expectNear(
                numbersOf(t * Orientation(a)),
                numbersOfEigen(Eigen::Vector3d(wide(a).squaredNorm() * (wide(a).normalized() * wide(t)))));
            expectNear(numbersOf(Translation::normalize(t)), numbersOfEigen(wide(t).normalized()));
        }
    }
    Orientation zero = Orientation::zeros();
    zero.normalise();
    expectNear(numbersOf(zero), Numbers(4, 0.0F), 0.0F);
    expectNear(Translation::normalize({}), Translation(), 0.0F);
}

TEST(Orientation, TurnsOneDirectionIntoAnother) {
    for (const Translation& a : AXES) {
        for (const Translation& b : AXES) {
            if (&a == &b) continue;
            expectNear(numbersOf(Orientation(a, b)),
                       numbersOfEigen(Eigen::Quaterniond::FromTwoVectors(wide(a), wide(b)).coeffs()));
        }
    }
    expectNear(Orientation({0, 0, 2}, {0, 0, 5}), Orientation());
    const float rightAngle = std::acos(-1.0F) / 2;
    expectNear(numbersOf(Orientation({1, 0, 0}, {-1, 0, 0})), {0, 0, 0, std::cos(rightAngle)}, 0.0F);
    // Rounding puts some cosines of parallel directions above 1, and they are not clamped.
    int beyond = 0;
    for (int i = 0; i < 100; ++i) {
        const Translation a(1, static_cast<float>(i), 3);
        beyond += std::isnan(Orientation(a, a).ow) ? 1 : 0;
    }
    EXPECT_GT(beyond, 0);
}

Eigen::Matrix3d matrixOfAngles(const Eigen::Vector3d& radians) {
    return (Eigen::AngleAxisd(radians.y(), Eigen::Vector3d::UnitY()) *
            Eigen::AngleAxisd(radians.z(), Eigen::Vector3d::UnitZ()) *
            Eigen::AngleAxisd(radians.x(), Eigen::Vector3d::UnitX()))
        .toRotationMatrix();
}

TEST(Rotation, EulerAnglesTurnAboutXThenZThenY) {
    for (const float x : {-150.0F, 0.0F, 17.0F}) {
        for (const float y : {-115.0F, 0.0F, 90.0F, 179.0F}) {
            for (const float z : {-86.0F, 0.0F, 70.0F, 86.2F}) {
                const Eigen::Vector3d radians = DEGREE * Eigen::Vector3f(x, y, z).cast<double>();
                Rotation rotation;
                rotation.setEulerAngles({x, y, z}, false);
                expectNear(numbersOf(rotation), numbersOfEigen(matrixOfAngles(radians)));
                expectNear(numbersOf(rotation.getEulerAngles()), numbersOfEigen(radians), ROOT_TOLERANCE);

                // Degrees are radians times a constant of float precision.
                const auto degree = static_cast<float>(DEGREE);
                Rotation fromRadians;
                fromRadians.setEulerAngles({x * degree, y * degree, z * degree});
                EXPECT_TRUE(rotation == fromRadians);
                const Vector3<float> angles = rotation.getEulerAngles(true);
                const auto perRadian = static_cast<float>(1 / DEGREE);
                EXPECT_EQ(rotation.getEulerAngles(false),
                          Vector3<float>(angles.x * perRadian, angles.y * perRadian, angles.z * perRadian));
            }
        }
    }
}

TEST(Rotation, EulerAnglesNearThePolesHaveNoTurnAboutX) {
    // Beyond |sin(rz)| / 2 = 0.499, at 86.38 degrees, rz is set to 90.
    for (const float z : {86.5F, 87.5F, 89.0F, 90.0F}) {
        for (const float sign : {1.0F, -1.0F}) {
            // A turn about X is reported as one about Y, in the same or the opposite sense.
            for (const auto& [turned, seen] : {std::pair(Vector3<float>(0, 30, sign * z), 30.0F),
                                               std::pair(Vector3<float>(30, 0, sign * z), sign * 30)}) {
                Rotation rotation;
                rotation.setEulerAngles(turned, false);
                const Vector3<float> radians = rotation.getEulerAngles();
                EXPECT_EQ(radians.x, 0);
                EXPECT_EQ(radians.z, sign * static_cast<float>(90 * DEGREE));
                EXPECT_NEAR(rotation.getEulerAngles(false).y, seen, z == 90 ? 0.1F : 2.0F);
            }
        }
    }
}

TEST(Transform, RepresentationsAgreeAndLeaveTheRest) {
    for (const float x : {-3.0F, 0.0F, 2.0F}) {
        for (const float y : {-2.5F, 0.0F, 0.7F}) {
            for (const float z : {-1.3F, 0.0F, 0.4F}) {
                const Rotation r = Rotation(y, {0, 1, 0}) * Rotation(z, {0, 0, 1}) * Rotation(x, {1, 0, 0});
                Transform t;
                t.setEulerAngles({x, y, z});
                t.setTranslation({1, 2, 3});
                expectNear(t, Transform(r, Translation(1, 2, 3)));
                expectNear(t, Transform(t.getOrientation(), t.getTranslation()), ROOT_TOLERANCE);
                expectNear(t.getEulerAngles(), {x, y, z}, ROOT_TOLERANCE);
                t.m[12] = 4;
                const Transform wanted(t);
                t.setRotation(Rotation());
                t.setOrientation(wanted.getOrientation());
                expectNear(t, wanted, ROOT_TOLERANCE);
                t.setRotation(Rotation());
                t.setRotationVector(wanted.getRotationVector());
                expectNear(t, wanted, ROOT_TOLERANCE);
                t.setRotation(Rotation());
                t.setEulerAngles(wanted.getEulerAngles(false), false);
                expectNear(t, wanted, ROOT_TOLERANCE);
            }
        }
    }
}

TEST(Transform, MovesPoints) {
    Transform t(Rotation(static_cast<float>(90 * DEGREE), {0, 0, 1}), Translation(10, 20, 30));
    t.m[12] = t.m[15] = NAN;  // row 3 is ignored
    const Vector3<float> moved = t * Vector3<float>(1, 2, 3);
    expectNear(moved, {8, 21, 33});
    const Matrix4f columns = t * Vector4<float>(1, 2, 3, 1);
    expectNear(moved, {columns(0, 3), columns(1, 3), columns(2, 3)}, 0.0F);
}

TEST(Geometry, IsWrittenToStreams) {
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

TEST(Orientation, HoldsComponentsInOrder) {
    Orientation q(Vector4<float>(1, 2, 3, 4));
    Translation t(Vector3<float>(5, 6, 7));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(&q(i), &q.ox + i);
        EXPECT_EQ(&std::as_const(q)(i), &q.ox + i);
        EXPECT_EQ(&t(i % 3), &t.tx + i % 3);
        EXPECT_EQ(&std::as_const(t)(i % 3), &t.tx + i % 3);
    }
    expectNear(numbersOf(q), {1, 2, 3, 4}, 0.0F);
    expectNear(numbersOf(t), {5, 6, 7}, 0.0F);
    q.setZeros();
    expectNear(numbersOf(q), {0, 0, 0, 0}, 0.0F);
    q.setIdentity();
    expectNear(numbersOf(q), {0, 0, 0, 1}, 0.0F);
}

TEST(Pose, CopiesWhatBelongsToTheMotion) {
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

}  // namespace
}  // namespace vela::test

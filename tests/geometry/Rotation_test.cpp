// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Rotation.hpp"

#include "support/eigen.hpp"

namespace vela::test {
namespace {

constexpr double DEGREE = 3.14159265358979323846 / 180;
constexpr float ANGLES[] = {0, 1e-4F, 0.5F, 1.5F, 2.9F, 3.13F, -2};

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
            const Numbers narrow = numbersOfEigen(vector);
            Rotation ofVector;
            ofVector.setRotationVector({narrow[0], narrow[1], narrow[2]});
            expectNear(ofVector, rotation);
            expectNear(numbersOf(ofVector.getRotationVector()), narrow, ROOT_TOLERANCE);
        }
    }
    expectNear(Rotation(1, {0, 0, 0}), Rotation() * std::cos(1.0F));
    EXPECT_NO_THROW(Rotation(Matrix3f() * NAN).getRotationVector());
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

}  // namespace
}  // namespace vela::test

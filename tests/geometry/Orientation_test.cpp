// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Orientation.hpp"

#include "support/eigen.hpp"

namespace vela::test {
namespace {

const Vector4<float> QUATERNIONS[] = {{1, 2, 3, 4}, {-0.5F, 0.1F, 0.7F, -0.2F}, {2, -4, 1, 6}, {0, 0, 0, 1}};

TEST(Orientation, ConvertsToAMatrixAndBack) {
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

}  // namespace
}  // namespace vela::test

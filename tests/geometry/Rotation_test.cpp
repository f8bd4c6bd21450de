#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Orientation.hpp"
#include "vela_core/geometry/Pose.hpp"

#include "support/geometry.hpp"

#include <gtest/gtest.h>
#include <Eigen/Geometry>

#include <cmath>

namespace vela::test {
namespace {

constexpr float PI = 3.14159265F;
// Rounding of some dozen float operations on numbers of magnitude 1.
constexpr float TOLERANCE = 4e-6F;

Rotation fromEigen(const Eigen::Matrix3d& matrix) {
    const Eigen::Matrix<float, 3, 3, Eigen::RowMajor> values = matrix.cast<float>();
    return Matrix3f(values.data());
}
Eigen::Quaterniond reference(const Orientation& q) {
    return {q.ow, q.ox, q.oy, q.oz};
}
Eigen::Vector3d reference(const Translation& t) {
    return {t.tx, t.ty, t.tz};
}

void expectClose(const Vector3<float>& seen, const Vector3<float>& wanted, float tolerance) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(std::abs(seen[i] - wanted[i]) <= tolerance)
            << i << ": " << seen[i] << ", not " << wanted[i];
    }
}
void expectClose(const Translation& seen, const Eigen::Vector3d& wanted, double tolerance) {
    EXPECT_TRUE((reference(seen) - wanted).norm() <= tolerance)
        << seen.tx << " " << seen.ty << " " << seen.tz;
}
/// Equal up to the sign of the whole quaternion.
void expectSameRotation(const Orientation& seen, const Orientation& wanted) {
    const double dot = reference(seen).dot(reference(wanted));
    EXPECT_TRUE(std::abs(dot) >= 1.0 - 1e-6) << dot;
}

TEST(Translation, HoldsAndNormalises) {
    Translation t(1, 2, 3);
    EXPECT_EQ(t(0) + 10 * t(1) + 100 * t(2), 321.0F);
    t(1) = 5;
    EXPECT_EQ(t.ty, 5.0F);
    expectClose(Translation::normalize(Translation(Vector3<float>(0, 3, 4))), {0, 0.6, 0.8}, 1e-7);
    Translation zero;
    zero.normalize();
    EXPECT_EQ(reference(zero), Eigen::Vector3d::Zero());
}

TEST(Orientation, HoldsComponentsVectorPartFirst) {
    Orientation q(Vector4<float>(1, 2, 3, 4));
    EXPECT_EQ(q(0) + 10 * q(1) + 100 * q(2) + 1000 * q(3), 4321.0F);
    q(3) = 7;
    EXPECT_EQ(q.ow, 7.0F);
    q.setZeros();
    EXPECT_EQ(reference(q).coeffs(), reference(Orientation::zeros()).coeffs());
    q.normalise();
    EXPECT_EQ(reference(q).norm(), 0.0) << "nothing to divide by";
    EXPECT_TRUE(std::isnan(q.getRotationMatrix()(1, 1)));
    q.setIdentity();
    EXPECT_EQ(reference(q).coeffs(), reference(Orientation()).coeffs());
    EXPECT_TRUE(q.getRotationMatrix() == Matrix3f());
}

TEST(Orientation, FollowsEigen) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        const Orientation a = randomOrientation(seed);
        const Orientation b = randomOrientation(seed + 500);
        const Translation t(1, -2, 3);
        expectNear(a.getRotation(), fromEigen(reference(a).toRotationMatrix()), TOLERANCE);
        EXPECT_TRUE((reference(a * b).coeffs() - (reference(a) * reference(b)).coeffs()).norm() < 1e-6);
        expectClose(t * a, reference(a) * reference(t), 2e-5);
        expectSameRotation(Orientation(a.getRotationMatrix()), a);
        EXPECT_GE(Orientation(a.getRotationMatrix()).ow, 0.0F);
        const Orientation doubled(Vector4<float>(2 * a.ox, 2 * a.oy, 2 * a.oz, 2 * a.ow));
        expectNear(doubled.getRotationMatrix(), a.getRotationMatrix(), TOLERANCE);
        expectClose(t * doubled, 4.0 * (reference(a) * reference(t)), 1e-4);
    }
}

TEST(Orientation, OfAMatrixTakesSignsFromDifferences) {
    const float half[9] = {1, 0, 0, 0, -1, 0, 0, 0, -1};
    Rotation turn = Matrix3f(half);
    Orientation q(turn);
    EXPECT_TRUE(q.ox == 1.0F && q.oy == 0.0F && q.oz == 0.0F && q.ow == 0.0F);
    turn(1, 2) = 0.0F;
    turn(2, 1) = -0.0F;  // -0.0 - 0.0 is -0.0
    q.setRotation(turn);
    EXPECT_EQ(q.ox, -1.0F) << "the sign bit decides, also of a zero";
    const float large[9] = {-1, 0, 0, 0, -1, 0, 0, 0, -1};
    q.setRotationMatrix(Matrix3f(large));
    EXPECT_EQ(q.ow, 0.0F) << "a negative radicand counts as 0";
}

TEST(Orientation, BetweenDirections) {
    const Orientation quarter(Translation(2, 0, 0), Translation(0, 3, 0));
    EXPECT_TRUE((reference(quarter).coeffs() - Eigen::Vector4d(0, 0, std::sqrt(0.5), std::sqrt(0.5))).norm() <
                1e-6);
    const Orientation none(Translation(0, 0, 2), Translation(0, 0, 5));
    EXPECT_TRUE(none.ox == 0.0F && none.oz == 0.0F && none.ow == 1.0F);
    const Orientation opposite(Translation(1, 0, 0), Translation(-1, 0, 0));
    EXPECT_TRUE(opposite.ox == 0.0F && opposite.oy == 0.0F && std::abs(opposite.ow) < 1e-6F);
    for (unsigned seed = 1; seed <= 50; ++seed) {
        Random next(seed);
        const Translation a(next(-1, 1), next(-1, 1), next(-1, 1));
        const Translation b(next(-1, 1), next(-1, 1), next(-1, 1));
        expectClose(Translation::normalize(a) * Orientation(a, b), reference(b).normalized(), 1e-3);
    }
}

TEST(Rotation, ByAxisAndAngleFollowsEigen) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
        Random next(seed);
        const Translation axis(next(-3, 3), next(-3, 3), next(-3, 3));
        const float angle = next(-PI, PI);
        const Eigen::AngleAxisd wanted(angle, reference(axis).normalized());
        expectNear(Rotation(angle, axis), fromEigen(wanted.toRotationMatrix()), TOLERANCE);
    }
}

TEST(Rotation, VectorsAreAxisTimesAngle) {
    for (const float angle : {0.0F, 1e-4F, 0.5F, 3.0F, PI - 1e-3F}) {
        const Translation axis = Translation::normalize(Translation(1, -2, 2));
        Rotation rotation;
        rotation.setRotationVector({axis.tx * angle, axis.ty * angle, axis.tz * angle});
        expectNear(rotation, Rotation(angle, axis), TOLERANCE);
        expectClose(rotation.getRotationVector(), {axis.tx * angle, axis.ty * angle, axis.tz * angle}, 2e-3F);
    }
    Rotation broken;
    broken(0, 0) = std::nanf("");
    EXPECT_NO_THROW(broken.getRotationVector());
}

TEST(Rotation, EulerAnglesTurnAboutXThenZThenY) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        Random next(seed);
        const Vector3<float> angles(next(-3.1F, 3.1F), next(-3.1F, 3.1F), next(-1.3F, 1.3F));
        using Eigen::AngleAxisd;
        using Eigen::Vector3d;
        const Eigen::Matrix3d wanted =
            (AngleAxisd(angles.y, Vector3d::UnitY()) * AngleAxisd(angles.z, Vector3d::UnitZ()) *
             AngleAxisd(angles.x, Vector3d::UnitX()))
                .toRotationMatrix();
        Rotation rotation;
        rotation.setEulerAngles(angles);
        expectNear(rotation, fromEigen(wanted), TOLERANCE);
        expectClose(rotation.getEulerAngles(), angles, 1e-4F);
    }
}

TEST(Rotation, EulerAnglesInDegreesAndAtThePoles) {
    Rotation rotation;
    rotation.setEulerAngles({0, 90, 0}, false);
    expectClose(rotation.getEulerAngles(false), {0, 90, 0}, 1e-3F);
    expectClose(rotation.getEulerAngles(true), {0, PI / 2, 0}, 1e-5F);
    for (const float sign : {1.0F, -1.0F}) {
        rotation.setEulerAngles({0, 0, sign * 90}, false);
        expectClose(rotation.getEulerAngles(false), {0, 0, sign * 90}, 1e-3F);
        // At the pole a turn about X shows as one about Y, in the same or the opposite sense.
        rotation.setEulerAngles({30, 0, sign * 90}, false);
        expectClose(rotation.getEulerAngles(false), {0, sign * 30, sign * 90}, 1e-2F);
        // Just outside the pole's threshold (half of the sine is 0.499) all three angles come back.
        rotation.setEulerAngles({10, 20, sign * 86}, false);
        expectClose(rotation.getEulerAngles(false), {10, 20, sign * 86}, 1e-2F);
    }
}

TEST(Transform, PartsAreIndependent) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const Orientation q = randomOrientation(seed);
        const Transform transform(q, Translation(1, 2, 3));
        expectSameRotation(transform.getOrientation(), q);
        EXPECT_EQ(reference(transform.getTranslation()), Eigen::Vector3d(1, 2, 3));
        EXPECT_TRUE(Transform(q.getRotation(), Translation(1, 2, 3)) == transform);
        Transform changed(transform);
        changed.m[12] = 9;
        changed.setEulerAngles({10, 20, 30}, false);
        expectClose(changed.getEulerAngles(false), {10, 20, 30}, 1e-3F);
        changed.setRotationVector({0.1F, 0.2F, 0.3F});
        expectClose(changed.getRotationVector(), {0.1F, 0.2F, 0.3F}, 1e-5F);
        changed.setOrientation(q);
        EXPECT_EQ(changed.m[12], 9.0F);
        changed.m[12] = 0;
        EXPECT_TRUE(changed == transform);
        changed.setTranslation({4, 5, 6});
        EXPECT_TRUE(changed.m[3] == 4 && changed.m[7] == 5 && changed.m[11] == 6 && changed.m[15] == 1);
        EXPECT_TRUE(changed.getRotationMatrix() == transform.getRotation());
    }
}

TEST(Pose, CopiesWhatBelongsToTheMotion) {
    const Transform transform = randomTransform(3);
    Pose pose(transform, 5, 80);
    EXPECT_FALSE(pose.valid) << "only its producer makes it valid";
    EXPECT_TRUE(pose.timestamp == 5 && pose.confidence == 80 && pose.transform == transform);
    pose.valid = true;
    pose.pose_covariance[35] = 1;
    pose.twist[5] = 1;
    Pose assigned;
    assigned.twist[0] = 1;
    assigned = pose;
    for (const Pose& copy : {Pose(pose), Pose(assigned)}) {
        EXPECT_TRUE(copy.valid && copy.timestamp == 5 && copy.confidence == 80 &&
                    copy.transform == transform);
        EXPECT_EQ(copy.pose_covariance[35] + copy.twist[5] + copy.twist[0], 0.0F);
    }
    EXPECT_TRUE(pose.getRotation() == transform.getRotation());
    EXPECT_EQ(reference(pose.getTranslation()), reference(transform.getTranslation()));
    expectClose(pose.getEulerAngles(), transform.getEulerAngles(), 0.0F);
    expectClose(pose.getRotationVector(), transform.getRotationVector(), 0.0F);
    expectSameRotation(pose.getOrientation(), transform.getOrientation());
    const Pose fresh;
    EXPECT_TRUE(fresh.transform == Transform() && fresh.timestamp == 0 && fresh.confidence == 0 &&
                !fresh.valid);
}

}  // namespace
}  // namespace vela::test

#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Orientation.hpp"
#include "vela_core/geometry/Pose.hpp"

#include "support/geometry.hpp"

namespace vela::test {
namespace {

Orientation normalised(Orientation q) {
    q.normalise();
    return q;
}

Vector3<float> setAndRead(const Vector3<float>& angles, bool radian) {
    Rotation rotation;
    rotation.setEulerAngles(angles, radian);
    return rotation.getEulerAngles(radian);
}

TEST(Rotation, FollowsTheExamples) {
    const char* const file = "Rotation.txt";
    expectExamples(file, "about axis", [](float a, const Translation& axis) { return Rotation(a, axis); });
    expectExamples(file, "rotation vector", [](const Rotation& r) { return r.getRotationVector(); });
    expectExamples(file, "Euler angles", [](const Rotation& r, bool rad) { return r.getEulerAngles(rad); });
    expectExamples(file, "Euler angles set and read", setAndRead);
    EXPECT_NO_THROW(Rotation(Matrix3f() * NAN).getRotationVector());
}

TEST(Orientation, FollowsTheExamples) {
    const char* const file = "Rotation.txt";
    expectExamples(file, "matrix of quaternion", [](const Orientation& q) { return q.getRotation(); });
    expectExamples(file, "quaternion of matrix", [](const Rotation& r) { return r.getOrientation(); });
    expectExamples(file, "product", [](const Orientation& a, const Orientation& b) { return a * b; });
    expectExamples(file, "normalised quaternion", normalised);
    expectExamples(file, "normalised", [](const Translation& t) { return Translation::normalize(t); });
    expectExamples(file, "turned", [](const Translation& t, const Orientation& q) { return t * q; });
    expectExamples(file, "from direction to direction",
                   [](const Translation& a, const Translation& b) { return Orientation(a, b); });
}

TEST(Transform, RepresentationsAgreeAndLeaveTheRest) {
    for (const float x : {-3.0F, 0.0F, 1e-4F, 2.0F}) {
        for (const float y : {-2.5F, 0.0F, 0.7F}) {
            for (const float z : {-1.3F, 0.0F, 0.4F}) {
                // A quaternion holds roots of what rounding leaves of zeros.
                constexpr float TOLERANCE = 1e-3F;
                const Rotation r = Rotation(y, {0, 1, 0}) * Rotation(z, {0, 0, 1}) * Rotation(x, {1, 0, 0});
                Transform t;
                t.setEulerAngles({x, y, z});
                t.setTranslation({1, 2, 3});
                expectNear(t, Transform(r, Translation(1, 2, 3)));
                expectNear(t, Transform(t.getOrientation(), t.getTranslation()), TOLERANCE);
                expectNear(t.getEulerAngles(), {x, y, z}, TOLERANCE);
                t.m[12] = 4;
                const Transform wanted(t);
                t.setRotation(Rotation());
                t.setOrientation(wanted.getOrientation());
                expectNear(t, wanted, TOLERANCE);
                t.setRotation(Rotation());
                t.setRotationVector(wanted.getRotationVector());
                expectNear(t, wanted, TOLERANCE);
                t.setRotation(Rotation());
                t.setEulerAngles(wanted.getEulerAngles(false), false);
                expectNear(t, wanted, TOLERANCE);
            }
        }
    }
}

TEST(Orientation, HoldsComponentsInOrder) {
    Orientation q(Vector4<float>(1, 2, 3, 4));
    Translation t(Vector3<float>(5, 6, 7));
    EXPECT_EQ((std::vector{&q(0), &q(1), &q(2), &q(3)}), (std::vector{&q.ox, &q.oy, &q.oz, &q.ow}));
    EXPECT_EQ((std::vector{&t(0), &t(1), &t(2)}), (std::vector{&t.tx, &t.ty, &t.tz}));
    expectNear(numbersOf(q), {1, 2, 3, 4}, 0.0F);
    expectNear(numbersOf(t), {5, 6, 7}, 0.0F);
    q.setZeros();
    expectNear(numbersOf(q), {0, 0, 0, 0}, 0.0F);
    q.setIdentity();
    expectNear(numbersOf(q), {0, 0, 0, 1}, 0.0F);
}

TEST(Pose, CopiesWhatBelongsToTheMotion) {
    const auto stampOf = [](const Pose& pose) {
        return std::tuple(pose.timestamp, pose.confidence, pose.valid, pose.twist[5]);
    };
    const Transform transform(Rotation(1, {1, 2, 3}), Translation(4, 5, 6));
    Pose pose(transform, 5, 80);
    EXPECT_EQ(stampOf(Pose()), std::tuple(0U, 0, false, 0.0F));
    EXPECT_EQ(stampOf(pose), std::tuple(5U, 80, false, 0.0F)) << "only its producer makes it valid";
    pose.valid = true;
    Pose assigned;
    pose.twist[5] = assigned.twist[5] = 1;
    assigned = pose;
    EXPECT_EQ(stampOf(assigned), std::tuple(5U, 80, true, 0.0F));
    expectNear(assigned.getRotation(), transform.getRotation(), 0.0F);
    const Pose copy(pose);
    EXPECT_EQ(stampOf(copy), std::tuple(5U, 80, true, 0.0F));
    expectNear(copy.getRotation(), transform.getRotation(), 0.0F);
    expectNear(copy.getTranslation(), transform.getTranslation(), 0.0F);
    expectNear(copy.getOrientation(), transform.getOrientation(), 0.0F);
    expectNear(copy.getRotationVector(), transform.getRotationVector(), 0.0F);
    expectNear(copy.getEulerAngles(false), transform.getEulerAngles(false), 0.0F);
}

}  // namespace
}  // namespace vela::test

#include "vela_core/geometry/conversion.hpp"

#include "support/geometry.hpp"
#include "vela_core/types/enum_cast.hpp"

#include <cmath>

namespace vela::test {
namespace {

using Frame = COORDINATE_SYSTEM;

Frame frame(std::int32_t value) {
    return fromValue<Frame>(value);
}

/// Any rigid motion.
const Transform MOTION(Rotation(2.5F, {1, -2, 2}), Translation(1, -2, 3));

Translation convertedPoint(Frame from, Frame to, const Vector3<float>& p) {
    const Matrix4f product = getCoordinateTransformConversion4f(from, to) * Vector4<float>(p.x, p.y, p.z, 1);
    return {product(0, 0), product(1, 0), product(2, 0)};
}

Transform withConvertedUnit(Transform transform, UNIT from, UNIT to) {
    EXPECT_EQ(convertUnit(transform, from, to), ERROR_CODE::SUCCESS);
    return transform;
}

Rotation withoutYaw(const Rotation& rotation) {
    Transform transform(rotation, Translation());
    EXPECT_EQ(removeYaw(transform, Frame::IMAGE), ERROR_CODE::SUCCESS);
    return transform.getRotation();
}

/// The status of a conversion that changes nothing.
template <class Enum, ERROR_CODE (*convert)(Transform&, Enum, Enum)>
ERROR_CODE statusWithoutChange(Enum from, Enum to) {
    Transform t(MOTION);
    const ERROR_CODE status = convert(t, from, to);
    expectNear(t, MOTION, 0.0F);
    return status;
}

TEST(Conversion, FollowsTheExamples) {
    const char* const file = "conversion.txt";
    expectExamples(file, "point", convertedPoint);
    expectExamples(file, "status of frames", statusWithoutChange<Frame, convertCoordinateSystem>);
    expectExamples(file, "unit scale", getUnitScale);
    expectExamples(file, "millimetres", [](UNIT unit) { return getScaleMillimeter(unit); });
    expectExamples(file, "unit of transform", withConvertedUnit);
    expectExamples(file, "status of units", statusWithoutChange<UNIT, convertUnit>);
    expectExamples(file, "from gravity", computeRotationMatrixFromGravity);
    expectExamples(file, "without yaw", withoutYaw);
}

TEST(CoordinateSystem, ChangesTheBasis) {
    for (std::int32_t from = 0; from < 6; ++from) {
        for (std::int32_t to = 0; to < 6; ++to) {
            const Matrix4f k = getCoordinateTransformConversion4f(frame(from), frame(to));
            expectNear(k,
                       Transform(getCoordinateTransformConversion3f(frame(from), frame(to)), Translation()));
            expectNear(k * getCoordinateTransformConversion4f(Frame::IMAGE, frame(from)),
                       getCoordinateTransformConversion4f(Frame::IMAGE, frame(to)), 0.0F);
            // Moving a point and then changing its frame is changing its frame and then moving it.
            Transform converted(MOTION);
            EXPECT_EQ(convertCoordinateSystem(converted, frame(from), frame(to)), ERROR_CODE::SUCCESS);
            expectNear(converted * k, k * MOTION);
        }
    }
}

TEST(RemoveYaw, TurnsAboutTheVerticalOfEveryConvention) {
    for (std::int32_t system = -1; system < 6; ++system) {
        for (const float pitch : {0.4F, -1.2F}) {
            const Rotation tilted = Rotation(0.7F, {0, 1, 0}) * Rotation(pitch, {1, 0, 0});
            Transform wanted(withoutYaw(tilted), Translation());
            Transform t(tilted, Translation());
            convertCoordinateSystem(wanted, Frame::IMAGE, frame(system));
            convertCoordinateSystem(t, Frame::IMAGE, frame(system));
            t.setTranslation({1, -0.0F, 3});
            t.m[12] = 5;
            Transform level(t);
            EXPECT_EQ(removeYaw(level, frame(system)), ERROR_CODE::SUCCESS);
            expectNear(level.getRotation(), wanted.getRotation());
            level.setRotation(t.getRotation());
            expectNear(level, t, 0.0F);
            EXPECT_TRUE(std::signbit(level.m[7])) << "the rest keeps its bits";
        }
    }
}

TEST(RemoveYaw, RefusesUnknownConventions) {
    Transform t(MOTION);
    EXPECT_EQ(removeYaw(t, frame(6)), ERROR_CODE::INVALID_COORDINATE_SYSTEM);
    expectNear(t, MOTION, 0.0F);
}

}  // namespace
}  // namespace vela::test

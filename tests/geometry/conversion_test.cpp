#include "vela_core/geometry/conversion.hpp"

#include "support/geometry.hpp"
#include "vela_core/types/enum_cast.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace vela::test {
namespace {

using Frame = COORDINATE_SYSTEM;

Frame frame(std::int32_t value) {
    return fromValue<Frame>(value);
}

Vector3<float> apply(const Matrix4f& k, Vector3<float> p) {
    const Matrix4f product = k * Vector4<float>(p.x, p.y, p.z, 1);
    return {product(0, 0), product(1, 0), product(2, 0)};
}

TEST(CoordinateSystem, MapsTheSameDirections) {
    // Right, up and forward of each convention, as its name says.
    const Vector3<float> directions[][3] = {
        {{1, 0, 0}, {0, -1, 0}, {0, 0, 1}}, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
        {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}, {{1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}},  {{0, -1, 0}, {0, 0, 1}, {1, 0, 0}}};
    for (std::int32_t from = 0; from < 6; ++from) {
        for (std::int32_t to = 0; to < 6; ++to) {
            const Matrix4f k = getCoordinateTransformConversion4f(frame(from), frame(to));
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(apply(k, directions[from][i]), directions[to][i]) << from << " to " << to;
            }
            EXPECT_TRUE(k * getCoordinateTransformConversion4f(frame(to), frame(from)) == Matrix4f());
            EXPECT_TRUE(Transform(k).getRotation() ==
                        Matrix3f(getCoordinateTransformConversion3f(frame(from), frame(to))));
        }
        for (const std::int32_t unknown : {-1, 6}) {
            EXPECT_TRUE(getCoordinateTransformConversion4f(frame(from), frame(unknown)) ==
                        getCoordinateTransformConversion4f(frame(from), Frame::IMAGE));
        }
    }
    const Matrix4f k =
        getCoordinateTransformConversion4f(Frame::IMAGE, Frame::RIGHT_HANDED_Z_UP_AND_Y_FORWARD);
    EXPECT_EQ(apply(k, {1, 2, 3}), Vector3<float>(1, 3, -2));
}

TEST(CoordinateSystem, ChangesTheBasisOfTransforms) {
    Transform moved;
    moved.setTranslation({1, 2, 3});
    EXPECT_EQ(convertCoordinateSystem(moved, Frame::IMAGE, Frame::LEFT_HANDED_Y_UP_AND_Z_FORWARD),
              ERROR_CODE::SUCCESS);
    Transform wanted;
    wanted.setTranslation({1, -2, 3});
    EXPECT_TRUE(moved == wanted);
    for (std::int32_t to = 0; to < 6; ++to) {
        const Transform t = randomTransform(7);
        Transform converted(t);
        EXPECT_EQ(convertCoordinateSystem(converted, Frame::IMAGE, frame(to)), ERROR_CODE::SUCCESS);
        // Moving a point and then changing its frame is changing its frame and then moving it.
        const Matrix4f k = getCoordinateTransformConversion4f(Frame::IMAGE, frame(to));
        const Vector3<float> one = apply(k, apply(t, {1, -2, 3}));
        const Vector3<float> other = apply(converted, apply(k, {1, -2, 3}));
        EXPECT_NEAR(std::abs(one.x - other.x) + std::abs(one.y - other.y) + std::abs(one.z - other.z), 0,
                    1e-5);
    }
}

TEST(CoordinateSystem, RangeChecksAreSignedAgainstTheLast) {
    const Transform t = randomTransform(1);
    Transform same(t);
    EXPECT_EQ(convertCoordinateSystem(same, frame(6), frame(6)), ERROR_CODE::SUCCESS) << "equal comes first";
    for (const auto& [from, to] : {std::pair(6, 0), std::pair(0, 6), std::pair(-1, 100)}) {
        EXPECT_EQ(convertCoordinateSystem(same, frame(from), frame(to)),
                  ERROR_CODE::INVALID_COORDINATE_SYSTEM);
    }
    EXPECT_TRUE(same == t);
    EXPECT_EQ(convertCoordinateSystem(same, frame(-1), Frame::IMAGE), ERROR_CODE::SUCCESS);
    EXPECT_TRUE(same == t) << "a negative value counts as IMAGE";
}

TEST(Unit, ScalesTranslations) {
    constexpr double millimeters[] = {1, 10, 1000, 25.4, 304.8};
    for (std::int32_t from = 0; from < 5; ++from) {
        EXPECT_FLOAT_EQ(getScaleMillimeter(fromValue<UNIT>(from)), static_cast<float>(millimeters[from]));
        for (std::int32_t to = 0; to < 5; ++to) {
            const float scale = getUnitScale(fromValue<UNIT>(from), fromValue<UNIT>(to));
            EXPECT_FLOAT_EQ(scale, static_cast<float>(millimeters[from] / millimeters[to]));
            Transform t(randomOrientation(1), Translation(1, 2, 3));
            Transform wanted(t);
            wanted.setTranslation({scale, 2 * scale, 3 * scale});
            EXPECT_EQ(convertUnit(t, fromValue<UNIT>(from), fromValue<UNIT>(to)), ERROR_CODE::SUCCESS);
            EXPECT_TRUE(t == wanted);
        }
    }
    EXPECT_EQ(getUnitScale(UNIT::INCH, UNIT::INCH), 1.0F);
    EXPECT_EQ(getScaleMillimeter(fromValue<UNIT>(5)) + getScaleMillimeter(fromValue<UNIT>(-1)), 2.0F);
    Transform t = randomTransform(2);
    EXPECT_EQ(convertUnit(t, UNIT::MILLIMETER, fromValue<UNIT>(5)), ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
    EXPECT_EQ(convertUnit(t, fromValue<UNIT>(5), UNIT::MILLIMETER), ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
    EXPECT_EQ(convertUnit(t, fromValue<UNIT>(5), fromValue<UNIT>(5)), ERROR_CODE::SUCCESS);
    EXPECT_TRUE(t == randomTransform(2));
    EXPECT_EQ(convertUnit(t, fromValue<UNIT>(-1), UNIT::METER), ERROR_CODE::SUCCESS)
        << "negative values pass";
}

/// A rotation given in the IMAGE frame: yaw about the vertical, then pitch up, then roll.
Rotation attitude(float yaw, float pitch, float roll) {
    return Rotation(yaw, {0, 1, 0}) * Rotation(pitch, {1, 0, 0}) * Rotation(roll, {0, 0, 1});
}

TEST(RemoveYaw, KeepsPitchAndRollInEveryConvention) {
    constexpr float pi = 3.14159265F;
    for (std::int32_t system = -1; system < 6; ++system) {
        for (const float pitch : {0.0F, 0.4F, -0.9F, 1.2F, -1.5F, pi / 2, -pi / 2}) {
            for (const float roll : {0.0F, 0.2F}) {
                for (const float yaw : {0.0F, 0.7F, 2.5F, -3.0F}) {
                    if (roll != 0.0F && std::abs(std::sin(pitch)) > 0.8F)
                        continue;  // roll then shows as heading
                    SCOPED_TRACE(testing::Message() << system << " " << pitch << " " << roll << " " << yaw);
                    Transform t(attitude(yaw, pitch, roll), Translation(1, -0.0F, 3));
                    convertCoordinateSystem(t, Frame::IMAGE, frame(system));
                    t.m[12] = 5;
                    const Transform before(t);
                    EXPECT_EQ(removeYaw(t, frame(system)), ERROR_CODE::SUCCESS);
                    for (const int i : {3, 7, 11, 12, 13, 14, 15}) {
                        EXPECT_EQ(t.m[i], before.m[i]);
                        EXPECT_EQ(std::signbit(t.m[i]), std::signbit(before.m[i]));
                    }
                    Transform again(t);
                    removeYaw(again, frame(system));
                    expectNear(again, t, 1e-6F);
                    convertCoordinateSystem(t, frame(system), Frame::IMAGE);
                    expectNear(t.getRotation(), attitude(0, pitch, roll), 1e-5F);
                }
            }
        }
    }
}

TEST(RemoveYaw, RefusesUnknownAndSurvivesDegenerateInput) {
    Transform t = randomTransform(4);
    EXPECT_EQ(removeYaw(t, frame(6)), ERROR_CODE::INVALID_COORDINATE_SYSTEM);
    EXPECT_TRUE(t == randomTransform(4));
    Transform zero(Matrix4f::zeros());
    EXPECT_EQ(removeYaw(zero, Frame::IMAGE), ERROR_CODE::SUCCESS);
    EXPECT_TRUE(zero == Matrix4f::zeros());
}

TEST(Gravity, CarriesTheReferenceOntoTheMeasurement) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
        Random next(seed);
        const Vector3<float> g(next(-9, 9), next(-9, 9), next(-9, 9));
        const Rotation r = computeRotationMatrixFromGravity(g, {0, 1, 0});
        const float norm = std::sqrt(g.x * g.x + g.y * g.y + g.z * g.z);
        EXPECT_NEAR(r(0, 1), g.x / norm, 2e-5);
        EXPECT_NEAR(r(1, 1), g.y / norm, 2e-5);
        EXPECT_NEAR(r(2, 1), g.z / norm, 2e-5);
        expectNear(r * Matrix3f::transpose(r), Matrix3f(), 2e-5F);
    }
    // By hand: u = (1, 0, 0), v = u x (0, 1, 0) = (0, 0, 1), c = 0, k = 1.
    const float wanted[9] = {0, 1, 0, -1, 0, 0, 0, 0, 1};
    expectNear(computeRotationMatrixFromGravity({5, 0, 0}, {0, 1, 0}), Matrix3f(wanted), 1e-6F);
    EXPECT_TRUE(std::isnan(computeRotationMatrixFromGravity({0, 5, 0}, {0, 1, 0})(0, 0)));
}

}  // namespace
}  // namespace vela::test

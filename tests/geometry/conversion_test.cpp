// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/heading.hpp"
#include "vela_core/geometry/units.hpp"

#include "support/eigen.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace vela::test {
namespace {

using detail::fromValue;

using Frame = COORDINATE_SYSTEM;

constexpr std::int32_t FRAMES = 6;
constexpr std::int32_t UNITS = 5;

Frame frame(std::int32_t value) {
    return fromValue<Frame>(value);
}
UNIT unit(std::int32_t value) {
    return fromValue<UNIT>(value);
}

/// Any rigid motion.
const Transform MOTION(Rotation(2.5F, {1, -2, 2}), Translation(1, -2, 3));

TEST(CoordinateSystem, MapsPointsOfTheCamera) {
    // 1 to the right, 2 down and 3 ahead, in each of the conventions.
    const Vector3<float> wanted[FRAMES] = {{1, 2, 3},  {1, -2, 3}, {1, -2, -3},
                                           {1, 3, -2}, {3, 1, -2}, {3, -1, -2}};
    for (std::int32_t from = -1; from <= FRAMES; ++from) {
        for (std::int32_t to = -1; to <= FRAMES; ++to) {
            const auto pointIn = [&](std::int32_t system) {
                return wanted[system < 0 || system >= FRAMES ? 0 : system];  // unknown values count as IMAGE
            };
            const Vector3<float> p = pointIn(from);
            const Matrix4f seen =
                getCoordinateTransformConversion4f(frame(from), frame(to)) * Vector4<float>(p.x, p.y, p.z, 1);
            EXPECT_EQ(Vector3<float>(seen(0, 0), seen(1, 0), seen(2, 0)), pointIn(to)) << from << " " << to;
        }
    }
}

TEST(CoordinateSystem, ChangesTheBasisAndKeepsTheLabel) {
    for (std::int32_t from = 0; from < FRAMES; ++from) {
        for (std::int32_t to = 0; to < FRAMES; ++to) {
            const Matrix4f k = getCoordinateTransformConversion4f(frame(from), frame(to));
            expectNear(k,
                       Transform(getCoordinateTransformConversion3f(frame(from), frame(to)), Translation()));
            // Moving a point and changing its frame must give the same in either order.
            Transform converted(MOTION);
            converted.label = "motion";
            EXPECT_EQ(convertCoordinateSystem(converted, frame(from), frame(to)), ERROR_CODE::SUCCESS);
            expectNear(converted * k, k * MOTION);
            EXPECT_EQ(converted.label, "motion");
        }
    }
}

TEST(Units, ScaleByTheQuotientOfMillimetres) {
    const float millimetres[UNITS] = {1, 10, 1000, 25.4F, 304.8F};
    for (std::int32_t from = 0; from < UNITS; ++from) {
        EXPECT_EQ(getScaleMillimeter(unit(from)), millimetres[from]);
        for (std::int32_t to = 0; to < UNITS; ++to) {
            const float scale = getUnitScale(unit(from), unit(to));
            EXPECT_EQ(scale, millimetres[from] / millimetres[to]) << "one rounding";
            Transform t(MOTION);
            t.m[12] = 5;
            Transform wanted(t);
            wanted.setTranslation({scale, -2 * scale, 3 * scale});
            EXPECT_EQ(convertUnit(t, unit(from), unit(to)), ERROR_CODE::SUCCESS);
            expectNear(t, wanted, 0.0F);
        }
    }
    EXPECT_EQ(getScaleMillimeter(unit(-1)), 1);
    EXPECT_EQ(getScaleMillimeter(unit(UNITS)), 1);
}

TEST(Units, AreReadFromWordsOtherThanTheirNames) {
    for (std::int32_t value = -1; value <= 5; ++value) {
        EXPECT_EQ(unit2str(unit(value)), toString(unit(value)));
        EXPECT_EQ(str2unit(unit2str(unit(value))), UNIT::MILLIMETER);
    }
    const char* const words[] = {"Millimeter", "Centimeter", "Meter", "Inch", "Feet"};
    for (std::int32_t value = 0; value < 5; ++value) {
        EXPECT_EQ(str2unit(words[value]), unit(value));
    }
    for (const char* const word : {"FOOT", "meter", "Meter ", ""}) {
        EXPECT_EQ(str2unit(word), UNIT::MILLIMETER) << word;
    }
    EXPECT_THROW(str2unit(String(static_cast<const char*>(nullptr))), std::logic_error);
}

TEST(Conversion, RefusesOnlyValuesPastTheLast) {
    const auto expectStatus = [](ERROR_CODE wanted, std::int32_t count, auto convert) {
        const struct {
            std::int32_t from, to;
            bool refused;
        } cases[] = {
            {count, count, false}, {count, 0, true}, {0, count, true}, {-1, 100, true}, {-1, 0, false}};
        for (const auto& [from, to, refused] : cases) {
            Transform t(MOTION);
            EXPECT_EQ(convert(t, from, to), refused ? wanted : ERROR_CODE::SUCCESS) << from << " " << to;
            expectNear(t, MOTION, 0.0F);
        }
    };
    expectStatus(ERROR_CODE::INVALID_COORDINATE_SYSTEM, FRAMES, [](Transform& t, auto from, auto to) {
        return convertCoordinateSystem(t, frame(from), frame(to));
    });
    expectStatus(ERROR_CODE::INVALID_FUNCTION_PARAMETERS, UNITS,
                 [](Transform& t, auto from, auto to) { return convertUnit(t, unit(from), unit(to)); });
    Transform t(MOTION);
    EXPECT_EQ(removeYaw(t, frame(FRAMES)), ERROR_CODE::INVALID_COORDINATE_SYSTEM);
    expectNear(t, MOTION, 0.0F);
}

TEST(Gravity, RotatesTheReferenceOntoTheMeasuredDirection) {
    const Vector3<float> directions[] = {{5, 0, 0}, {1, 2, -3}, {-4, 1, 2}, {0, 0.1F, 7}};
    // The last is not of unit length and must not be normalised.
    for (const Vector3<float>& reference : {Vector3<float>{0, 1, 0}, {0.6F, 0, -0.8F}, {2, 0, 1}}) {
        const Eigen::Vector3d r = Eigen::Vector3f(reference.x, reference.y, reference.z).cast<double>();
        for (const Vector3<float>& gravity : directions) {
            const Eigen::Vector3d u =
                Eigen::Vector3f(gravity.x, gravity.y, gravity.z).cast<double>().normalized();
            const Eigen::Vector3d v = u.cross(r);
            Eigen::Matrix3d s;
            s << 0, -v.z(), v.y(), v.z(), 0, -v.x(), -v.y(), v.x(), 0;
            const Eigen::Matrix3d wanted =
                Eigen::Matrix3d::Identity() - s + s * s * ((1 - u.dot(r)) / v.squaredNorm());
            expectNear(numbersOf(computeRotationMatrixFromGravity(gravity, reference)),
                       numbersOfEigen(wanted));
            if (reference.x < 1) {
                EXPECT_LT((wanted * r - u).norm(), 1e-6);
            }
        }
    }
    for (const float element : computeRotationMatrixFromGravity({0, 5, 0}, {0, 1, 0}).m) {
        EXPECT_FALSE(std::isfinite(element)) << "parallel directions";
    }
}

/// The rotation, in the IMAGE frame, after `removeYaw`.
Rotation withoutYaw(const Rotation& rotation) {
    Transform transform(rotation, Translation());
    EXPECT_EQ(removeYaw(transform, Frame::IMAGE), ERROR_CODE::SUCCESS);
    return transform.getRotation();
}

TEST(RemoveYaw, FacesForwardByTheAxisThatTellsTheHeading) {
    // Forward does so up to a vertical component of 0.8 (53.13 degrees of pitch); beyond that, the down axis.
    for (const float pitch : {-89.9F, -70.0F, -53.5F, -52.8F, 0.0F, 30.0F, 52.8F, 53.5F, 89.9F}) {
        for (const float yaw : {-170.0F, -30.0F, 0.0F, 100.0F}) {
            for (const float roll : {0.0F, 20.0F, -60.0F}) {
                constexpr float DEGREE = 0.0174532924F;
                const Rotation rotation = Rotation(yaw * DEGREE, {0, 1, 0}) *
                                          Rotation(pitch * DEGREE, {1, 0, 0}) *
                                          Rotation(roll * DEGREE, {0, 0, 1});
                const Rotation level = withoutYaw(rotation);
                SCOPED_TRACE(testing::Message() << pitch << " " << yaw << " " << roll);
                for (int column = 0; column < 3; ++column) {
                    EXPECT_NEAR(level(1, column), rotation(1, column), 1e-6F) << "pitch and roll stay";
                }
                expectNear(level * Matrix3f::transpose(level), Matrix3f());
                const float up = rotation(1, 2);
                const bool steep = std::abs(up) > 0.8F;
                const float side = steep ? level(0, 1) : level(0, 2);
                const float ahead = steep ? (up > 0 ? -level(2, 1) : level(2, 1)) : level(2, 2);
                EXPECT_NEAR(side, 0, 1e-6F);
                EXPECT_GT(ahead, 0);
                expectNear(withoutYaw(level), level);
            }
        }
    }
    expectNear(withoutYaw(Rotation(Matrix3f::zeros())), Rotation(Matrix3f::zeros()), 0.0F);
}

TEST(RemoveYaw, TurnsAboutTheVerticalOfEveryConvention) {
    for (std::int32_t system = -1; system < FRAMES; ++system) {
        for (const float pitch : {0.4F, -1.2F}) {
            const Rotation tilted = Rotation(0.7F, {0, 1, 0}) * Rotation(pitch, {1, 0, 0});
            Transform wanted(withoutYaw(tilted), Translation());
            Transform t(tilted, Translation());
            convertCoordinateSystem(wanted, Frame::IMAGE, frame(system));
            convertCoordinateSystem(t, Frame::IMAGE, frame(system));
            for (const float x : {1.0F, INFINITY, NAN}) {
                t.setTranslation({x, -0.0F, 3});
                t.m[12] = x;
                Transform level(t);
                EXPECT_EQ(removeYaw(level, frame(system)), ERROR_CODE::SUCCESS);
                expectNear(level.getRotation(), wanted.getRotation());
                level.setRotation(t.getRotation());
                // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): compares bits
                EXPECT_EQ(std::memcmp(level.m, t.m, sizeof t.m), 0) << "the rest keeps its bits";
            }
        }
    }
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Rotation.hpp"

#include "vela_core/geometry/Orientation.hpp"
#include "vela_core/geometry/Translation.hpp"

#include <algorithm>
#include <cmath>

namespace vela {
namespace {

constexpr float RADIANS_PER_DEGREE = 0.0174532924F;
constexpr float DEGREES_PER_RADIAN = 57.2957802F;
constexpr float HALF_PI = 1.57079637F;
// Half of sin(rz) beyond which rz counts as +-90 degrees.
constexpr double POLE = 0.499;

}  // namespace

Rotation::Rotation(const Orientation& orientation) {
    setOrientation(orientation);
}

Rotation::Rotation(float angle, const Translation& axis) {
    const Translation u = Translation::normalize(axis);
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    const float t = 1.0F - c;
    const float values[9] = {
        c + t * (u.tx * u.tx),      t * u.tx * u.ty - u.tz * s, u.ty * s + t * u.tx * u.tz,
        u.tz * s + t * u.tx * u.ty, c + t * (u.ty * u.ty),      t * u.ty * u.tz - u.tx * s,
        t * u.tx * u.tz - u.ty * s, u.tx * s + t * u.ty * u.tz, c + t * (u.tz * u.tz)};
    std::copy_n(values, 9, m);
}

Orientation Rotation::getOrientation() const {
    return Orientation(*this);
}

void Rotation::setOrientation(const Orientation& orientation) {
    *this = orientation.getRotationMatrix();
}

Vector3<float> Rotation::getEulerAngles(bool radian) const {
    const Orientation q = getOrientation();
    const double x = q.ox;
    const double y = q.oy;
    const double z = q.oz;
    const double w = q.ow;
    const double test = x * y + z * w;
    Vector3<float> angles;
    if (test > POLE) {
        angles = {0.0F, 2.0F * std::atan2(q.ox, q.ow), HALF_PI};
    } else if (test < -POLE) {
        angles = {0.0F, -2.0F * std::atan2(q.ox, q.ow), -HALF_PI};
    } else {
        const double rx = std::atan2(2 * x * w - 2 * y * z, 1 - 2 * x * x - 2 * z * z);
        const double ry = std::atan2(2 * y * w - 2 * x * z, 1 - 2 * y * y - 2 * z * z);
        const double rz = std::asin(2 * test);
        angles = {static_cast<float>(rx), static_cast<float>(ry), static_cast<float>(rz)};
    }
    if (radian) return angles;
    return {angles.x * DEGREES_PER_RADIAN, angles.y * DEGREES_PER_RADIAN, angles.z * DEGREES_PER_RADIAN};
}

void Rotation::setEulerAngles(const Vector3<float>& angles, bool radian) {
    const float unit = radian ? 1.0F : RADIANS_PER_DEGREE;
    const float cx = std::cos(angles.x * unit);
    const float sx = std::sin(angles.x * unit);
    const float cy = std::cos(angles.y * unit);
    const float sy = std::sin(angles.y * unit);
    const float cz = std::cos(angles.z * unit);
    const float sz = std::sin(angles.z * unit);
    const float values[9] = {cy * cz,  sx * sy - cy * sz * cx, sy * cx + sx * cy * sz, sz, cz * cx, -cz * sx,
                             -sy * cz, cy * sx + cx * sy * sz, cy * cx - sx * sy * sz};
    std::copy_n(values, 9, m);
}

}  // namespace vela

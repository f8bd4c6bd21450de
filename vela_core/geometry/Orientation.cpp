// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Orientation.hpp"

#include <cmath>
#include <ostream>

namespace vela {
namespace {

/// Half the square root of a sum of diagonal elements; 0 for a sum that rounding made negative.
float halfRoot(float radicand) {
    return radicand > 0.0F ? std::sqrt(radicand) / 2.0F : 0.0F;
}

}  // namespace

Orientation::Orientation(const Rotation& rotation) {
    setRotationMatrix(rotation);
}

Orientation::Orientation(const Translation& from, const Translation& to) {
    const Translation a = Translation::normalize(from);
    const Translation b = Translation::normalize(to);
    const float angle = std::acos(a.tx * b.tx + a.ty * b.ty + a.tz * b.tz);
    const Translation axis =
        Translation::normalize({from.ty * to.tz - from.tz * to.ty, from.tz * to.tx - from.tx * to.tz,
                                from.tx * to.ty - from.ty * to.tx});
    const float s = std::sin(angle / 2.0F);
    ox = axis.tx * s;
    oy = axis.ty * s;
    oz = axis.tz * s;
    ow = std::cos(angle / 2.0F);
}

void Orientation::setRotationMatrix(const Rotation& r) {
    ow = halfRoot(1.0F + r(0, 0) + r(1, 1) + r(2, 2));
    ox = std::copysign(halfRoot(1.0F + r(0, 0) - r(1, 1) - r(2, 2)), r(2, 1) - r(1, 2));
    oy = std::copysign(halfRoot(1.0F - r(0, 0) + r(1, 1) - r(2, 2)), r(0, 2) - r(2, 0));
    oz = std::copysign(halfRoot(1.0F - r(0, 0) - r(1, 1) + r(2, 2)), r(1, 0) - r(0, 1));
}

Orientation Orientation::operator*(const Orientation& b) const {
    return Orientation(Vector4<float>(
        ow * b.ox + ox * b.ow + oy * b.oz - oz * b.oy, ow * b.oy - ox * b.oz + oy * b.ow + oz * b.ox,
        ow * b.oz + ox * b.oy - oy * b.ox + oz * b.ow, ow * b.ow - ox * b.ox - oy * b.oy - oz * b.oz));
}

void Orientation::normalise() {
    const float norm = std::sqrt(ox * ox + oy * oy + oz * oz + ow * ow);
    if (norm > 0.0F) *this = Orientation(Vector4<float>(ox / norm, oy / norm, oz / norm, ow / norm));
}

std::ostream& operator<<(std::ostream& stream, const Orientation& q) {
    return stream << '(' << q.ox << ", " << q.oy << ", " << q.oz << ", " << q.ow << ')';
}

}  // namespace vela

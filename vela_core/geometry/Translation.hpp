// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/Vector.hpp"

#include <iosfwd>

namespace vela VELA_API {

class Orientation;

/// A position or direction, in whatever length unit the program uses; zero by default.
class Translation {
public:
    float tx = 0.0F;  ///< x
    float ty = 0.0F;  ///< y
    float tz = 0.0F;  ///< z

    /// (0, 0, 0).
    Translation() = default;
    /// (x, y, z).
    Translation(float x, float y, float z) : tx(x), ty(y), tz(z) {}
    /// The components of v.
    Translation(const Vector3<float>& v) : tx(v.x), ty(v.y), tz(v.z) {}

    /// Component i of 0 to 2; no bounds check.
    float& operator()(int i) { return i == 0 ? tx : i == 1 ? ty : tz; }
    /// @overload
    const float& operator()(int i) const { return i == 0 ? tx : i == 1 ? ty : tz; }

    /// Divides by the Euclidean norm; a zero translation is unchanged. The norm is computed in float:
    /// components below 1e-23 count as zero, components above 1e19 give zeros.
    void normalize();
    /// A normalised copy.
    static Translation normalize(const Translation& translation);

    /// This translation rotated by q: v' = q v q*, by Hamilton products. If q does not have unit length, the
    /// result is scaled by its squared norm.
    Translation operator*(const Orientation& q) const;
};

/// Writes "(tx, ty, tz)", each number as the stream formats floats.
std::ostream& operator<<(std::ostream& stream, const Translation& translation);

}  // namespace vela

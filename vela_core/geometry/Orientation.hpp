// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Translation.hpp"
#include "vela_core/types/Vector.hpp"

#include <iosfwd>

namespace vela VELA_API {

/// A rotation as a quaternion, vector part first: x, y, z, w. The identity by default.
class Orientation {
public:
    float ox = 0.0F;  ///< x of the vector part
    float oy = 0.0F;  ///< y of the vector part
    float oz = 0.0F;  ///< z of the vector part
    float ow = 1.0F;  ///< scalar part

    /// The identity.
    Orientation() = default;
    /// Takes x, y, z, w as they are.
    Orientation(const Vector4<float>& v) : ox(v.x), oy(v.y), oz(v.z), ow(v.w) {}
    /// `setRotationMatrix(rotation)`.
    Orientation(const Rotation& rotation);
    /// The rotation that turns direction `from` into direction `to` about their cross product. For opposite
    /// directions this axis is undefined: the result is then close to (0, 0, 0, 0). The cosine is not
    /// clamped, so rounding may give NaN for parallel directions. The directions need not have unit length.
    Orientation(const Translation& from, const Translation& to);

    /// Component i of 0 to 3; no bounds check.
    float& operator()(int i) { return i == 0 ? ox : i == 1 ? oy : i == 2 ? oz : ow; }
    /// @overload
    const float& operator()(int i) const { return i == 0 ? ox : i == 1 ? oy : i == 2 ? oz : ow; }

    /// Sets (0, 0, 0, 1).
    void setIdentity() { *this = identity(); }
    /// Sets (0, 0, 0, 0).
    void setZeros() { *this = zeros(); }
    /// (0, 0, 0, 1).
    static Orientation identity() { return Orientation(); }
    /// (0, 0, 0, 0).
    static Orientation zeros() { return Orientation(Vector4<float>()); }

    /// The quaternion of a rotation matrix, w >= 0: w = sqrt(1 + R00 + R11 + R22) / 2, x = sqrt(1 + R00 - R11
    /// - R22) / 2 and so on, a negative sum counting as 0, with the sign bits of R21 - R12, R02 - R20 and R10
    /// - R01 (Bar-Itzhack's conversion by copied signs). The result is not normalised. For half turns these
    /// differences are 0, so no component is negative: if the axis has components of both signs, as for
    /// (-1 0 0; 0 0 -1; 0 -1 0), the quaternion is not the one of the matrix.
    void setRotationMatrix(const Rotation& rotation);
    /// The same as `setRotationMatrix`.
    void setRotation(const Rotation& rotation) { setRotationMatrix(rotation); }

    /// The rotation matrix of this quaternion divided by its norm: the homogeneous form of the
    /// Euler-Rodrigues formula, times 1 / (x^2 + y^2 + z^2 + w^2). The zero quaternion gives NaNs; squares of
    /// components below 1e-19 underflow, above 1e19 they overflow.
    Rotation getRotationMatrix() const;
    /// The same as `getRotationMatrix`.
    Rotation getRotation() const { return getRotationMatrix(); }

    /// Hamilton product: the rotation by `b`, then by this.
    Orientation operator*(const Orientation& b) const;

    /// Divides by the Euclidean norm; a zero quaternion is unchanged. The norm is computed in float:
    /// components below 1e-23 count as zero, components above 1e19 give zeros.
    void normalise();
};

inline Rotation Orientation::getRotationMatrix() const {
    const float x = ox;
    const float y = oy;
    const float z = oz;
    const float w = ow;
    const float n = 1.0F / (x * x + y * y + z * z + w * w);
    const float values[9] = {(x * x - y * y - z * z + w * w) * n,
                             2 * (x * y - z * w) * n,
                             2 * (x * z + y * w) * n,
                             2 * (x * y + z * w) * n,
                             (-x * x + y * y - z * z + w * w) * n,
                             2 * (y * z - x * w) * n,
                             2 * (x * z - y * w) * n,
                             2 * (y * z + x * w) * n,
                             (-x * x - y * y + z * z + w * w) * n};
    return Matrix3f(values);
}

/// Writes "(ox, oy, oz, ow)", each number as the stream formats floats.
std::ostream& operator<<(std::ostream& stream, const Orientation& orientation);

}  // namespace vela

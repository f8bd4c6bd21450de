// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela VELA_API {

class Orientation;
class Translation;

/// A rotation matrix; the identity by default.
class Rotation : public Matrix3f {
public:
    /// The identity.
    Rotation() = default;
    /// Takes the nine numbers as they are.
    Rotation(const Matrix3f& matrix) : Matrix3f(matrix) {}
    /// `setOrientation(orientation)`.
    Rotation(const Orientation& orientation);
    /// The rotation by `angle` (radians) about `axis`, which need not have unit length (Rodrigues' formula).
    Rotation(float angle, const Translation& axis);

    /// The rotation vector: its direction is the axis, its norm the angle in radians (by `cv::Rodrigues`).
    Vector3<float> getRotationVector() const;
    /// Sets the rotation about the vector's direction by its norm, in radians.
    void setRotationVector(const Vector3<float>& vector);

    /// The quaternion of this rotation, x, y, z, w.
    Orientation getOrientation() const;
    /// Sets the rotation of a quaternion, which need not have unit length.
    void setOrientation(const Orientation& orientation);

    /// Angles (rx, ry, rz) about X, Y and Z with R = Ry(ry) Rz(rz) Rx(rx), in radians, or in degrees when
    /// `radian` is false. They are computed from the quaternion (x, y, z, w): test = x*y + z*w is half of
    /// sin(rz), so rz is asin(2 test). Where |test| exceeds 0.499, from 86.38 degrees on, only ry -+ rx can
    /// be determined: then rx is 0, rz is +-90 degrees and ry is +-2 atan2(x, w).
    Vector3<float> getEulerAngles(bool radian = true) const;
    /// Sets the rotation from such angles.
    void setEulerAngles(const Vector3<float>& angles, bool radian = true);
};

}  // namespace vela

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
    Rotation() = default;
    /// Takes the nine numbers as they are.
    Rotation(const Matrix3f& matrix) : Matrix3f(matrix) {}
    /// `setOrientation(orientation)`.
    Rotation(const Orientation& orientation);
    /// The rotation by `angle` (radians) about `axis`, which need not be of unit length (Rodrigues' formula).
    Rotation(float angle, const Translation& axis);

    /// The rotation vector: direction of the axis, norm of the angle in radians (OpenCV's `cv::Rodrigues`).
    Vector3<float> getRotationVector() const;
    /// The rotation by the vector's norm, in radians, about its direction.
    void setRotationVector(const Vector3<float>& vector);

    /// The quaternion of this rotation, x, y, z, w.
    Orientation getOrientation() const;
    /// The rotation of a quaternion, which need not be of unit length.
    void setOrientation(const Orientation& orientation);

    /// Angles (rx, ry, rz) about X, Y and Z with R = Ry(ry) Rz(rz) Rx(rx), in radians, or in degrees when
    /// `radian` is false. They are read from the quaternion (x, y, z, w): with test = x*y + z*w, half of
    /// sin(rz), rz is asin(2 test). Where |test| exceeds 0.499, that is from 86.38 degrees on, only ry -+ rx
    /// is known: rx is 0, rz is +-90 degrees, ry is +-2 atan2(x, w).
    Vector3<float> getEulerAngles(bool radian = true) const;
    /// The rotation of such angles.
    void setEulerAngles(const Vector3<float>& angles, bool radian = true);
};

}  // namespace vela

#pragma once

#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela {

class Orientation;
class Translation;

/// A rotation matrix; the identity by default.
class Rotation : public Matrix3f {
public:
    Rotation() = default;
    Rotation(const Matrix3f& matrix) : Matrix3f(matrix) {}
    /// `setOrientation(orientation)`.
    Rotation(const Orientation& orientation);
    /// The rotation by `angle` (radians) about `axis`, which need not be of unit length (Rodrigues' formula).
    Rotation(float angle, const Translation& axis);

    /// The rotation vector: direction of the axis, norm of the angle in radians (OpenCV's `cv::Rodrigues`).
    Vector3<float> getRotationVector() const;
    void setRotationVector(const Vector3<float>& vector);

    /// The quaternion of this rotation, x, y, z, w.
    Orientation getOrientation() const;
    /// The rotation of a quaternion, which need not be of unit length.
    void setOrientation(const Orientation& orientation);

    /// Angles (rx, ry, rz) about X, Y and Z with R = Ry(ry) Rz(rz) Rx(rx), in radians, or in degrees when
    /// `radian` is false. Near rz = +-90 degrees, where only ry -+ rx is known, rx is 0.
    Vector3<float> getEulerAngles(bool radian = true) const;
    void setEulerAngles(const Vector3<float>& angles, bool radian = true);
};

}  // namespace vela

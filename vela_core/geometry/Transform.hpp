// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/geometry/Orientation.hpp"
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Translation.hpp"

namespace vela VELA_API {

/// A rigid motion: rotation in the upper-left 3 x 3 block, translation in column 3; the identity by default.
/// Setting one part leaves the other and row 3 as they are.
class Transform : public Matrix4f {
public:
    Transform() = default;
    Transform(const Matrix4f& matrix) : Matrix4f(matrix) {}
    /// Row 3 is (0, 0, 0, 1).
    Transform(const Rotation& rotation, const Translation& translation);
    Transform(const Orientation& orientation, const Translation& translation);

    using Matrix4f::operator*;
    /// The point moved by this transform: rotation times point, plus translation. Row 3 is not looked at.
    Vector3<float> operator*(const Vector3<float>& point) const;

    /// @name Parts
    /// @{
    void setRotationMatrix(const Rotation& rotation);
    void setRotation(const Rotation& rotation) { setRotationMatrix(rotation); }
    Rotation getRotationMatrix() const;
    Rotation getRotation() const { return getRotationMatrix(); }

    void setTranslation(const Translation& translation);
    Translation getTranslation() const;

    void setOrientation(const Orientation& orientation);
    Orientation getOrientation() const;

    /// As `Rotation::getRotationVector` and `setRotationVector`.
    Vector3<float> getRotationVector() const;
    void setRotationVector(const Vector3<float>& vector);

    /// As `Rotation::getEulerAngles` and `setEulerAngles`.
    Vector3<float> getEulerAngles(bool radian = true) const;
    void setEulerAngles(const Vector3<float>& angles, bool radian = true);
    /// @}
};

}  // namespace vela

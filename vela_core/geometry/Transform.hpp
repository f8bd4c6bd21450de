// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/geometry/Orientation.hpp"
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Translation.hpp"

namespace vela VELA_API {

/// A rigid motion: rotation in the upper-left 3 x 3 block, translation in column 3; the identity by default.
/// Setting one part leaves the other and row 3 unchanged.
class Transform : public Matrix4f {
public:
    /// The identity.
    Transform() = default;
    /// Takes the sixteen numbers as they are.
    Transform(const Matrix4f& matrix) : Matrix4f(matrix) {}
    /// Rotation and translation; row 3 is (0, 0, 0, 1).
    Transform(const Rotation& rotation, const Translation& translation);
    /// @overload
    Transform(const Orientation& orientation, const Translation& translation);

    using Matrix4f::operator*;
    /// The point moved by this transform: rotation times point, plus translation. Row 3 is ignored.
    Vector3<float> operator*(const Vector3<float>& point) const;

    /// @name Rotation
    /// @{

    /// The upper-left 3 x 3 block, in the forms of the members of `Rotation` with the same names.
    void setRotationMatrix(const Rotation& rotation);
    void setRotation(const Rotation& rotation) { setRotationMatrix(rotation); }
    Rotation getRotationMatrix() const;
    Rotation getRotation() const { return getRotationMatrix(); }

    void setOrientation(const Orientation& orientation);
    Orientation getOrientation() const;
    Vector3<float> getRotationVector() const;
    void setRotationVector(const Vector3<float>& vector);
    Vector3<float> getEulerAngles(bool radian = true) const;
    void setEulerAngles(const Vector3<float>& angles, bool radian = true);
    /// @}

    /// @name Translation
    /// @{

    /// Column 3 of rows 0 to 2.
    void setTranslation(const Translation& translation);
    Translation getTranslation() const;
    /// @}
};

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Transform.hpp"

#include <iosfwd>

namespace vela VELA_API {

/// A rigid motion with time stamp and confidence. The members that copies leave out are for the producer's
/// use: the library neither computes nor converts them. Their units and orders are this library's convention.
class Pose {
public:
    Transform transform;               ///< the identity by default
    unsigned long long timestamp = 0;  ///< nanoseconds
    int confidence = 0;                ///< 0 (none) to 100 (certain)
    /// 6 x 6, row-major, in the order translation x, y, z, then rotation about x, y, z; in squares and
    /// products of the unit of `transform` and radians. Not copied.
    float pose_covariance[36] = {};
    /// Linear velocity x, y, z in the unit of `transform` per second, then angular velocity about x, y, z in
    /// radians per second. Not copied.
    float twist[6] = {};
    bool valid = false;  ///< only the producer of the pose sets it

    /// Identity, time stamp 0, confidence 0, not valid.
    Pose() = default;
    /// Copies transform, time stamp, confidence and validity; the other members get their initial values.
    Pose(const Pose& other);
    /// Assigns the same members and resets the others.
    Pose& operator=(const Pose& other);
    /// A pose that is not yet valid.
    Pose(const Transform& transform, unsigned long long timestamp, int confidence);
    /// Leaves behind an identity transform and `valid` false.
    ~Pose();

    /// @name Parts of the transform
    /// @{

    /// The same as the member of `Transform` with this name.
    Orientation getOrientation() const { return transform.getOrientation(); }
    Translation getTranslation() const { return transform.getTranslation(); }
    Rotation getRotationMatrix() const { return transform.getRotationMatrix(); }
    Rotation getRotation() const { return transform.getRotation(); }
    Vector3<float> getRotationVector() const { return transform.getRotationVector(); }
    Vector3<float> getEulerAngles(bool radian = true) const { return transform.getEulerAngles(radian); }
    /// @}
};

/// Writes transform, time stamp, confidence and validity: "[...] at 5 ns, confidence 80, valid".
std::ostream& operator<<(std::ostream& stream, const Pose& pose);

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Transform.hpp"

#include <iosfwd>

namespace vela VELA_API {

/// A rigid motion stamped with time and confidence.
class Pose {
public:
    Transform transform;               ///< the identity by default
    unsigned long long timestamp = 0;  ///< nanoseconds
    int confidence = 0;                ///< 0 to 100
    float pose_covariance[36] = {};    ///< 6 x 6, row-major: translation, then rotation; not copied
    float twist[6] = {};               ///< linear, then angular velocity; not copied
    bool valid = false;                ///< set by the producer of the pose only

    Pose() = default;
    /// Copies transform, time stamp, confidence and validity; the other members have their initial values.
    Pose(const Pose& other);
    Pose& operator=(const Pose& other);
    /// A pose that is not valid yet.
    Pose(const Transform& transform, unsigned long long timestamp, int confidence);
    /// Leaves an identity transform that is not valid behind.
    ~Pose();

    /// @name Parts of the transform
    /// @{
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

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Transform.hpp"

namespace vela {

Transform::Transform(const Rotation& rotation, const Translation& translation) {
    setRotationMatrix(rotation);
    setTranslation(translation);
}

Transform::Transform(const Orientation& orientation, const Translation& translation)
    : Transform(orientation.getRotation(), translation) {}

Vector3<float> Transform::operator*(const Vector3<float>& p) const {
    return {m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3], m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
            m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]};
}

void Transform::setRotationMatrix(const Rotation& rotation) {
    setSubMatrix3f(rotation, 0, 0);
}

Rotation Transform::getRotationMatrix() const {
    const float values[9] = {m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]};
    return Matrix3f(values);
}

void Transform::setTranslation(const Translation& translation) {
    setSubVector3f({translation.tx, translation.ty, translation.tz}, 3);
}

Translation Transform::getTranslation() const {
    return {m[3], m[7], m[11]};
}

void Transform::setOrientation(const Orientation& orientation) {
    setRotation(orientation.getRotation());
}

Orientation Transform::getOrientation() const {
    return getRotation().getOrientation();
}

Vector3<float> Transform::getEulerAngles(bool radian) const {
    return getRotation().getEulerAngles(radian);
}

void Transform::setEulerAngles(const Vector3<float>& angles, bool radian) {
    Rotation rotation;
    rotation.setEulerAngles(angles, radian);
    setRotation(rotation);
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/heading.hpp"

#include <Eigen/Geometry>

#include <cmath>

namespace vela {
namespace {

using Matrix3 = Eigen::Matrix<float, 3, 3, Eigen::RowMajor>;

/// Y component of the forward axis above which it is too steep to give the heading.
constexpr float STEEP = 0.8F;

/// The yaw of a rotation: the rotation about the Y axis of the IMAGE frame that faces the same way.
Matrix3 extractYawRotationEx(const Matrix3& rotation) {
    const Eigen::Vector3f forward = rotation.col(2);
    Eigen::Vector3f heading = forward;
    if (std::abs(forward.y()) > STEEP) {
        // Looking down, the camera's down axis points backwards; looking up, it points ahead.
        heading = forward.y() >= 0.0F ? Eigen::Vector3f(-rotation.col(1)) : Eigen::Vector3f(rotation.col(1));
    }
    heading.y() = 0.0F;
    const float length = heading.norm();
    if (!(length > 0.0F)) return Matrix3::Identity();  // unreachable for a rotation matrix
    heading /= length;
    Matrix3 yaw;
    yaw << heading.z(), 0.0F, heading.x(),  //
        0.0F, 1.0F, 0.0F,                   //
        -heading.x(), 0.0F, heading.z();
    return yaw;
}

}  // namespace

ERROR_CODE removeYaw(Transform& transform, COORDINATE_SYSTEM system) {
    // Only the rotation: 0 times an infinite translation would turn it into NaNs.
    Transform inImage(transform.getRotationMatrix(), Translation());
    const ERROR_CODE status = convertCoordinateSystem(inImage, system, COORDINATE_SYSTEM::IMAGE);
    if (status != ERROR_CODE::SUCCESS) return status;

    Rotation rotation = inImage.getRotationMatrix();
    Eigen::Map<Matrix3> block(rotation.m);
    const Matrix3 wanted = extractYawRotationEx(Matrix3::Identity());
    const Matrix3 level = wanted * extractYawRotationEx(block).transpose() * block;
    block = level;

    inImage.setRotationMatrix(rotation);
    convertCoordinateSystem(inImage, COORDINATE_SYSTEM::IMAGE, system);
    transform.setRotationMatrix(inImage.getRotationMatrix());
    return ERROR_CODE::SUCCESS;
}

Rotation computeRotationMatrixFromGravity(Vector3<float> gravity, Vector3<float> reference) {
    const Eigen::Vector3f g(gravity.x, gravity.y, gravity.z);
    const Eigen::Vector3f ref(reference.x, reference.y, reference.z);
    const Eigen::Vector3f u = g / g.norm();
    const Eigen::Vector3f v = u.cross(ref);
    const float k = (1.0F - u.dot(ref)) / v.squaredNorm();
    const float values[9] = {1.0F - k * (v.y() * v.y() + v.z() * v.z()),
                             v.z() + k * v.x() * v.y(),
                             -v.y() + k * v.x() * v.z(),
                             -v.z() + k * v.x() * v.y(),
                             1.0F - k * (v.x() * v.x() + v.z() * v.z()),
                             v.x() + k * v.y() * v.z(),
                             v.y() + k * v.x() * v.z(),
                             -v.x() + k * v.y() * v.z(),
                             1.0F - k * (v.x() * v.x() + v.y() * v.y())};
    return Matrix3f(values);
}

}  // namespace vela

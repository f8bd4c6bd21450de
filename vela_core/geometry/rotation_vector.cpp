// SPDX-License-Identifier: Apache-2.0
// Apart from the rest of Rotation and Transform, so that programs without rotation vectors need no OpenCV.
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Transform.hpp"

#include <opencv2/calib3d.hpp>

namespace vela {

Vector3<float> Rotation::getRotationVector() const {
    Rotation copy(*this);
    const cv::Mat matrix(3, 3, CV_32FC1, copy.m);
    Vector3<float> vector;
    cv::Mat result(3, 1, CV_32FC1, &vector);
    cv::Rodrigues(matrix, result);
    return vector;
}

void Rotation::setRotationVector(const Vector3<float>& vector) {
    Vector3<float> copy(vector);
    const cv::Mat source(3, 1, CV_32FC1, &copy);
    cv::Mat result(3, 3, CV_32FC1, m);
    cv::Rodrigues(source, result);
}

Vector3<float> Transform::getRotationVector() const {
    return getRotation().getRotationVector();
}

void Transform::setRotationVector(const Vector3<float>& vector) {
    Rotation rotation;
    rotation.setRotationVector(vector);
    setRotation(rotation);
}

}  // namespace vela

// Apart from the rest of Rotation, so that programs that use no rotation vectors do not need OpenCV.
#include "vela_core/geometry/Rotation.hpp"

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

}  // namespace vela

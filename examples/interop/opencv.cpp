// SPDX-License-Identifier: Apache-2.0
// Draws into a Mat with OpenCV, then hands the Mat's buffer to OpenCV for good.
#include <vela_core/vela.hpp>
#include <vela_interop/opencv.hpp>

#include <cstdio>
#include <utility>

static cv::Mat makePicture() {
    vela::Mat picture(4, 3, vela::MAT_TYPE::MAT_8U_C3);
    picture.setTo(vela::Vector3<unsigned char>(0, 0, 0));
    cv::Mat view = vela::interop::viewAsCv(picture);
    view.row(1).setTo(cv::Scalar(0, 0, 255));            // blue, green, red in both
    return vela::interop::moveToCv(std::move(picture));  // view and result share the buffer
}

int main() {
    cv::Mat picture = makePicture();
    vela::Mat mat = vela::interop::viewOfCv(picture);
    vela::Vector3<unsigned char> pixel;
    mat.getValue(2, 1, &pixel);
    std::printf("%d x %d, red is %d\n", picture.cols, picture.rows, pixel.z);
}

// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/mats.hpp"

#include "vela_io/detail/Failure.hpp"

#include <string>
#include <utility>

namespace vela::io::detail {

void requireHostSide(const Mat& mat, const char* what) {
    const std::size_t pixelBytes = getPixelBytes(mat.dataType);
    if (!mat.isInit) refuse(std::string(what) + " is an empty Mat");
    if (mat.ptrCPU == nullptr) refuse(std::string(what) + " has no host side");
    if (pixelBytes == 0) refuse(std::string(what) + " has an unknown pixel type");
    if (mat.height > 1 && mat.stepBytesCPU < mat.width * pixelBytes) {
        refuse(std::string(what) + " has rows that overlap");
    }
}

Mat newMat(std::size_t width, std::size_t height, MAT_TYPE type) {
    Mat mat;
    mat.alloc(width, height, type, MEM::CPU);
    return mat;
}

void deliver(Mat& from, Mat& to) {
    to = std::move(from);
}

}  // namespace vela::io::detail

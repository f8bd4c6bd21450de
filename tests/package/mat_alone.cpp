// SPDX-License-Identifier: Apache-2.0
// Uses what needs no OpenCV, and, built with FILES, a file too.
#include <vela_core/vela.hpp>

int main() {
    vela::Mat mat(4, 2, vela::MAT_TYPE::MAT_8U_C1);
    vela::Mat copy;
    if (mat.copyTo(copy) != vela::ERROR_CODE::SUCCESS) return 1;
    if (!savePointCloudAs(copy, POINT_CLOUD_FORMAT::XYZ, "/dev/null", false)) return 0;
#ifdef FILES
    return mat.read("/") == vela::ERROR_CODE::FAILURE ? 0 : 1;
#endif
    return 0;
}

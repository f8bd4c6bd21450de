// SPDX-License-Identifier: Apache-2.0
// Uses functions that need no OpenCV and, when built with FILES, one that does; with IO, one of vela::io.
// Copies nothing, so it needs no driver.
#include <vela_core/vela.hpp>
#ifdef IO
#include <vela_io/io.hpp>
#endif

#include <cstdio>

int main() {
    vela::Mat cloud(4, 2, vela::MAT_TYPE::MAT_32F_C4);
    if (cloud.setTo(vela::Vector4<float>(1, 2, 3, 0)) != vela::ERROR_CODE::SUCCESS) return 1;
    if (!savePointCloudAs(cloud, XYZ, "mat_alone", false)) return 2;
    std::remove("mat_alone.xyz");
#ifdef FILES
    if (cloud.read("/") != vela::ERROR_CODE::FAILURE) return 3;
#endif
#ifdef IO
    if (vela::io::readDepth("/", cloud).ok()) return 4;
#endif
    return 0;
}

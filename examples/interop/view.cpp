// SPDX-License-Identifier: Apache-2.0
// Counts the valid points of a part of a cloud.
#include <vela_core/vela.hpp>
#include <vela_interop/view.hpp>

#include <cmath>
#include <cstdio>

int main() {
    using Point = vela::Vector4<float>;
    vela::Mat cloud(64, 48, vela::MAT_TYPE::MAT_32F_C4);
    cloud.setTo(Point(0, 0, 1, 0));
    cloud.setValue(30, 20, Point(NAN, NAN, NAN, 0));
    // Ten by ten points from column 25 of row 15 on, without a copy.
    vela::Mat part(10, 10, cloud.dataType,
                   reinterpret_cast<unsigned char*>(cloud.getPtr<Point>() + 15 * 64 + 25), cloud.stepBytesCPU,
                   vela::MEM::CPU);

    int valid = 0;
    if (const auto points = vela::interop::hostView<Point>(part)) {
        for (std::size_t y = 0; y < points.height(); ++y) {
            for (const auto* p = points.begin(y); p != points.end(y); ++p)
                valid += std::isfinite(p->z) ? 1 : 0;
        }
    }
    std::printf("%d of 100 points are valid\n", valid);
}

// SPDX-License-Identifier: Apache-2.0
// OpenCV's threads convert one large cloud: cv::parallel_for_ hands out bands of rows.
#include <vela_core/vela.hpp>

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdio>

using namespace vela;

int main() {
    Mat cloud(1280, 720, MAT_TYPE::MAT_32F_C4);
    cloud.setTo(Vector4<float>(1000, 2000, 4000, 0));
    cv::parallel_for_(cv::Range(0, static_cast<int>(cloud.height)), [&](const cv::Range& range) {
        unsigned char* const rows = cloud.ptrCPU + static_cast<std::size_t>(range.start) * cloud.stepBytesCPU;
        Mat band(cloud.width, static_cast<std::size_t>(range.size()), cloud.dataType, rows,
                 cloud.stepBytesCPU, MEM::CPU);
        convertUnit(band, UNIT::MILLIMETER, UNIT::METER, MEM::CPU);
    });

    const auto* const points = cloud.getPtr<Vector4<float>>();
    const auto isConverted = [](const Vector4<float>& point) { return point == Vector4<float>(1, 2, 4, 0); };
    std::printf("%zd points in metres\n", std::count_if(points, points + 1280 * 720, isConverted));
}

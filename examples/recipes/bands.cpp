// SPDX-License-Identifier: Apache-2.0
// Several threads convert one large cloud: each gets a Mat that refers to a band of its rows.
#include <vela_core/vela.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <thread>
#include <vector>

using namespace vela;

/// Calls work(band) on `count` threads; the bands are the rows of `mat`, from the first to the last.
template <class Work>
void forEachBand(Mat& mat, std::size_t count, Work work) {
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t first = mat.height * i / count;
        const std::size_t last = mat.height * (i + 1) / count;
        unsigned char* const rows = mat.ptrCPU + first * mat.stepBytesCPU;
        threads.emplace_back([=, &mat] {
            Mat band(mat.width, last - first, mat.dataType, rows, mat.stepBytesCPU, MEM::CPU);
            work(band);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

int main() {
    Mat cloud(1280, 720, MAT_TYPE::MAT_32F_C4);
    cloud.setTo(Vector4<float>(1000, 2000, 4000, 0));
    const std::size_t threads = std::max(1U, std::thread::hardware_concurrency());
    forEachBand(cloud, threads,
                [](Mat& band) { convertUnit(band, UNIT::MILLIMETER, UNIT::METER, MEM::CPU); });

    const auto* const points = cloud.getPtr<Vector4<float>>();
    const auto isConverted = [](const Vector4<float>& point) { return point == Vector4<float>(1, 2, 4, 0); };
    std::printf("%zd points in metres\n", std::count_if(points, points + 1280 * 720, isConverted));
}

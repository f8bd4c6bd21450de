// SPDX-License-Identifier: Apache-2.0
// The peak memory of operations, beyond their inputs.
#include "support/children.hpp"
#include "support/files.hpp"
#include "support/scene.hpp"

#include <vela_core/vela.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::HD;

void measureAll() {
    const std::vector<float> points = bench::makeCloud(HD, bench::INVALID_SHARE, bench::Lane::NORMAL);
    Mat cloud(HD, MAT_TYPE::MAT_32F_C4);
    std::copy(points.begin(), points.end(), cloud.getPtr<float>());
    Mat depth(HD, MAT_TYPE::MAT_32F_C1);
    depth.setTo(1.5F);
    Mat kept(HD, MAT_TYPE::MAT_32F_C4);
    kept.setTo(Vector4<float>());
    const bench::ScratchFolder folder(bench::memoryFolder());
    const String path = (folder / "file").c_str();

    const struct {
        const char* name;
        std::function<void()> work;
    } operations[] = {
        {"clone/32F_C4",
         [&] {
             Mat copy;
             copy.clone(cloud);
         }},
        {"copyTo a kept Mat/32F_C4", [&] { cloud.copyTo(kept); }},
        {"convertUnit/32F_C4", [&] { convertUnit(cloud, UNIT::METER, UNIT::INCH, MEM::CPU); }},
        {"convertCoordinateSystem/32F_C4",
         [&] {
             convertCoordinateSystem(cloud, COORDINATE_SYSTEM::IMAGE,
                                     COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD, MEM::CPU);
         }},
        {"savePointCloudAs/PLY", [&] { savePointCloudAs(cloud, PLY, path, true); }},
        {"savePointCloudAs/VTK", [&] { savePointCloudAs(cloud, VTK, path, true); }},
        {"saveDepthAs/PFM", [&] { saveDepthAs(depth, PFM, path, 1); }},
        {"saveDepthAs/PNG", [&] { saveDepthAs(depth, PNG, path, 1000); }},
    };
    std::printf("%-34s %s\n", "operation at 1280x720", "MB held at most, above its inputs");
    for (const auto& operation : operations) {
        const double megabytes = static_cast<double>(bench::peakMemoryOf(operation.work)) / 1e6;
        std::printf("%-34s %.2f\n", operation.name, megabytes);
    }
}

}  // namespace

int main() {
    try {
        measureAll();
        return 0;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "memory: %s\n", exception.what());
        return 1;
    }
}

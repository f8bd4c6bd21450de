// SPDX-License-Identifier: Apache-2.0
// Writes small clouds of every kind into the given folder, by vela::io and by the core's exporters.
#include "tests/support/cloud_kinds.hpp"
#include "vela_core/vela.hpp"
#include "vela_io/io.hpp"

#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

namespace {

using namespace vela;
using namespace vela::io;

constexpr std::size_t WIDTH = 3;
constexpr std::size_t HEIGHT = 2;

/// Coloured, with one point that is not finite.
Mat makeCloud() {
    Mat cloud(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C4);
    for (std::size_t i = 0; i < WIDTH * HEIGHT; ++i) {
        const float xyz[] = {static_cast<float>(i) - 2.5F, 1e-7F * static_cast<float>(i), 1234.5F};
        const unsigned char color[] = {static_cast<unsigned char>(40 * i), 0, 255, 255};
        std::memcpy(cloud.ptrCPU + 16 * i, xyz, sizeof xyz);
        std::memcpy(cloud.ptrCPU + 16 * i + 12, color, sizeof color);
    }
    cloud.getPtr<float>()[4] = std::numeric_limits<float>::quiet_NaN();
    return cloud;
}

bool writeOurs(Mat& cloud, const std::string& folder) {
    Mat normals(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C3);
    normals.setTo(Vector3<float>(0, -0.6F, 0.8F));
    bool written = true;
    for (const test::CloudKind& kind : test::CLOUD_KINDS) {
        CloudOptions options;
        options.encoding = kind.encoding;
        written = written && writeCloud(cloud, folder + "/plain_" + kind.name, options).ok();
        options.normals = &normals;
        options.alpha = options.keepGrid = true;
        options.unit = UNIT::METER;
        options.axes = COORDINATE_SYSTEM::IMAGE;
        written = written && writeCloud(cloud, folder + "/full_" + kind.name, options).ok();
    }
    for (const POINT_CLOUD_FORMAT format : {PLY, PCD, VTK, XYZ}) {
        written = written && savePointCloudAs(cloud, format, folder + "/exported", true);
    }
    return written;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: io_cloud_corpus FOLDER\n");
        return 2;
    }
    Mat cloud = makeCloud();
    return writeOurs(cloud, argv[1]) ? 0 : 1;
}

// SPDX-License-Identifier: Apache-2.0
// Writes small clouds of every kind into the folder that it is given: ours, those of the core's exporters
// and, where PCL is installed, PCL's.
#include "vela_core/vela.hpp"
#include "vela_io/io.hpp"

#ifdef VELA_HAS_PCL
#include <pcl/io/pcd_io.h>
#include <pcl/io/ply_io.h>
#include <pcl/point_types.h>
#endif

#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

namespace {

using namespace vela;
using namespace vela::io;

constexpr std::size_t WIDTH = 3;
constexpr std::size_t HEIGHT = 2;

/// Colours, and one point that is not finite.
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
    for (const ENCODING encoding :
         {ENCODING::ASCII, ENCODING::BINARY, ENCODING::BINARY_BIG_ENDIAN, ENCODING::BINARY_COMPRESSED}) {
        for (const char* const extension : {"ply", "pcd", "vtk", "xyz"}) {
            CloudOptions options;
            options.encoding = encoding;
            const std::string name = folder + "/" + std::to_string(static_cast<int>(encoding));
            const Result plain = writeCloud(cloud, name + "plain." + extension, options);
            if (plain.code == ERROR_CODE::INVALID_FUNCTION_PARAMETERS) continue;  // no such encoding
            options.normals = &normals;
            options.alpha = options.keepGrid = true;
            options.unit = UNIT::METER;
            options.axes = COORDINATE_SYSTEM::IMAGE;
            written = written && plain.ok() && writeCloud(cloud, name + "full." + extension, options).ok();
        }
    }
    for (const POINT_CLOUD_FORMAT format : {PLY, PCD, VTK, XYZ}) {
        written = written && savePointCloudAs(cloud, format, folder + "/exported", true);
    }
    return written;
}

#ifdef VELA_HAS_PCL
bool writeByPcl(const Mat& cloud, const std::string& folder) {
    pcl::PointCloud<pcl::PointXYZRGBNormal> points(WIDTH, HEIGHT);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const float* const xyz = cloud.getPtr<float>() + 4 * i;
        points[i] = pcl::PointXYZRGBNormal(xyz[0], xyz[1], xyz[2], 10, 20, 30, 0, 0, 1);
    }
    return pcl::PLYWriter().write(folder + "/pcl_ascii.ply", points, false) == 0 &&
           pcl::PLYWriter().write(folder + "/pcl_binary.ply", points, true) == 0 &&
           pcl::PCDWriter().writeASCII(folder + "/pcl_ascii.pcd", points) == 0 &&
           pcl::PCDWriter().writeBinary(folder + "/pcl_binary.pcd", points) == 0 &&
           pcl::PCDWriter().writeBinaryCompressed(folder + "/pcl_packed.pcd", points) == 0;
}
#else
bool writeByPcl(const Mat& /*cloud*/, const std::string& /*folder*/) {
    return true;
}
#endif

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: io_cloud_corpus FOLDER\n");
        return 2;
    }
    Mat cloud = makeCloud();
    return writeOurs(cloud, argv[1]) && writeByPcl(cloud, argv[1]) ? 0 : 1;
}

// SPDX-License-Identifier: Apache-2.0
// The Point Cloud Library's half of the exchange: `pcl_files write FOLDER` writes the cloud of that folder's
// arrays in every way that PCL has; `pcl_files read FILE ARRAY` turns what PCL reads from a file into an
// array of x, y, z, packed colour and normal.
#include "vela_io/io.hpp"

#include <pcl/io/pcd_io.h>
#include <pcl/io/ply_io.h>
#include <pcl/point_types.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

using namespace vela;
using Cloud = pcl::PointCloud<pcl::PointXYZRGBNormal>;

bool writeAll(const std::string& folder) {
    Mat points;
    Mat normals;
    if (!io::readNpy(folder + "/cloud.npy", points).ok() ||
        !io::readNpy(folder + "/normals.npy", normals).ok())
        return false;
    Cloud cloud(static_cast<std::uint32_t>(points.width * points.height), 1);
    for (std::size_t i = 0; i < cloud.size(); ++i) {
        const float* const p = points.getPtr<float>() + 4 * i;
        const float* const n = normals.getPtr<float>() + 3 * i;
        std::uint8_t rgb[4];
        std::memcpy(rgb, p + 3, sizeof rgb);
        cloud[i] = pcl::PointXYZRGBNormal(p[0], p[1], p[2], rgb[0], rgb[1], rgb[2], n[0], n[1], n[2]);
    }
    return pcl::PLYWriter().write(folder + "/pcl_ascii.ply", cloud, false) == 0 &&
           pcl::PLYWriter().write(folder + "/pcl_binary.ply", cloud, true) == 0 &&
           pcl::PCDWriter().writeASCII(folder + "/pcl_ascii.pcd", cloud, 9) == 0 &&
           pcl::PCDWriter().writeBinary(folder + "/pcl_binary.pcd", cloud) == 0 &&
           pcl::PCDWriter().writeBinaryCompressed(folder + "/pcl_packed.pcd", cloud) == 0;
}

bool readOne(const std::string& path, const std::string& array) {
    Cloud cloud;
    const bool ply = path.size() > 4 && path.compare(path.size() - 4, 4, ".ply") == 0;
    if ((ply ? pcl::PLYReader().read(path, cloud) : pcl::PCDReader().read(path, cloud)) != 0) return false;
    // Two pixels of four floats a point.
    Mat values(2, cloud.size(), MAT_TYPE::MAT_32F_C4);
    for (std::size_t i = 0; i < cloud.size(); ++i) {
        const auto& p = cloud[i];
        const std::uint8_t rgb[] = {p.r, p.g, p.b, 255};
        float lane = 0;
        std::memcpy(&lane, rgb, sizeof lane);
        const float row[] = {p.x, p.y, p.z, lane, p.normal_x, p.normal_y, p.normal_z, 0};
        std::memcpy(values.getPtr<float>() + 8 * i, row, sizeof row);
    }
    return io::writeNpy(values, array).ok();
}

}  // namespace

int main(int count, char** words) {
    if (count == 3 && std::strcmp(words[1], "write") == 0) return writeAll(words[2]) ? 0 : 1;
    if (count == 4 && std::strcmp(words[1], "read") == 0) return readOne(words[2], words[3]) ? 0 : 1;
    std::fprintf(stderr, "usage: pcl_files write FOLDER | pcl_files read FILE ARRAY\n");
    return 2;
}

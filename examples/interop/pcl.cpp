// SPDX-License-Identifier: Apache-2.0
// Copies a coloured cloud to PCL and back.
#include <pcl/point_cloud.h>
#include <pcl/point_types.h>
#include <vela_core/vela.hpp>
#include <vela_interop/pcl.hpp>
#include <vela_interop/view.hpp>

#include <cstdio>

int main() {
    vela::Mat cloud(320, 240, vela::MAT_TYPE::MAT_32F_C4);
    cloud.setTo(vela::Vector4<float>(1, 2, 3, 0));
    cloud.ptrCPU[12] = 200;  // red of the first point

    pcl::PointCloud<pcl::PointXYZRGB> points;
    if (!vela::interop::toPcl(cloud, points)) return 1;
    std::printf("%u x %u points, red %d\n", points.width, points.height, points(0, 0).r);
    points(0, 0).x = 7;
    if (!vela::interop::fromPcl(points, cloud)) return 1;
    const vela::Mat& read = cloud;
    std::printf("x is %.0f\n",
                static_cast<double>(vela::interop::hostView<const vela::Vector4<float>>(read)(0, 0).x));
}

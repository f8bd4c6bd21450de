// SPDX-License-Identifier: Apache-2.0
// Copies a cloud in millimetres into a ROS message in metres, and checks a damaged message.
// With ROS 2: <sensor_msgs/msg/point_cloud2.hpp> and sensor_msgs::msg::PointCloud2.
#include <sensor_msgs/PointCloud2.h>
#include <vela_core/vela.hpp>
#include <vela_interop/ros.hpp>

#include <cstdio>

int main() {
    vela::Mat cloud(320, 240, vela::MAT_TYPE::MAT_32F_C3);
    cloud.setTo(vela::Vector3<float>(0, 0, 2500));
    if (convertUnit(cloud, vela::UNIT::MILLIMETER, vela::UNIT::METER, vela::MEM::CPU) !=
        vela::ERROR_CODE::SUCCESS)
        return 1;

    sensor_msgs::PointCloud2 message;
    message.header.frame_id = "left_optical";  // the axes of COORDINATE_SYSTEM::IMAGE
    if (!vela::interop::toRosCloud(cloud, message)) return 1;
    std::printf("%u x %u points of %u bytes\n", message.width, message.height, message.point_step);

    message.data.resize(100);
    std::printf("damaged: %s\n", vela::interop::fromRosCloud(message, cloud) ? "taken" : "refused");
}

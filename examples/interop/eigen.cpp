// SPDX-License-Identifier: Apache-2.0
// Moves a cloud by a pose and computes its centre with Eigen.
#include <vela_core/vela.hpp>
#include <vela_interop/eigen.hpp>

#include <cstdio>

int main() {
    vela::Mat cloud(100, 1, vela::MAT_TYPE::MAT_32F_C4);
    for (std::size_t i = 0; i < 100; ++i) {
        cloud.setValue(i, 0, vela::Vector4<float>(static_cast<float>(i), 0, 5, 0));
    }
    vela::Transform pose;
    pose.setTranslation(vela::Translation(0.5F, 2, 0));

    auto points = vela::interop::mapPoints(cloud);
    points = (vela::interop::toEigen(pose) * points).eval();
    const Eigen::Vector3f centre = points.rowwise().mean();
    std::printf("centre %.2f %.2f %.2f\n", centre.x(), centre.y(), centre.z());
}

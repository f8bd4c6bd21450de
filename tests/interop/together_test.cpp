// SPDX-License-Identifier: Apache-2.0
// All headers in one file, twice: they neither clash nor need an order.
#include "vela_interop/dlpack.hpp"
#include "vela_interop/eigen.hpp"
#include "vela_interop/opencv.hpp"
#include "vela_interop/pcl.hpp"
#include "vela_interop/ros.hpp"
#include "vela_interop/view.hpp"
// NOLINTBEGIN(readability-duplicate-include)
#include "vela_interop/dlpack.hpp"
#include "vela_interop/eigen.hpp"
#include "vela_interop/opencv.hpp"
#include "vela_interop/pcl.hpp"
#include "vela_interop/ros.hpp"
#include "vela_interop/view.hpp"
// NOLINTEND(readability-duplicate-include)

#include "support/device.hpp"

#include <gtest/gtest.h>

namespace vela::interop {
namespace {

TEST(Together, OpenCvPixelsReachEigenAndDlpack) {
    if (!test::hasDevice()) GTEST_SKIP() << "copies between host buffers need a CUDA driver";
    cv::Mat depth(3, 4, CV_32F, cv::Scalar(2));
    Mat mat = viewOfCv(depth);
    mapImage(mat).row(1).setConstant(7);
    Mat copy;
    ASSERT_EQ(copy.clone(mat), ERROR_CODE::SUCCESS);
    const DlpackTensor tensor = moveToDlpack(std::move(copy));
    ASSERT_TRUE(tensor);
    EXPECT_EQ(static_cast<const float*>(tensor->dl_tensor.data)[5], 7);
}

}  // namespace
}  // namespace vela::interop

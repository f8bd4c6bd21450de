// SPDX-License-Identifier: Apache-2.0
// What the CUDA flavour does on a machine without a GPU: error lines, FAILURE, no crash.
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_core/utils/Mat.hpp"

#include <string>

namespace vela::test {
namespace {

class NoGpuTest : public testing::Test {
protected:
    void SetUp() override {
        if (hasDevice()) GTEST_SKIP() << "there is a CUDA device";
        int count = 0;
        status_ = cudaGetDeviceCount(&count);
        ASSERT_NE(status_, cudaSuccess);
        cudaGetLastError();
    }

    /// The line that a call prints when it fails for lack of a GPU.
    std::string line(const std::string& signature) const {
        return "in " + signature + " : Err [" + std::to_string(status_) +
               "]: " + cudaGetErrorString(status_) + ".\n";
    }

    cudaError status_ = cudaSuccess;
};

TEST_F(NoGpuTest, OperationsOnTheDevicePrintAndFail) {
    for (const MEM mem : {MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
        Mat mat;
        EXPECT_EQ(printedBy([&] { mat.alloc(4, 2, F4, mem); }),
                  line("void vela::Mat::alloc(size_t, size_t, vela::MAT_TYPE, vela::MEM)"));
        EXPECT_TRUE(mat.isInit && mat.memoryOwner && mat.ptrGPU == nullptr);
    }
    EXPECT_EQ(toVerbose(ERROR_CODE::CUDA_ERROR),
              std::string("A CUDA related error has been caught, data may be corrupted. CUDA Err: ") +
                  cudaGetErrorString(status_));
    Mat host(4, 2, F4);
    Mat copy;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(copy.setFrom(host), BAD); }),
              line("vela::ERROR_CODE vela::Mat::setFrom(const vela::Mat&, vela::COPY_TYPE, cudaStream_t)"));
    const std::string update = line("vela::ERROR_CODE vela::Mat::updateGPUfromCPU(cudaStream_t, int)");
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(host.updateGPUfromCPU(), BAD); }), update + update);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(host.updateCPUfromGPU(), BAD); }),
              line("vela::ERROR_CODE vela::Mat::updateCPUfromGPU(cudaStream_t)"));
}

TEST_F(NoGpuTest, ConversionsDoNothingOnTheDeviceAndWorkOnTheHost) {
    float point[4] = {1, 2, 3, 4};
    Mat mat(1, 1, F4, reinterpret_cast<unsigned char*>(point), sizeof point, MEM::CPU);
    for (const MEM side : {MEM::GPU, MEM::CPU}) {
        EXPECT_EQ(convertUnit(mat, UNIT::METER, UNIT::CENTIMETER, side), OK);
        EXPECT_EQ(point[0], side == MEM::GPU ? 1.0F : 100.0F);
    }
}

}  // namespace
}  // namespace vela::test

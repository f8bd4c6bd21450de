// What the CUDA flavour does on a machine without a GPU: error lines, FAILURE, no crash.
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_core/utils/Mat.hpp"

#include <gtest/gtest.h>

#include <string>

namespace vela::test {
namespace {

constexpr auto C4 = MAT_TYPE::MAT_32F_C4;

class NoGpuTest : public testing::Test {
protected:
    void SetUp() override {
        if (hasDevice()) GTEST_SKIP() << "there is a CUDA device";
        int count = 0;
        status_ = cudaGetDeviceCount(&count);
        ASSERT_NE(status_, cudaSuccess);
        cudaGetLastError();
    }

    /// The line that a call prints which fails for want of a GPU.
    std::string line(const std::string& signature) const {
        return "in " + signature + " : Err [" + std::to_string(status_) +
               "]: " + cudaGetErrorString(status_) + ".\n";
    }

    cudaError status_ = cudaSuccess;
};

const std::string ALLOC = "void vela::Mat::alloc(size_t, size_t, vela::MAT_TYPE, vela::MEM)";
const std::string SET_FROM =
    "vela::ERROR_CODE vela::Mat::setFrom(const vela::Mat&, vela::COPY_TYPE, cudaStream_t)";
const std::string UPDATE_CPU = "vela::ERROR_CODE vela::Mat::updateCPUfromGPU(cudaStream_t)";
const std::string UPDATE_GPU = "vela::ERROR_CODE vela::Mat::updateGPUfromCPU(cudaStream_t, int)";

TEST_F(NoGpuTest, AllocationsPrintAndLeaveNullPointers) {
    for (const MEM mem : {MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
        EXPECT_EQ(printedBy([=] {
                      const Mat mat(4, 2, C4, mem);
                      EXPECT_EQ(mat.ptrGPU, nullptr);
                      EXPECT_TRUE(mat.isInit && mat.memoryOwner);
                  }),
                  line(ALLOC));
    }
}

TEST_F(NoGpuTest, CopiesAndUpdatesFail) {
    Mat host(4, 2, C4);
    EXPECT_EQ(printedBy([&] {
                  Mat copy;
                  EXPECT_EQ(copy.setFrom(host), ERROR_CODE::FAILURE);
              }),
              line(SET_FROM));
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(host.updateGPUfromCPU(), ERROR_CODE::FAILURE); }),
              line(UPDATE_GPU) + line(UPDATE_GPU));
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(host.updateCPUfromGPU(), ERROR_CODE::FAILURE); }), line(UPDATE_CPU));
}

TEST_F(NoGpuTest, ConversionsDoNothingOnTheDeviceAndWorkOnTheHost) {
    float point[4] = {1, 2, 3, 4};
    Mat mat(1, 1, C4, reinterpret_cast<unsigned char*>(point), sizeof point, MEM::CPU);
    constexpr auto to = COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD;
    EXPECT_EQ(convertCoordinateSystem(mat, COORDINATE_SYSTEM::IMAGE, to, MEM::GPU), ERROR_CODE::SUCCESS);
    EXPECT_EQ(convertUnit(mat, UNIT::METER, UNIT::CENTIMETER, MEM::GPU), ERROR_CODE::SUCCESS);
    EXPECT_EQ(point[0], 1.0F);
    EXPECT_EQ(convertCoordinateSystem(mat, COORDINATE_SYSTEM::IMAGE, to, MEM::CPU), ERROR_CODE::SUCCESS);
    EXPECT_EQ(point[1], -2.0F);
}

TEST_F(NoGpuTest, TheTextOfCudaErrorNamesTheReason) {
    printedBy([] { Mat(4, 2, C4, MEM::GPU); });
    EXPECT_EQ(toVerbose(ERROR_CODE::CUDA_ERROR),
              std::string("A CUDA related error has been caught, data may be corrupted. CUDA Err: ") +
                  cudaGetErrorString(status_));
}

}  // namespace
}  // namespace vela::test

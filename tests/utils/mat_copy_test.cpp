#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/types/enum_cast.hpp"
#include "vela_core/utils/Mat.hpp"

#include <gtest/gtest.h>

#include <string>

namespace vela::test {
namespace {

constexpr auto U3 = MAT_TYPE::MAT_8U_C3;
constexpr MEM ALL_SIDES[] = {MEM::CPU, MEM::GPU, MEM_BOTH, MEM_MANAGED};
constexpr COPY_TYPE ALL_COPIES[] = {COPY_TYPE::CPU_CPU, COPY_TYPE::CPU_GPU, COPY_TYPE::GPU_GPU,
                                    COPY_TYPE::GPU_CPU};

class MatCopyTest : public DeviceTest {};

MEM readSide(COPY_TYPE type) {
    return type == COPY_TYPE::CPU_CPU || type == COPY_TYPE::CPU_GPU ? MEM::CPU : MEM::GPU;
}
MEM writtenSide(COPY_TYPE type) {
    return type == COPY_TYPE::CPU_CPU || type == COPY_TYPE::GPU_CPU ? MEM::CPU : MEM::GPU;
}
bool hasSide(MEM mem, MEM side) {
    return mem == side || mem == MEM_BOTH || mem == MEM_MANAGED;
}

std::string copyFailure(const char* signature, int error, const char* text) {
    return std::string("in ") + signature + " : Err [" + std::to_string(error) + "]: " + text + ".\n";
}

constexpr const char* COPY_TO =
    "vela::ERROR_CODE vela::Mat::copyTo(vela::Mat&, vela::COPY_TYPE, cudaStream_t) const";
constexpr const char* UPDATE_CPU = "vela::ERROR_CODE vela::Mat::updateCPUfromGPU(cudaStream_t)";
constexpr const char* UPDATE_GPU = "vela::ERROR_CODE vela::Mat::updateGPUfromCPU(cudaStream_t, int)";

/// Copies between all sides of source and destination, with and without a stream.
TEST_F(MatCopyTest, EveryDirectionBetweenAllSides) {
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    for (const COPY_TYPE type : ALL_COPIES) {
        for (const MEM from : ALL_SIDES) {
            if (!hasSide(from, readSide(type))) continue;
            for (const MEM to : ALL_SIDES) {
                for (const cudaStream_t used : {cudaStream_t{}, stream}) {
                    SCOPED_TRACE(testing::Message()
                                 << toValue(type) << " " << toValue(from) << " " << toValue(to));
                    Mat source = filled(5, 4, U3, from, 1);
                    source.timestamp = 77;
                    Mat destination = filled(5, 4, U3, to, 2);
                    unsigned char* const host = destination.ptrCPU;
                    const bool keeps = hasSide(to, writtenSide(type));
                    EXPECT_EQ(keeps ? source.copyTo(destination, type, used)
                                    : destination.setFrom(source, type, used),
                              ERROR_CODE::SUCCESS);
                    EXPECT_EQ(cudaStreamSynchronize(used), cudaSuccess);
                    EXPECT_EQ(destination.memType, keeps ? to : writtenSide(type));
                    if (keeps) {
                        EXPECT_EQ(destination.ptrCPU, host);
                    }
                    EXPECT_EQ(destination.timestamp, 77U);
                    EXPECT_EQ(load(destination, writtenSide(type)), pattern(60, 1));
                    if (keeps && to == MEM_BOTH) {
                        const MEM other = writtenSide(type) == MEM::CPU ? MEM::GPU : MEM::CPU;
                        EXPECT_EQ(load(destination, other), pattern(60, 2)) << "the other side is left alone";
                    }
                }
            }
        }
    }
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

TEST_F(MatCopyTest, HonoursRowStepsAndLeavesPaddingAlone) {
    Bytes from = pattern(3 * 32, 3);
    Bytes to(3 * 24, 0xEE);
    const Mat source(5, 3, U3, from.data(), 32, MEM::CPU);
    Mat destination(5, 3, U3, to.data(), 24, MEM::CPU);
    EXPECT_EQ(source.copyTo(destination), ERROR_CODE::SUCCESS);
    EXPECT_FALSE(destination.memoryOwner) << "a fitting reference is written through";
    for (std::size_t y = 0; y < 3; ++y) {
        for (std::size_t x = 0; x < 24; ++x) {
            EXPECT_EQ(to[y * 24 + x], x < 15 ? from[y * 32 + x] : 0xEE);
        }
    }
}

TEST_F(MatCopyTest, DestinationsThatDoNotFitBecomeOwners) {
    Bytes memory(64, 0xEE);
    const Mat source = filled(4, 2, U3, MEM_BOTH);
    for (const Mat& wrapped :
         {Mat(4, 3, U3, memory.data(), 12, MEM::CPU), Mat(3, 2, U3, memory.data(), 12, MEM::CPU),
          Mat(4, 2, MAT_TYPE::MAT_8U_C1, memory.data(), 12, MEM::CPU)}) {
        Mat destination(wrapped);
        EXPECT_EQ(source.copyTo(destination), ERROR_CODE::SUCCESS);
        EXPECT_TRUE(destination.memoryOwner);
        EXPECT_EQ(load(destination, MEM::CPU), pattern(24));
    }
    EXPECT_EQ(memory, Bytes(64, 0xEE)) << "the caller's buffer is no longer written";

    Mat shrunk(9, 9, U3, MEM_BOTH);
    EXPECT_EQ(shrunk.setFrom(source, COPY_TYPE::CPU_GPU), ERROR_CODE::SUCCESS);
    EXPECT_EQ(shrunk.memType, MEM::GPU) << "the written side alone is left";
    Mat fresh;
    EXPECT_EQ(source.copyTo(fresh, COPY_TYPE::CPU_GPU), ERROR_CODE::SUCCESS);
    EXPECT_EQ(fresh.memType, MEM::GPU);
    EXPECT_GT(fresh.stepBytesGPU, 12U);
}

TEST_F(MatCopyTest, EmptySourcesMakeEmptyDestinations) {
    Mat destination = filled(4, 2, U3, MEM_BOTH);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(Mat().copyTo(destination), ERROR_CODE::SUCCESS); }), "");
    EXPECT_TRUE(destination.isInit && destination.memoryOwner);
    EXPECT_EQ(destination.width * destination.height, 0U);
}

TEST_F(MatCopyTest, AMissingSourceSideReallocatesAndFails) {
    Mat source = filled(4, 2, U3, MEM::CPU);
    source.timestamp = 5;
    Mat destination = filled(4, 2, U3, MEM::CPU, 2);
    const std::string printed =
        printedBy([&] { EXPECT_EQ(source.copyTo(destination, COPY_TYPE::GPU_CPU), ERROR_CODE::FAILURE); });
    EXPECT_EQ(printed.rfind(std::string("in ") + COPY_TO + " : Err [", 0), 0U) << printed;
    EXPECT_TRUE(destination.memoryOwner && destination.width == 4);
    EXPECT_EQ(destination.timestamp, 5U) << "set before the copy";
}

TEST_F(MatCopyTest, UnknownDirectionsFailOnTheHost) {
    Mat source = filled(4, 2, U3, MEM_BOTH);
    source.timestamp = 6;
    for (const std::int32_t value : {4, -1, 100}) {
        Mat known = filled(4, 2, U3, MEM_BOTH, 2);
        Mat fresh;
        for (Mat* const destination : {&known, &fresh}) {
            const std::string printed = printedBy([&] {
                EXPECT_EQ(source.copyTo(*destination, fromValue<COPY_TYPE>(value)), ERROR_CODE::FAILURE);
            });
            EXPECT_EQ(printed.rfind(std::string("in ") + COPY_TO + " : Err [", 0), 0U) << printed;
            EXPECT_EQ(destination->memType, MEM::CPU);
            EXPECT_EQ(destination->width, 4U);
            EXPECT_EQ(destination->timestamp, 6U);
        }
    }
}

TEST_F(MatCopyTest, UpdatesBringTheSidesInStep) {
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    for (const cudaStream_t used : {cudaStream_t{}, stream}) {
        Mat grows = filled(5, 3, U3, MEM::CPU);
        EXPECT_EQ(grows.updateGPUfromCPU(used), ERROR_CODE::SUCCESS);
        EXPECT_EQ(cudaStreamSynchronize(used), cudaSuccess);
        EXPECT_EQ(grows.memType, MEM_BOTH);
        EXPECT_EQ(grows.stepBytesGPU % 3, 0U);
        EXPECT_EQ(load(grows, MEM::GPU), pattern(45));
        unsigned char* const device = grows.ptrGPU;
        store(grows, MEM::CPU, pattern(45, 2).data());
        EXPECT_EQ(grows.updateGPUfromCPU(used, 3), ERROR_CODE::SUCCESS);
        EXPECT_EQ(cudaStreamSynchronize(used), cudaSuccess);
        EXPECT_EQ(grows.ptrGPU, device) << "the second time it is reused";
        EXPECT_EQ(load(grows, MEM::GPU), pattern(45, 2));

        grows.free(MEM::CPU);
        EXPECT_EQ(grows.updateCPUfromGPU(used), ERROR_CODE::SUCCESS);
        EXPECT_EQ(cudaStreamSynchronize(used), cudaSuccess);
        EXPECT_EQ(grows.memType, MEM_BOTH);
        EXPECT_EQ(grows.stepBytesCPU, 15U) << "0 since the host side was freed";
        EXPECT_EQ(load(grows, MEM::CPU), pattern(45, 2));

        Mat reference(grows);
        store(grows, MEM::GPU, pattern(45, 3).data());
        EXPECT_EQ(reference.updateCPUfromGPU(used), ERROR_CODE::SUCCESS);
        EXPECT_EQ(cudaStreamSynchronize(used), cudaSuccess);
        EXPECT_EQ(load(grows, MEM::CPU), pattern(45, 3)) << "a reference with both sides writes through";
    }
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

TEST_F(MatCopyTest, ManagedMatsAreHandedOver) {
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    Mat managed = filled(5, 3, U3, MEM_MANAGED);
    Mat reference(managed);
    for (Mat* const mat : {&managed, &reference}) {
        EXPECT_EQ(mat->updateGPUfromCPU(stream), ERROR_CODE::SUCCESS);
        EXPECT_EQ(mat->updateCPUfromGPU(stream), ERROR_CODE::SUCCESS);
        EXPECT_EQ(mat->updateCPUfromGPU(), ERROR_CODE::SUCCESS);
    }
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(managed.updateGPUfromCPU(), ERROR_CODE::FAILURE); }),
              copyFailure(UPDATE_GPU, 1, "invalid argument"));
    managed.free();
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(managed.updateCPUfromGPU(), ERROR_CODE::FAILURE); }),
              copyFailure(UPDATE_CPU, 1, "invalid argument"));
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

TEST_F(MatCopyTest, OneSidedReferencesMayNotGrow) {
    LogCapture log;
    for (const MEM mem : {MEM::CPU, MEM::GPU}) {
        const Mat owner = filled(5, 3, U3, mem);
        Mat reference(owner);
        EXPECT_EQ(printedBy([&] {
                      EXPECT_EQ(reference.updateCPUfromGPU(), ERROR_CODE::FAILURE);
                      EXPECT_EQ(reference.updateGPUfromCPU(), ERROR_CODE::FAILURE);
                  }),
                  "");
        EXPECT_EQ(reference.memType, mem);
        EXPECT_EQ(
            log.take(),
            "vela_core/utils/Mat.cpp:844 ERROR [Mat]  updateCPUfromGPU for reference Mat is forbidden.\n"
            "vela_core/utils/Mat.cpp:868 ERROR [Mat]  updateGPUfromCPU for reference Mat is forbidden.\n");
    }
    LogCapture::logger()->set_log_level(quill::LogLevel::Critical);
    EXPECT_EQ(Mat().updateCPUfromGPU(), ERROR_CODE::FAILURE);
    EXPECT_EQ(log.take(), "") << "silent above the error level";
}

TEST_F(MatCopyTest, UpdatingFromAMissingSideFails) {
    Mat cpu = filled(5, 3, U3, MEM::CPU);
    std::string printed = printedBy([&] { EXPECT_EQ(cpu.updateCPUfromGPU(), ERROR_CODE::FAILURE); });
    EXPECT_EQ(printed.rfind(std::string("in ") + UPDATE_CPU + " : Err [", 0), 0U) << printed;
    EXPECT_EQ(load(cpu, MEM::CPU), pattern(45));
    Mat gpu = filled(5, 3, U3, MEM::GPU);
    printed = printedBy([&] { EXPECT_EQ(gpu.updateGPUfromCPU(), ERROR_CODE::FAILURE); });
    EXPECT_EQ(printed.rfind(std::string("in ") + UPDATE_GPU + " : Err [", 0), 0U) << printed;
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
// mat_fault_test and mat_random_test compare lifetime, ownership and copies of Mats with a model; this file
// tests what that model does not cover.
#include "vela_core/utils/Mat.hpp"

#include "support/ModelMat.hpp"
#include "support/capture.hpp"

#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

namespace vela::test {
namespace {

class MatTest : public DeviceTest {
protected:
    /// Expects a Mat without an image, on both sides.
    void expectEmpty(const Mat& mat) {
        ModelMat empty(world_);
        empty.mem = MEM_BOTH;
        expectSame(mat, empty);
    }

    World world_;
    unsigned char host_[64] = {};
    unsigned char device_[64] = {};
};

TEST_F(MatTest, ConstructorsSetEveryField) {
    expectSame(Mat(), ModelMat(world_));
    for (const MEM mem : {MEM::CPU, MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
        ModelMat wanted(world_);
        wanted.alloc(7, 3, U3, mem);
        Mat allocated;
        allocated.alloc({7, 3}, U3, mem);
        expectSame(allocated, wanted);
        expectSame(Mat(7, 3, U3, mem), wanted);
        expectSame(Mat({7, 3}, U3, mem), wanted);
        if (mem == MEM::CPU) expectSame(Mat(7, 3, U3), wanted);
    }
    const std::pair<Mat, std::tuple<MEM, std::size_t, std::size_t, unsigned char*, unsigned char*>>
        references[] = {{Mat(3, 2, U3, host_, 16, MEM::CPU), {MEM::CPU, 16, 0, host_, nullptr}},
                        {Mat({3, 2}, U3, device_, 32, MEM::GPU), {MEM::GPU, 9, 32, nullptr, device_}},
                        {Mat(3, 2, U3, host_, 16, MEM_MANAGED), {MEM_MANAGED, 0, 0, nullptr, nullptr}},
                        {Mat({3, 2}, U3, host_, 16, device_, 32), {MEM_BOTH, 16, 32, host_, device_}}};
    for (const auto& [mat, wanted] : references) {
        EXPECT_EQ(std::tuple(mat.memType, mat.stepBytesCPU, mat.stepBytesGPU, mat.ptrCPU, mat.ptrGPU),
                  wanted);
        EXPECT_TRUE(mat.isInit && !mat.memoryOwner && mat.dataType == U3 && mat.name == "n/a")
            << fieldsOf(mat);
        EXPECT_EQ(std::tuple(mat.width, mat.height, mat.channels, mat.pixelBytes),
                  std::tuple(3U, 2U, 3U, 3U));
    }
    static_assert(std::is_nothrow_move_constructible_v<Mat> && std::is_nothrow_move_assignable_v<Mat>);
}

TEST_F(MatTest, AnAllocationThatFailsLeavesAnEmptyMat) {
    constexpr std::size_t HALF = std::size_t{1} << 32;
    const auto expectRefused = [](std::size_t width, std::size_t height, MAT_TYPE type, MEM mem) {
        Mat mat;
        EXPECT_EQ(printedBy([&] { mat.alloc(width, height, type, mem); }),
                  "in void vela::Mat::alloc(size_t, size_t, vela::MAT_TYPE, vela::MEM) : Err [2]: out of "
                  "memory.\n");
        EXPECT_TRUE(mat.isInit && mat.memoryOwner && mat.ptrCPU == nullptr && mat.ptrGPU == nullptr);
    };
    const std::pair<std::size_t, std::size_t> sizes[] = {
        {HALF, HALF},                      // pixels wrap to 0
        {HALF / 2, HALF / 2},              // bytes wrap to 0
        {(std::size_t{1} << 62) + 1, 1}};  // bytes of a row: 4
    for (const auto& [width, height] : sizes) {
        for (const MEM mem : {MEM::CPU, MEM_BOTH}) {
            Mat mat(7, 3, U3, MEM_BOTH);
            EXPECT_THROW(mat.alloc(width, height, F1, mem), std::bad_alloc);
            expectEmpty(mat);
            EXPECT_EQ(mat.dataType, U3);
        }
        expectRefused(width, height, F1, MEM::GPU);
        expectRefused(width, height, F1, MEM_MANAGED);
    }
    expectRefused(SIZE_MAX / 3, 1, U3, MEM::GPU);                    // bytes of a padded row: 512
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators abort
    EXPECT_THROW(Mat(std::size_t{1} << 40, std::size_t{1} << 15, U1), std::bad_alloc);
#endif
}

TEST_F(MatTest, PartsOfAnImageAreCopiedBeforeTheWholeIsReleased) {
    const OwnStream stream;
    for (cudaStream_t const queue : {cudaStream_t{}, cudaStream_t{stream}}) {
        Mat owner = filled(40, 4, U1, MEM::CPU);
        const Mat middle(20, 2, U1, owner.ptrCPU + 50, 40, MEM::CPU);
        const std::string before = fieldsOf(owner);
        owner = middle;
        owner.ref(middle);
        EXPECT_EQ(fieldsOf(owner), before) << "a reference into it changes no owner";
        const Bytes wanted = load(middle, MEM::CPU);
        EXPECT_EQ(owner.setFrom(middle, COPY_TYPE::CPU_GPU, queue), OK);
        cudaDeviceSynchronize();
        EXPECT_TRUE(sameBytes(load(owner, MEM::GPU), wanted));
        EXPECT_EQ(owner.copyTo(owner, COPY_TYPE::GPU_CPU, queue), OK);
        cudaDeviceSynchronize();
        EXPECT_EQ(owner.memType, MEM::CPU);
        EXPECT_TRUE(sameBytes(load(owner, MEM::CPU), wanted));
        owner.extraFlag = true;
        EXPECT_EQ(owner.clone(Mat(2, 2, U1, owner.ptrCPU + 5, 20, MEM::CPU)), OK);
        EXPECT_TRUE(owner.extraFlag);
        EXPECT_EQ(load(owner, MEM::CPU), (Bytes{wanted[5], wanted[6], wanted[25], wanted[26]}));
        owner.ref(Mat(2, 2, U1, owner.ptrCPU + 4, 2, MEM::CPU));
        EXPECT_FALSE(owner.memoryOwner) << "what begins behind its buffer is not part of it";
    }
}

TEST_F(MatTest, ReturnsTheStepOfTheSide) {
    const Mat both(3, 2, U3, host_, 16, device_, 32);
    for (std::int32_t side = -1; side <= 5; ++side) {
        const std::size_t wanted = side == 1 ? 16 : side == 2 || side == 4 ? 32 : 0;
        EXPECT_EQ(both.getStepBytes(fromValue<MEM>(side)), wanted) << side;
    }
}

TEST_F(MatTest, AssigningItselfLeavesItEmpty) {
    for (const bool moving : {false, true}) {
        Mat mat(4, 4, U3, MEM_BOTH);
        Mat& alias = mat;
        moving ? mat = std::move(alias) : mat = alias;
        expectEmpty(mat);
    }
}

TEST_F(MatTest, CopiesFollowRowStepsAndTouchNothingElse) {
    for (const COPY_TYPE type :
         {COPY_TYPE::CPU_CPU, COPY_TYPE::CPU_GPU, COPY_TYPE::GPU_GPU, COPY_TYPE::GPU_CPU}) {
        const Window source(5, 3, U3, 2, 1);
        Window destination(5, 3, U3, 1, 2);
        Bytes written = load(destination.whole, MEM::CPU);
        const Bytes other = written;
        destination.put(load(source.part, MEM::CPU), written);
        EXPECT_EQ(source.part.copyTo(destination.part, type), OK);
        EXPECT_FALSE(destination.part.memoryOwner) << "a fitting reference is written through";
        const bool toHost = type == COPY_TYPE::CPU_CPU || type == COPY_TYPE::GPU_CPU;
        EXPECT_TRUE(sameBytes(load(destination.whole, MEM::CPU), toHost ? written : other));
        EXPECT_TRUE(sameBytes(load(destination.whole, MEM::GPU), toHost ? other : written));
    }
}

/// Sizes whose copies are refused, so that only the destination's shape changes.
TEST_F(MatTest, SizesOfCopiesAreTruncatedTo32Bits) {
    constexpr std::size_t LARGE = std::size_t{1} << 32;
    unsigned char pixels[320] = {};
    const Mat sources[] = {Mat(LARGE + 5, 1, U1, pixels, 64, MEM::CPU),
                           Mat(1, LARGE + 5, U1, pixels, 0, MEM::CPU)};
    for (const Mat& source : sources) {
        Mat cloned;
        Mat copied;
        const std::string printed = printedBy([&] {
            EXPECT_EQ(cloned.clone(source), OK);
            EXPECT_EQ(source.copyTo(copied), BAD);
        });
        EXPECT_NE(printed.find("Err [12]: invalid pitch argument"), std::string::npos) << printed;
        for (const Mat* const mat : {&cloned, &copied}) {
            EXPECT_TRUE(mat->isInit && mat->memoryOwner);
            EXPECT_EQ(mat->width * mat->height, 5U);
        }
    }
    Mat unknown(1, 1, U1);
    EXPECT_EQ(Mat(LARGE + 5, 0, U1, pixels, 64, MEM::CPU).copyTo(unknown, fromValue<COPY_TYPE>(4)), OK);
    EXPECT_EQ(unknown.width, LARGE + 5) << "unless the direction is unknown and there is a destination";
#ifdef VELA_GPU_SOFTWARE
    const Mat tall(1, LARGE + 5, U1, pixels, 64, MEM::CPU);
    Mat copied;
    const OwnStream stream;
    for (cudaStream_t const queue : {cudaStream_t{}, cudaStream_t{stream}}) {
        printedBy([&] {
            EXPECT_EQ(tall.copyTo(copied, COPY_TYPE::CPU_GPU, queue), BAD) << "all rows are asked for";
        });
    }
    const Mat wide(LARGE / 2, 1, U1, pixels, 64, MEM::GPU);
    Mat cloned;
    printedBy([&] { EXPECT_EQ(cloned.clone(wide), OK); });
    EXPECT_EQ(cloned.width, std::size_t{0} - LARGE / 2) << "as a signed number of 32 bits";
#endif
}

#ifdef VELA_GPU_SOFTWARE
TEST_F(MatTest, CopiesOnAStreamWaitForItOnlyWhereTheyMust) {
    Mat a = filled(4, 4, U1, MEM_BOTH, 1);
    Mat b = filled(4, 4, U1, MEM_BOTH, 2);
    Mat managed(2, 2, U1, MEM_MANAGED);
    const BusyStream stream;
    EXPECT_EQ(a.copyTo(b, COPY_TYPE::CPU_CPU, stream), OK);
    EXPECT_EQ(b.updateGPUfromCPU(stream), OK);
    EXPECT_EQ(a.setFrom(b, COPY_TYPE::GPU_GPU, stream), OK);
    EXPECT_EQ(a.updateCPUfromGPU(stream), OK);
    EXPECT_EQ(managed.updateGPUfromCPU(stream), OK);
    EXPECT_FALSE(stream.wasWaitedFor());
    EXPECT_EQ(Bytes(b.ptrCPU, b.ptrCPU + 16), pattern(16, 2)) << "nothing is copied yet";
    EXPECT_EQ(managed.updateCPUfromGPU(stream), OK);
    EXPECT_TRUE(stream.wasWaitedFor());
    EXPECT_TRUE(sameBytes(load(b, MEM::GPU), pattern(16, 1)));
    EXPECT_TRUE(sameBytes(load(a, MEM::GPU), pattern(16, 1)));

    Mat image = filled(4, 4, U1, MEM::CPU);
    const BusyStream other;
    EXPECT_EQ(image.setFrom(Mat(2, 2, U1, image.ptrCPU + 5, 4, MEM::CPU), COPY_TYPE::CPU_GPU, other), OK);
    EXPECT_TRUE(other.wasWaitedFor()) << "before the buffer that it reads is freed";
}
#endif

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
// The software device must be at least as strict as hardware: it must detect every fault that a GPU would.
#include "support/device.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_gpu/kernels.hpp"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <thread>

namespace vela::test {
namespace {

using namespace software_device;

constexpr auto INVALID = cudaErrorInvalidValue;
constexpr auto BAD_HANDLE = cudaErrorInvalidResourceHandle;
constexpr std::size_t HUGE_SIZE = std::size_t{1} << 40;

class SoftwareDeviceTest : public DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        ASSERT_EQ(cudaStreamCreate(&stream_), cudaSuccess);
    }
    void TearDown() override {
        cudaStreamDestroy(stream_);  // some tests already have
        DeviceTest::TearDown();
    }

    const Mat device_{64, 2, U1, MEM::GPU};  // its pitch is 512
    const Mat managed_{64, 1, U1, MEM_MANAGED};
    cudaStream_t stream_ = nullptr;
};

TEST_F(SoftwareDeviceTest, PitchesAreMultiplesOf512AndFreshMemoryIsPoisoned) {
    for (const auto& [width, pitch] : {std::pair(1U, 512U), std::pair(512U, 512U), std::pair(513U, 1024U)}) {
        const Mat mat(width, 3, U1, MEM::GPU);
        EXPECT_EQ(mat.stepBytesGPU, pitch);
        Bytes bytes(pitch * 3);
        EXPECT_EQ(cudaMemcpy(bytes.data(), mat.ptrGPU, bytes.size(), cudaMemcpyDeviceToHost), cudaSuccess);
        EXPECT_TRUE(sameBytes(bytes, Bytes(pitch * 3, 0xCD)));
    }
    EXPECT_TRUE(sameBytes(Bytes(managed_.ptrGPU, managed_.ptrGPU + 64), Bytes(64, 0xCD)))
        << "which is the host's too";
}

TEST_F(SoftwareDeviceTest, HostAccessToDeviceMemoryFaults) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(*device_.ptrGPU = 1, "");
    const volatile unsigned char* const freed = Mat(7, 1, U1, MEM_MANAGED).ptrGPU;
    EXPECT_DEATH(std::printf("%d", *freed), "");
    const std::size_t pages = 65536;
    const Mat first(pages, 1, U1, MEM_MANAGED);
    const Mat second(pages, 1, U1, MEM_MANAGED);
    EXPECT_DEATH(first.ptrGPU[pages] = 1, "") << "whatever lies behind it";
}

TEST_F(SoftwareDeviceTest, RefusesCopiesThatHardwareWouldRefuse) {
    constexpr auto PITCH = cudaErrorInvalidPitchValue;
    constexpr int TO_HOST = cudaMemcpyDeviceToHost;
    constexpr int TO_DEVICE = cudaMemcpyHostToDevice;
    constexpr int ON_HOST = cudaMemcpyHostToHost;
    constexpr int ON_DEVICE = cudaMemcpyDeviceToDevice;
    const auto copy = [&](void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                          std::size_t width, std::size_t height, int direction) {
        const auto kind = static_cast<cudaMemcpyKind>(direction);
        const cudaError status = cudaMemcpy2D(to, toPitch, from, fromPitch, width, height, kind);
        EXPECT_EQ(cudaGetLastError(), status);
        EXPECT_EQ(cudaMemcpy2DAsync(to, toPitch, from, fromPitch, width, height, kind, stream_), status);
        EXPECT_EQ(cudaGetLastError(), status);
        EXPECT_EQ(cudaStreamSynchronize(stream_), cudaSuccess);
        return status;
    };
    unsigned char host[2048] = {};
    unsigned char* const device = device_.ptrGPU;
    const Mat other(64, 2, U1, MEM::GPU);
    void* const gone = Mat(64, 2, U1, MEM::GPU).ptrGPU;
    EXPECT_EQ(copy(device, 512, host, 64, 64, 2, TO_DEVICE), cudaSuccess);
    EXPECT_EQ(copy(device, 512, other.ptrGPU, 512, 64, 2, ON_DEVICE), cudaSuccess);
    EXPECT_EQ(copy(managed_.ptrCPU, 64, host, 64, 64, 1, ON_HOST), cudaSuccess);
    EXPECT_EQ(copy(host, 64, device, 512, 64, 2, cudaMemcpyDefault), cudaSuccess);
    EXPECT_EQ(copy(device + 1, 512, host, 512, 511, 2, TO_DEVICE), cudaSuccess);
    EXPECT_EQ(copy(device + 1, 512, host, 512, 512, 2, TO_DEVICE), INVALID) << "one byte too far";
    EXPECT_EQ(copy(Mat(10, 1, U1, MEM::GPU).ptrGPU, 11, host, 11, 11, 1, TO_DEVICE), INVALID)
        << "a single row ends with the bytes asked for";
    EXPECT_EQ(copy(device, 512, host, 64, 64, 3, TO_DEVICE), INVALID) << "one row too far";
    EXPECT_EQ(copy(device, 512, host, 64, 64, 2, TO_HOST), INVALID);
    EXPECT_EQ(copy(device, 512, host, 64, 64, 2, ON_HOST), INVALID);
    EXPECT_EQ(copy(host, 64, host + 1024, 64, 64, 2, ON_DEVICE), INVALID);
    EXPECT_EQ(copy(nullptr, 512, host, 64, 64, 2, TO_DEVICE), INVALID);
    EXPECT_EQ(copy(device, 512, nullptr, 64, 64, 2, TO_DEVICE), INVALID);
    EXPECT_EQ(copy(gone, 512, host, 64, 64, 2, TO_DEVICE), INVALID) << "freed";
    EXPECT_EQ(copy(device, 63, host, 64, 64, 2, TO_DEVICE), PITCH);
    EXPECT_EQ(copy(device, 512, host, 63, 64, 2, TO_DEVICE), PITCH);
    EXPECT_EQ(copy(device, std::size_t{1} << 31, host, 64, 64, 1, TO_DEVICE), PITCH);
    constexpr std::size_t WRAPPING = (std::size_t{1} << 55) + 1;  // times 512 bytes, wraps around 2^64
    EXPECT_EQ(copy(device, 512, host, 512, 64, WRAPPING, TO_DEVICE), INVALID);
    EXPECT_EQ(copy(host, 512, device, 512, 64, WRAPPING, TO_HOST), INVALID);
    EXPECT_EQ(copy(nullptr, 0, nullptr, 0, 0, 5, ON_HOST), cudaSuccess) << "no bytes";
    EXPECT_EQ(copy(nullptr, 0, nullptr, 0, 5, 0, TO_DEVICE), cudaSuccess);
    EXPECT_EQ(copy(host, 64, host + 1024, 64, 64, 2, 7), cudaErrorInvalidMemcpyDirection);
}

TEST_F(SoftwareDeviceTest, RefusesWrongAllocationsAndReleases) {
    void* data = &data;
    std::size_t pitch = 3;
    EXPECT_EQ(cudaMallocManaged(&data, 0), INVALID);
    EXPECT_EQ(cudaMallocManaged(&data, 1, 3), INVALID);
    EXPECT_EQ(cudaMallocPitch(nullptr, &pitch, 1, 1), INVALID);
    EXPECT_EQ(cudaMallocPitch(&data, &pitch, HUGE_SIZE, 1), INVALID);
    EXPECT_EQ(cudaMallocPitch(&data, &pitch, 1 << 30, HUGE_SIZE), cudaErrorMemoryAllocation);
    EXPECT_EQ(data, &data) << "failures leave the output alone";
    EXPECT_EQ(cudaMallocPitch(&data, &pitch, 0, 4), cudaSuccess);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
    const std::size_t before = liveAllocations();
    ASSERT_EQ(cudaMallocPitch(&data, &pitch, 10, 4), cudaSuccess);
    EXPECT_EQ(liveAllocations(), before + 1);
    EXPECT_EQ(cudaFree(static_cast<char*>(data) + 1), INVALID);
    EXPECT_EQ(cudaFree(&pitch), INVALID);
    EXPECT_EQ(cudaFree(data), cudaSuccess);
    EXPECT_EQ(cudaFree(data), INVALID);
    EXPECT_EQ(liveAllocations(), before);
}

TEST_F(SoftwareDeviceTest, KeepsTheArgumentsOfTheLatestCalls) {
    Mat mat(4, 4, U1, MEM_MANAGED);
    EXPECT_EQ(latestArguments().managedFlags, cudaMemAttachGlobal);
    EXPECT_EQ(mat.updateGPUfromCPU(stream_), OK);
    EXPECT_EQ(latestArguments().attachFlags, cudaMemAttachSingle);
    EXPECT_EQ(mat.updateCPUfromGPU(stream_), OK);
    EXPECT_EQ(latestArguments().attachFlags, cudaMemAttachHost);
    Mat host(4, 4, U1, MEM::CPU);
    Mat device(4, 4, U1, MEM::GPU);
    constexpr cudaMemcpyKind KINDS[] = {cudaMemcpyHostToHost, cudaMemcpyHostToDevice,
                                        cudaMemcpyDeviceToDevice, cudaMemcpyDeviceToHost};
    for (int type = 0; type < 4; ++type) {  // as COPY_TYPE numbers them
        const Mat& from = type < 2 ? host : device;
        Mat& to = type == 1 || type == 2 ? device : host;
        from.copyTo(to, static_cast<COPY_TYPE>(type));
        EXPECT_EQ(latestArguments().copyKind, KINDS[type]);
    }
    host.copyTo(device, static_cast<COPY_TYPE>(4));
    EXPECT_EQ(latestArguments().copyKind, cudaMemcpyDeviceToHost) << "an unknown direction";
    Mat points(1, 1, F3, MEM::GPU);
    Vector3<float> point;
    EXPECT_EQ(points.setValue(0, 0, point, MEM::GPU), OK);
    EXPECT_EQ(latestArguments().copyKind, cudaMemcpyHostToDevice);
    EXPECT_EQ(points.getValue(0, 0, &point, MEM::GPU), OK);
    EXPECT_EQ(latestArguments().copyKind, cudaMemcpyDeviceToHost);
    constexpr auto TO = COORDINATE_SYSTEM::LEFT_HANDED_Y_UP_AND_Z_FORWARD;
    EXPECT_EQ(convertCoordinateSystem(points, COORDINATE_SYSTEM::IMAGE, TO, MEM::GPU), OK);
    EXPECT_EQ(latestArguments().copyKind, cudaMemcpyHostToDevice) << "the matrix";
}

TEST_F(SoftwareDeviceTest, AttachesManagedMemoryOnly) {
    void* const managed = managed_.ptrGPU;
    EXPECT_EQ(cudaStreamAttachMemAsync(stream_, managed), cudaSuccess);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream_, managed, 64, cudaMemAttachSingle), cudaSuccess);
    EXPECT_EQ(cudaStreamAttachMemAsync(nullptr, managed, 64, cudaMemAttachHost), cudaSuccess);
    EXPECT_EQ(cudaStreamAttachMemAsync(nullptr, managed, 64, cudaMemAttachSingle), INVALID);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream_, managed, 63, cudaMemAttachHost), INVALID);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream_, managed, 64, 3), INVALID);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream_, device_.ptrGPU, 0, cudaMemAttachHost), INVALID);
    EXPECT_EQ(cudaStreamDestroy(stream_), cudaSuccess);
    EXPECT_EQ(cudaStreamDestroy(stream_), BAD_HANDLE);
    EXPECT_EQ(cudaStreamSynchronize(stream_), BAD_HANDLE);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream_, managed), BAD_HANDLE);
}

TEST_F(SoftwareDeviceTest, StreamsRunOnlyWhenWaitedFor) {
    char from[4] = "abc";
    char to[4] = "";
    void* spare = nullptr;
    std::size_t pitch = 0;
    ASSERT_EQ(cudaMallocPitch(&spare, &pitch, 1, 1), cudaSuccess);
    const std::function<cudaError_t()> waits[] = {
        [&] { return cudaStreamSynchronize(stream_); },
        [] { return cudaStreamSynchronize(nullptr); },
        [] { return cudaDeviceSynchronize(); },
        [&] { return cudaMemcpy(spare, from, 1, cudaMemcpyHostToDevice); },
        [&] { return cudaFree(spare); },
        [&] { return cudaStreamDestroy(stream_); }};
    for (const auto& wait : waits) {
        to[0] = '\0';
        ASSERT_EQ(cudaMemcpy2DAsync(to, 4, from, 4, 4, 1, cudaMemcpyHostToHost, stream_), cudaSuccess);
        EXPECT_STREQ(to, "") << "a missing synchronisation shows";
        EXPECT_EQ(wait(), cudaSuccess);
        EXPECT_STREQ(to, "abc");
    }
}

TEST_F(SoftwareDeviceTest, FailsTheCallsAskedFor) {
    char a[4] = "abc";
    char b[4] = "";
    const auto copy = [&] { return cudaMemcpy(b, a, 4, cudaMemcpyHostToHost); };
    failCall("cudaMemcpy", 2, cudaErrorLaunchTimeout);
    failCall("cudaFree", 1, cudaErrorUnknown);
    EXPECT_EQ(copy(), cudaSuccess);
    b[0] = '\0';
    EXPECT_EQ(copy(), cudaErrorLaunchTimeout);
    EXPECT_STREQ(b, "") << "a failed call has no effect";
    EXPECT_EQ(copy(), cudaSuccess);
    EXPECT_EQ(cudaPeekAtLastError(), cudaErrorLaunchTimeout);
    std::thread([] {
        EXPECT_EQ(cudaGetLastError(), cudaSuccess) << "the last error is the thread's own";
    }).join();
    EXPECT_EQ(cudaGetLastError(), cudaErrorLaunchTimeout);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_EQ(cudaFree(nullptr), cudaErrorUnknown);
    failCall("cudaFree", 1, cudaErrorUnknown);
    reset();
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess) << "forgotten";
}

TEST_F(SoftwareDeviceTest, LaunchesFaultOutsideDeviceMemory) {
    float host[4] = {1, 2, 3, 4};
    const auto scale = [](void* data, unsigned step, unsigned width, unsigned height) {
        cu_applyFactor(static_cast<float*>(data), 2.0F, step, width, height);
        return cudaGetLastError();
    };
    EXPECT_EQ(scale(device_.ptrGPU, 128, 16, 2), cudaSuccess);
    EXPECT_EQ(scale(device_.ptrGPU, 128, 129, 2), cudaErrorIllegalAddress);
    EXPECT_EQ(scale(device_.ptrGPU, 128, 16, 3), cudaErrorIllegalAddress);
    EXPECT_EQ(scale(device_.ptrGPU + 512, 129, 128, 1), cudaSuccess)
        << "the padding of the last row is not touched";
    EXPECT_EQ(scale(host, 4, 4, 1), cudaErrorIllegalAddress);
    EXPECT_EQ(host[0], 1.0F);
    EXPECT_EQ(scale(nullptr, 4, 4, 1), cudaSuccess) << "launches nothing";
    EXPECT_EQ(scale(device_.ptrGPU + 2, 4, 4, 1), cudaErrorIllegalAddress) << "misaligned";
    cu_matSetToGPU(Vector4<float>(), reinterpret_cast<Vector4<float>*>(device_.ptrGPU), 1U << 31, 1,
                   (1U << 29) + 1, nullptr);
    EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress) << "2^29 steps of 2^35 bytes are 2^64";
    cu_applyMat3f(reinterpret_cast<Vector3<float>*>(device_.ptrGPU), host, 42, 1, 1);
    EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress) << "the matrix, too, must be device memory";
    failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure);
    EXPECT_EQ(scale(device_.ptrGPU, 128, 16, 2), cudaErrorLaunchFailure);
}

/// Runs `check` in a separate process, which must exit with 0 within 20 s.
template <class Check>
void expectFromAChild(Check check) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        _exit(check() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
}

bool canAllocate(std::size_t width) {
    void* data = nullptr;
    std::size_t pitch = 0;
    return cudaMallocPitch(&data, &pitch, width, 1) == cudaSuccess && cudaFree(data) == cudaSuccess;
}

/// How many bytes this process has mapped.
rlim_t mappedBytes() {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Each limit is set before the device is used for the first time.
TEST(SoftwareDeviceProcessTest, TakesSmallerAddressRangesWhereLargeOnesAreRefused) {
    constexpr std::size_t MB = 1 << 20;
    for (const auto& [allowance, width] :
         {std::pair(4096 * MB, 512 * MB), std::pair(512 * MB, 100 * MB), std::pair(40 * MB, 10 * MB)}) {
        expectFromAChild([allowance = allowance, width = width] {
            const rlim_t limit = mappedBytes() + allowance;
            const rlimit both{limit, limit};
            return setrlimit(RLIMIT_AS, &both) == 0 && canAllocate(width);
        });
    }
}

TEST(SoftwareDeviceProcessTest, WorksInAChildForkedWhileThreadsUseIt) {
    std::atomic<bool> done{false};
    const auto work = [&] {
        while (!done) {
            EXPECT_TRUE(canAllocate(1 << 16));
            std::this_thread::sleep_for(std::chrono::microseconds(50));  // so that fork gets its turn
        }
    };
    std::thread threads[] = {std::thread(work), std::thread(work)};
    for (int i = 0; i < 40 && !::testing::Test::HasFailure(); ++i) {
        expectFromAChild([] { return canAllocate(1); });
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace vela::test

// The software device must be at least as strict as hardware: what a GPU would show must show here.
#include "support/device.hpp"
#include "vela_gpu/kernels.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

namespace vela::test {
namespace {

using namespace software_device;

struct Buffer {
    void* data = nullptr;
    std::size_t pitch = 0;

    Buffer(std::size_t width, std::size_t height) {
        EXPECT_EQ(cudaMallocPitch(&data, &pitch, width, height), cudaSuccess);
    }
    ~Buffer() { cudaFree(data); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
};

class StandInTest : public DeviceTest {};

TEST_F(StandInTest, PitchesAreMultiplesOf512AndFreshMemoryIsPoisoned) {
    for (const auto& [width, pitch] : {std::pair(1, 512), std::pair(512, 512), std::pair(513, 1024)}) {
        const Buffer buffer(static_cast<std::size_t>(width), 3);
        EXPECT_EQ(buffer.pitch, static_cast<std::size_t>(pitch));
        Bytes bytes(buffer.pitch * 3);
        EXPECT_EQ(cudaMemcpy(bytes.data(), buffer.data, bytes.size(), cudaMemcpyDeviceToHost), cudaSuccess);
        EXPECT_EQ(bytes, Bytes(bytes.size(), 0xCD));
    }
    void* managed = nullptr;
    ASSERT_EQ(cudaMallocManaged(&managed, 7), cudaSuccess);
    EXPECT_EQ(static_cast<std::uint8_t*>(managed)[6], 0xCD) << "managed memory is the host's too";
    EXPECT_EQ(cudaFree(managed), cudaSuccess);
}

TEST_F(StandInTest, HostAccessToDeviceMemoryFaults) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Buffer buffer(64, 1);
    EXPECT_DEATH(*static_cast<volatile char*>(buffer.data) = 1, "");
    void* managed = nullptr;
    ASSERT_EQ(cudaMallocManaged(&managed, 7), cudaSuccess);
    ASSERT_EQ(cudaFree(managed), cudaSuccess);
    EXPECT_DEATH(*static_cast<volatile char*>(managed) = 1, "") << "freed";
}

TEST_F(StandInTest, ChecksCopies) {
    const Buffer device(64, 2);
    const Buffer other(64, 2);
    char host[2048] = {};
    char* const inside = static_cast<char*>(device.data) + 1;
    void* const gone = Buffer(64, 2).data;
    struct Case {
        void* to;
        std::size_t toPitch;
        const void* from;
        std::size_t fromPitch;
        std::size_t width;
        std::size_t height;
        int kind;
        cudaError wanted;
    };
    constexpr auto BAD = cudaErrorInvalidValue;
    constexpr auto PITCH = cudaErrorInvalidPitchValue;
    const Case cases[] = {
        {device.data, 512, host, 64, 64, 2, cudaMemcpyHostToDevice, cudaSuccess},
        {device.data, 512, other.data, 512, 64, 2, cudaMemcpyDeviceToDevice, cudaSuccess},
        {host, 64, device.data, 512, 64, 2, cudaMemcpyDefault, cudaSuccess},
        {inside, 512, host, 512, 511, 2, cudaMemcpyHostToDevice, cudaSuccess},
        {inside, 512, host, 512, 512, 2, cudaMemcpyHostToDevice, BAD},     // one byte too far
        {device.data, 512, host, 64, 64, 3, cudaMemcpyHostToDevice, BAD},  // one row too far
        {device.data, 512, host, 64, 64, 2, cudaMemcpyDeviceToHost, BAD},  // wrong direction
        {device.data, 512, host, 64, 64, 2, cudaMemcpyHostToHost, BAD},
        {host, 64, host + 1024, 64, 64, 2, cudaMemcpyDeviceToDevice, BAD},
        {nullptr, 512, host, 64, 64, 2, cudaMemcpyHostToDevice, BAD},
        {device.data, 512, nullptr, 64, 64, 2, cudaMemcpyHostToDevice, BAD},
        {gone, 512, host, 64, 64, 2, cudaMemcpyHostToDevice, BAD},  // freed
        {device.data, 63, host, 64, 64, 2, cudaMemcpyHostToDevice, PITCH},
        {device.data, 512, host, 63, 64, 2, cudaMemcpyHostToDevice, PITCH},
        {device.data, std::size_t{1} << 31, host, 64, 64, 1, cudaMemcpyHostToDevice, PITCH},
        {nullptr, 0, nullptr, 0, 0, 5, cudaMemcpyHostToHost, cudaSuccess},  // no bytes
        {nullptr, 0, nullptr, 0, 5, 0, cudaMemcpyHostToDevice, cudaSuccess},
        {host, 64, host + 1024, 64, 64, 2, 7, cudaErrorInvalidMemcpyDirection},
    };
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        const auto kind = static_cast<cudaMemcpyKind>(c.kind);
        EXPECT_EQ(cudaMemcpy2D(c.to, c.toPitch, c.from, c.fromPitch, c.width, c.height, kind), c.wanted);
        EXPECT_EQ(cudaGetLastError(), c.wanted);
        EXPECT_EQ(cudaMemcpy2DAsync(c.to, c.toPitch, c.from, c.fromPitch, c.width, c.height, kind, stream),
                  c.wanted);
        EXPECT_EQ(cudaGetLastError(), c.wanted);
        EXPECT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
    }
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

TEST_F(StandInTest, ChecksAllocationsAndReleases) {
    void* data = &data;
    std::size_t pitch = 3;
    EXPECT_EQ(cudaMallocManaged(&data, 0), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMallocPitch(nullptr, &pitch, 1, 1), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMallocPitch(&data, &pitch, std::size_t{1} << 30, std::size_t{1} << 40),
              cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaMallocPitch(&data, &pitch, std::size_t{1} << 40, 1), cudaErrorInvalidValue);
    EXPECT_EQ(data, &data) << "failures leave the output alone";
    EXPECT_EQ(cudaMallocPitch(&data, &pitch, 0, 4), cudaSuccess);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
    const std::size_t before = liveAllocations();
    ASSERT_EQ(cudaMallocPitch(&data, &pitch, 10, 4), cudaSuccess);
    EXPECT_EQ(liveAllocations(), before + 1);
    EXPECT_EQ(cudaFree(static_cast<char*>(data) + 1), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(&pitch), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(data), cudaSuccess);
    EXPECT_EQ(cudaFree(data), cudaErrorInvalidValue);
    EXPECT_EQ(liveAllocations(), before);
}

TEST_F(StandInTest, AttachesManagedMemoryOnly) {
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    const Buffer device(64, 1);
    void* managed = nullptr;
    ASSERT_EQ(cudaMallocManaged(&managed, 64), cudaSuccess);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream, managed), cudaSuccess);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream, managed, 64, cudaMemAttachSingle), cudaSuccess);
    EXPECT_EQ(cudaStreamAttachMemAsync(nullptr, managed, 64, cudaMemAttachHost), cudaSuccess);
    EXPECT_EQ(cudaStreamAttachMemAsync(nullptr, managed, 64, cudaMemAttachSingle), cudaErrorInvalidValue);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream, managed, 63, cudaMemAttachHost), cudaErrorInvalidValue);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream, managed, 64, 3), cudaErrorInvalidValue);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream, device.data, 0, cudaMemAttachHost), cudaErrorInvalidValue);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaStreamSynchronize(stream), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaStreamAttachMemAsync(stream, managed), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaFree(managed), cudaSuccess);
}

TEST_F(StandInTest, StreamsWorkWhenTheyAreWaitedFor) {
    const auto waits = {
        +[](cudaStream_t stream) { return cudaStreamSynchronize(stream); },
        +[](cudaStream_t) { return cudaStreamSynchronize(nullptr); },
        +[](cudaStream_t) { return cudaDeviceSynchronize(); },
        +[](cudaStream_t) {
            char a = 0;
            char b = 0;
            return cudaMemcpy(&a, &b, 1, cudaMemcpyHostToHost);
        },
    };
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    for (const auto wait : waits) {
        char from[4] = "abc";
        char to[4] = "";
        ASSERT_EQ(cudaMemcpy2DAsync(to, 4, from, 4, 4, 1, cudaMemcpyHostToHost, stream), cudaSuccess);
        EXPECT_STREQ(to, "") << "a missing synchronisation shows";
        EXPECT_EQ(wait(stream), cudaSuccess);
        EXPECT_STREQ(to, "abc");
    }
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

TEST_F(StandInTest, FailsTheCallsThatAreNamed) {
    char a[4] = "abc";
    char b[4] = "";
    const auto copy = [&] { return cudaMemcpy(b, a, 4, cudaMemcpyHostToHost); };
    failCall("cudaMemcpy", 2, cudaErrorLaunchTimeout);
    failCall("cudaFree", 1, cudaErrorUnknown);
    EXPECT_EQ(copy(), cudaSuccess);
    b[0] = '\0';
    EXPECT_EQ(copy(), cudaErrorLaunchTimeout);
    EXPECT_STREQ(b, "") << "a failed call has no effect";
    EXPECT_EQ(cudaPeekAtLastError(), cudaErrorLaunchTimeout);
    std::thread([] {
        EXPECT_EQ(cudaGetLastError(), cudaSuccess) << "the last error is the thread's own";
    }).join();
    EXPECT_EQ(cudaGetLastError(), cudaErrorLaunchTimeout);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_EQ(copy(), cudaSuccess);
    reset();
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess) << "forgotten";
}

TEST_F(StandInTest, LaunchesCheckTheirMemory) {
    const Buffer device(64, 2);
    float host[4] = {1, 2, 3, 4};
    const auto scale = [](void* data, unsigned step, unsigned width, unsigned height) {
        cu_applyFactor(static_cast<float*>(data), 2.0F, step, width, height);
        return cudaGetLastError();
    };
    EXPECT_EQ(scale(device.data, 128, 16, 2), cudaSuccess);
    EXPECT_EQ(scale(device.data, 128, 129, 2), cudaErrorIllegalAddress);
    EXPECT_EQ(scale(device.data, 128, 16, 3), cudaErrorIllegalAddress);
    EXPECT_EQ(scale(host, 4, 4, 1), cudaErrorIllegalAddress);
    EXPECT_EQ(host[0], 1.0F);
    EXPECT_EQ(scale(nullptr, 4, 4, 1), cudaSuccess) << "launches nothing";
    cu_applyMat3f(static_cast<Vector3<float>*>(device.data), host, 42, 1, 1);
    EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress) << "the matrix, too, must be device memory";
    failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure);
    EXPECT_EQ(scale(device.data, 128, 16, 2), cudaErrorLaunchFailure);
}

}  // namespace
}  // namespace vela::test

#pragma once

#include "vela_core/utils/Mat.hpp"
#ifdef VELA_GPU_SOFTWARE
#include "vela_gpu/software/device.hpp"
#endif

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vela::test {

inline bool hasDevice() {
    int count = 0;
    const bool found = cudaGetDeviceCount(&count) == cudaSuccess && count > 0;
    cudaGetLastError();
    return found;
}

/// A test that needs a device, real or software; without one it is skipped. Leaves no allocation behind.
class DeviceTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!hasDevice()) GTEST_SKIP() << "no CUDA device";
#ifdef VELA_GPU_SOFTWARE
        allocationsExpected_ = software_device::liveAllocations();
#endif
    }
    void TearDown() override {
#ifdef VELA_GPU_SOFTWARE
        software_device::reset();
        EXPECT_EQ(software_device::liveAllocations(), allocationsExpected_);
#endif
    }

    std::size_t allocationsExpected_ = 0;
};

using Bytes = std::vector<std::uint8_t>;

inline Bytes pattern(std::size_t size, unsigned seed = 1) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>((i * 31 + seed * 101) % 251);
    }
    return bytes;
}

inline std::size_t packedSize(const Mat& mat) {
    return mat.width * mat.pixelBytes * mat.height;
}

/// Writes packed rows into one side of a Mat.
inline void store(Mat& mat, MEM side, const void* packed) {
    const std::size_t row = mat.width * mat.pixelBytes;
    const bool host = side == MEM::CPU;
    ASSERT_EQ(cudaMemcpy2D(host ? mat.ptrCPU : mat.ptrGPU, host ? mat.stepBytesCPU : mat.stepBytesGPU, packed,
                           row, row, mat.height, host ? cudaMemcpyHostToHost : cudaMemcpyHostToDevice),
              cudaSuccess);
}

/// The packed rows of one side of a Mat.
inline Bytes load(const Mat& mat, MEM side) {
    const std::size_t row = mat.width * mat.pixelBytes;
    const bool host = side == MEM::CPU;
    Bytes packed(row * mat.height);
    EXPECT_EQ(cudaMemcpy2D(packed.data(), row, host ? mat.ptrCPU : mat.ptrGPU,
                           host ? mat.stepBytesCPU : mat.stepBytesGPU, row, mat.height,
                           host ? cudaMemcpyHostToHost : cudaMemcpyDeviceToHost),
              cudaSuccess);
    return packed;
}

/// An owning Mat with known bytes, `pattern(size, seed)`, on each of its sides.
inline Mat filled(std::size_t width, std::size_t height, MAT_TYPE type, MEM mem, unsigned seed = 1) {
    Mat mat(width, height, type, mem);
    const Bytes bytes = pattern(packedSize(mat), seed);
    if (mem != MEM::GPU) store(mat, MEM::CPU, bytes.data());
    if (mem == MEM::GPU || mem == MEM_BOTH) store(mat, MEM::GPU, bytes.data());
    return mat;
}

}  // namespace vela::test

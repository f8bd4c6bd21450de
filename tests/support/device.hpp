// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/bytes.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/utils/Mat.hpp"
#ifdef VELA_GPU_SOFTWARE
#include "vela_gpu/software/device.hpp"
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace vela::test {

using detail::fromValue;
using detail::toValue;

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

/// A stream that is destroyed with this object.
class OwnStream {
public:
    OwnStream() { EXPECT_EQ(cudaStreamCreate(&stream_), cudaSuccess); }
    ~OwnStream() { EXPECT_EQ(cudaStreamDestroy(stream_), cudaSuccess); }
    OwnStream(OwnStream&&) = delete;

    operator cudaStream_t() const { return stream_; }

private:
    cudaStream_t stream_ = nullptr;
};

#ifdef VELA_GPU_SOFTWARE  // which runs a stream's work only once something waits for it
/// A stream with pending work, which shows whether anything has waited for it.
class BusyStream : public OwnStream {
public:
    BusyStream() {
        EXPECT_EQ(cudaMemcpy2DAsync(to_, 4, "abc", 4, 4, 1, cudaMemcpyHostToHost, *this), cudaSuccess);
    }
    bool wasWaitedFor() const { return to_[0] == 'a'; }

private:
    char to_[4] = {};
};
#endif

// Short names for tables.
constexpr auto OK = ERROR_CODE::SUCCESS;
constexpr auto BAD = ERROR_CODE::FAILURE;
constexpr auto F1 = MAT_TYPE::MAT_32F_C1;
constexpr auto F3 = MAT_TYPE::MAT_32F_C3;
constexpr auto F4 = MAT_TYPE::MAT_32F_C4;
constexpr auto U1 = MAT_TYPE::MAT_8U_C1;
constexpr auto U3 = MAT_TYPE::MAT_8U_C3;
constexpr auto U4 = MAT_TYPE::MAT_8U_C4;
constexpr auto S4 = MAT_TYPE::MAT_8S_C4;

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

/// All fields of a Mat, without its pixels.
inline std::string fieldsOf(const Mat& mat) {
    std::ostringstream text;
    text << mat.name << " " << mat.timestamp << " " << mat.width << "x" << mat.height << "x" << mat.channels
         << " of " << mat.pixelBytes << ", type " << toValue(mat.dataType) << " on " << toValue(mat.memType)
         << ", steps " << mat.stepBytesCPU << " " << mat.stepBytesGPU << ", buffers "
         << static_cast<const void*>(mat.ptrCPU) << " " << static_cast<const void*>(mat.ptrGPU) << ", flags "
         << mat.isInit << mat.memoryOwner << mat.extraFlag;
    return text.str();
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

/// A Mat that refers to pixels inside a larger one, on both sides, so that stray writes are detected.
struct Window {
    Window(std::size_t width, std::size_t height, MAT_TYPE type, std::size_t x = 1, unsigned seed = 1)
        : whole(filled(width + 3, height + 2, type, MEM_BOTH, seed)),
          first((whole.width + x) * whole.pixelBytes),
          part(width, height, type, whole.ptrCPU + first, whole.stepBytesCPU,
               whole.ptrGPU + whole.stepBytesGPU + x * whole.pixelBytes, whole.stepBytesGPU) {}

    /// Writes packed rows into packed rows of the whole, at the position of the window.
    void put(const Bytes& rows, Bytes& image) const {
        const std::size_t row = part.width * part.pixelBytes;
        for (std::size_t y = 0; y < part.height; ++y) {
            std::copy_n(&rows[y * row], row, &image[first + y * whole.stepBytesCPU]);
        }
    }

    Mat whole;
    std::size_t first;  ///< byte of the whole at which the window starts
    Mat part;
};

}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/detail/buffers.hpp"

#include "vela_core/log/CudaSafeCall.hpp"

#include <new>
#include <optional>

namespace vela::detail {
namespace {

// Least common multiple of 3 and 12, the pixel sizes that are not powers of two, and 512, the row alignment
// of devices.
constexpr std::size_t WHOLE_PIXEL_ROW = 1536;

/// Size of packed rows in bytes; nothing if it overflows.
std::optional<std::size_t> packedBytes(std::size_t width, std::size_t pixelBytes, std::size_t height) {
    std::size_t rowBytes = 0;
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(width, pixelBytes, &rowBytes)) return {};
    if (__builtin_mul_overflow(rowBytes, height, &bytes)) return {};
    return bytes;
}

}  // namespace

unsigned char* allocateHostBuffer(std::size_t width, std::size_t pixelBytes, std::size_t height) {
    const std::optional<std::size_t> bytes = packedBytes(width, pixelBytes, height);
    if (!bytes) throw std::bad_alloc();
    return new unsigned char[*bytes];
}

void releaseHostBuffer(unsigned char* buffer) noexcept {
    delete[] buffer;
}

cudaError_t allocateDeviceBuffer(unsigned char*& buffer, std::size_t& stepBytes, std::size_t width,
                                 std::size_t pixelBytes, std::size_t height) {
    if (!packedBytes(width, pixelBytes, height)) return cudaErrorMemoryAllocation;
    std::size_t rowBytes = width * pixelBytes;
    if (pixelBytes == 3 || pixelBytes == 12) {
        const std::size_t filled = rowBytes % WHOLE_PIXEL_ROW;
        const std::size_t padding = filled == 0 ? 0 : WHOLE_PIXEL_ROW - filled;
        if (__builtin_add_overflow(rowBytes, padding, &rowBytes)) return cudaErrorMemoryAllocation;
    }
    void* memory = buffer;
    const cudaError_t status = cudaMallocPitch(&memory, &stepBytes, rowBytes, height);
    buffer = static_cast<unsigned char*>(memory);
    return status;
}

cudaError_t allocateManagedBuffer(unsigned char*& buffer, std::size_t width, std::size_t pixelBytes,
                                  std::size_t height) {
    const std::optional<std::size_t> bytes = packedBytes(width, pixelBytes, height);
    if (!bytes) return cudaErrorMemoryAllocation;
    void* memory = buffer;
    const cudaError_t status = cudaMallocManaged(&memory, *bytes, cudaMemAttachGlobal);
    buffer = static_cast<unsigned char*>(memory);
    return status;
}

cudaError_t releaseDeviceBuffer(unsigned char* buffer) {
    return cudaFree(buffer);
}

void reportFailure(cudaError_t status, const char* signature) noexcept {
    if (status != cudaSuccess) __cudaSafeCall(status, signature, "", 0);
}

ERROR_CODE checked(cudaError_t status, const char* signature) noexcept {
    reportFailure(status, signature);
    return status == cudaSuccess ? ERROR_CODE::SUCCESS : ERROR_CODE::FAILURE;
}

}  // namespace vela::detail

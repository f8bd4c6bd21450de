#include "vela_core/utils/detail/buffers.hpp"

#include "vela_core/log/CudaSafeCall.hpp"

#include <limits>

namespace vela {
namespace {

// The least common multiple of the pixel sizes that are no power of two and of the device's row alignment,
// 512.
constexpr std::size_t WHOLE_PIXEL_ROW = 1536;

}  // namespace

unsigned char* allocateHostBuffer(std::size_t bytes) {
    return new unsigned char[bytes];
}

void releaseHostBuffer(unsigned char* buffer) noexcept {
    delete[] buffer;
}

cudaError_t allocateDeviceBuffer(unsigned char*& buffer, std::size_t& stepBytes, std::size_t width,
                                 std::size_t pixelBytes, std::size_t height) {
    std::size_t rowBytes = width * pixelBytes;
    const bool hasRoom = rowBytes <= std::numeric_limits<std::size_t>::max() - WHOLE_PIXEL_ROW;
    if ((pixelBytes == 3 || pixelBytes == 12) && hasRoom) {  // the runtime refuses sizes that have none
        rowBytes = (rowBytes + WHOLE_PIXEL_ROW - 1) / WHOLE_PIXEL_ROW * WHOLE_PIXEL_ROW;
    }
    void* memory = buffer;
    const cudaError_t status = cudaMallocPitch(&memory, &stepBytes, rowBytes, height);
    buffer = static_cast<unsigned char*>(memory);
    return status;
}

cudaError_t allocateManagedBuffer(unsigned char*& buffer, std::size_t bytes) {
    void* memory = buffer;
    const cudaError_t status = cudaMallocManaged(&memory, bytes, cudaMemAttachGlobal);
    buffer = static_cast<unsigned char*>(memory);
    return status;
}

cudaError_t releaseDeviceBuffer(unsigned char* buffer) {
    return cudaFree(buffer);
}

bool succeeded(cudaError_t status, const char* signature) {
    if (status == cudaSuccess) return true;
    __cudaSafeCall(status, signature, "", 0);
    return false;
}

}  // namespace vela

#pragma once

#include "vela_gpu/runtime.hpp"

#include <cstddef>

namespace vela {

// How a Mat gets its buffers and gives them back: the one place that owns pixel memory.

/// Uninitialised host memory; throws `std::bad_alloc`.
unsigned char* allocateHostBuffer(std::size_t bytes);
void releaseHostBuffer(unsigned char* buffer) noexcept;

/// Pitched device memory for rows of `width` pixels; on failure `buffer` and `stepBytes` are as the runtime
/// left them. Rows of 3- and 12-byte pixels are padded so that the pitch, too, is a whole number of pixels:
/// kernels address rows by whole pixels.
cudaError_t allocateDeviceBuffer(unsigned char*& buffer, std::size_t& stepBytes, std::size_t width,
                                 std::size_t pixelBytes, std::size_t height);

/// Managed memory that host and device address alike.
cudaError_t allocateManagedBuffer(unsigned char*& buffer, std::size_t bytes);

/// Releases device or managed memory.
cudaError_t releaseDeviceBuffer(unsigned char* buffer);

/// Prints a failure under the signature of the function that met it; true when there is none.
bool succeeded(cudaError_t status, const char* signature);

}  // namespace vela

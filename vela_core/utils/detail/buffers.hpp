// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/ErrorCode.hpp"
#include "vela_gpu/runtime.hpp"

#include <cstddef>

namespace vela::detail {

// Allocates and frees pixel buffers; nothing else in the library does. A size that does not fit into `size_t`
// is a failed allocation.

/// Uninitialised host memory for packed rows; throws `std::bad_alloc`.
unsigned char* allocateHostBuffer(std::size_t width, std::size_t pixelBytes, std::size_t height);
void releaseHostBuffer(unsigned char* buffer) noexcept;

/// Pitched device memory for rows of `width` pixels; on failure `buffer` and `stepBytes` are as the runtime
/// left them. Rows of 3- and 12-byte pixels are padded so that the pitch is a whole number of pixels, because
/// kernels address rows by whole pixels.
cudaError_t allocateDeviceBuffer(unsigned char*& buffer, std::size_t& stepBytes, std::size_t width,
                                 std::size_t pixelBytes, std::size_t height);

/// Managed memory for packed rows, which host and device both address.
cudaError_t allocateManagedBuffer(unsigned char*& buffer, std::size_t width, std::size_t pixelBytes,
                                  std::size_t height);

/// Releases device or managed memory.
cudaError_t releaseDeviceBuffer(unsigned char* buffer);

/// Prints a failure with the signature of the function in which it happened; prints nothing for
/// `cudaSuccess`.
void reportFailure(cudaError_t status, const char* signature) noexcept;

/// Calls `reportFailure` and returns `SUCCESS` or `FAILURE`.
ERROR_CODE checked(cudaError_t status, const char* signature) noexcept;

}  // namespace vela::detail

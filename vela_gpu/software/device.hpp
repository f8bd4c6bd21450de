// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_gpu/software/runtime.hpp"

#include <cstddef>

/// Control of the software device, for tests.
namespace vela {
namespace software_device VELA_API {

/// Makes the nth (1 = next) call from now of the runtime function `name`, for example "cudaMallocPitch", fail
/// with `status` and have no effect; the calls before and after it work. Kernel launches are called
/// "cudaLaunchKernel".
void failCall(const char* name, int nth, cudaError status);

/// Forgets pending failures and the calling thread's pending last error.
void reset();

/// Number of device and managed allocations not yet freed.
std::size_t liveAllocations();

/// Arguments of the latest call of each kind, from any thread, failed or not.
struct Arguments {
    unsigned int managedFlags = 0;                   ///< of cudaMallocManaged
    unsigned int attachFlags = 0;                    ///< of cudaStreamAttachMemAsync
    cudaMemcpyKind copyKind = cudaMemcpyHostToHost;  ///< of any copy
};
/// Arguments of the latest calls.
Arguments latestArguments();

}  // namespace software_device
}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_gpu/software/detail/DeviceMemory.hpp"
#include "vela_gpu/software/device.hpp"
#include "vela_gpu/software/runtime.hpp"

#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace vela::software_runtime {

/// Work queued on a stream and not yet executed.
struct CUstream_st {
    std::vector<std::function<cudaError_t()>> pending;
};

}  // namespace vela::software_runtime

namespace vela::software_device {

/// The software device: its memory, its streams, the failures that tests planned, and the lock that guards
/// them. Every runtime function and kernel launch passes through `call`.
class SoftwareDevice {
public:
    /// The only device. It is never destroyed, because static Mats free their memory at exit. A forked child
    /// continues with a copy of it, whatever other threads were doing at the time.
    static SoftwareDevice& get();

    /// Runs the body of runtime function `name` under the lock, unless a planned failure replaces it, and
    /// keeps a failure as the calling thread's last error. Turns std::bad_alloc into
    /// cudaErrorMemoryAllocation.
    template <class Body>
    cudaError_t call(const char* name, Body body) {
        const std::lock_guard<std::mutex> lock(mutex_);
        cudaError_t status = plannedFailure(name);
        try {
            if (status == cudaSuccess) status = body();
        } catch (const std::bad_alloc&) {
            status = cudaErrorMemoryAllocation;
        }
        if (status != cudaSuccess) lastError() = status;
        return status;
    }

    static cudaError_t& lastError();

    void planFailure(const char* name, int nth, cudaError_t status);
    void forgetFailures();
    std::size_t liveAllocations();
    Arguments latestArguments();

    // The rest is called only from bodies, with the lock held.

    DeviceMemory memory;
    Arguments latest;

    /// Queues work on a stream; with the null stream, completes the work of all streams, then runs this.
    cudaError_t submit(cudaStream_t stream, std::function<cudaError_t()> work);
    cudaError_t completeAll();
    static cudaError_t complete(CUstream_st& stream);

    cudaStream_t createStream();
    bool isStream(cudaStream_t stream) const;
    void forgetStream(cudaStream_t stream);

    /// Host address of [address, address + bytes) for a kernel; null unless it is live device or managed
    /// memory, aligned as hardware requires.
    template <class T>
    T* kernelAddress(T* address, std::size_t bytes) const {
        return reinterpret_cast<T*>(alignedBytes(address, bytes, alignof(T)));
    }

private:
    struct PlannedFailure {
        std::string name;
        int callsUntil;
        cudaError_t status;
    };

    SoftwareDevice();
    cudaError_t plannedFailure(const char* name);
    std::byte* alignedBytes(const void* address, std::size_t bytes, std::size_t alignment) const;

    std::mutex mutex_;
    std::vector<PlannedFailure> failures_;
    std::vector<std::unique_ptr<CUstream_st>> streams_;
};

}  // namespace vela::software_device

// SPDX-License-Identifier: Apache-2.0
#include "vela_gpu/software/detail/SoftwareDevice.hpp"

#include <pthread.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace vela::software_device {
namespace {

/// Constructed before there are threads, so that no fork happens during its construction.
[[maybe_unused]] const SoftwareDevice& builtEarly = SoftwareDevice::get();

}  // namespace

SoftwareDevice& SoftwareDevice::get() {
    alignas(SoftwareDevice) static std::byte storage[sizeof(SoftwareDevice)];
    static auto* const device = new (storage) SoftwareDevice;
    return *device;
}

SoftwareDevice::SoftwareDevice() {
    pthread_atfork([] { get().mutex_.lock(); }, [] { get().mutex_.unlock(); }, [] { get().mutex_.unlock(); });
}

cudaError_t& SoftwareDevice::lastError() {
    thread_local cudaError_t error = cudaSuccess;
    return error;
}

void SoftwareDevice::planFailure(const char* name, int nth, cudaError_t status) {
    const std::lock_guard<std::mutex> lock(mutex_);
    failures_.push_back({name, nth, status});
}

void SoftwareDevice::forgetFailures() {
    const std::lock_guard<std::mutex> lock(mutex_);
    failures_.clear();
}

std::size_t SoftwareDevice::liveAllocations() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return memory.liveAllocations();
}

Arguments SoftwareDevice::latestArguments() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return latest;
}

cudaError_t SoftwareDevice::plannedFailure(const char* name) {
    cudaError_t status = cudaSuccess;
    for (PlannedFailure& failure : failures_) {
        if (failure.name == name && --failure.callsUntil == 0) status = failure.status;
    }
    const auto isSpent = [](const PlannedFailure& failure) { return failure.callsUntil <= 0; };
    failures_.erase(std::remove_if(failures_.begin(), failures_.end(), isSpent), failures_.end());
    return status;
}

std::byte* SoftwareDevice::alignedBytes(const void* address, std::size_t bytes, std::size_t alignment) const {
    if (reinterpret_cast<std::uintptr_t>(address) % alignment != 0) return nullptr;
    return memory.reach(address, bytes).bytes;
}

cudaError_t SoftwareDevice::submit(cudaStream_t stream, std::function<cudaError_t()> work) {
    if (stream != nullptr) {
        if (!isStream(stream)) return cudaErrorInvalidResourceHandle;
        stream->pending.push_back(std::move(work));
        return cudaSuccess;
    }
    const cudaError_t earlier = completeAll();
    const cudaError_t status = work();
    return status != cudaSuccess ? status : earlier;
}

cudaError_t SoftwareDevice::completeAll() {
    cudaError_t first = cudaSuccess;
    for (const auto& stream : streams_) {
        const cudaError_t status = complete(*stream);
        if (first == cudaSuccess) first = status;
    }
    return first;
}

cudaError_t SoftwareDevice::complete(CUstream_st& stream) {
    cudaError_t first = cudaSuccess;
    for (const auto& work : std::exchange(stream.pending, {})) {
        const cudaError_t status = work();
        if (first == cudaSuccess) first = status;
    }
    return first;
}

cudaStream_t SoftwareDevice::createStream() {
    return streams_.emplace_back(std::make_unique<CUstream_st>()).get();
}

bool SoftwareDevice::isStream(cudaStream_t stream) const {
    return std::any_of(streams_.begin(), streams_.end(),
                       [=](const auto& known) { return known.get() == stream; });
}

void SoftwareDevice::forgetStream(cudaStream_t stream) {
    streams_.erase(std::remove_if(streams_.begin(), streams_.end(),
                                  [=](const auto& known) { return known.get() == stream; }),
                   streams_.end());
}

void failCall(const char* name, int nth, cudaError status) {
    SoftwareDevice::get().planFailure(name, nth, status);
}

void reset() {
    SoftwareDevice::get().forgetFailures();
    SoftwareDevice::lastError() = cudaSuccess;
}

std::size_t liveAllocations() {
    return SoftwareDevice::get().liveAllocations();
}

Arguments latestArguments() {
    return SoftwareDevice::get().latestArguments();
}

}  // namespace vela::software_device

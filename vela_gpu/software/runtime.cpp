// SPDX-License-Identifier: Apache-2.0
#include "vela_gpu/software/runtime.hpp"

#include "vela_gpu/software/detail/SoftwareDevice.hpp"

#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace vela::software_runtime {
namespace {

using vela::software_device::DeviceMemory;
using vela::software_device::SoftwareDevice;

constexpr std::size_t PITCH_ALIGNMENT = 512;
constexpr std::size_t LARGEST_PITCH = std::numeric_limits<std::int32_t>::max();

struct Copy {
    void* destination;
    std::size_t destinationPitch;
    const void* source;
    std::size_t sourcePitch;
    std::size_t width;
    std::size_t height;
    cudaMemcpyKind kind;
    std::size_t largestPitch = LARGEST_PITCH;

    bool readsDevice() const { return kind == cudaMemcpyDeviceToHost || kind == cudaMemcpyDeviceToDevice; }
    bool writesDevice() const { return kind == cudaMemcpyHostToDevice || kind == cudaMemcpyDeviceToDevice; }
};

/// Host address of the rows of one side of a copy; null if they are not all on that side or exceed the
/// address space.
std::byte* findSide(const SoftwareDevice& device, const void* address, std::size_t pitch, const Copy& copy,
                    bool onDevice) {
    std::size_t bytes = 0;
    std::uintptr_t end = 0;
    if (address == nullptr || __builtin_mul_overflow(copy.height - 1, pitch, &bytes) ||
        __builtin_add_overflow(bytes, copy.width, &bytes) ||
        __builtin_add_overflow(reinterpret_cast<std::uintptr_t>(address), bytes, &end)) {
        return nullptr;
    }
    if (!device.memory.owns(address)) {
        const bool hostAllowed = !onDevice || copy.kind == cudaMemcpyDefault;
        return hostAllowed ? static_cast<std::byte*>(const_cast<void*>(address)) : nullptr;
    }
    const DeviceMemory::Reached reached = device.memory.reach(address, bytes);
    const bool deviceAllowed =
        onDevice || reached.kind == DeviceMemory::Kind::MANAGED || copy.kind == cudaMemcpyDefault;
    return deviceAllowed ? reached.bytes : nullptr;
}

void moveRows(std::byte* destination, std::size_t destinationPitch, const std::byte* source,
              std::size_t sourcePitch, std::size_t width, std::size_t height) {
    if (destinationPitch == width && sourcePitch == width) {
        std::memmove(destination, source, width * height);
        return;
    }
    for (std::size_t y = 0; y < height; ++y) {
        std::memmove(destination + y * destinationPitch, source + y * sourcePitch, width);
    }
}

/// Checks a copy and runs it, or queues it on a stream; its addresses are looked up again when it runs.
cudaError_t submitCopy(SoftwareDevice& device, const Copy& copy, cudaStream_t stream) {
    device.latest.copyKind = copy.kind;
    if (stream == nullptr) {
        if (const cudaError_t earlier = device.completeAll(); earlier != cudaSuccess) return earlier;
    }
    if (copy.width == 0 || copy.height == 0) return cudaSuccess;
    if (copy.kind < cudaMemcpyHostToHost || copy.kind > cudaMemcpyDefault) {
        return cudaErrorInvalidMemcpyDirection;
    }
    for (const std::size_t pitch : {copy.destinationPitch, copy.sourcePitch}) {
        if (copy.width > pitch || pitch > copy.largestPitch) return cudaErrorInvalidPitchValue;
    }
    const auto run = [&device, copy](bool dry) {
        std::byte* const to =
            findSide(device, copy.destination, copy.destinationPitch, copy, copy.writesDevice());
        const std::byte* const from =
            findSide(device, copy.source, copy.sourcePitch, copy, copy.readsDevice());
        if (to == nullptr || from == nullptr) return cudaErrorInvalidValue;
        if (!dry) moveRows(to, copy.destinationPitch, from, copy.sourcePitch, copy.width, copy.height);
        return cudaSuccess;
    };
    if (const cudaError_t status = run(true); status != cudaSuccess) return status;
    if (stream == nullptr) return run(false);  // so that it allocates nothing
    return device.submit(stream, [run] { return run(false); });
}

cudaError_t allocate(SoftwareDevice& device, void** pointer, std::size_t bytes, DeviceMemory::Kind kind) {
    void* const memory = device.memory.allocate(bytes, kind);
    if (memory == nullptr && bytes != 0) return cudaErrorMemoryAllocation;
    *pointer = memory;
    return cudaSuccess;
}

}  // namespace

cudaError_t cudaMallocPitch(void** pointer, std::size_t* pitch, std::size_t width, std::size_t height) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaMallocPitch", [&] {
        if (pointer == nullptr || pitch == nullptr || width > LARGEST_PITCH - PITCH_ALIGNMENT) {
            return cudaErrorInvalidValue;
        }
        const std::size_t padded = (width + PITCH_ALIGNMENT - 1) / PITCH_ALIGNMENT * PITCH_ALIGNMENT;
        if (padded != 0 && height > std::numeric_limits<std::size_t>::max() / padded) {
            return cudaErrorMemoryAllocation;
        }
        // A single row is allocated without padding, so that accesses beyond it are detected.
        const std::size_t bytes = height == 1 ? width : padded * height;
        const cudaError_t status = allocate(device, pointer, bytes, DeviceMemory::Kind::DEVICE);
        if (status == cudaSuccess) *pitch = padded;
        return status;
    });
}

cudaError_t cudaMallocManaged(void** pointer, std::size_t bytes, unsigned int flags) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaMallocManaged", [&] {
        device.latest.managedFlags = flags;
        const bool knownFlags = flags == cudaMemAttachGlobal || flags == cudaMemAttachHost;
        if (pointer == nullptr || bytes == 0 || !knownFlags) return cudaErrorInvalidValue;
        return allocate(device, pointer, bytes, DeviceMemory::Kind::MANAGED);
    });
}

cudaError_t cudaFree(void* pointer) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaFree", [&] {
        if (pointer == nullptr) return cudaSuccess;
        const cudaError_t earlier = device.completeAll();
        return device.memory.release(pointer) ? earlier : cudaErrorInvalidValue;
    });
}

cudaError_t cudaMemcpy(void* destination, const void* source, std::size_t bytes, cudaMemcpyKind kind) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaMemcpy", [&] {
        return submitCopy(device, {destination, bytes, source, bytes, bytes, 1, kind, bytes}, nullptr);
    });
}

cudaError_t cudaMemcpy2D(void* destination, std::size_t destinationPitch, const void* source,
                         std::size_t sourcePitch, std::size_t width, std::size_t height,
                         cudaMemcpyKind kind) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaMemcpy2D", [&] {
        const Copy copy{destination, destinationPitch, source, sourcePitch, width, height, kind};
        return submitCopy(device, copy, nullptr);
    });
}

cudaError_t cudaMemcpy2DAsync(void* destination, std::size_t destinationPitch, const void* source,
                              std::size_t sourcePitch, std::size_t width, std::size_t height,
                              cudaMemcpyKind kind, cudaStream_t stream) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaMemcpy2DAsync", [&] {
        const Copy copy{destination, destinationPitch, source, sourcePitch, width, height, kind};
        return submitCopy(device, copy, stream);
    });
}

cudaError_t cudaStreamCreate(cudaStream_t* stream) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaStreamCreate", [&] {
        if (stream == nullptr) return cudaErrorInvalidValue;
        *stream = device.createStream();
        return cudaSuccess;
    });
}

cudaError_t cudaStreamDestroy(cudaStream_t stream) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaStreamDestroy", [&] {
        if (!device.isStream(stream)) return cudaErrorInvalidResourceHandle;
        const cudaError_t status = SoftwareDevice::complete(*stream);
        device.forgetStream(stream);
        return status;
    });
}

cudaError_t cudaStreamSynchronize(cudaStream_t stream) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaStreamSynchronize", [&] {
        if (stream == nullptr) return device.completeAll();
        return device.isStream(stream) ? SoftwareDevice::complete(*stream) : cudaErrorInvalidResourceHandle;
    });
}

cudaError_t cudaStreamAttachMemAsync(cudaStream_t stream, void* pointer, std::size_t bytes,
                                     unsigned int flags) {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaStreamAttachMemAsync", [&] {
        device.latest.attachFlags = flags;
        const std::size_t size = device.memory.managedSize(pointer);
        const bool wholeBuffer = size != 0 && (bytes == 0 || bytes == size);
        const bool toSomeone = flags == cudaMemAttachGlobal || flags == cudaMemAttachHost ||
                               (flags == cudaMemAttachSingle && stream != nullptr);
        if (!wholeBuffer || !toSomeone) return cudaErrorInvalidValue;
        return device.submit(stream, [] { return cudaSuccess; });
    });
}

cudaError_t cudaDeviceSynchronize() {
    SoftwareDevice& device = SoftwareDevice::get();
    return device.call("cudaDeviceSynchronize", [&] { return device.completeAll(); });
}

cudaError_t cudaGetDeviceCount(int* count) {
    return SoftwareDevice::get().call("cudaGetDeviceCount", [&] {
        if (count == nullptr) return cudaErrorInvalidValue;
        *count = 1;
        return cudaSuccess;
    });
}

cudaError_t cudaGetLastError() {
    return std::exchange(SoftwareDevice::lastError(), cudaSuccess);
}

cudaError_t cudaPeekAtLastError() {
    return SoftwareDevice::lastError();
}

}  // namespace vela::software_runtime

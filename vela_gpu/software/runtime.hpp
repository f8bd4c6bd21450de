// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

#include <cstddef>

namespace vela {

/// Part of the CUDA runtime's interface, on this machine's memory; the CUDA Runtime API reference describes
/// it and docs/gpu.md the differences. Its own namespace lets a program load the real runtime as well.
namespace software_runtime VELA_API {

enum cudaError {
    cudaSuccess = 0,
    cudaErrorInvalidValue = 1,
    cudaErrorMemoryAllocation = 2,
    cudaErrorInitializationError = 3,
    cudaErrorCudartUnloading = 4,
    cudaErrorInvalidConfiguration = 9,
    cudaErrorInvalidPitchValue = 12,
    cudaErrorInvalidSymbol = 13,
    cudaErrorInvalidHostPointer = 16,
    cudaErrorInvalidDevicePointer = 17,
    cudaErrorInvalidMemcpyDirection = 21,
    cudaErrorInsufficientDriver = 35,
    cudaErrorDevicesUnavailable = 46,
    cudaErrorInvalidDeviceFunction = 98,
    cudaErrorNoDevice = 100,
    cudaErrorInvalidDevice = 101,
    cudaErrorInvalidKernelImage = 200,
    cudaErrorDeviceUninitialized = 201,
    cudaErrorNoKernelImageForDevice = 209,
    cudaErrorECCUncorrectable = 214,
    cudaErrorOperatingSystem = 304,
    cudaErrorInvalidResourceHandle = 400,
    cudaErrorIllegalState = 401,
    cudaErrorNotReady = 600,
    cudaErrorIllegalAddress = 700,
    cudaErrorLaunchOutOfResources = 701,
    cudaErrorLaunchTimeout = 702,
    cudaErrorContextIsDestroyed = 709,
    cudaErrorAssert = 710,
    cudaErrorHardwareStackError = 714,
    cudaErrorIllegalInstruction = 715,
    cudaErrorMisalignedAddress = 716,
    cudaErrorLaunchFailure = 719,
    cudaErrorNotPermitted = 800,
    cudaErrorNotSupported = 801,
    cudaErrorSystemNotReady = 802,
    cudaErrorSystemDriverMismatch = 803,
    cudaErrorUnknown = 999,
};
using cudaError_t = cudaError;

enum cudaMemcpyKind {
    cudaMemcpyHostToHost = 0,
    cudaMemcpyHostToDevice = 1,
    cudaMemcpyDeviceToHost = 2,
    cudaMemcpyDeviceToDevice = 3,
    cudaMemcpyDefault = 4,
};

#ifndef cudaMemAttachGlobal  // CUDA's header has macros of these names and values
constexpr unsigned int cudaMemAttachGlobal = 1;
constexpr unsigned int cudaMemAttachHost = 2;
constexpr unsigned int cudaMemAttachSingle = 4;
#endif

struct CUstream_st;  // declared here, or the name would mean CUDA's own
using cudaStream_t = CUstream_st*;

cudaError_t cudaMallocPitch(void** pointer, std::size_t* pitch, std::size_t width, std::size_t height);
cudaError_t cudaMallocManaged(void** pointer, std::size_t bytes, unsigned int flags = cudaMemAttachGlobal);
cudaError_t cudaFree(void* pointer);

cudaError_t cudaMemcpy(void* destination, const void* source, std::size_t bytes, cudaMemcpyKind kind);
cudaError_t cudaMemcpy2D(void* destination, std::size_t destinationPitch, const void* source,
                         std::size_t sourcePitch, std::size_t width, std::size_t height, cudaMemcpyKind kind);
cudaError_t cudaMemcpy2DAsync(void* destination, std::size_t destinationPitch, const void* source,
                              std::size_t sourcePitch, std::size_t width, std::size_t height,
                              cudaMemcpyKind kind, cudaStream_t stream = nullptr);

cudaError_t cudaStreamCreate(cudaStream_t* stream);
cudaError_t cudaStreamDestroy(cudaStream_t stream);
cudaError_t cudaStreamSynchronize(cudaStream_t stream);
cudaError_t cudaStreamAttachMemAsync(cudaStream_t stream, void* pointer, std::size_t bytes = 0,
                                     unsigned int flags = cudaMemAttachSingle);
cudaError_t cudaDeviceSynchronize();
cudaError_t cudaGetDeviceCount(int* count);

cudaError_t cudaGetLastError();
cudaError_t cudaPeekAtLastError();
const char* cudaGetErrorString(cudaError_t error);

}  // namespace software_runtime

using namespace software_runtime;

}  // namespace vela

// The names of the runtime are global, unless CUDA's own header has defined them.
#if !defined(__CUDA_RUNTIME_API_H__) && !defined(__DRIVER_TYPES_H__)
using namespace vela::software_runtime;
#endif

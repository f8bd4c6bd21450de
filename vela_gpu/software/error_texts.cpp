// SPDX-License-Identifier: Apache-2.0
#include "vela_gpu/software/runtime.hpp"

#include <algorithm>
#include <iterator>

namespace vela::software_runtime {
namespace {

struct ErrorText {
    cudaError_t error;
    const char* text;
};

// The words of the CUDA runtime.
constexpr ErrorText ERROR_TEXTS[] = {
    {cudaSuccess, "no error"},
    {cudaErrorInvalidValue, "invalid argument"},
    {cudaErrorMemoryAllocation, "out of memory"},
    {cudaErrorInitializationError, "initialization error"},
    {cudaErrorCudartUnloading, "driver shutting down"},
    {cudaErrorInvalidConfiguration, "invalid configuration argument"},
    {cudaErrorInvalidPitchValue, "invalid pitch argument"},
    {cudaErrorInvalidSymbol, "invalid device symbol"},
    {cudaErrorInvalidHostPointer, "invalid host pointer"},
    {cudaErrorInvalidDevicePointer, "invalid device pointer"},
    {cudaErrorInvalidMemcpyDirection, "invalid copy direction for memcpy"},
    {cudaErrorInsufficientDriver, "CUDA driver version is insufficient for CUDA runtime version"},
    {cudaErrorDevicesUnavailable, "CUDA-capable device(s) is/are busy or unavailable"},
    {cudaErrorInvalidDeviceFunction, "invalid device function"},
    {cudaErrorNoDevice, "no CUDA-capable device is detected"},
    {cudaErrorInvalidDevice, "invalid device ordinal"},
    {cudaErrorInvalidKernelImage, "device kernel image is invalid"},
    {cudaErrorDeviceUninitialized, "invalid device context"},
    {cudaErrorNoKernelImageForDevice, "no kernel image is available for execution on the device"},
    {cudaErrorECCUncorrectable, "uncorrectable ECC error encountered"},
    {cudaErrorOperatingSystem, "OS call failed or operation not supported on this OS"},
    {cudaErrorInvalidResourceHandle, "invalid resource handle"},
    {cudaErrorIllegalState, "the operation cannot be performed in the present state"},
    {cudaErrorNotReady, "device not ready"},
    {cudaErrorIllegalAddress, "an illegal memory access was encountered"},
    {cudaErrorLaunchOutOfResources, "too many resources requested for launch"},
    {cudaErrorLaunchTimeout, "the launch timed out and was terminated"},
    {cudaErrorContextIsDestroyed, "context is destroyed"},
    {cudaErrorAssert, "device-side assert triggered"},
    {cudaErrorHardwareStackError, "hardware stack error"},
    {cudaErrorIllegalInstruction, "an illegal instruction was encountered"},
    {cudaErrorMisalignedAddress, "misaligned address"},
    {cudaErrorLaunchFailure, "unspecified launch failure"},
    {cudaErrorNotPermitted, "operation not permitted"},
    {cudaErrorNotSupported, "operation not supported"},
    {cudaErrorSystemNotReady, "system not yet initialized"},
    {cudaErrorSystemDriverMismatch, "system has unsupported display driver / cuda driver combination"},
    {cudaErrorUnknown, "unknown error"},
};

}  // namespace

const char* cudaGetErrorString(cudaError_t error) {
    const auto found = std::find_if(std::begin(ERROR_TEXTS), std::end(ERROR_TEXTS),
                                    [=](const ErrorText& entry) { return entry.error == error; });
    return found == std::end(ERROR_TEXTS) ? "unrecognized error code" : found->text;
}

}  // namespace vela::software_runtime

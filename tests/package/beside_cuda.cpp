// SPDX-License-Identifier: Apache-2.0
// The software device in a program that also uses the real runtime: both headers, both libraries.
#include <cuda_runtime_api.h>
#include <vela_core/vela.hpp>
#include <vela_gpu/software/device.hpp>

#include <cstdio>
#include <type_traits>

namespace soft = vela::software_runtime;

static_assert(!std::is_same_v<cudaError, soft::cudaError>);
static_assert(!std::is_same_v<cudaStream_t, soft::cudaStream_t>);
static_assert(std::is_same_v<decltype(vela::software_device::Arguments::copyKind), soft::cudaMemcpyKind>);

int main() {
    int version = 0;
    const ::cudaError status = cudaRuntimeGetVersion(&version);
    std::printf("the real runtime is version %d\n", version);
    if (status != ::cudaSuccess || version < 12000) return 1;

    // The real runtime would fail without a driver.
    vela::Mat mat(4, 2, vela::MAT_TYPE::MAT_32F_C1, vela::MEM_BOTH);
    if (vela::software_device::liveAllocations() != 1) return 2;
    mat.setTo(5.0F, vela::MEM::GPU);
    float value = 0;
    mat.getValue(3, 1, &value, vela::MEM::GPU);
    return value == 5 && mat.updateCPUfromGPU() == vela::ERROR_CODE::SUCCESS ? 0 : 3;
}

// SPDX-License-Identifier: Apache-2.0
#include "device.hpp"

#include <cstdio>
#include <cstdlib>

namespace vela::bench {
namespace {

__global__ void nothingKernel() {}

__global__ void holdKernel(unsigned long long nanoseconds) {
    const auto now = [] {
        unsigned long long time = 0;
        asm volatile("mov.u64 %0, %%globaltimer;" : "=l"(time));
        return time;
    };
    const unsigned long long start = now();
    while (now() - start < nanoseconds) {
    }
}

}  // namespace

void require(cudaError_t status, const char* what) {
    if (status == cudaSuccess) return;
    std::fprintf(stderr, "%s: %s\n", what, cudaGetErrorString(status));
    std::exit(EXIT_FAILURE);
}

void launchNothing() {
    nothingKernel<<<1, 32>>>();
}

void holdDevice(double microseconds) {
    holdKernel<<<1, 1>>>(static_cast<unsigned long long>(microseconds * 1000));
}

std::string describeDevice() {
    int device = 0;
    int driver = 0;
    int runtime = 0;
    cudaDeviceProp properties{};
    require(cudaGetDevice(&device), "cudaGetDevice");
    require(cudaGetDeviceProperties(&properties, device), "cudaGetDeviceProperties");
    require(cudaDriverGetVersion(&driver), "cudaDriverGetVersion");
    require(cudaRuntimeGetVersion(&runtime), "cudaRuntimeGetVersion");
    char text[512];
    std::snprintf(text, sizeof text,
                  "%s, compute capability %d.%d, %d multiprocessors, %.1f GB, L2 %.0f MB, CUDA of the driver "
                  "%d.%d, of the program %d.%d",
                  properties.name, properties.major, properties.minor, properties.multiProcessorCount,
                  static_cast<double>(properties.totalGlobalMem) / 1e9, properties.l2CacheSize / 1e6,
                  driver / 1000, driver / 10 % 100, runtime / 1000, runtime / 10 % 100);
    return text;
}

}  // namespace vela::bench

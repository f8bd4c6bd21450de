// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks a function that kernels call too: nvcc compiles it for host and device, other compilers ignore it.
#ifdef __CUDACC__
#define VELA_HOST_DEVICE __host__ __device__
#else
#define VELA_HOST_DEVICE
#endif

/// Marks a loop that kernels rarely enter: unrolling it would only cost registers.
#ifdef __CUDA_ARCH__
#define VELA_RARE_LOOP _Pragma("unroll 1")
#else
#define VELA_RARE_LOOP
#endif

/// Loads a float that no kernel writes while this kernel runs.
#ifdef __CUDA_ARCH__
#define VELA_LOAD_CONSTANT(address) __ldg(address)
#else
#define VELA_LOAD_CONSTANT(address) (*(address))
#endif

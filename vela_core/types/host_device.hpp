// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks a function that kernels call too: nvcc compiles it for both sides, other compilers see nothing.
#ifdef __CUDACC__
#define VELA_HOST_DEVICE __host__ __device__
#else
#define VELA_HOST_DEVICE
#endif

/// Stands before a loop that kernels rarely enter: unrolled, it would only cost them registers.
#ifdef __CUDA_ARCH__
#define VELA_RARE_LOOP _Pragma("unroll 1")
#else
#define VELA_RARE_LOOP
#endif

/// Loads a float that no kernel writes while this one runs.
#ifdef __CUDA_ARCH__
#define VELA_LOAD_CONSTANT(address) __ldg(address)
#else
#define VELA_LOAD_CONSTANT(address) (*(address))
#endif

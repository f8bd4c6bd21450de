// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks a function that kernels call too: nvcc compiles it for host and device, other compilers ignore it.
#ifdef __CUDACC__
#define VELA_HOST_DEVICE __host__ __device__
#else
#define VELA_HOST_DEVICE
#endif

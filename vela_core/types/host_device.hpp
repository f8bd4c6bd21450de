#pragma once

/// Marks a function that kernels call too: nvcc compiles it for both sides, other compilers see nothing.
#ifdef __CUDACC__
#define VELA_HOST_DEVICE __host__ __device__
#else
#define VELA_HOST_DEVICE
#endif

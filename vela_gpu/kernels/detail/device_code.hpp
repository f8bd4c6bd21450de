// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/host_device.hpp"

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

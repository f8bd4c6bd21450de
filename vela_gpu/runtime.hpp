// SPDX-License-Identifier: Apache-2.0
#pragma once

// The only place that chooses what the library runs on. The build defines one of the two macros, for users
// too.
#if defined(VELA_GPU_CUDA)
#include <cuda_runtime_api.h>
#elif defined(VELA_GPU_SOFTWARE)
#include "vela_gpu/software/runtime.hpp"
#else
#error "define VELA_GPU_CUDA or VELA_GPU_SOFTWARE; linking to vela::core does"
#endif

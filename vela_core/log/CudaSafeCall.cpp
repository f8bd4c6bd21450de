// SPDX-License-Identifier: Apache-2.0
#include "vela_core/log/CudaSafeCall.hpp"

#include <cstdio>

namespace vela {

// NOLINTNEXTLINE(bugprone-reserved-identifier): a public name
void __cudaSafeCall(cudaError status, const char* text, const char* /*text2*/, int /*line*/) {
    if (status == cudaSuccess) return;
    std::printf("in %s : Err [%d]: %s.\n", text, static_cast<int>(status), cudaGetErrorString(status));
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_gpu/runtime.hpp"

namespace vela VELA_API {

/// Prints "in TEXT : Err [NUMBER]: WHAT.\n" on standard output unless `status` is `cudaSuccess`; `text` is
/// the signature of the function that failed. `text2` and `line` are ignored.
// NOLINTNEXTLINE(bugprone-reserved-identifier): a public name
void __cudaSafeCall(cudaError status, const char* text, const char* text2, int line);

}  // namespace vela

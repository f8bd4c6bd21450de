// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace vela::bench {

/// Multiplies floats in place as fast as this processor can: load, multiply, store, in registers of AVX2
/// where there are any.
void multiplyAll(float* values, std::size_t count, float factor);

}  // namespace vela::bench

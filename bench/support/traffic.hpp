// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Comparison.hpp"

#include <cstddef>
#include <functional>

namespace vela::bench {

/// Multiplies floats in place: load, multiply, store, with AVX2 where the processor has it.
using MultiplyAll = void (*)(float* values, std::size_t count, float factor);

/// Adds the limits of a loop over an image, with and without prefetching, since either may be faster. `work`
/// applies the given loop to all floats that the contenders convert.
void addTrafficLimits(Comparison& comparison, const std::function<void(MultiplyAll)>& work,
                      const Check& check = nullptr);

}  // namespace vela::bench

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Comparison.hpp"

#include <cstddef>
#include <functional>

namespace vela::bench {

/// Multiplies floats in place: load, multiply, store, in registers of AVX2 where there are any.
using MultiplyAll = void (*)(float* values, std::size_t count, float factor);

/// Adds what bounds a loop over an image, with and without prefetching: either may be the faster one. `work`
/// calls the loop that it gets for all floats that the contenders convert.
void addTrafficLimits(Comparison& comparison, const std::function<void(MultiplyAll)>& work,
                      const Check& check = nullptr);

}  // namespace vela::bench

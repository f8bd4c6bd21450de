// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_gpu/kernels/detail/pixel_ops.hpp"

#include <cstddef>

namespace vela::detail {

// The only place that repeats the arithmetic of pixel_ops.hpp: in cache, the portable loop takes 1.4 times as
// long for three floats and 2.1 times as long for four, even compiled for AVX2, and 1.6 times as long for
// plain scaling.

#if defined(__x86_64__)

/// Whether this processor has AVX2, which the functions below require.
bool hasAvx2();

// Each applies `op` to the first pixels of a row, as many as fill whole vectors, and returns their number.

std::size_t applyToRowByAvx2(float* row, std::size_t width, const ScaleAll& op);
std::size_t applyToRowByAvx2(Vector3<float>* row, std::size_t width, const ApplyMatrix3& op);
std::size_t applyToRowByAvx2(Vector4<float>* row, std::size_t width, const ApplyMatrix4& op);

#else

inline bool hasAvx2() {
    return false;
}

template <class Pixel, class Op>
std::size_t applyToRowByAvx2(Pixel* /*row*/, std::size_t /*width*/, const Op& /*op*/) {
    return 0;
}

#endif

}  // namespace vela::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace vela::detail {

// Packed colour with alpha 0 is a denormal float, so one lane in four of a usual cloud is. Some processors
// take over a hundred cycles for a product with one; others multiply at full speed whatever the value.

/// Whether `scaleAroundDenormals` pays here: this processor is slow at denormals, as a race of a few
/// microseconds at the first call tells, and the calling thread has the default modes.
bool denormalsAreSlow();

/// Whether floating-point arithmetic of the calling thread rounds to nearest, keeps denormals and traps
/// nothing. In other modes (denormals as zero in programs linked with -ffast-math) only the processor's own
/// multiplication gives all pixels of a row the same treatment.
bool hasDefaultFloatModes();

/// Whether this processor has the instructions for `scaleAroundDenormals` (AVX2).
bool canScaleAroundDenormals();

/// Multiplies the first floats of an array, as many as fill whole groups of vectors, and returns how many:
/// the bits of `*=`, without a multiplication that meets a denormal. The factor is positive and normal.
std::size_t scaleAroundDenormals(float* values, std::size_t count, float factor);

}  // namespace vela::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace vela::detail {

// Packed colour with alpha 0 is a denormal float, so every fourth lane of a typical cloud is one. Some
// processors take over a hundred cycles to multiply it; others run at full speed for every value.

/// Whether `scaleAroundDenormals` pays: this processor is slow at denormals, as a timing of a few
/// microseconds at the first call shows, and the calling thread has the default modes.
bool denormalsAreSlow();

/// Whether floating-point arithmetic of the calling thread rounds to nearest, keeps denormals and traps
/// nothing. In other modes (denormals as zero in programs linked with -ffast-math) only the processor's own
/// multiplication treats all pixels of a row alike.
bool hasDefaultFloatModes();

/// Whether this processor has the instructions for `scaleAroundDenormals` (AVX2).
bool canScaleAroundDenormals();

/// Multiplies the first floats of an array, as many as fill whole groups of vectors, and returns their
/// number. The results have the bits of `*=`, but no denormal is ever multiplied. The factor is positive and
/// normal.
std::size_t scaleAroundDenormals(float* values, std::size_t count, float factor);

}  // namespace vela::detail

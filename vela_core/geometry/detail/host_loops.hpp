// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_gpu/kernels/detail/PixelView.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

namespace vela::detail {

// What forEachPixel does, at the speed of memory for whole clouds. Results are the same to the bit, apart
// from the sign and payload of NaNs, which no formula settles. Each returns how many pixels were converted by
// vector instructions.

/// Multiplies every float. Rows of pixels are rows of floats here: see `asFloats`.
std::size_t applyOnHost(const PixelView<float>& view, const ScaleAll& op);
std::size_t applyOnHost(const PixelView<Vector3<float>>& view, const ApplyMatrix3& op);
std::size_t applyOnHost(const PixelView<Vector4<float>>& view, const ApplyMatrix4& op);

/// The components of all pixels as an image of one float a pixel.
template <class Pixel>
PixelView<float> asFloats(const PixelView<Pixel>& view) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): a pixel may be one float
    constexpr std::size_t CHANNELS = sizeof(Pixel) / sizeof(float);
    return {reinterpret_cast<float*>(view.data), view.width * CHANNELS, view.height, view.stepBytes};
}

}  // namespace vela::detail

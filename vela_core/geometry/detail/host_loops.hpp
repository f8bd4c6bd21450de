// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_gpu/kernels/detail/PixelView.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

namespace vela::detail {

// `forEachPixel` at the speed of memory, for whole clouds. Results are identical bit for bit, except for the
// sign and payload of NaNs, which no formula determines. Each returns the number of pixels that vector
// instructions converted.

/// Multiplies every float. Pass rows of pixels as rows of floats: see `asFloats`.
std::size_t applyOnHost(const PixelView<float>& view, const ScaleAll& op);
std::size_t applyOnHost(const PixelView<Vector3<float>>& view, const ApplyMatrix3& op);
std::size_t applyOnHost(const PixelView<Vector4<float>>& view, const ApplyMatrix4& op);

/// The components of all pixels as an image with one float per pixel.
template <class Pixel>
PixelView<float> asFloats(const PixelView<Pixel>& view) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): a pixel may be one float
    constexpr std::size_t CHANNELS = sizeof(Pixel) / sizeof(float);
    return {reinterpret_cast<float*>(view.data), view.width * CHANNELS, view.height, view.stepBytes};
}

}  // namespace vela::detail

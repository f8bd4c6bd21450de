// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/detail/host_loops.hpp"

#include "vela_core/geometry/detail/avx2_rows.hpp"
#include "vela_core/geometry/detail/denormals.hpp"
#include "vela_core/geometry/detail/pixel_loop.hpp"

namespace vela::detail {
namespace {

/// Calls `vectorPart(pixels, width)` for the beginning of each row; it returns how many pixels it converted.
/// The rest of the row goes pixel by pixel. Packed rows count as one, which has one such rest.
template <class Pixel, class Op, class VectorPart>
void applyByRows(PixelView<Pixel> view, const Op& op, VectorPart vectorPart) {
    if (view.empty()) return;
    if (view.packed()) view = view.joined();
    auto* row = reinterpret_cast<std::byte*>(view.data);
    for (std::size_t y = 0; y < view.height; ++y, row += view.stepBytes) {
        auto* const pixels = reinterpret_cast<Pixel*>(row);
        const std::size_t done = vectorPart(pixels, view.width);
        forEachPixel(PixelView<Pixel>{pixels + done, view.width - done, 1, view.stepBytes}, op);
    }
}

template <class Pixel, class Op>
void applyMatrix(const PixelView<Pixel>& view, const Op& op) {
    applyByRows(view, op, [&](Pixel* pixels, std::size_t width) {
        return hasAvx2() ? applyToRowByAvx2(pixels, width, op) : 0;
    });
}

}  // namespace

void applyOnHost(const PixelView<float>& view, const ScaleAll& op) {
    const bool slow = denormalsAreSlow();
    applyByRows(view, op, [&](float* values, std::size_t count) {
        return slow ? scaleAroundDenormals(values, count, op.factor) : 0;
    });
}

void applyOnHost(const PixelView<Vector3<float>>& view, const ApplyMatrix3& op) {
    applyMatrix(view, op);
}

void applyOnHost(const PixelView<Vector4<float>>& view, const ApplyMatrix4& op) {
    applyMatrix(view, op);
}

}  // namespace vela::detail

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/detail/host_loops.hpp"

#include "vela_core/geometry/detail/avx2_rows.hpp"
#include "vela_core/geometry/detail/denormals.hpp"
#include "vela_core/geometry/detail/pixel_loop.hpp"

namespace vela::detail {
namespace {

/// Calls `vectorPart(pixels, width)` for the beginning of each row; it returns the number of pixels it
/// converted. The rest of the row is converted pixel by pixel. Packed rows count as one row, which has one
/// such rest. Returns the sum of the results of `vectorPart`.
template <class Pixel, class Op, class VectorPart>
std::size_t applyByRows(PixelView<Pixel> view, const Op& op, VectorPart vectorPart) {
    std::size_t vectorised = 0;
    if (view.empty()) return vectorised;
    if (view.packed()) view = view.joined();
    auto* row = reinterpret_cast<std::byte*>(view.data);
    for (std::size_t y = 0; y < view.height; ++y, row += view.stepBytes) {
        auto* const pixels = reinterpret_cast<Pixel*>(row);
        const std::size_t done = vectorPart(pixels, view.width);
        forEachPixel(PixelView<Pixel>{pixels + done, view.width - done, 1, view.stepBytes}, op);
        vectorised += done;
    }
    return vectorised;
}

template <class Pixel, class Op>
std::size_t applyInVectors(const PixelView<Pixel>& view, const Op& op) {
    return applyByRows(view, op, [&](Pixel* pixels, std::size_t width) {
        return hasAvx2() ? applyToRowByAvx2(pixels, width, op) : 0;
    });
}

}  // namespace

std::size_t applyOnHost(const PixelView<float>& view, const ScaleAll& op) {
    if (!denormalsAreSlow()) return applyInVectors(view, op);
    return applyByRows(view, op, [&](float* values, std::size_t count) {
        return scaleAroundDenormals(values, count, op.factor);
    });
}

std::size_t applyOnHost(const PixelView<Vector3<float>>& view, const ApplyMatrix3& op) {
    return applyInVectors(view, op);
}

std::size_t applyOnHost(const PixelView<Vector4<float>>& view, const ApplyMatrix4& op) {
    return applyInVectors(view, op);
}

}  // namespace vela::detail

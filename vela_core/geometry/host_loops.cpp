#include "vela_core/geometry/host_loops.hpp"

#include "vela_core/geometry/avx2_rows.hpp"
#include "vela_gpu/pixel_loop.hpp"

namespace vela {
namespace {

/// Vectors take the beginning of each row, and the rest goes pixel by pixel.
template <class Pixel, class Op>
void applyByRows(const PixelView<Pixel>& view, const Op& op) {
    if (!hasAvx2()) return forEachPixel(view, op);
    if (view.empty()) return;
    auto* row = reinterpret_cast<std::byte*>(view.data);
    for (std::size_t y = 0; y < view.height; ++y, row += view.stepBytes) {
        auto* const pixels = reinterpret_cast<Pixel*>(row);
        const std::size_t done = applyToRowByAvx2(pixels, view.width, op);
        forEachPixel(PixelView<Pixel>{pixels + done, view.width - done, 1, view.stepBytes}, op);
    }
}

}  // namespace

void applyOnHost(const PixelView<float>& view, const ScaleAll& op) {
    applyByRows(view, op);
}

void applyOnHost(const PixelView<Vector3<float>>& view, const ScaleAll& op) {
    applyByRows(view, op);
}

void applyOnHost(const PixelView<Vector4<float>>& view, const ScaleAll& op) {
    applyByRows(view, op);
}

void applyOnHost(const PixelView<Vector3<float>>& view, const ApplyMatrix3& op) {
    applyByRows(view, op);
}

void applyOnHost(const PixelView<Vector4<float>>& view, const ApplyMatrix4& op) {
    applyByRows(view, op);
}

}  // namespace vela

#pragma once

#include "vela_gpu/PixelView.hpp"

#include <cstddef>
#include <cstdint>

namespace vela {

/// Replaces every pixel p of memory that the host may access by op(p), row by row.
template <class T, class Op>
void forEachPixel(const PixelView<T>& view, Op op) {
    if (view.empty()) return;
    auto* row = reinterpret_cast<std::byte*>(view.data);
    for (std::uint32_t y = 0; y < view.height; ++y, row += view.stepBytes) {
        T* const pixels = reinterpret_cast<T*>(row);
        for (std::uint32_t x = 0; x < view.width; ++x) {
            pixels[x] = op(pixels[x]);
        }
    }
}

}  // namespace vela

#pragma once

#include "vela_gpu/kernels/detail/PixelView.hpp"

#include <cstddef>
#include <cstring>

namespace vela {

/// Replaces every pixel p of memory that the host may access by op(p), row by row.
template <class T, class Op>
void forEachPixel(const PixelView<T>& view, Op op) {
    if (view.empty()) return;
    auto* row = reinterpret_cast<std::byte*>(view.data);
    for (std::size_t y = 0; y < view.height; ++y, row += view.stepBytes) {
        // By copies, since a step that a user gave may leave rows at any address.
        for (std::size_t x = 0; x < view.width; ++x) {
            T pixel;
            std::memcpy(static_cast<void*>(&pixel), row + x * sizeof pixel, sizeof pixel);
            pixel = op(pixel);
            std::memcpy(row + x * sizeof pixel, &pixel, sizeof pixel);
        }
    }
}

}  // namespace vela

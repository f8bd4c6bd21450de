#pragma once

#include "vela_gpu/PixelView.hpp"

#include <algorithm>
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

/// Sets every pixel of `destination` to op(p) of the pixel p of `source` at its place; both have the same
/// size.
template <class From, class To, class Op>
void mapEachPixel(const PixelView<From>& source, const PixelView<To>& destination, Op op) {
    if (source.empty() || destination.empty()) return;
    const auto* from = reinterpret_cast<const std::byte*>(source.data);
    auto* to = reinterpret_cast<std::byte*>(destination.data);
    for (std::uint32_t y = 0; y < source.height; ++y, from += source.stepBytes, to += destination.stepBytes) {
        const From* const pixels = reinterpret_cast<const From*>(from);
        std::transform(pixels, pixels + source.width, reinterpret_cast<To*>(to), op);
    }
}

}  // namespace vela

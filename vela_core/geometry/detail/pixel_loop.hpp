// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/Vector.hpp"
#include "vela_gpu/kernels/detail/PixelView.hpp"

#include <cstddef>
#include <cstring>

namespace vela::detail {

// Pixels are loaded and stored float by float: compilers then put several of them into a vector register,
// which they do not do for whole structs. By memcpy, because a step given by the user may put rows at any
// address.

inline float loadFloat(const std::byte* address) {
    float value;
    std::memcpy(&value, address, sizeof value);
    return value;
}
inline void load(const std::byte* address, float& pixel) {
    pixel = loadFloat(address);
}
inline void load(const std::byte* address, Vector3<float>& pixel) {
    pixel = {loadFloat(address), loadFloat(address + 4), loadFloat(address + 8)};
}
inline void load(const std::byte* address, Vector4<float>& pixel) {
    pixel = {loadFloat(address), loadFloat(address + 4), loadFloat(address + 8), loadFloat(address + 12)};
}

inline void store(std::byte* address, float pixel) {
    std::memcpy(address, &pixel, sizeof pixel);
}
inline void store(std::byte* address, Vector3<float> pixel) {
    store(address, pixel.x);
    store(address + 4, pixel.y);
    store(address + 8, pixel.z);
}
inline void store(std::byte* address, Vector4<float> pixel) {
    store(address, pixel.x);
    store(address + 4, pixel.y);
    store(address + 8, pixel.z);
    store(address + 12, pixel.w);
}

/// Replaces every pixel p of a host image by op(p), row by row; T is float or a Vector of floats.
template <class T, class Op>
void forEachPixel(const PixelView<T>& view, Op op) {
    if (view.empty()) return;
    auto* row = reinterpret_cast<std::byte*>(view.data);
    for (std::size_t y = 0; y < view.height; ++y, row += view.stepBytes) {
        for (std::size_t x = 0; x < view.width; ++x) {
            T pixel;
            load(row + x * sizeof pixel, pixel);
            store(row + x * sizeof pixel, op(pixel));
        }
    }
}

}  // namespace vela::detail

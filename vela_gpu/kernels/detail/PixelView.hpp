// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace vela::detail {

/// One side of an image, for loops and kernels: `height` rows of `width` pixels of type T, row y starting
/// `y * stepBytes` bytes after `data`. It owns nothing; `data` may be a device pointer.
///
///     | pixel pixel pixel | padding |   stepBytes >= width * sizeof(T)
template <class T>
struct PixelView {
    T* data;
    std::size_t width;
    std::size_t height;
    std::size_t stepBytes;

    bool empty() const { return data == nullptr || width == 0 || height == 0; }
    std::size_t rowBytes() const { return width * sizeof(T); }
    bool packed() const { return stepBytes == rowBytes(); }
    /// Packed rows as a single row, which has one remainder instead of many.
    PixelView joined() const { return {data, width * height, 1, height * stepBytes}; }
    /// Distance from the first byte to the end of the last row, without the padding of that row; SIZE_MAX if
    /// it overflows.
    std::size_t spanBytes() const {
        if (width > SIZE_MAX / sizeof(T)) return SIZE_MAX;
        if (height > 1 && stepBytes > (SIZE_MAX - rowBytes()) / (height - 1)) return SIZE_MAX;
        return (height - 1) * stepBytes + rowBytes();
    }
};

/// View of an image whose row step is counted in pixels.
template <class T>
PixelView<T> elementView(T* data, std::uint32_t stepElements, std::uint32_t width, std::uint32_t height) {
    return {data, width, height, stepElements * sizeof(T)};
}

}  // namespace vela::detail

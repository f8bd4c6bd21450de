// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace vela {

/// Size of an image in pixels.
struct Resolution {
    std::size_t width = 0;   ///< pixels in a row
    std::size_t height = 0;  ///< rows

    /// Whether both sizes are equal.
    friend constexpr bool operator==(const Resolution& a, const Resolution& b) noexcept {
        return a.width == b.width && a.height == b.height;
    }
    /// The opposite of `==`.
    friend constexpr bool operator!=(const Resolution& a, const Resolution& b) noexcept { return !(a == b); }
};

}  // namespace vela

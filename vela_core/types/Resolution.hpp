#pragma once

#include <cstddef>

namespace vela {

/// Size of an image in pixels.
struct Resolution {
    std::size_t width = 0;
    std::size_t height = 0;

    friend constexpr bool operator==(const Resolution& a, const Resolution& b) noexcept {
        return a.width == b.width && a.height == b.height;
    }
    friend constexpr bool operator!=(const Resolution& a, const Resolution& b) noexcept { return !(a == b); }
};

}  // namespace vela

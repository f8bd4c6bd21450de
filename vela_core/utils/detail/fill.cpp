// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/detail/fill.hpp"

#include <algorithm>
#include <cstring>

namespace vela::detail {

void fillWithPixel(void* buffer, std::size_t bytes, const void* pixel, std::size_t pixelBytes) {
    // Doubles the filled part until it is a good block to copy: large enough for memcpy's widest stores,
    // small enough to stay in the first-level cache.
    constexpr std::size_t LARGE_ENOUGH = 8192;
    auto* const out = static_cast<unsigned char*>(buffer);
    std::size_t block = std::min(bytes, pixelBytes);
    std::memcpy(out, pixel, block);
    for (std::size_t done = block; done < bytes; done += block) {
        if (block < LARGE_ENOUGH) block = done;
        std::memcpy(out + done, out, std::min(block, bytes - done));
    }
}

}  // namespace vela::detail

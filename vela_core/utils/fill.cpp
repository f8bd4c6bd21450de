#include "vela_core/utils/fill.hpp"

#include <cstring>

namespace vela {

void fillWithPixel(void* buffer, std::size_t bytes, const void* pixel, std::size_t pixelBytes) {
    // A block that holds a whole number of pixels of each size and of vector registers.
    constexpr std::size_t BLOCK = 192;
    alignas(64) unsigned char block[BLOCK];
    for (std::size_t at = 0; at < BLOCK; at += pixelBytes) {
        std::memcpy(block + at, pixel, pixelBytes);
    }
    auto* out = static_cast<unsigned char*>(buffer);
    for (; bytes >= BLOCK; bytes -= BLOCK, out += BLOCK) {
        std::memcpy(out, block, BLOCK);
    }
    std::memcpy(out, block, bytes);
}

}  // namespace vela

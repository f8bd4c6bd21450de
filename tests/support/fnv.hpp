#pragma once

#include <cstdint>
#include <string_view>

namespace vela::test {

/// 64-bit FNV-1a hash. Long tables of texts are compared by the hash of what they must be, worked out apart
/// from the library, so that a test is not a second copy of the table.
inline std::uint64_t fnv1a(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    return hash;
}

}  // namespace vela::test

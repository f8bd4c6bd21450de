// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace vela::io::detail {

// LZF: a control byte n below 32 is followed by n + 1 literal bytes. A larger one copies 3 to 264 earlier
// bytes: its upper three bits are the length minus 2 (if 7, the next byte is added), its lower five bits and
// the byte that follows the distance minus 1.

/// Compresses at most 2^32 - 2 bytes.
std::string compressLzf(const char* bytes, std::size_t count);

/// Writes exactly `wanted` bytes; false if the text is damaged or holds another number of bytes.
bool expandLzf(const char* bytes, std::size_t count, char* out, std::size_t wanted);

/// No input of `count` bytes unpacks to more.
constexpr std::size_t largestExpansion(std::size_t count) {
    return count * 88;
}

}  // namespace vela::io::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace vela::io::detail {

/// Bytes by the LZF rule: a control byte below 32 announces that many and one more bytes as they are; from 32
/// on it is a copy of bytes before, 3 to 264 of them, its upper three bits the length minus 2 (7: the next
/// byte is added) and its lower five bits with the next byte the distance minus 1.

/// At most 2^32 - 2 bytes in this form.
std::string compressLzf(const char* bytes, std::size_t count);

/// Writes exactly `wanted` bytes; false if the text is damaged or holds another number of bytes.
bool expandLzf(const char* bytes, std::size_t count, char* out, std::size_t wanted);

/// No input of `count` bytes unpacks to more.
constexpr std::size_t largestExpansion(std::size_t count) {
    return count * 88;
}

}  // namespace vela::io::detail

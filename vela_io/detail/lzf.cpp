// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/lzf.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vela::io::detail {
namespace {

constexpr std::size_t LONGEST_LITERAL = 32;
constexpr std::size_t FARTHEST = 8192;
constexpr std::size_t SHORTEST_COPY = 3;
constexpr std::size_t LONGEST_COPY = 264;
constexpr unsigned HASH_BITS = 15;

std::size_t hashOf(const char* bytes) {
    std::uint32_t three = 0;
    std::memcpy(&three, bytes, SHORTEST_COPY);
    return static_cast<std::uint32_t>(three * 2654435761U) >> (32 - HASH_BITS);
}

char* writeLiterals(char* out, const char* from, std::size_t count) {
    while (count > 0) {
        const std::size_t part = std::min(count, LONGEST_LITERAL);
        *out++ = static_cast<char>(part - 1);
        std::memcpy(out, from, part);
        out += part;
        from += part;
        count -= part;
    }
    return out;
}

char* writeCopy(char* out, std::size_t distance, std::size_t length) {
    const std::size_t stored = length - 2;
    const std::size_t upper = std::min<std::size_t>(stored, 7) << 5 | (distance - 1) >> 8;
    *out++ = static_cast<char>(upper);
    if (stored >= 7) *out++ = static_cast<char>(stored - 7);
    *out++ = static_cast<char>((distance - 1) & 0xff);
    return out;
}

std::size_t equalBytes(const char* a, const char* b, std::size_t most) {
    std::size_t length = 0;
    while (length < most && a[length] == b[length]) {
        ++length;
    }
    return length;
}

}  // namespace

std::string compressLzf(const char* bytes, std::size_t count) {
    // Literals alone are the longest: a copy takes three bytes at most, and no more than it stands for.
    std::string packed(count + count / LONGEST_LITERAL + 1, '\0');
    char* out = packed.data();
    std::vector<std::uint32_t> places(std::size_t{1} << HASH_BITS, 0);  // behind the last place of each hash
    std::size_t literals = 0;                                           // where those not yet written begin
    std::size_t at = 0;
    while (at + SHORTEST_COPY <= count) {
        std::uint32_t& place = places[hashOf(bytes + at)];
        const std::size_t earlier = place;
        place = static_cast<std::uint32_t>(at + 1);
        const std::size_t distance = at + 1 - earlier;
        const std::size_t length =
            earlier == 0 || distance > FARTHEST
                ? 0
                : equalBytes(bytes + earlier - 1, bytes + at, std::min(LONGEST_COPY, count - at));
        if (length < SHORTEST_COPY) {
            ++at;
            continue;
        }
        out = writeLiterals(out, bytes + literals, at - literals);
        out = writeCopy(out, distance, length);
        at += length;
        literals = at;
    }
    out = writeLiterals(out, bytes + literals, count - literals);
    packed.resize(static_cast<std::size_t>(out - packed.data()));
    return packed;
}

bool expandLzf(const char* bytes, std::size_t count, char* out, std::size_t wanted) {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    const unsigned char* const inEnd = in + count;
    std::size_t done = 0;
    while (in < inEnd) {
        const std::size_t control = *in++;
        if (control < LONGEST_LITERAL) {
            const std::size_t length = control + 1;
            if (length > static_cast<std::size_t>(inEnd - in) || length > wanted - done) return false;
            std::memcpy(out + done, in, length);
            in += length;
            done += length;
            continue;
        }
        std::size_t length = control >> 5;
        if (inEnd - in < (length == 7 ? 2 : 1)) return false;
        if (length == 7) length += *in++;
        length += 2;
        const std::size_t distance = ((control & 31) << 8 | *in++) + 1;
        if (distance > done || length > wanted - done) return false;
        // The copied bytes may overlap those that they are copied from.
        for (std::size_t i = 0; i < length; ++i, ++done) {
            out[done] = out[done - distance];
        }
    }
    return done == wanted;
}

}  // namespace vela::io::detail

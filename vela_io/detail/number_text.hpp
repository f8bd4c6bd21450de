// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>

namespace vela::io::detail {

/// Room for any number that the functions below write, and for what they may leave behind it.
constexpr std::size_t LONGEST_NUMBER = 48;

/// The shortest text that reads back to the same float: as many digits as it takes, with or without an
/// exponent, whichever is shorter; "nan", "inf" and "-inf". Schubfach, by R. Giulietti ("The Schubfach way to
/// render doubles", 2020), for 32 bits.
char* writeShortest(char* out, float value);

/// The shortest text that reads back to the same double.
std::string shortest(double value);

/// A whole number in decimal.
inline char* writeWhole(char* out, std::uint64_t value) {
    return std::to_chars(out, out + LONGEST_NUMBER, value).ptr;
}

/// Reads a number at `begin`, with sign, exponent, "nan" and "inf". Returns where it ends, or null if there
/// is none. Gives the nearest float, ties to even; numbers out of range become infinite or 0, as with
/// `strtof`. Short decimals take one exact division, all others `std::from_chars`.
const char* readFloatSlowly(const char* begin, const char* end, float& value);
const char* readDouble(const char* begin, const char* end, double& value);

inline bool isDigit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

/// 10^0 to 10^22, which doubles hold exactly.
inline constexpr double POWERS_OF_10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                          1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// `*end` may be read and is no digit.
inline const char* readFloat(const char* begin, const char* end, float& value) {
    const char* p = begin;
    const bool negative = *p == '-';
    if (negative) ++p;
    std::uint64_t digits = 0;
    const char* const first = p;
    for (; isDigit(*p); ++p) {
        digits = digits * 10 + static_cast<std::uint64_t>(*p - '0');
    }
    auto count = static_cast<std::size_t>(p - first);
    std::size_t fraction = 0;
    if (*p == '.') {
        const char* const point = ++p;
        for (; isDigit(*p); ++p) {
            digits = digits * 10 + static_cast<std::uint64_t>(*p - '0');
        }
        fraction = static_cast<std::size_t>(p - point);
        count += fraction;
    }
    const char next = static_cast<char>(*p | 0x20);
    constexpr std::size_t EXACT_DIGITS = 15;  // doubles hold every integer of 15 digits
    // Letters may go on with an exponent or be part of "nan" and "inf".
    if (count - 1 >= EXACT_DIGITS || next == 'e') return readFloatSlowly(begin, end, value);
    // Rounds twice, to the nearest double and from there to float: right unless that double lies halfway
    // between two floats.
    const double nearest = static_cast<double>(digits) / POWERS_OF_10[fraction];
    std::uint64_t bits = 0;
    std::memcpy(&bits, &nearest, sizeof bits);
    constexpr std::uint64_t BELOW_FLOAT = (std::uint64_t{1} << 29) - 1;
    if ((bits & BELOW_FLOAT) == std::uint64_t{1} << 28) return readFloatSlowly(begin, end, value);
    value = static_cast<float>(negative ? -nearest : nearest);
    return p;
}

}  // namespace vela::io::detail

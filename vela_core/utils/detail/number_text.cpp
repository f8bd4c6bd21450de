// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/detail/number_text.hpp"

#include <charconv>
#include <cstdint>
#include <cstring>

namespace vela::detail {
namespace {

constexpr int DIGITS_AFTER_POINT = 6;

// A float is m * 2^(exponent - EXPONENT_BIAS) with m below 2^24.
constexpr std::uint32_t MANTISSA_BITS = 23;
constexpr std::uint32_t HIDDEN_BIT = 1U << MANTISSA_BITS;
constexpr std::uint32_t SIGN_BIT = 1U << 31;
constexpr std::uint32_t EXPONENT_BIAS = 150;

std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// Three digits of a value below 1000. It writes four characters, in one store.
char* writeGroup(char* out, std::uint32_t value) {
    std::memcpy(out, &DIGIT_GROUPS.digits[value * DigitGroups::GROUP], 4);
    return out + DigitGroups::GROUP;
}

/// Six digits of a value below 10^6.
char* writeSixDigits(char* out, std::uint32_t value) {
    return writeGroup(writeGroup(out, value / 1000), value % 1000);
}

char* writeUnsigned(char* out, std::uint64_t value) {
    if (value < 1000) return writeBelow1000(out, static_cast<std::uint32_t>(value));
    return writeGroup(writeUnsigned(out, value / 1000), static_cast<std::uint32_t>(value % 1000));
}

char* writeByLibrary(char* out, float value, std::chars_format form) {
    return std::to_chars(out, out + NUMBER_TEXT_SIZE, static_cast<double>(value), form, DIGITS_AFTER_POINT)
        .ptr;
}

/// m * 2^-shift in millionths, rounded to nearest, ties to even. m * 10^6 fits 44 bits, so everything is
/// exact, and a shift of 45 or more leaves less than half a millionth.
std::uint64_t inMillionths(std::uint32_t m, std::uint32_t shift) {
    if (shift > 44) return 0;
    const std::uint64_t scaled = std::uint64_t{m} * 1000000;
    const std::uint64_t odd = scaled >> shift & 1;
    return (scaled + (std::uint64_t{1} << (shift - 1)) - 1 + odd) >> shift;
}

/// A float whose bits are a number below 2^24 is that number times 2^-149; packed colours are such floats.
/// Multiplying by a per-decade constant gives seven digits, correctly rounded for every such float (tested
/// exhaustively).
char* writeTinyScientific(char* out, std::uint32_t number) {
    struct Decade {
        double scale;  ///< 2^-149 * 10^(6 - exponent)
        char exponent[4];
    };
    static constexpr Decade DECADES[] = {
        {0x1p-149 * 1e51, {'e', '-', '4', '5'}}, {0x1p-149 * 1e50, {'e', '-', '4', '4'}},
        {0x1p-149 * 1e49, {'e', '-', '4', '3'}}, {0x1p-149 * 1e48, {'e', '-', '4', '2'}},
        {0x1p-149 * 1e47, {'e', '-', '4', '1'}}, {0x1p-149 * 1e46, {'e', '-', '4', '0'}},
        {0x1p-149 * 1e45, {'e', '-', '3', '9'}}, {0x1p-149 * 1e44, {'e', '-', '3', '8'}},
    };
    // The smallest number of each decade but the first. Branch-free, because random colours would mispredict.
    static constexpr std::uint32_t FIRST[] = {8, 72, 714, 7137, 71363, 713624, 7136239};
    std::size_t index = 0;
    for (const std::uint32_t first : FIRST) {
        index += number >= first ? 1 : 0;
    }
    const Decade& decade = DECADES[index];
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): never negative, and std::lround is a call
    const auto digits = static_cast<std::uint32_t>(number * decade.scale + 0.5);
    *out++ = static_cast<char>('0' + digits / 1000000);
    *out++ = '.';
    out = writeSixDigits(out, digits % 1000000);
    std::memcpy(out, decade.exponent, sizeof decade.exponent);
    return out + sizeof decade.exponent;
}

}  // namespace

char* writeFixed(char* out, float value) {
    constexpr float TOO_LARGE = 1e12F;
    const std::uint32_t bits = bitsOf(value);
    const std::uint32_t exponent = (bits & ~SIGN_BIT) >> MANTISSA_BITS;
    if ((bits & ~SIGN_BIT) >= bitsOf(TOO_LARGE)) return writeByLibrary(out, value, std::chars_format::fixed);

    *out = '-';
    out += bits >> 31;
    // A denormal has the exponent 0 and no hidden bit; all of them are too small to leave a digit.
    const std::uint32_t m = (bits & (HIDDEN_BIT - 1)) | HIDDEN_BIT;
    std::uint64_t whole = 0;
    std::uint32_t millionths = 0;
    if (exponent >= EXPONENT_BIAS) {
        whole = std::uint64_t{m} << (exponent - EXPONENT_BIAS);
    } else {
        const std::uint64_t all = inMillionths(m, EXPONENT_BIAS - exponent);
        whole = all / 1000000;
        millionths = static_cast<std::uint32_t>(all % 1000000);
    }
    out = writeUnsigned(out, whole);
    *out++ = '.';
    return writeSixDigits(out, millionths);
}

char* writeScientific(char* out, float value) {
    const std::uint32_t bits = bitsOf(value);
    if (bits < 2 * HIDDEN_BIT && bits != 0) return writeTinyScientific(out, bits);
    return writeByLibrary(out, value, std::chars_format::scientific);
}

char* writeInteger(char* out, std::uint32_t value) {
    return writeUnsigned(out, value);
}

}  // namespace vela::detail

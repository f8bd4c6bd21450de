// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/number_text.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <system_error>

namespace vela::io::detail {
namespace {

__extension__ using Wide = unsigned __int128;

// Writing

constexpr int SMALLEST_POWER = -31;
constexpr int LARGEST_POWER = 45;

/// The upper 64 bits of 10^power, rounded up where it has more.
constexpr std::uint64_t upperBits(int power) {
    if (power >= 0) {  // those of 5^power are the same, and it fits
        Wide value = 1;
        for (int i = 0; i < power; ++i) {
            value *= 5;
        }
        bool exact = true;
        for (; value >> 64 != 0; value >>= 1) {
            exact = exact && (value & 1) == 0;
        }
        auto bits = static_cast<std::uint64_t>(value);
        while (bits >> 63 == 0) {
            bits <<= 1;
        }
        return exact ? bits : bits + 1;
    }
    Wide divisor = 1;
    for (int i = 0; i < -power; ++i) {
        divisor *= 10;
    }
    Wide rest = 1;
    while (rest < divisor) {
        rest <<= 1;
    }
    std::uint64_t bits = 0;
    for (int i = 0; i < 64; ++i, rest <<= 1) {
        const bool one = rest >= divisor;
        bits = bits << 1 | (one ? 1 : 0);
        if (one) rest -= divisor;
    }
    return bits + 1;  // never exact
}

struct PowerTable {
    std::array<std::uint64_t, LARGEST_POWER - SMALLEST_POWER + 1> bits{};
    constexpr PowerTable() {
        for (int power = SMALLEST_POWER; power <= LARGEST_POWER; ++power) {
            bits[static_cast<std::size_t>(power - SMALLEST_POWER)] = upperBits(power);
        }
    }
};
constexpr PowerTable POWERS;

/// Two digits of every number below 100.
struct PairTable {
    std::array<char, 200> digits{};
    constexpr PairTable() {
        for (std::size_t i = 0; i < 100; ++i) {
            digits[2 * i] = static_cast<char>('0' + i / 10);
            digits[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
};
constexpr PairTable PAIRS;

/// digits * 10^exponent
struct Decimal {
    std::uint32_t digits;
    int exponent;
};

/// The upper 32 bits of the product, the last one set if anything was cut off.
std::uint32_t multiplyRoundingToOdd(std::uint64_t power, std::uint32_t factor) {
    const auto product = static_cast<std::uint64_t>(static_cast<Wide>(power) * factor >> 32);
    return static_cast<std::uint32_t>(product >> 32) | (static_cast<std::uint32_t>(product) > 1 ? 1U : 0U);
}

constexpr int floorLog2OfPower(int power) {
    return (power * 1741647) >> 19;
}

/// The shortest decimal in the rounding interval of a positive finite float, the nearest of those.
Decimal shortestDecimal(std::uint32_t mantissa, std::uint32_t biased) {
    constexpr int BIAS = 150;
    const std::uint32_t c = biased == 0 ? mantissa : mantissa | 1U << 23;
    const int q = biased == 0 ? 1 - BIAS : static_cast<int>(biased) - BIAS;
    if (q <= 0 && q > -24 && (c & ((1U << -q) - 1)) == 0) return {c >> -q, 0};  // a whole number

    const bool even = c % 2 == 0;
    const bool lowerIsCloser = mantissa == 0 && biased > 1;
    const int k = (q * 1262611 - (lowerIsCloser ? 524031 : 0)) >> 22;
    const int h = q + floorLog2OfPower(-k) + 1;
    const std::uint64_t power = POWERS.bits[static_cast<std::size_t>(-k - SMALLEST_POWER)];
    const std::uint32_t lower =
        multiplyRoundingToOdd(power, (4 * c - (lowerIsCloser ? 1 : 2)) << h) + (even ? 0 : 1);
    const std::uint32_t value = multiplyRoundingToOdd(power, (4 * c) << h);
    const std::uint32_t upper = multiplyRoundingToOdd(power, (4 * c + 2) << h) - (even ? 0 : 1);

    const std::uint32_t s = value / 4;
    if (s >= 10) {
        const std::uint32_t tens = s / 10;
        const bool belowFits = lower <= 40 * tens;
        const bool aboveFits = 40 * tens + 40 <= upper;
        if (belowFits != aboveFits) return {tens + (aboveFits ? 1 : 0), k + 1};
    }
    const bool belowFits = lower <= 4 * s;
    const bool aboveFits = 4 * s + 4 <= upper;
    if (belowFits != aboveFits) return {s + (aboveFits ? 1 : 0), k};
    const std::uint32_t middle = 4 * s + 2;
    const bool up = value > middle || (value == middle && s % 2 == 1);
    return {s + (up ? 1 : 0), k};
}

int countDigits(std::uint32_t value) {
    static constexpr std::uint32_t LIMITS[] = {10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    int count = 1;
    for (const std::uint32_t limit : LIMITS) {
        count += value >= limit ? 1 : 0;
    }
    return count;
}

/// The digits of a number, copied sixteen characters at once: what lies behind them is written over later.
struct Digits {
    static constexpr int ROOM = 10;  // of any 32-bit number
    std::array<char, ROOM + 16> text;
    int count;

    explicit Digits(std::uint32_t value) : text(), count(countDigits(value)) {
        for (std::size_t i = ROOM; i > 0; i -= 2) {
            std::memcpy(&text[i - 2], &PAIRS.digits[value % 100 * 2], 2);
            value /= 100;
        }
    }
    void copyFrom(int digit, char* out) const { std::memcpy(out, text.data() + (ROOM - count + digit), 16); }
};

char* writeExponent(char* out, int exponent) {
    *out++ = 'e';
    *out = '-';
    out += exponent < 0 ? 1 : 0;
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude >= 10) *out++ = static_cast<char>('0' + magnitude / 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
    return out;
}

/// A point after the first `whole` of the digits, 0 < whole <= count.
char* writeWithPoint(char* out, const Digits& digits, int whole) {
    digits.copyFrom(0, out);
    if (whole == digits.count) return out + whole;
    out[whole] = '.';
    digits.copyFrom(whole, out + whole + 1);
    return out + digits.count + 1;
}

char* writeDecimal(char* out, Decimal decimal) {
    while (decimal.digits % 10 == 0) {
        decimal.digits /= 10;
        ++decimal.exponent;
    }
    const Digits digits(decimal.digits);
    const int count = digits.count;
    const int whole = count + decimal.exponent;  // digits before the point
    if (whole > 0 && whole <= count) return writeWithPoint(out, digits, whole);
    const int scientific = whole - 1;
    const int exponentLength = (scientific < 0 ? 2 : 1) + (scientific < 10 && scientific > -10 ? 1 : 2);
    const int scientificLength = count + (count > 1 ? 1 : 0) + exponentLength;
    const int fixedLength = whole > 0 ? whole : 2 - whole + count;
    if (fixedLength > scientificLength) return writeExponent(writeWithPoint(out, digits, 1), scientific);
    // No longer than with an exponent, so only a few zeros have to be added.
    if (whole > 0) {
        digits.copyFrom(0, out);
        std::copy_n("00000000", 8, out + count);
        return out + whole;
    }
    std::copy_n("0.000000", 8, out);
    digits.copyFrom(0, out + 2 - whole);
    return out + 2 - whole + count;
}

// Reading

/// `std::from_chars`, and what it lacks: it takes no "+", and its error for a number out of range does not
/// say whether that is too large or too small.
template <class Float>
const char* readByLibrary(const char* begin, const char* end, Float& value) {
    const char* const start = begin < end && *begin == '+' ? begin + 1 : begin;
    if (start != begin && (start == end || *start == '-')) return nullptr;
    const auto [stop, error] = std::from_chars(start, end, value);
    if (error == std::errc::invalid_argument) return nullptr;
    if (error == std::errc::result_out_of_range) {
        // A negative exponent, or none and zeros behind the point: too small.
        const bool negative = *start == '-';
        const char* e = start;
        while (e < stop && (*e | 0x20) != 'e') {
            ++e;
        }
        const bool tiny = e < stop ? e + 1 < stop && e[1] == '-' : *(start + (negative ? 1 : 0)) == '0';
        value = tiny ? Float(0) : std::numeric_limits<Float>::infinity();
        if (negative) value = -value;
    }
    return stop;
}

}  // namespace

char* writeShortest(char* out, float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    const std::uint32_t mantissa = bits & 0x7fffff;
    const std::uint32_t biased = bits >> 23 & 0xff;
    if (biased == 0xff && mantissa != 0) {
        std::copy_n("nan", 3, out);
        return out + 3;
    }
    *out = '-';
    out += bits >> 31;
    if (biased == 0xff) {
        std::copy_n("inf", 3, out);
        return out + 3;
    }
    if (biased == 0 && mantissa == 0) {
        *out = '0';
        return out + 1;
    }
    return writeDecimal(out, shortestDecimal(mantissa, biased));
}

std::string shortest(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

const char* readFloatSlowly(const char* begin, const char* end, float& value) {
    return readByLibrary(begin, end, value);
}

const char* readDouble(const char* begin, const char* end, double& value) {
    return readByLibrary(begin, end, value);
}

}  // namespace vela::io::detail

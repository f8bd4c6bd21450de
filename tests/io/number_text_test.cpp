// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/number_text.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <string>

namespace vela::io::detail {
namespace {

std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float floatOf(std::uint32_t bits) {
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::string textOf(float value) {
    char text[LONGEST_NUMBER];
    return {text, writeShortest(text, value)};
}

std::size_t digitsOf(const std::string& text) {
    std::string digits;
    for (const char c : text.substr(0, text.find('e'))) {
        if (isDigit(c)) digits += c;
    }
    digits.erase(0, digits.find_first_not_of('0'));
    return digits.find_last_not_of('0') + 1;
}

/// As many digits as the library's shortest text has, the text no longer, and the same float read back.
void expectShortest(float value) {
    const std::string text = textOf(value);
    char library[64];
    char* const end = library + sizeof library;
    const std::string wanted(library, std::to_chars(library, end, value).ptr);
    const std::string digits(library, std::to_chars(library, end, value, std::chars_format::scientific).ptr);
    ASSERT_EQ(bitsOf(std::strtof(text.c_str(), nullptr)), bitsOf(value)) << text;
    ASSERT_LE(text.size(), wanted.size()) << text << " for " << wanted;
    ASSERT_EQ(digitsOf(text), digitsOf(digits)) << text << " for " << digits;
}

TEST(NumberTextTest, WritesTheShortestTextOfAFloat) {
    std::istringstream texts(
        "0 -0 1 -0.25 0.1 100 1e9 123456.78 16777216 1e-3 0.0123 3.4028235e38 1e-45 inf -inf nan");
    for (std::string text; texts >> text;)
        EXPECT_EQ(textOf(std::strtof(text.c_str(), nullptr)), text);
    EXPECT_EQ(textOf(-std::numeric_limits<float>::quiet_NaN()), "nan");
    std::mt19937 random(1);
    for (int i = 0; i < 300000; ++i) {
        const float any = floatOf(static_cast<std::uint32_t>(random()));
        if (std::isfinite(any)) expectShortest(any);
        expectShortest(std::uniform_real_distribution<float>(-20000, 20000)(random));
    }
    for (std::uint32_t exponent = 0; exponent < 255; ++exponent) {  // where the interval below is narrower
        expectShortest(floatOf(exponent << 23));
        expectShortest(floatOf((exponent << 23) + 1));
        if (exponent > 0) expectShortest(floatOf((exponent << 23) - 1));
    }
}

/// The float that `strtof` reads and the length that it consumes.
void expectNearest(const std::string& text) {
    float value = 0;
    const char* const stop = readFloat(text.data(), text.data() + text.size(), value);
    char* end = nullptr;
    const float wanted = std::strtof(text.c_str(), &end);
    ASSERT_NE(stop, nullptr) << text;
    ASSERT_EQ(stop, end) << text;
    if (std::isnan(wanted)) {
        ASSERT_TRUE(std::isnan(value)) << text;
    } else {
        ASSERT_EQ(bitsOf(value), bitsOf(wanted)) << text;
    }
}

std::string printed(const char* format, int precision, double value) {
    char text[512];
    std::snprintf(text, sizeof text, format, precision, value);
    return text;
}

TEST(NumberTextTest, ReadsTheNearestFloat) {
    std::istringstream texts(
        "0 -0 1. .5 -.5 +1.5 1e5 1E-5 1e+30 1e39 -1e39 1e-46 -1e-50 nan -nan NaN inf -inf Infinity 7e "
        "7VERTICES "
        "12e3e4 2.337213e-38 16777217 16777219 33554435 1.000000059604644775390625 "
        "1.00000005960464477539062500001 0.00000000000000000000000000000000000000000000000000001 "
        "123456789012345678901234567890123456789012345678901234567890");
    for (std::string text; texts >> text;)
        expectNearest(text);
    expectNearest("7 ");
    expectNearest("7\n");
    std::mt19937_64 random(7);
    for (int i = 0; i < 200000; ++i) {
        expectNearest(printed("%.*f", 6, std::uniform_real_distribution<>(-20000, 20000)(random)));
        const float any = floatOf(static_cast<std::uint32_t>(random()));
        if (std::isfinite(any)) expectNearest(printed("%.*g", 9, static_cast<double>(any)));
        // texts near the midpoint between two floats, cut to any number of digits
        const float low = std::uniform_real_distribution<float>(0.5F, 4096)(random);
        const double middle = (static_cast<double>(low) + static_cast<double>(std::nextafter(low, 1e9F))) / 2;
        expectNearest(printed("%.*f", static_cast<int>(random() % 18), middle));
    }
}

TEST(NumberTextTest, RejectsTextThatIsNoNumber) {
    for (const char* const text : {"", "-", "+", ".", "+-1", "x", "e5", "--1", "-+1", " 1"}) {
        const std::string copy = text;
        float value = 0;
        EXPECT_EQ(readFloat(copy.data(), copy.data() + copy.size(), value), nullptr) << text;
    }
}

}  // namespace
}  // namespace vela::io::detail

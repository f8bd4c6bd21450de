#include "vela_core/utils/number_text.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace vela::test {
namespace {

float fromBits(std::uint32_t bits) {
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::string printed(const char* format, float value) {
    char text[NUMBER_TEXT_SIZE];
    return {text,
            static_cast<std::size_t>(std::snprintf(text, sizeof text, format, static_cast<double>(value)))};
}

/// Compares both forms with printf and says whether they agree.
bool agrees(float value) {
    char text[NUMBER_TEXT_SIZE];
    const std::string fixed(text, writeFixed(text, value));
    const std::string scientific(text, writeScientific(text, value));
    if (fixed == printed("%f", value) && scientific == printed("%e", value)) return true;
    ADD_FAILURE() << fixed << " and " << scientific << " for " << printed("%a", value);
    return false;
}

TEST(NumberText, AgreesWithPrintfOnSpecialValues) {
    using Limits = std::numeric_limits<float>;
    for (const float value : {0.0F,
                              1.0F,
                              0.5F,
                              0.25F,
                              2.5F,
                              0.0000005F,
                              0.0000015F,
                              0.0000025F,
                              999999.5F,
                              9.9999999F,
                              0.9999995F,
                              16777216.0F,
                              8388607.5F,
                              1e12F,
                              1e15F,
                              1e20F,
                              Limits::max(),
                              Limits::min(),
                              Limits::denorm_min(),
                              Limits::infinity(),
                              Limits::quiet_NaN(),
                              fromBits(0x7FA00001)}) {
        EXPECT_TRUE(agrees(value) && agrees(-value));
    }
}

TEST(NumberText, AgreesWithPrintfOnEveryExponentAndTies) {
    std::mt19937 random(1);
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
        for (int i = 0; i < 500; ++i) {
            // Half of the mantissas have few bits, where decimal ties live.
            const std::uint32_t mantissa = random() & 0x7FFFFF & (i % 2 == 0 ? ~0U : ~0U << (i % 23));
            ASSERT_TRUE(agrees(fromBits(exponent << 23 | mantissa)));
        }
    }
}

TEST(NumberText, AgreesWithPrintfOnRandomBits) {
    std::mt19937 random(2);
    for (int i = 0; i < 300000; ++i) {
        ASSERT_TRUE(agrees(fromBits(static_cast<std::uint32_t>(random()))));
    }
}

TEST(NumberText, WritesIntegers) {
    char text[NUMBER_TEXT_SIZE];
    for (const int value :
         {0, 7, 10, 255, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(std::string(text, writeInteger(text, value)), std::to_string(value));
    }
}

}  // namespace
}  // namespace vela::test

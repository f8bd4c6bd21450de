// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/detail/number_text.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace vela::test {
namespace {

using detail::NUMBER_TEXT_SIZE;
using detail::writeFixed;
using detail::writeScientific;

/// Expects the output of printf for both forms of the number.
void expectAsPrintf(float value) {
    char text[NUMBER_TEXT_SIZE];
    char wanted[NUMBER_TEXT_SIZE];
    std::snprintf(wanted, sizeof wanted, "%f", static_cast<double>(value));
    ASSERT_EQ(std::string(text, writeFixed(text, value)), wanted);
    std::snprintf(wanted, sizeof wanted, "%e", static_cast<double>(value));
    ASSERT_EQ(std::string(text, writeScientific(text, value)), wanted);
}

TEST(NumberText, AgreesWithPrintfOnEveryExponentAndSign) {
    std::mt19937 random(1);
    for (std::uint32_t exponent = 0; exponent < 512; ++exponent) {
        for (int i = 0; i < 500 && !testing::Test::HasFatalFailure(); ++i) {
            // Half of the mantissas have few bits, because those produce decimal ties.
            const std::uint32_t mantissa = random() & 0x7FFFFF & (i % 2 == 0 ? ~0U : ~0U << (i % 23));
            const std::uint32_t bits = exponent << 23 | mantissa;
            float value = 0.0F;
            std::memcpy(&value, &bits, sizeof value);
            expectAsPrintf(value);
        }
    }
}

// Packed colours, and all other floats below 2^-125.
TEST(NumberText, AgreesWithPrintfOnEveryColor) {
    char text[NUMBER_TEXT_SIZE];
    char wanted[NUMBER_TEXT_SIZE];
    for (std::uint32_t bits = 0; bits < 1U << 24; ++bits) {
        float value = 0.0F;
        std::memcpy(&value, &bits, sizeof value);
        *writeScientific(text, value) = '\0';
        std::snprintf(wanted, sizeof wanted, "%e", static_cast<double>(value));
        ASSERT_STREQ(text, wanted);
    }
}

}  // namespace
}  // namespace vela::test

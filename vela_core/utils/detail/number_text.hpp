// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vela::detail {

/// Characters enough for any float in either form.
inline constexpr std::size_t NUMBER_TEXT_SIZE = 64;

/// Writes the value as `printf` does by "%f" and returns the end; no zero byte is added.
char* writeFixed(char* out, float value);

/// Writes the value as `printf` does by "%e" and returns the end; no zero byte is added.
char* writeScientific(char* out, float value);

/// Writes the value in decimal and returns the end; no zero byte is added.
char* writeInteger(char* out, std::uint32_t value);

/// Three digits each for 0 to 999, padded so that a 4-byte load may start at any digit.
struct DigitGroups {
    static constexpr std::size_t GROUP = 3;
    std::array<char, 1000 * GROUP + 3> digits{};

    constexpr DigitGroups() {
        for (unsigned i = 0; i < 1000; ++i) {
            digits[i * GROUP] = static_cast<char>('0' + i / 100);
            digits[i * GROUP + 1] = static_cast<char>('0' + i / 10 % 10);
            digits[i * GROUP + 2] = static_cast<char>('0' + i % 10);
        }
    }
};
inline constexpr DigitGroups DIGIT_GROUPS;

/// `writeInteger` for values below 1000. It writes four characters, in one store.
inline char* writeBelow1000(char* out, std::uint32_t value) {
    const std::size_t zeros = (value < 10 ? 1U : 0U) + (value < 100 ? 1U : 0U);
    std::memcpy(out, &DIGIT_GROUPS.digits[value * DigitGroups::GROUP + zeros], 4);
    return out + (DigitGroups::GROUP - zeros);
}

}  // namespace vela::detail

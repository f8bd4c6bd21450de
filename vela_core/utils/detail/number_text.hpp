// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vela::detail {

/// Room for any float in either form.
inline constexpr std::size_t NUMBER_TEXT_SIZE = 64;

/// Writes what `printf` makes of the value by "%f" and returns the end; no zero byte is added.
char* writeFixed(char* out, float value);

/// Writes what `printf` makes of the value by "%e" and returns the end; no zero byte is added.
char* writeScientific(char* out, float value);

/// Writes the value in decimal digits and returns the end; no zero byte is added.
char* writeInteger(char* out, std::uint32_t value);

/// The digits of 0 to 999; a copy of four characters may start at any of the three.
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

/// writeInteger for values below 1000. Four characters are written, which is one store.
inline char* writeBelow1000(char* out, std::uint32_t value) {
    const std::size_t zeros = (value < 10 ? 1U : 0U) + (value < 100 ? 1U : 0U);
    std::memcpy(out, &DIGIT_GROUPS.digits[value * DigitGroups::GROUP + zeros], 4);
    return out + (DigitGroups::GROUP - zeros);
}

}  // namespace vela::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

namespace vela::io::detail {

constexpr int GLYPH_WIDTH = 5;
constexpr int GLYPH_HEIGHT = 7;

/// Rows from the top; bit 0 is the leftmost pixel.
using Glyph = std::array<std::uint8_t, GLYPH_HEIGHT>;

/// The shape of a character; small letters have those of capitals, characters without a shape are blank.
const Glyph& glyphOf(char c);

}  // namespace vela::io::detail

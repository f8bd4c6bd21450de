// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vela::io::detail {

/// Takes the next word off the front of a text; empty at its end.
std::string_view takeWord(std::string_view& text);

/// The whole number that `word` is; nothing if it holds anything else.
std::optional<std::size_t> parseWhole(std::string_view word);

/// Whether two texts differ at most in the case of ASCII letters.
bool equalIgnoringCase(std::string_view a, std::string_view b);

}  // namespace vela::io::detail

// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/words.hpp"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace vela::io::detail {
namespace {

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string_view takeWord(std::string_view& text) {
    constexpr std::string_view BLANKS = " \t\r\n\v\f";
    text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(BLANKS));
    text.remove_prefix(word.size());
    return word;
}

std::optional<std::size_t> parseWhole(std::string_view word) {
    std::size_t value = 0;
    const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || stop != word.data() + word.size()) return {};
    return value;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace vela::io::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/io.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vela::io::detail {

struct CloudHeader;
struct DepthHeader;

/// What our files say of themselves in comments, in words such as "unit millimeter".
struct Statements {
    std::optional<UNIT> unit;
    std::optional<COORDINATE_SYSTEM> axes;
    std::size_t gridWidth = 0;
    std::size_t gridHeight = 0;
    std::optional<double> scale;
    std::optional<double> invalid;

    /// Takes in a comment; what states nothing is passed over. Several statements may stand in one line.
    void take(std::string_view comment);
    /// Puts unit, scale and invalid value into a header.
    void describe(DepthHeader& header) const;
    /// Puts unit, axes and, if it has as many points, the grid into a header.
    void describe(CloudHeader& header) const;
};

/// "millimeter", "centimeter", "meter", "inch", "foot"
const char* wordOf(UNIT unit);

/// The statements about a cloud; the grid if it has more than one row.
std::vector<std::string> statementsOf(const CloudHeader& header);

/// The statements about a depth map.
std::vector<std::string> statementsOf(const DepthHeader& header);

/// The next word of a text and the rest behind it; empty at the end.
std::string_view takeWord(std::string_view& text);

/// The shortest text that reads back to the same number.
std::string shortest(double value);

/// A whole number, all of `word`.
std::optional<std::size_t> parseWhole(std::string_view word);
bool equalIgnoringCase(std::string_view a, std::string_view b);

}  // namespace vela::io::detail

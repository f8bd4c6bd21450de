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

/// What our files state about themselves in comments, in words such as "unit millimeter".
struct Comments {
    std::optional<UNIT> unit;
    std::optional<COORDINATE_SYSTEM> axes;
    std::size_t gridWidth = 0;
    std::size_t gridHeight = 0;
    std::optional<double> scale;
    std::optional<double> invalid;

    /// Takes in a comment, which may state several things; other words are skipped.
    void take(std::string_view comment);
    /// Sets unit, scale and invalid value of a header.
    void describe(DepthHeader& header) const;
    /// Sets unit and axes of a header, and the grid if it has as many points.
    void describe(CloudHeader& header) const;
};

/// "millimeter", "centimeter", "meter", "inch", "foot"
const char* wordOf(UNIT unit);

/// What a cloud file states; the grid if it has more than one row.
std::vector<std::string> commentsOf(const CloudHeader& header);

/// What a depth file states.
std::vector<std::string> commentsOf(const DepthHeader& header);

}  // namespace vela::io::detail

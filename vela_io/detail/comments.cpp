// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/comments.hpp"

#include "vela_io/detail/depths.hpp"
#include "vela_io/detail/number_text.hpp"
#include "vela_io/detail/points.hpp"
#include "vela_io/detail/words.hpp"

#include <cmath>
#include <iterator>

namespace vela::io::detail {
namespace {

struct UnitWord {
    UNIT unit;
    const char* word;
    const char* symbol;
};

constexpr UnitWord UNITS[] = {{UNIT::MILLIMETER, "millimeter", "mm"},
                              {UNIT::CENTIMETER, "centimeter", "cm"},
                              {UNIT::METER, "meter", "m"},
                              {UNIT::INCH, "inch", "in"},
                              {UNIT::FOOT, "foot", "ft"}};

// Indexed by COORDINATE_SYSTEM.
constexpr const char* AXES[] = {"IMAGE",
                                "LEFT_HANDED_Y_UP_AND_Z_FORWARD",
                                "RIGHT_HANDED_Y_UP_AND_Z_BACKWARD",
                                "RIGHT_HANDED_Z_UP_AND_Y_FORWARD",
                                "LEFT_HANDED_Z_UP_AND_X_FORWARD",
                                "RIGHT_HANDED_Z_UP_AND_X_FORWARD"};

std::optional<UNIT> unitOf(std::string_view word) {
    for (const UnitWord& known : UNITS) {
        if (equalIgnoringCase(word, known.word) || word == known.symbol) return known.unit;
    }
    return {};
}

std::optional<COORDINATE_SYSTEM> axesOf(std::string_view word) {
    for (std::size_t i = 0; i < std::size(AXES); ++i) {
        if (equalIgnoringCase(word, AXES[i])) return static_cast<COORDINATE_SYSTEM>(i);
    }
    return {};
}

std::optional<double> numberOf(std::string_view word) {
    double value = 0;
    const char* const end = word.data() + word.size();
    if (readDouble(word.data(), end, value) != end || !std::isfinite(value)) return {};
    return value;
}

}  // namespace

void Comments::take(std::string_view comment) {
    for (std::string_view word = takeWord(comment); !word.empty(); word = takeWord(comment)) {
        std::string_view rest = comment;
        const std::string_view value = takeWord(rest);
        if (word == "unit" && unitOf(value)) {
            unit = unitOf(value);
        } else if (word == "axes" && axesOf(value)) {
            axes = axesOf(value);
        } else if (word == "scale" && numberOf(value)) {
            scale = numberOf(value);
        } else if (word == "invalid" && numberOf(value)) {
            invalid = numberOf(value);
        } else if (word == "grid") {
            gridWidth = parseWhole(value).value_or(0);
            gridHeight = parseWhole(takeWord(rest)).value_or(0);
        } else {
            continue;
        }
        comment = rest;
    }
}

void Comments::describe(CloudHeader& header) const {
    header.unit = unit;
    header.axes = axes;
    header.width = header.count;
    header.height = 1;
    if (gridWidth == 0 || header.count % gridWidth != 0 || header.count / gridWidth != gridHeight) return;
    header.width = gridWidth;
    header.height = gridHeight;
}

void Comments::describe(DepthHeader& header) const {
    header.unit = unit;
    header.scale = scale;
    header.invalid = invalid;
}

const char* wordOf(UNIT unit) {
    return UNITS[static_cast<std::size_t>(unit)].word;
}

std::vector<std::string> commentsOf(const CloudHeader& header) {
    std::vector<std::string> comments;
    if (header.unit) comments.push_back(std::string("unit ") + wordOf(*header.unit));
    if (header.axes) {
        comments.push_back(std::string("axes ") + AXES[static_cast<std::size_t>(*header.axes)]);
    }
    if (header.height > 1) {
        comments.push_back("grid " + std::to_string(header.width) + " " + std::to_string(header.height));
    }
    return comments;
}

std::vector<std::string> commentsOf(const DepthHeader& header) {
    std::vector<std::string> comments;
    if (header.unit) comments.push_back(std::string("unit ") + wordOf(*header.unit));
    if (header.scale) comments.push_back("scale " + shortest(*header.scale));
    if (header.invalid) comments.push_back("invalid " + shortest(*header.invalid));
    return comments;
}

}  // namespace vela::io::detail

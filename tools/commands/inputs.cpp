// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/commands.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cctype>
#include <optional>
#include <string>

namespace vela::tools {
namespace {

template <class T>
struct Name {
    const char* text;
    T value;
};

constexpr Name<UNIT> UNITS[] = {{"mm", UNIT::MILLIMETER},
                                {"cm", UNIT::CENTIMETER},
                                {"m", UNIT::METER},
                                {"in", UNIT::INCH},
                                {"ft", UNIT::FOOT},
                                {"millimeter", UNIT::MILLIMETER},
                                {"centimeter", UNIT::CENTIMETER},
                                {"meter", UNIT::METER},
                                {"inch", UNIT::INCH},
                                {"foot", UNIT::FOOT}};

constexpr Name<COORDINATE_SYSTEM> AXES[] = {
    {"image", COORDINATE_SYSTEM::IMAGE},
    {"opengl", COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD},
    {"ros", COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD},
    {"left_handed_y_up_and_z_forward", COORDINATE_SYSTEM::LEFT_HANDED_Y_UP_AND_Z_FORWARD},
    {"right_handed_y_up_and_z_backward", COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD},
    {"right_handed_z_up_and_y_forward", COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_Y_FORWARD},
    {"left_handed_z_up_and_x_forward", COORDINATE_SYSTEM::LEFT_HANDED_Z_UP_AND_X_FORWARD},
    {"right_handed_z_up_and_x_forward", COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD}};

constexpr Name<io::ENCODING> ENCODINGS[] = {{"ascii", io::ENCODING::ASCII},
                                            {"binary", io::ENCODING::BINARY},
                                            {"big-endian", io::ENCODING::BINARY_BIG_ENDIAN},
                                            {"compressed", io::ENCODING::BINARY_COMPRESSED}};

constexpr Name<io::ROW_ORDER> ROWS[] = {{"top", io::ROW_ORDER::TOP_FIRST},
                                        {"bottom", io::ROW_ORDER::BOTTOM_FIRST}};

template <class T, std::size_t count>
std::string listed(const Name<T> (&names)[count]) {
    std::string text;
    for (const Name<T>& name : names)
        text += (text.empty() ? "" : ", ") + std::string(name.text);
    return text;
}

template <class T, std::size_t count>
std::optional<T> valueNamed(const Name<T> (&names)[count], const std::string& option, std::string text) {
    if (text.empty()) return std::nullopt;
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const Name<T>& name : names) {
        if (text == name.text) return name.value;
    }
    throw Trouble(option + ": '" + text + "' is not one of " + listed(names));
}

}  // namespace

std::optional<UNIT> unitNamed(const std::string& option, const std::string& name) {
    return valueNamed(UNITS, option, name);
}

std::optional<COORDINATE_SYSTEM> axesNamed(const std::string& option, const std::string& name) {
    return valueNamed(AXES, option, name);
}

std::optional<io::ENCODING> encodingNamed(const std::string& option, const std::string& name) {
    return valueNamed(ENCODINGS, option, name);
}

std::optional<io::ROW_ORDER> rowsNamed(const std::string& option, const std::string& name) {
    return valueNamed(ROWS, option, name);
}

std::string stated(const std::optional<UNIT>& unit) {
    return unit ? toString(*unit).c_str() : "unknown";
}

std::string stated(const std::optional<COORDINATE_SYSTEM>& axes) {
    std::string name = "unknown";
    for (const Name<COORDINATE_SYSTEM>& known : AXES) {
        if (axes != known.value) continue;
        name = known.text;  // the last one is the full name
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    }
    return name;
}

std::string unitNames() {
    return listed(UNITS);
}

std::string axesNames() {
    return listed(AXES);
}

std::string encodingNames() {
    return listed(ENCODINGS);
}

void require(const io::Result& result) {
    if (!result.ok()) throw Trouble(result.text.c_str());
}

void InputOptions::addTo(CLI::App& command) {
    command.add_option("--unit-from", unit, "unit of a file that states none: " + unitNames());
    command.add_option("--axes-from", axes,
                       "axis convention of a cloud file that states none: " + axesNames());
    command.add_option("--scale-from", scale, "samples per unit of a depth file that states none");
    command.add_option("--rows-from", rows,
                       "first row of a PFM file, which cannot state it: top, bottom (usual)");
    command.add_flag("--depth", depth, "standard input is a depth map, not a cloud");
}

io::CloudReadOptions InputOptions::forCloud() const {
    io::CloudReadOptions options;
    options.unit = unitNamed("--unit-from", unit);
    options.axes = axesNamed("--axes-from", axes);
    return options;
}

io::DepthReadOptions InputOptions::forDepth() const {
    io::DepthReadOptions options;
    options.unit = unitNamed("--unit-from", unit);
    options.scale = scale;
    options.rows = rowsNamed("--rows-from", rows).value_or(options.rows);
    return options;
}

bool isDepthFile(const std::string& path, const InputOptions& options) {
    if (path == "-") return options.depth;
    switch (io::kindOf(path)) {
        case io::FILE_KIND::CLOUD:
            return false;
        case io::FILE_KIND::DEPTH:
        case io::FILE_KIND::ARRAY:
            return true;
        case io::FILE_KIND::UNKNOWN:
            break;
    }
    // The reader knows best why a file cannot be opened.
    Mat unused;
    require(io::readCloud(path, unused));
    return false;
}

Loaded load(const std::string& path, const InputOptions& options, const Console& console) {
    Loaded loaded;
    loaded.isDepth = isDepthFile(path, options);
    ProgressBar bar(console.err);
    if (loaded.isDepth) {
        io::DepthReadOptions reading = options.forDepth();
        reading.progress = bar.callback();
        loaded.result = io::readDepth(path, loaded.mat, reading, &loaded.depth);
    } else {
        io::CloudReadOptions reading = options.forCloud();
        reading.progress = bar.callback();
        loaded.result = io::readCloud(path, loaded.mat, reading, &loaded.cloud);
    }
    require(loaded.result);
    return loaded;
}

}  // namespace vela::tools

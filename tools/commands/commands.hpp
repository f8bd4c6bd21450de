// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/commands/Progress.hpp"
#include "vela_io/io.hpp"

#include <CLI/App.hpp>
#include <functional>
#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vela::tools {

/// A mistake that ends the command; the text is one line.
struct Trouble : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The streams that a command writes to.
struct Console {
    std::ostream& out;
    std::ostream& err;
};

using Command = std::function<int()>;

// Each adds a subcommand to `app` and returns the function that runs it after parsing.
Command addInfo(CLI::App& app, const Console& console);
Command addConvert(CLI::App& app, const Console& console);
Command addView(CLI::App& app, const Console& console);
Command addDiff(CLI::App& app, const Console& console);
Command addDepthToCloud(CLI::App& app, const Console& console);

/// Throws the text of a result that failed.
void require(const io::Result& result);

/// A value for an option by one of its names; throws a line that lists them. Empty text gives no value.
std::optional<UNIT> unitNamed(const std::string& option, const std::string& name);
std::optional<COORDINATE_SYSTEM> axesNamed(const std::string& option, const std::string& name);
std::optional<io::ENCODING> encodingNamed(const std::string& option, const std::string& name);
std::optional<io::ROW_ORDER> rowsNamed(const std::string& option, const std::string& name);
/// What a file states, in the words of the options; "unknown" if it states nothing.
std::string stated(const std::optional<UNIT>& unit);
std::string stated(const std::optional<COORDINATE_SYSTEM>& axes);
/// The names, for help texts.
std::string unitNames();
std::string axesNames();
std::string encodingNames();

/// Options for what a file does not state: unit and axes of clouds; unit, scale and row order of depth maps.
struct InputOptions {
    std::string unit;
    std::string axes;
    std::optional<double> scale;
    std::string rows;
    bool depth = false;

    void addTo(CLI::App& command);
    io::CloudReadOptions forCloud() const;
    io::DepthReadOptions forDepth() const;
};

/// A cloud or a depth map, and what its file states.
struct Loaded {
    bool isDepth = false;
    Mat mat;
    io::CloudInfo cloud;
    io::DepthInfo depth;
    io::Result result;
};
Loaded load(const std::string& path, const InputOptions& options, const Console& console);

/// Whether a path is a depth map's, by its first bytes; throws for a file that is neither that nor a cloud.
bool isDepthFile(const std::string& path, const InputOptions& options);

}  // namespace vela::tools

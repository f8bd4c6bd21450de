// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/commands.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cctype>
#include <chrono>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace vela::tools {
namespace {

struct ConvertOptions {
    std::string in;
    std::string out;
    std::string format;
    std::string encoding;
    std::string unit;
    std::string axes;
    std::string rows;
    std::optional<double> scale;
    bool keepGrid = false;
    bool noColor = false;
    bool clip = false;
    InputOptions input;
};

/// The format enumerator for a name; `last` is the highest one.
template <class Enum>
std::optional<Enum> formatNamed(const std::string& name, Enum last) {
    if (name.empty()) return std::nullopt;
    std::string known;
    for (std::int32_t i = 0; i <= static_cast<std::int32_t>(last); ++i) {
        const std::string candidate = toString(static_cast<Enum>(i)).c_str();
        std::string lower;
        for (const char c : candidate)
            lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (name == candidate || name == lower) return static_cast<Enum>(i);
        known += (known.empty() ? "" : ", ") + lower;
    }
    throw Trouble("--format: '" + name + "' is not one of " + known);
}

io::Result convertCloud(const ConvertOptions& options, const Loaded& loaded, const io::Progress& progress) {
    io::CloudOptions writing;
    writing.format = formatNamed(options.format, io::CLOUD_FILE::VTK);
    writing.encoding = encodingNamed("--encoding", options.encoding);
    writing.color = !options.noColor;
    writing.alpha = loaded.cloud.hasAlpha && !options.noColor;
    writing.keepGrid = options.keepGrid;
    writing.unit = loaded.cloud.unit;
    writing.axes = loaded.cloud.axes;
    writing.targetUnit = unitNamed("--unit-to", options.unit);
    writing.targetAxes = axesNamed("--axes-to", options.axes);
    if (writing.targetUnit && !writing.unit) throw Trouble(options.in + ": states no unit; use --unit-from");
    if (writing.targetAxes && !writing.axes) throw Trouble(options.in + ": states no axes; use --axes-from");
    writing.progress = progress;
    return io::writeCloud(loaded.mat, options.out, writing);
}

io::Result convertDepth(const ConvertOptions& options, const Loaded& loaded, const io::Progress& progress) {
    io::DepthOptions writing;
    writing.format = formatNamed(options.format, io::DEPTH_FILE::NPY);
    writing.encoding = encodingNamed("--encoding", options.encoding);
    writing.unit = loaded.depth.unit;
    writing.targetUnit = unitNamed("--unit-to", options.unit);
    if (writing.targetUnit && !writing.unit) throw Trouble(options.in + ": states no unit; use --unit-from");
    if (!options.axes.empty()) throw Trouble("--axes-to: a depth map has no axes");
    if (options.scale) writing.scale = *options.scale;
    writing.allowClipping = options.clip;
    writing.rows = rowsNamed("--rows-to", options.rows).value_or(writing.rows);
    writing.progress = progress;
    return io::writeDepth(loaded.mat, options.out, writing);
}

int convert(const ConvertOptions& options, const Console& console) {
    const auto start = std::chrono::steady_clock::now();
    const Loaded loaded = load(options.in, options.input, console);
    io::Result written;
    {
        ProgressBar bar(console.err);
        written = (loaded.isDepth ? convertDepth : convertCloud)(options, loaded, bar.callback());
    }
    require(written);
    const auto spent =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    std::ostream& out = options.out == "-" ? console.err : console.out;
    const char* const what = loaded.isDepth ? "pixels" : "points";
    out << loaded.result.points << " " << what << " in, " << written.written << " written, "
        << written.dropped << (loaded.isDepth ? " without depth, " : " dropped, ");
    if (written.clipped > 0) out << written.clipped << " clipped, ";
    out << written.bytes << " bytes, " << spent.count() << " ms\n";
    return 0;
}

}  // namespace

Command addConvert(CLI::App& app, const Console& console) {
    auto options = std::make_shared<ConvertOptions>();
    CLI::App& command =
        *app.add_subcommand("convert", "Write a cloud or depth map in another format, unit or frame");
    command.add_option("IN", options->in, "file to read")->required();
    command.add_option("OUT", options->out, "file to write; its extension is the format")->required();
    command.add_option("--format", options->format, "format of OUT: xyz, pcd, ply, vtk; png, pfm, pgm, npy");
    command.add_option("--encoding", options->encoding, "how numbers are written: " + encodingNames());
    command.add_option("--unit-to", options->unit, "convert to this unit");
    command.add_option("--axes-to", options->axes, "convert to this axis convention");
    command.add_flag("--keep-grid", options->keepGrid,
                     "keep rows and columns, and points that are not finite");
    command.add_flag("--no-color", options->noColor, "leave colours out");
    command.add_option("--depth-scale", options->scale, "samples per unit of depth in PNG and PGM files");
    command.add_flag("--clip", options->clip, "accept depths that the samples cannot hold");
    command.add_option("--rows-to", options->rows, "first row of a PFM file: top, bottom (usual)");
    options->input.addTo(command);
    return [options, console] { return convert(*options, console); };
}

}  // namespace vela::tools

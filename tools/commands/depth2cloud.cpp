// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/commands.hpp"
#include "tools/commands/picture.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>
#include <string>

namespace vela::tools {
namespace {

struct PinholeOptions {
    std::string depth;
    std::string out;
    std::string color;
    std::string unit;
    std::string axes;
    std::string encoding;
    double fx = 0;
    double fy = 0;
    double cx = 0;
    double cy = 0;
    bool keepGrid = false;
    InputOptions input;
};

/// Each pixel's point by the pinhole model: x = (u - cx) z / fx, y = (v - cy) z / fy, in the axes of the
/// picture; NaN where there is no depth.
Mat backProject(const Mat& depth, const Picture& picture, const PinholeOptions& options) {
    const bool colored = !picture.rgb.empty();
    Mat cloud(depth.width, depth.height, colored ? MAT_TYPE::MAT_32F_C4 : MAT_TYPE::MAT_32F_C3);
    for (std::size_t v = 0; v < depth.height; ++v) {
        for (std::size_t u = 0; u < depth.width; ++u) {
            float z = 0;
            std::memcpy(&z, depth.ptrCPU + v * depth.stepBytesCPU + u * sizeof z, sizeof z);
            if (!std::isfinite(z) || z <= 0) z = std::numeric_limits<float>::quiet_NaN();
            const double along = z;
            const float point[] = {
                static_cast<float>((static_cast<double>(u) - options.cx) * along / options.fx),
                static_cast<float>((static_cast<double>(v) - options.cy) * along / options.fy), z};
            unsigned char* const pixel = cloud.ptrCPU + (v * cloud.width + u) * cloud.pixelBytes;
            std::memcpy(pixel, point, sizeof point);
            if (!colored) continue;
            std::memcpy(pixel + sizeof point, picture.at(u, v), 3);
            pixel[sizeof point + 3] = 255;
        }
    }
    return cloud;
}

int depthToCloud(const PinholeOptions& options, const Console& console) {
    if (!(options.fx > 0) || !(options.fy > 0)) throw Trouble("--fx and --fy: must be above 0");
    InputOptions input = options.input;
    input.depth = true;
    if (!isDepthFile(options.depth, input)) throw Trouble(options.depth + ": a cloud, not a depth map");
    const Loaded loaded = load(options.depth, input, console);
    const Picture picture = options.color.empty() ? Picture() : readPicture(options.color, loaded.mat);
    const Mat cloud = backProject(loaded.mat, picture, options);

    io::CloudOptions writing;
    writing.encoding = encodingNamed("--encoding", options.encoding);
    writing.keepGrid = options.keepGrid;
    writing.unit = loaded.depth.unit;
    writing.axes = COORDINATE_SYSTEM::IMAGE;
    writing.targetUnit = unitNamed("--unit-to", options.unit);
    writing.targetAxes = axesNamed("--axes-to", options.axes);
    if (writing.targetUnit && !writing.unit)
        throw Trouble(options.depth + ": states no unit; use --unit-from");
    if (options.out == "-") writing.format = io::CLOUD_FILE::PLY;
    io::Result written;
    {
        ProgressBar bar(console.err);
        writing.progress = bar.callback();
        written = io::writeCloud(cloud, options.out, writing);
    }
    require(written);
    (options.out == "-" ? console.err : console.out) << written.points << " pixels, " << written.written
                                                     << " points written, " << written.bytes << " bytes\n";
    return 0;
}

}  // namespace

Command addDepthToCloud(CLI::App& app, const Console& console) {
    auto options = std::make_shared<PinholeOptions>();
    CLI::App& command =
        *app.add_subcommand("depth2cloud", "Make a cloud from a depth map by the pinhole model");
    command.add_option("DEPTH", options->depth, "depth map to read")->required();
    command.add_option("OUT", options->out, "cloud to write; PLY on standard output")->required();
    command.add_option("--fx", options->fx, "focal length in pixels, horizontal")->required();
    command.add_option("--fy", options->fy, "focal length in pixels, vertical")->required();
    command.add_option("--cx", options->cx, "principal point in pixels, column")->required();
    command.add_option("--cy", options->cy, "principal point in pixels, row")->required();
    command.add_option("--color", options->color, "picture of the same size that gives the points' colours");
    command.add_option("--encoding", options->encoding, "how numbers are written: " + encodingNames());
    command.add_option("--unit-to", options->unit, "convert to this unit");
    command.add_option("--axes-to", options->axes,
                       "convert to this axis convention, from that of the picture");
    command.add_flag("--keep-grid", options->keepGrid, "keep rows and columns, and pixels without a depth");
    options->input.addTo(command);
    return [options, console] { return depthToCloud(*options, console); };
}

}  // namespace vela::tools

// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/commands.hpp"
#include "vela_io/pictures.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vela::tools {
namespace {

struct ViewOptions {
    std::string in;
    std::string out;
    std::string size;
    std::string color;
    std::vector<std::string> views;
    std::size_t maxPoints = io::HtmlOptions().maxPoints;
    InputOptions input;
};

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// The place of a name in a list; throws a line with the list.
template <std::size_t count>
std::int32_t placeIn(const char* const (&names)[count], const std::string& option, const std::string& name) {
    std::string known;
    for (std::size_t i = 0; i < count; ++i) {
        if (name == names[i]) return static_cast<std::int32_t>(i);
        known += (i == 0 ? "" : ", ") + std::string(names[i]);
    }
    throw Trouble(option + ": '" + name + "' is not one of " + known);
}

std::optional<io::COLOR_BY> colorNamed(const std::string& name) {
    constexpr const char* NAMES[] = {"rgb", "depth", "height"};
    if (name.empty()) return std::nullopt;
    return static_cast<io::COLOR_BY>(placeIn(NAMES, "--color", name));
}

void takeSize(const std::string& text, io::PreviewOptions& drawing) {
    if (text.empty()) return;
    std::size_t end = 0;
    try {
        drawing.width = std::stoul(text, &end);
        if (text.at(end) != 'x') throw std::invalid_argument(text);
        std::size_t rest = 0;
        drawing.height = std::stoul(text.substr(end + 1), &rest);
        if (end + 1 + rest != text.size()) throw std::invalid_argument(text);
    } catch (const std::logic_error&) {
        throw Trouble("--size: '" + text + "' is not like 1280x720");
    }
}

io::Result draw(const ViewOptions& options, const Loaded& loaded) {
    constexpr const char* VIEWS[] = {"front", "top", "left", "right", "back"};
    io::PreviewOptions drawing;
    takeSize(options.size, drawing);
    drawing.color = colorNamed(options.color);
    drawing.unit = loaded.isDepth ? loaded.depth.unit : loaded.cloud.unit;
    drawing.axes = loaded.cloud.axes.value_or(drawing.axes);
    if (!options.views.empty()) drawing.views.clear();
    for (const std::string& view : options.views) {
        drawing.views.push_back(static_cast<io::CLOUD_VIEW>(placeIn(VIEWS, "--views", view)));
    }
    return io::preview(loaded.mat, options.out, drawing);
}

io::Result show(const ViewOptions& options, const Loaded& loaded) {
    if (loaded.isDepth)
        throw Trouble(options.in + ": a depth map has no page; draw a PNG or use depth2cloud");
    io::HtmlOptions page;
    page.color = colorNamed(options.color);
    page.unit = loaded.cloud.unit;
    page.axes = loaded.cloud.axes.value_or(page.axes);
    page.maxPoints = options.maxPoints;
    page.title = options.in == "-" ? "Point cloud" : options.in.substr(options.in.rfind('/') + 1);
    return io::writeHtml(loaded.mat, options.out, page);
}

int view(const ViewOptions& options, const Console& console) {
    const bool png = endsWith(options.out, ".png");
    if (!png && !endsWith(options.out, ".html"))
        throw Trouble(options.out + ": a picture is a .png or .html file");
    const Loaded loaded = load(options.in, options.input, console);
    const io::Result written = (png ? draw : show)(options, loaded);
    require(written);
    console.out << written.written << " of " << written.points << (loaded.isDepth ? " pixels" : " points")
                << " shown, " << written.bytes << " bytes\n";
    return 0;
}

}  // namespace

Command addView(CLI::App& app, const Console& console) {
    auto options = std::make_shared<ViewOptions>();
    CLI::App& command =
        *app.add_subcommand("view", "Draw a cloud or depth map as a PNG file or a page for a browser");
    command.add_option("IN", options->in, "file to read")->required();
    command.add_option("-o,--output", options->out, "file to write, .png or .html")->required();
    command.add_option("--size", options->size, "width and height of a PNG, as 1280x720");
    command.add_option("--color", options->color, "of points: rgb, depth, height");
    command
        .add_option("--views", options->views, "sides in a PNG, up to four of front, top, left, right, back")
        ->delimiter(',');
    command.add_option("--max-points", options->maxPoints, "most points in a page, chosen at random");
    options->input.addTo(command);
    return [options, console] { return view(*options, console); };
}

}  // namespace vela::tools

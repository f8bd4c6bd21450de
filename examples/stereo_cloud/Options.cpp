// SPDX-License-Identifier: Apache-2.0
#include "Options.hpp"

#include <cmath>
#include <cstring>
#include <map>

namespace stereo {
namespace {

constexpr double LARGEST_FOCAL_PX = 1e6;
constexpr double LARGEST_BASELINE_MM = 1e6;

double parseNumber(const std::string& name, const std::string& text) {
    std::size_t end = 0;
    double value = NAN;
    try {
        value = std::stod(text, &end);
    } catch (const std::exception&) {
        end = 0;
    }
    if (text.empty() || end != text.size() || !std::isfinite(value)) {
        throw UserError(name + " needs a number, not '" + text + "'");
    }
    return value;
}

void requirePositive(const std::string& name, double value, double largest) {
    if (!(value > 0.0)) throw UserError(name + " must be given and above 0");
    if (value > largest) throw UserError(name + " must be at most " + std::to_string(std::lround(largest)));
}

void check(const Options& options) {
    if (options.left.empty() || options.right.empty())
        throw UserError("--left and --right name the two pictures");
    requirePositive("--focal", options.focal_px, LARGEST_FOCAL_PX);
    requirePositive("--baseline", options.baseline_mm, LARGEST_BASELINE_MM);
    if (options.out.empty()) throw UserError("--out needs a folder");
}

}  // namespace

const char* const HELP =
    R"(usage: stereo_cloud --left L --right R --focal PX --baseline MM [OPTION VALUE]...
Turns a rectified stereo pair into point clouds, depth maps and a preview.
  --left, --right  the two pictures, of one size
  --focal          focal length in pixels
  --baseline       distance of the two cameras in millimetres
  --cx, --cy       principal point of the left picture in pixels, from the centre of its first pixel
                   (default: the picture's centre)
  --offset         pixels that are added to every disparity, the right principal point's x minus the left one's
                   (default: 0); depth is focal x baseline / (disparity + offset)
  --truth          measured disparity of the left picture, 8 bits, 0 where unknown: the error is printed
  --out            folder for the results (default: out)
)";

Options parseOptions(int count, char** arguments) {
    Options options;
    const std::map<std::string, std::filesystem::path*> paths = {{"--left", &options.left},
                                                                 {"--right", &options.right},
                                                                 {"--truth", &options.truth},
                                                                 {"--out", &options.out}};
    const std::map<std::string, double*> numbers = {{"--focal", &options.focal_px},
                                                    {"--baseline", &options.baseline_mm},
                                                    {"--offset", &options.offset_px}};
    const std::map<std::string, std::optional<double>*> optionalNumbers = {{"--cx", &options.cx_px},
                                                                           {"--cy", &options.cy_px}};
    for (int i = 1; i < count; i += 2) {
        const std::string name = arguments[i];
        if (name == "--help" || name == "-h") {
            options.help = true;
            return options;
        }
        const bool known = paths.count(name) + numbers.count(name) + optionalNumbers.count(name) != 0;
        if (!known) throw UserError("unknown option '" + name + "'; --help lists the known ones");
        if (i + 1 == count || std::strncmp(arguments[i + 1], "--", 2) == 0)
            throw UserError(name + " needs a value");
        if (const auto path = paths.find(name); path != paths.end()) {
            *path->second = arguments[i + 1];
        } else if (const auto number = numbers.find(name); number != numbers.end()) {
            *number->second = parseNumber(name, arguments[i + 1]);
        } else {
            *optionalNumbers.at(name) = parseNumber(name, arguments[i + 1]);
        }
    }
    check(options);
    return options;
}

}  // namespace stereo

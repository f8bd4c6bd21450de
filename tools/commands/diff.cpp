// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/commands.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>
#include <string>

namespace vela::tools {
namespace {

struct DiffOptions {
    std::string a;
    std::string b;
    double tolerance = 0;
    InputOptions input;
};

const unsigned char* pixelAt(const Mat& mat, std::size_t x, std::size_t y) {
    return mat.ptrCPU + y * mat.stepBytesCPU + x * mat.pixelBytes;
}

/// The distance of two pixels over the first `count` floats; infinite where only one of them has a number.
double distanceOf(const unsigned char* a, const unsigned char* b, std::size_t count) {
    float first[3];
    float second[3];
    std::memcpy(first, a, count * sizeof(float));
    std::memcpy(second, b, count * sizeof(float));
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (first[i] == second[i] || (std::isnan(first[i]) && std::isnan(second[i]))) continue;
        const double difference = static_cast<double>(first[i]) - static_cast<double>(second[i]);
        if (!std::isfinite(difference)) return std::numeric_limits<double>::infinity();
        sum += difference * difference;
    }
    return std::sqrt(sum);
}

struct Differences {
    std::size_t far = 0;  ///< pixels that differ by more than the tolerance
    double largest = 0;
    std::size_t x = 0;  ///< position of the largest
    std::size_t y = 0;
    std::size_t colors = 0;
};

Differences compare(const Mat& a, const Mat& b, double tolerance) {
    Differences found;
    const std::size_t floats = std::min<std::size_t>(a.channels, 3);
    const bool colored = a.channels == 4 && b.channels == 4;
    for (std::size_t y = 0; y < a.height; ++y) {
        for (std::size_t x = 0; x < a.width; ++x) {
            const unsigned char* const first = pixelAt(a, x, y);
            const unsigned char* const second = pixelAt(b, x, y);
            const double distance = distanceOf(first, second, floats);
            if (distance > tolerance) ++found.far;
            if (distance > found.largest) {
                found.largest = distance;
                found.x = x;
                found.y = y;
            }
            if (colored && std::memcmp(first + 12, second + 12, 4) != 0) ++found.colors;
        }
    }
    return found;
}

/// Prints the differences of the two files' descriptions; true if there are any.
bool describeDiffers(const Loaded& a, const Loaded& b, std::ostream& out) {
    const auto differs = [&out](const char* what, const std::string& first, const std::string& second) {
        if (first != second) out << what << ": " << first << " and " << second << "\n";
        return first != second;
    };
    const auto unit = [](const Loaded& l) { return stated(l.isDepth ? l.depth.unit : l.cloud.unit); };
    bool any = differs("unit", unit(a), unit(b));
    if (!a.isDepth) {
        any |= differs("axes", stated(a.cloud.axes), stated(b.cloud.axes));
        any |= differs("colour", a.mat.channels == 4 ? "yes" : "no", b.mat.channels == 4 ? "yes" : "no");
    }
    return any;
}

int diff(const DiffOptions& options, const Console& console) {
    if (!(options.tolerance >= 0)) throw Trouble("--tolerance: must not be negative");
    const Loaded a = load(options.a, options.input, console);
    const Loaded b = load(options.b, options.input, console);
    if (a.isDepth != b.isDepth) throw Trouble("a cloud and a depth map cannot be compared");
    std::ostream& out = console.out;
    if (a.mat.width != b.mat.width || a.mat.height != b.mat.height) {
        out << "size: " << a.mat.width << " x " << a.mat.height << " and " << b.mat.width << " x "
            << b.mat.height << "\n";
        return 1;
    }
    const bool described = describeDiffers(a, b, out);
    const Differences found = compare(a.mat, b.mat, options.tolerance);
    const char* const what = a.isDepth ? " pixels" : " points";
    if (found.far > 0) {
        out << found.far << " of " << a.mat.width * a.mat.height << what << " are further apart than "
            << options.tolerance << "\n";
        out << "largest distance: " << found.largest << " at column " << found.x << ", row " << found.y
            << "\n";
    }
    if (found.colors > 0) out << found.colors << what << " have another colour\n";
    return described || found.far > 0 || found.colors > 0 ? 1 : 0;
}

}  // namespace

Command addDiff(CLI::App& app, const Console& console) {
    auto options = std::make_shared<DiffOptions>();
    CLI::App& command = *app.add_subcommand(
        "diff", "Compare two files point by point: exit code 0 same, 1 different, 2 error");
    command.add_option("A", options->a, "first file")->required();
    command.add_option("B", options->b, "second file")->required();
    command.add_option("--tolerance", options->tolerance,
                       "distance that is not a difference, in the files' unit");
    options->input.addTo(command);
    return [options, console] { return diff(*options, console); };
}

}  // namespace vela::tools

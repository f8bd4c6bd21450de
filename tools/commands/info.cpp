// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/commands.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace vela::tools {
namespace {

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
    InputOptions input;
};

/// Range and shares of one channel.
struct Channel {
    const char* name;
    float low = std::numeric_limits<float>::infinity();
    float high = -std::numeric_limits<float>::infinity();
    std::size_t nan = 0;
    std::size_t infinite = 0;

    void see(float value) {
        if (std::isnan(value)) {
            ++nan;
        } else if (std::isinf(value)) {
            ++infinite;
        } else {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    bool hasRange() const { return low <= high; }
};

struct Report {
    std::vector<Channel> channels;
    float boxLow[3] = {1, 1,
                       1};  ///< of points of which all coordinates are finite; none if low is above high
    float boxHigh[3] = {0, 0, 0};
};

Report examine(const Loaded& loaded) {
    constexpr const char* NAMES[] = {"x", "y", "z", "red", "green", "blue", "alpha"};
    const Mat& mat = loaded.mat;
    Report report;
    if (loaded.isDepth) {
        report.channels = {{"depth"}};
    } else {
        for (std::size_t i = 0; i < (mat.channels == 4 ? 7U : 3U); ++i)
            report.channels.push_back({NAMES[i]});
    }
    bool first = true;
    for (std::size_t y = 0; y < mat.height; ++y) {
        for (std::size_t x = 0; x < mat.width; ++x) {
            const unsigned char* const pixel = mat.ptrCPU + y * mat.stepBytesCPU + x * mat.pixelBytes;
            const std::size_t floats = loaded.isDepth ? 1 : 3;
            float values[3] = {};
            std::memcpy(values, pixel, floats * sizeof(float));
            bool finite = true;
            for (std::size_t i = 0; i < floats; ++i) {
                report.channels[i].see(values[i]);
                finite = finite && std::isfinite(values[i]);
            }
            for (std::size_t i = 3; i < report.channels.size(); ++i)
                report.channels[i].see(pixel[12 + i - 3]);
            if (loaded.isDepth || !finite) continue;
            for (std::size_t i = 0; i < 3; ++i) {
                report.boxLow[i] = first ? values[i] : std::min(report.boxLow[i], values[i]);
                report.boxHigh[i] = first ? values[i] : std::max(report.boxHigh[i], values[i]);
            }
            first = false;
        }
    }
    return report;
}

/// The shortest text of a number, with a decimal point in every locale.
template <class T>
std::string text(T value) {
    char digits[64];
    return {digits, std::to_chars(digits, std::end(digits), value).ptr};
}

double share(std::size_t part, std::size_t all) {
    return all == 0 ? 0 : std::round(10000 * static_cast<double>(part) / static_cast<double>(all)) / 100;
}

/// An item of a report on a file: a name, a value, and whether JSON needs quotes around it.
struct Fact {
    std::string name;
    std::string value;
    bool quoted = true;
};

std::vector<Fact> factsOf(const Loaded& loaded) {
    std::vector<Fact> facts;
    facts.push_back({"kind", loaded.isDepth ? "depth" : "cloud"});
    if (loaded.isDepth) {
        facts.push_back({"format", toString(loaded.depth.format).c_str()});
        facts.push_back({"encoding", toString(loaded.depth.encoding).c_str()});
    } else {
        facts.push_back({"format", toString(loaded.cloud.format).c_str()});
        facts.push_back({"encoding", toString(loaded.cloud.encoding).c_str()});
    }
    facts.push_back({"type", toString(loaded.mat.dataType).c_str()});
    facts.push_back({"width", std::to_string(loaded.mat.width), false});
    facts.push_back({"height", std::to_string(loaded.mat.height), false});
    facts.push_back({"bytes", std::to_string(loaded.result.bytes), false});
    facts.push_back({"unit", stated(loaded.isDepth ? loaded.depth.unit : loaded.cloud.unit)});
    if (loaded.isDepth) {
        facts.push_back({"sample_bits", std::to_string(loaded.depth.sampleBits), false});
        facts.push_back({"scale", text(loaded.depth.scale), false});
        facts.push_back({"rows", toString(loaded.depth.rows).c_str()});
    } else {
        facts.push_back({"axes", stated(loaded.cloud.axes)});
    }
    return facts;
}

void print(std::ostream& out, const std::string& path, const Loaded& loaded, const Report& report) {
    const auto line = [&out](std::string name, const std::string& value) {
        name.resize(14, ' ');
        out << "  " << name << value << "\n";
    };
    out << path << "\n";
    for (const Fact& fact : factsOf(loaded))
        line(fact.name, fact.value);
    const std::size_t all = loaded.mat.width * loaded.mat.height;
    for (const Channel& channel : report.channels) {
        std::string value = channel.hasRange() ? text(channel.low) + " to " + text(channel.high) : "no value";
        if (channel.nan > 0) value += ", " + text(share(channel.nan, all)) + " % NaN";
        if (channel.infinite > 0) value += ", " + text(share(channel.infinite, all)) + " % infinite";
        line(channel.name, value);
    }
    if (!loaded.isDepth && report.boxLow[0] <= report.boxHigh[0]) {
        std::string size;
        for (int i = 0; i < 3; ++i)
            size += (i == 0 ? "" : " x ") + text(report.boxHigh[i] - report.boxLow[i]);
        line("box", size);
    }
    if (!loaded.result.text.empty()) line("note", loaded.result.text.c_str());
}

std::string jsonText(std::string_view value) {
    std::string out = "\"";
    for (const char c : value) {
        constexpr char HEX[] = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20) {
            out += std::string("\\u00") + HEX[code >> 4U] + HEX[code & 15U];
        } else {
            if (c == '"' || c == '\\') out += '\\';
            out += c;
        }
    }
    return out + '"';
}

std::string numbers(const float (&values)[3]) {
    return "[" + text(values[0]) + ", " + text(values[1]) + ", " + text(values[2]) + "]";
}

void printJson(std::ostream& out, const std::string& path, const Loaded& loaded, const Report& report) {
    out << "  {\"file\": " << jsonText(path);
    for (const Fact& fact : factsOf(loaded)) {
        const bool unknown = fact.value == "unknown";
        out << ", " << jsonText(fact.name) << ": "
            << (unknown       ? "null"
                : fact.quoted ? jsonText(fact.value)
                              : fact.value);
    }
    out << ",\n   \"channels\": [";
    for (const Channel& channel : report.channels) {
        out << (&channel == report.channels.data() ? "" : ",\n                ")
            << "{\"name\": " << jsonText(channel.name)
            << ", \"min\": " << (channel.hasRange() ? text(channel.low) : "null")
            << ", \"max\": " << (channel.hasRange() ? text(channel.high) : "null")
            << ", \"nan\": " << channel.nan << ", \"infinite\": " << channel.infinite << "}";
    }
    out << "]";
    if (!loaded.isDepth) {
        const bool any = report.boxLow[0] <= report.boxHigh[0];
        out << ",\n   \"box\": "
            << (any ? "{\"min\": " + numbers(report.boxLow) + ", \"max\": " + numbers(report.boxHigh) + "}"
                    : "null");
    }
    out << "}";
}

int info(const InfoOptions& options, const Console& console) {
    if (options.json) console.out << "[\n";
    bool first = true;
    for (const std::string& path : options.files) {
        const Loaded loaded = load(path, options.input, console);
        const Report report = examine(loaded);
        if (!first) console.out << (options.json ? ",\n" : "\n");
        first = false;
        (options.json ? printJson : print)(console.out, path, loaded, report);
    }
    if (options.json) console.out << "\n]\n";
    return 0;
}

}  // namespace

Command addInfo(CLI::App& app, const Console& console) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App& command = *app.add_subcommand("info", "Print what files of clouds and depth maps hold");
    command.add_option("FILE", options->files, "files to read")->required();
    command.add_flag("--json", options->json, "print an array of JSON objects");
    options->input.addTo(command);
    return [options, console] { return info(*options, console); };
}

}  // namespace vela::tools

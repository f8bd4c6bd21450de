#include "Options.hpp"

#include <cmath>
#include <map>

namespace stereo {
namespace {

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

void requirePositive(const std::string& name, double value) {
    if (!(value > 0.0)) throw UserError(name + " must be given and above 0");
}

}  // namespace

Options parseOptions(int count, char** arguments) {
    Options options;
    const std::map<std::string, std::filesystem::path*> paths = {{"--left", &options.left},
                                                                 {"--right", &options.right},
                                                                 {"--truth", &options.truth},
                                                                 {"--out", &options.out}};
    const std::map<std::string, double*> numbers = {{"--focal", &options.focal_px},
                                                    {"--baseline", &options.baseline_mm},
                                                    {"--offset", &options.offset_px}};
    for (int i = 1; i < count; i += 2) {
        const std::string name = arguments[i];
        const auto path = paths.find(name);
        const auto number = numbers.find(name);
        if (path == paths.end() && number == numbers.end()) {
            throw UserError("unknown option '" + name +
                            "'; known are --left L --right R --focal PX --baseline MM [--offset PX] [--truth "
                            "T] [--out DIR]");
        }
        if (i + 1 == count) throw UserError(name + " needs a value");
        if (path != paths.end()) {
            *path->second = arguments[i + 1];
        } else {
            *number->second = parseNumber(name, arguments[i + 1]);
        }
    }
    if (options.left.empty() || options.right.empty())
        throw UserError("--left and --right name the two pictures");
    requirePositive("--focal", options.focal_px);
    requirePositive("--baseline", options.baseline_mm);
    if (options.out.empty()) throw UserError("--out needs a folder");
    return options;
}

}  // namespace stereo

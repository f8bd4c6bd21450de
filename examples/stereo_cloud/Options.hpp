// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

namespace stereo {

/// An error that the user can fix; its text is the one line that is printed.
struct UserError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Options {
    std::filesystem::path left;
    std::filesystem::path right;
    std::filesystem::path truth;  ///< measured disparity of the left picture, 0 = unknown; may be empty
    double focal_px = 0.0;
    double baseline_mm = 0.0;
    double offset_px = 0.0;       ///< added to every disparity
    std::optional<double> cx_px;  ///< principal point of the left picture; its centre if not given
    std::optional<double> cy_px;
    std::filesystem::path out = "out";
    bool help = false;  ///< show HELP and do nothing else
};

extern const char* const HELP;

/// Throws UserError.
Options parseOptions(int count, char** arguments);

}  // namespace stereo

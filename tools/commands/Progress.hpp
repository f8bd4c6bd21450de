// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/io.hpp"

#include <chrono>
#include <iosfwd>

namespace vela::tools {

/// A progress bar on a terminal for work that takes more than a second. Erased when destroyed.
class ProgressBar {
public:
    /// Draws on `err` if that is the process's standard error and a terminal.
    explicit ProgressBar(std::ostream& err);
    /// Draws on `err`, terminal or not, for work of more than `patience`.
    ProgressBar(std::ostream& err, std::chrono::milliseconds patience);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// For a reader or writer that must finish before the bar is destroyed.
    io::Progress callback();

private:
    bool step(std::size_t done, std::size_t total);

    std::ostream& err_;
    bool enabled_;
    std::chrono::milliseconds patience_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    int drawn_ = -1;  ///< percentage on the terminal
};

}  // namespace vela::tools

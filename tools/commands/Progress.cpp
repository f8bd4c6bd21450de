// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/Progress.hpp"

#include <unistd.h>

#include <iostream>
#include <string>

namespace vela::tools {

namespace {
constexpr int CELLS = 40;
}

ProgressBar::ProgressBar(std::ostream& err)
    : err_(err),
      enabled_(err.rdbuf() == std::cerr.rdbuf() && isatty(STDERR_FILENO) == 1),
      patience_(std::chrono::seconds(1)) {}

ProgressBar::ProgressBar(std::ostream& err, std::chrono::milliseconds patience)
    : err_(err), enabled_(true), patience_(patience) {}

ProgressBar::~ProgressBar() {
    if (drawn_ >= 0) err_ << '\r' << std::string(CELLS + 8, ' ') << '\r' << std::flush;
}

io::Progress ProgressBar::callback() {
    return [this](std::size_t done, std::size_t total) { return step(done, total); };
}

bool ProgressBar::step(std::size_t done, std::size_t total) {
    if (!enabled_ || total == 0 || std::chrono::steady_clock::now() - start_ < patience_) return true;
    const auto percent = static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(total));
    if (percent == drawn_) return true;
    drawn_ = percent;
    const int filled = CELLS * percent / 100;
    err_ << "\r[" << std::string(static_cast<std::size_t>(filled), '#')
         << std::string(static_cast<std::size_t>(CELLS - filled), ' ') << "] " << percent << " %"
         << std::flush;
    return true;
}

}  // namespace vela::tools

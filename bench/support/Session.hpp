// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Comparison.hpp"

#include <functional>
#include <memory>
#include <regex>
#include <string>

namespace vela::bench {

/// How long a program measures: the number of interleaved repetitions, and the minimum seconds of each.
struct Effort {
    int repetitions = 21;
    double seconds = 0.01;
};

/// The run of one benchmark program.
class Session {
public:
    Session(int argc, char** argv, Effort effort);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Checks every contender, then times them in turns, in random order. Throws when a contender did not
    /// compute what it should have.
    void run(const Comparison& comparison);

    /// Whether the filter selects a comparison of this name; asked by those that are expensive to prepare.
    bool wants(const std::string& name) const { return std::regex_search(name, filter_); }

    /// How many comparisons the filter selected.
    int compared() const { return compared_; }

private:
    class Report;

    bool once_ = false;
    int compared_ = 0;
    std::regex filter_;
    std::unique_ptr<Report> report_;
};

/// The `main` of a benchmark program: lets `comparisons` use a session and returns the program's exit status,
/// 1 when a check failed or no comparison ran. Options are those of Google Benchmark, whose
/// `--benchmark_filter` is searched in the names of comparisons here, `--json=FILE`, which writes the results
/// there instead of to standard output, and `--once`, which checks every contender and times none.
int measure(int argc, char** argv, Effort effort, const std::function<void(Session&)>& comparisons);

}  // namespace vela::bench

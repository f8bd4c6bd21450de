// SPDX-License-Identifier: Apache-2.0
#include "support/Session.hpp"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace vela::bench {
namespace {

constexpr const char JSON_OPTION[] = "--json=";
constexpr const char ONCE_OPTION[] = "--once";
#if defined(VELA_GPU_CUDA)
constexpr const char FLAVOUR[] = "cuda";
#else
constexpr const char FLAVOUR[] = "software";
#endif
#if defined(__clang__)
constexpr const char COMPILER[] = __VERSION__;  // begins with the compiler's name
#else
constexpr const char COMPILER[] = "g++ " __VERSION__;
#endif

/// Removes the option with this prefix from the arguments and returns it; empty if there is none.
std::string takeOption(std::vector<char*>& arguments, const std::string& start) {
    const auto found = std::find_if(arguments.begin(), arguments.end(), [&](const char* argument) {
        return std::string(argument).rfind(start, 0) == 0;
    });
    if (found == arguments.end()) return {};
    std::string option = *found;
    arguments.erase(found);
    return option;
}

std::string takeJsonPath(std::vector<char*>& arguments) {
    const std::string option = takeOption(arguments, JSON_OPTION);
    return option.empty() ? option : option.substr(std::size(JSON_OPTION) - 1);
}

/// Hands the command line to Google Benchmark, with the effort as the default that options may change.
void initialize(std::vector<char*>& arguments, const Effort& effort) {
    std::string defaults[] = {"--benchmark_enable_random_interleaving=true",
                              "--benchmark_repetitions=" + std::to_string(effort.repetitions),
                              "--benchmark_min_time=" + std::to_string(effort.seconds)};
    auto place = arguments.begin() + 1;
    for (std::string& option : defaults) {
        place = arguments.insert(place, option.data()) + 1;
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        throw std::invalid_argument("unknown option");
    }
}

}  // namespace

/// Google Benchmark's JSON, with the results of all comparisons in one list.
class Session::Report : public benchmark::JSONReporter {
public:
    explicit Report(const std::string& path) {
        if (path.empty()) return;
        file_.open(path);
        if (!file_) throw std::runtime_error("cannot write " + path);
        SetOutputStream(&file_);
    }
    bool ReportContext(const Context& context) override {
        if (!started_) JSONReporter::ReportContext(context);
        started_ = true;
        return true;
    }
    void Finalize() override {}  // more may come
    void finish() {
        if (started_) JSONReporter::Finalize();
        GetOutputStream().flush();
    }

private:
    std::ofstream file_;
    bool started_ = false;
};

Session::Session(int argc, char** argv, Effort effort) {
    std::vector<char*> arguments(argv, argv + argc);
    benchmark::AddCustomContext("compiler", COMPILER);
    benchmark::AddCustomContext("flavour", FLAVOUR);
    benchmark::AddCustomContext("flags", VELA_BENCH_FLAGS);
    once_ = !takeOption(arguments, ONCE_OPTION).empty();
    report_ = std::make_unique<Report>(takeJsonPath(arguments));
    initialize(arguments, effort);
    filter_ = std::regex(benchmark::GetBenchmarkFilter());
}

Session::~Session() {
    report_->finish();
}

void Session::run(const Comparison& comparison) {
    if (!wants(comparison.name())) return;
    for (const Comparison::Contender& contender : comparison.contenders()) {
        if (!contender.absent.empty()) {
            std::cerr << comparison.name() << ", " << contender.role << " not run: " << contender.absent
                      << '\n';
        }
        const std::string complaint = comparison.verdict(contender);
        if (!complaint.empty()) {
            throw std::runtime_error(comparison.name() + ", " + contender.role + ": " + complaint);
        }
    }
    ++compared_;
    std::cerr << comparison.name() << '\n';
    if (once_) return;
    for (const Comparison::Contender& contender : comparison.contenders()) {
        auto* const timed = benchmark::RegisterBenchmark((comparison.name() + '/' + contender.role).c_str(),
                                                         [&](benchmark::State& state) {
                                                             contender.timed(state);
                                                             state.SetLabel(comparison.clock());
                                                         });
        if (comparison.clock() == "wall") timed->UseRealTime();
        if (comparison.clock() == "settled") timed->UseManualTime();
    }
    benchmark::RunSpecifiedBenchmarks(report_.get(), "all");
    benchmark::ClearRegisteredBenchmarks();
}

int measure(int argc, char** argv, Effort effort, const std::function<void(Session&)>& comparisons) {
    try {
        Session session(argc, argv, effort);
        comparisons(session);
        if (session.compared() == 0) throw std::invalid_argument("the filter lets no comparison through");
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 1;
    }
}

}  // namespace vela::bench

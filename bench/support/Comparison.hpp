// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vela::bench {

/// Checks what a contender has just computed; returns the error, or nothing.
using Check = std::function<std::string()>;

/// For contenders that only move the bytes that the work has to move.
inline std::string nothingToCheck() {
    return {};
}

/// One row of the table: the same work done by the library, by its peers, and by its limit. A
/// contender is a callable that does the work once. Everything that contenders refer to must live until
/// `Session::run` returns.
class Comparison {
public:
    struct Contender {
        std::string role;  ///< "ours", "peer:NAME" or "limit:NAME"
        std::function<void()> once;
        std::function<void(benchmark::State&)> timed;
        Check check;         ///< null: use the comparison's check
        std::string absent;  ///< why it is not run; empty if it is
    };

    explicit Comparison(std::string name) : name_(std::move(name)) {}

    /// Puts the input in place before a contender's check. Timed runs follow each other without it.
    Comparison& before(std::function<void()> prepare) {
        prepare_ = std::move(prepare);
        return *this;
    }
    /// Judges each contender that brings no check of its own.
    Comparison& check(Check check) {
        check_ = std::move(check);
        return *this;
    }
    /// How many times one call of a contender does the work; times are reported for one.
    Comparison& repeats(std::int64_t count) {
        repeats_ = count;
        return *this;
    }
    /// Uses wall-clock time instead of the thread's processor time, for work that waits.
    Comparison& byWallClock() {
        clock_ = "wall";
        return *this;
    }

    template <class Work>
    Comparison& ours(Work work, Check check = nullptr) {
        return add("ours", std::move(work), std::move(check));
    }
    template <class Work>
    Comparison& peer(const std::string& name, Work work, Check check = nullptr) {
        return add("peer:" + name, std::move(work), std::move(check));
    }
    template <class Work>
    Comparison& limit(const std::string& name, Work work, Check check = nullptr) {
        return add("limit:" + name, std::move(work), std::move(check));
    }
    /// A contender whose remaining work is done by `settle`, outside the measured time.
    template <class Work, class Settle>
    Comparison& addSettled(std::string role, Work work, Settle settle, Check check = nullptr) {
        const std::int64_t count = repeats_;
        const auto timed = [work, settle, count](benchmark::State& state) mutable {
            using Clock = std::chrono::steady_clock;
            while (state.KeepRunningBatch(count)) {
                const Clock::time_point start = Clock::now();
                work();
                const std::chrono::duration<double> taken = Clock::now() - start;
                settle();
                state.SetIterationTime(taken.count());
            }
        };
        const auto once = [work, settle]() mutable {
            work();
            settle();
        };
        clock_ = "settled";
        contenders_.push_back({std::move(role), once, timed, std::move(check), {}});
        return *this;
    }

    /// A contender that measures itself and returns seconds. The others must then be added by `addSettled`.
    template <class Work>
    Comparison& addSelfTimed(std::string role, Work work, Check check = nullptr) {
        const auto timed = [work](benchmark::State& state) mutable {
            while (state.KeepRunning()) {
                state.SetIterationTime(work());
            }
        };
        clock_ = "settled";
        contenders_.push_back({std::move(role), [work]() mutable { work(); }, timed, std::move(check), {}});
        return *this;
    }
    /// States in the table why a peer was not run.
    Comparison& absent(const std::string& peer, const std::string& reason) {
        const auto skipped = [reason](benchmark::State& state) { state.SkipWithError(reason.c_str()); };
        contenders_.push_back({"peer:" + peer, [] {}, skipped, nothingToCheck, reason});
        return *this;
    }

    const std::string& name() const { return name_; }
    const std::string& clock() const { return clock_; }
    const std::vector<Contender>& contenders() const { return contenders_; }
    /// Runs a contender once on fresh input and judges it.
    std::string verdict(const Contender& contender) const {
        if (prepare_) prepare_();
        contender.once();
        return contender.check ? contender.check() : check_();
    }

private:
    template <class Work>
    Comparison& add(std::string role, Work work, Check check) {
        const std::int64_t count = repeats_;
        const auto timed = [work, count](benchmark::State& state) mutable {
            while (state.KeepRunningBatch(count)) {
                work();
                benchmark::ClobberMemory();
            }
        };
        contenders_.push_back({std::move(role), work, timed, std::move(check), {}});
        return *this;
    }

    std::string name_;
    std::string clock_ = "thread";
    std::int64_t repeats_ = 1;
    std::function<void()> prepare_;
    Check check_ = nothingToCheck;
    std::vector<Contender> contenders_;
};

}  // namespace vela::bench

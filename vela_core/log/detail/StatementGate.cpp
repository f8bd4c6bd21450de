// SPDX-License-Identifier: Apache-2.0
#include "vela_core/log/detail/StatementGate.hpp"

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace vela::detail {
namespace {

enum class State { OPEN, PAUSED, CLOSED };

// Sequentially consistent: a thread that enters increments the count before it reads the state; a thread that
// closes sets the state before it reads the count.
std::atomic<State> state{State::OPEN};
std::atomic<int> inside{0};
std::mutex oneAtATime;
thread_local bool paused = false;

void nap() {
    std::this_thread::sleep_for(std::chrono::microseconds(50));
}

void close(State how) noexcept {
    state = how;
    while (inside != 0) {
        nap();
    }
}

}  // namespace

StatementGate::Pass::Pass() noexcept : granted_(false) {
    while (!paused) {
        ++inside;
        const State now = state;
        granted_ = now == State::OPEN;
        if (granted_) return;
        --inside;
        if (now == State::CLOSED) return;
        nap();
    }
}

StatementGate::Pass::~Pass() {
    if (granted_) --inside;
}

void StatementGate::pause() noexcept {
    oneAtATime.lock();
    paused = true;
    if (state == State::OPEN) close(State::PAUSED);
}

void StatementGate::resume() noexcept {
    if (state == State::PAUSED) state = State::OPEN;
    paused = false;
    oneAtATime.unlock();
}

void StatementGate::resumeInChild() noexcept {
    inside = 0;  // threads that were about to enter do not exist in the child
    resume();
}

void StatementGate::closeForGood() noexcept {
    const std::lock_guard lock(oneAtATime);
    close(State::CLOSED);
}

bool StatementGate::isClosedForGood() noexcept {
    return state.load(std::memory_order_relaxed) == State::CLOSED;
}

}  // namespace vela::detail

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/log/KLogger.hpp"

#include "vela_core/log/detail/StatementGate.hpp"
#include "vela_core/log/detail/backend.hpp"
#include "vela_core/log/detail/printable.hpp"
#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/types/detail/start_order.hpp"

#include <pthread.h>
#include <quill/Backend.h>
#include <quill/Frontend.h>
#include <quill/sinks/ConsoleSink.h>

#include <atomic>
#include <exception>
#include <mutex>
#include <utility>

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<LOGGER_NAME> LOGGER_NAMES[] = {{LOGGER_NAME::CORE, "CORE"}};

std::atomic<KLogger*> ready{nullptr};  // null also if the backend could not be restarted
std::mutex making;  // a forking thread holds it too, so that no child inherits a half-made registry
std::atomic<bool> backendIsOurs{false};  // written with `making` held

/// Starts the backend unless it runs. Called with `making` held.
void startBackend() {
    if (quill::Backend::is_running()) return;
    quill::BackendOptions options;
    options.check_printable_char = isPrintable;
    options.check_backend_singleton_instance = false;
    const auto before = quill::Backend::get_thread_id();
    quill::Backend::start(options);  // has no effect where the program polls the backend itself
    // If the process is ending, quill may be stopping the new thread already.
    if (quill::Backend::is_running() || quill::Backend::get_thread_id() != before) backendIsOurs = true;
}

/// Stops the backend, which first writes all queued messages. Called with `making` held.
void stopBackend() noexcept {
    try {
        if (backendIsOurs && quill::Backend::is_running()) quill::Backend::stop();
    } catch (const std::exception&) {
        // The backend's own thread forks or exits, from a sink: it cannot wait for itself.
    }
}

/// Called with `making` held.
void restartBackend() noexcept {
    try {
        if (backendIsOurs && !StatementGate::isClosedForGood()) startBackend();
    } catch (const std::exception&) {
        ready = nullptr;  // no thread could be started: the next use of the registry retries
    }
}

void beforeFork() noexcept {
    StatementGate::pause();
    making.lock();
    stopBackend();
}

void afterForkInParent() noexcept {
    restartBackend();
    making.unlock();
    StatementGate::resume();
}

void afterForkInChild() noexcept {
    restartBackend();
    making.unlock();
    StatementGate::resumeInChild();
}

/// After this nothing is logged and no backend of ours runs.
void endLogging() noexcept {
    StatementGate::closeForGood();
    const std::lock_guard lock(making);
    stopBackend();
}

/// Outlives everything that logs. A thread may create the registry while the process ends; quill's own
/// objects are then older than `Lifetime`, so they exist until it is destroyed.
struct Lifetime {
    Lifetime() noexcept {
        static_cast<void>(quill::Backend::is_running());  // creates them; starts nothing
        pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
    }
    ~Lifetime() { endLogging(); }
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;
};
[[gnu::init_priority(START_LOG)]] const Lifetime LIFETIME;

}  // namespace

bool detail::backendWasStopped() noexcept {
    return backendIsOurs && !quill::Backend::is_running();
}

String toString(const LOGGER_NAME& value) {
    return nameIn(LOGGER_NAMES, value);
}

KLogger& KLogger::get_instance() {
    if (KLogger* const made = ready.load(std::memory_order_acquire)) return *made;
    const std::lock_guard lock(making);
    static KLogger instance;
    if (backendIsOurs) startBackend();
    ready.store(&instance, std::memory_order_release);
    return instance;
}

bool KLogger::isDestroyed() noexcept {
    return StatementGate::isClosedForGood();
}

KLogger::KLogger() {
    if (StatementGate::isClosedForGood()) return;
    startBackend();
    quill::ConsoleSinkConfig console;
    console.set_stream("stderr");
    auto sink = quill::Frontend::create_or_get_sink<quill::ConsoleSink>("vela.stderr", console);
    loggers[LOGGER_NAME::CORE] = quill::Frontend::create_or_get_logger("vela.core", std::move(sink));
}

KLogger::~KLogger() {
    endLogging();
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/log/detail/statements.hpp"

#include "vela_core/log/KLogger.hpp"
#include "vela_core/log/LogHook.hpp"
#include "vela_core/log/detail/StatementGate.hpp"
#include "vela_core/log/detail/backend.hpp"
#include "vela_core/log/detail/printable.hpp"

#include <quill/bundled/fmt/format.h>
#include <quill/core/MacroMetadata.h>
#include <quill/core/ThreadContextManager.h>

#include <atomic>
#include <string>

namespace vela::detail {
namespace {

using quill::MacroMetadata;

struct Statement {
    MacroMetadata metadata;
    const char* tag;
    const char* subject;  // constant argument after the tag, or null
};

constexpr const char* MAT = "[Mat] ";  // its blank and the one of the format follow the tag
constexpr const char* CORE = "[Core] ";

constexpr Statement statement(const char* source, const char* function, const char* format, const char* tag,
                              const char* subject = nullptr) {
    return {
        MacroMetadata(source, function, format, nullptr, quill::LogLevel::Error, MacroMetadata::Event::Log),
        tag, subject};
}

constexpr const char* NOT_FOUND = "{} Parameter {} not found in given parameter file, default value used.";
constexpr const char* UNSUPPORTED = "{} Mat type currently not supported.";
constexpr const char* FREE_BEFORE =
    "{} {} Mat with GPU memory allocated should be freed before deleting the Camera object to avoid GPU "
    "context "
    "issues.";
constexpr const char* FORBIDDEN = "{} {} for reference Mat is forbidden.";
constexpr const char* EXCEPTION = "{} in {} : {}";
constexpr const char* INVALID = "{} {} Invalid Parameters.";

// Indexed by LogStatement. Tools that watch logs match on path and line: both are fixed identifiers that do
// not follow the code.
constexpr Statement STATEMENTS[] = {
    statement("vela_core/utils/fct_intern.cpp:108", "getField", NOT_FOUND, CORE),
    statement("vela_core/utils/Mat.cpp:440", "toCvMat", UNSUPPORTED, MAT),
    statement("vela_core/utils/Mat.cpp:580", "free", FREE_BEFORE, MAT),
    statement("vela_core/utils/Mat.cpp:844", "updateCPUfromGPU", FORBIDDEN, MAT, "updateCPUfromGPU"),
    statement("vela_core/utils/Mat.cpp:868", "updateGPUfromCPU", FORBIDDEN, MAT, "updateGPUfromCPU"),
    statement("vela_core/utils/Mat.cpp:917", "read", EXCEPTION, MAT, "read"),
    statement("vela_core/utils/Mat.cpp:962", "write", UNSUPPORTED, MAT),
    statement("vela_core/utils/Mat.cpp:982", "write", UNSUPPORTED, MAT),
    statement("vela_core/utils/Mat.cpp:1009", "write", UNSUPPORTED, MAT),
    statement("vela_core/utils/Mat.cpp:1084", "write", UNSUPPORTED, MAT),
    statement("vela_core/utils/Mat.cpp:1090", "write", EXCEPTION, MAT, "write"),
    statement("vela_core/utils/Mat.cpp:1679", "setSubMatrix3f", INVALID, MAT, "setSubMatrix3f"),
    statement("vela_core/utils/Mat.cpp:1701", "setSubVector3f", INVALID, MAT, "setSubVector3f"),
    statement("vela_core/utils/Mat.cpp:1714", "setSubVector4f", INVALID, MAT, "setSubVector4f"),
};

std::atomic<LogHook> logHook{nullptr};

/// A message as quill's backend formats it.
template <class... Arguments>
std::string textOf(const Statement& statement, const Arguments&... arguments) {
    const auto format = fmtquill::runtime(statement.metadata.message_format());
    std::string text;
    for (const char c : fmtquill::format(format, arguments...)) {
        if (isPrintable(c)) {
            text += c;
        } else {
            text += fmtquill::format("\\x{:02X}", static_cast<unsigned char>(c));
        }
    }
    return text;
}

/// The logger for error-level statements; null if there is none or nothing is logged any more.
quill::Logger* findErrorLogger() {
    const auto& loggers = KLogger::get_instance().loggers;
    if (backendWasStopped()) return nullptr;
    const auto found = loggers.find(LOGGER_NAME::CORE);
    if (found == loggers.end() || found->second == nullptr) return nullptr;
    return found->second->get_log_level() > quill::LogLevel::Error ? nullptr : found->second;
}

/// Whether quill still has this thread's context, which this call creates if the thread never logged. quill
/// still returns its address when it is destroyed, so look it up among those that exist.
bool contextIsAlive() {
    const auto* const ours = quill::detail::get_local_thread_context<quill::FrontendOptions>();
    bool alive = false;
    quill::detail::ThreadContextManager::instance().for_each_thread_context(
        [&](const quill::detail::ThreadContext* context) {
            alive = alive || (context == ours && context->is_valid());
        });
    return alive;
}

/// Whether this thread may log: quill destroys a thread's context with its `thread_local` objects, but some
/// of those, and static objects on the main thread, live longer.
bool threadMayLog() {
    static thread_local bool over = false;  // has no destructor, so that it stays readable
    if (over) return false;
    struct Span {
        bool begun = contextIsAlive();  // created after the context, so destroyed before it
        Span() = default;
        ~Span() { over = true; }
        Span(const Span&) = delete;
        Span& operator=(const Span&) = delete;
    };
    static thread_local const Span span;
    return span.begun;
}

template <class... Arguments>
void hand(const Statement& statement, Arguments... arguments) {
    if (const LogHook hook = logHook.load(std::memory_order_acquire)) {
        hook(textOf(statement, arguments...).c_str());
        return;
    }
    const StatementGate::Pass pass;
    if (!pass.granted()) return;
    quill::Logger* const logger = findErrorLogger();
    if (logger == nullptr || !threadMayLog()) return;
    logger->log_statement<false>(&statement.metadata, arguments...);
}

template <class... Details>
void log(LogStatement id, Details... details) noexcept {
    try {
        const Statement& entry = STATEMENTS[static_cast<std::size_t>(id)];
        if (entry.subject == nullptr) {
            hand(entry, entry.tag, details...);
        } else {
            hand(entry, entry.tag, entry.subject, details...);
        }
    } catch (...) {
        // A message that cannot be queued is lost: logging never fails its caller.
    }
}

}  // namespace

void logError(LogStatement statement) noexcept {
    log(statement);
}

void logError(LogStatement statement, const char* detail) noexcept {
    log(statement, detail == nullptr ? "" : detail);
}

}  // namespace vela::detail

vela::LogHook vela::setLogHook(LogHook hook) noexcept {
    return detail::logHook.exchange(hook, std::memory_order_acq_rel);
}

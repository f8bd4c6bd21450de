#include "vela_core/log/detail/statements.hpp"

#include "vela_core/log/KLogger.hpp"

#include <quill/core/MacroMetadata.h>

namespace vela {
namespace {

using quill::MacroMetadata;

struct Statement {
    MacroMetadata metadata;
    const char* tag;
    const char* subject;  // the argument after the tag that is the same each time, or null
};

constexpr const char* MAT = "[Mat] ";  // with the blank of the format, two blanks follow the tag
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

// Indexed by LogStatement. Tools that watch logs match on path and line: both are fixed identifiers and do
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

/// The logger that takes error-level statements; null if there is none.
quill::Logger* findErrorLogger() {
    if (KLogger::isDestroyed()) return nullptr;
    const auto& loggers = KLogger::get_instance().loggers;
    const auto found = loggers.find(LOGGER_NAME::CORE);
    if (found == loggers.end() || found->second == nullptr) return nullptr;
    return found->second->get_log_level() > quill::LogLevel::Error ? nullptr : found->second;
}

template <class... Details>
void log(LogStatement id, Details... details) noexcept {
    try {
        quill::Logger* const logger = findErrorLogger();
        if (logger == nullptr) return;
        const Statement& entry = STATEMENTS[static_cast<std::size_t>(id)];
        if (entry.subject == nullptr) {
            logger->log_statement<false>(&entry.metadata, entry.tag, details...);
        } else {
            logger->log_statement<false>(&entry.metadata, entry.tag, entry.subject, details...);
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

}  // namespace vela

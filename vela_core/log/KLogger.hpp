#pragma once

#include "vela_core/types/String.hpp"

#include <quill/Logger.h>

#include <cstdint>
#include <unordered_map>

namespace vela {

/// Identity of one of the kit's loggers.
enum class LOGGER_NAME : std::int32_t {
    CORE = 0,  ///< the core types
};

String toString(const LOGGER_NAME& value);

/// The process-wide registry of the kit's quill loggers. It is made by the first use, which also starts
/// quill's backend thread, and destroyed at exit; the loggers belong to quill and are never released by it.
///
/// Put a logger of your own under `LOGGER_NAME::CORE` to send the library's messages elsewhere, or change
/// that logger's level to silence them. Do either before other threads log: the map has no lock.
class KLogger {
public:
    /// The one instance; the first call may come from any thread.
    static KLogger& get_instance();

    /// Whether the registry was destroyed already. Objects that outlive it at exit must not call
    /// `get_instance`.
    static bool isDestroyed() noexcept;

    KLogger(const KLogger&) = delete;
    KLogger& operator=(const KLogger&) = delete;

    /// Starts with a logger for `CORE` that writes to standard error.
    std::unordered_map<LOGGER_NAME, quill::Logger*> loggers;

private:
    KLogger();
    ~KLogger();
};

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <quill/Logger.h>

#include <cstdint>
#include <unordered_map>

namespace vela VELA_API {

/// Identity of one of the kit's loggers.
enum class LOGGER_NAME : std::int32_t {
    CORE = 0,  ///< the core types
};

/// Display name; "Unknown" for a value without enumerator.
String toString(const LOGGER_NAME& value);

/// The process-wide registry of the kit's quill loggers. It is made by the first use, which also starts
/// quill's back end (a thread) unless the program did so before, and destroyed at exit; the loggers belong to
/// quill and are never released by it. Programs that want neither thread nor quill's output set a `LogHook`.
///
/// Put a logger of your own under `LOGGER_NAME::CORE` to send the library's messages elsewhere, or change
/// that logger's level to silence them. Do either before other threads log: the map has no lock.
///
/// Back end: started here it has quill's own options, except that bytes above 127 (UTF-8) are printed as they
/// are and that another copy of quill may run in the process. A program that wants other options calls
/// `quill::Backend::start` before the first message.
///
/// Late messages: a message is dropped when the logging of its thread has ended, that is, when it comes from
/// a `thread_local` object that is older than the thread's first message, or from a static object after the
/// main thread has logged; and when it comes after the registry's destruction.
///
/// `fork`: a back end that was started here is stopped before the process forks, which writes what is queued,
/// and started again in both processes; this takes some tenths of a millisecond and what the sink needs. The
/// other threads' messages wait for it, none is lost or doubled, and the child may log and leave by `exit`.
/// What a program logs through quill by itself from other threads does not wait: threads that log without a
/// pause can hold up the fork. Nothing is done for a back end that the program started: its child must leave
/// by `_exit`.
///
/// `exit`: what is queued is written first, which takes the time that the sink needs for it: quill's queues
/// grow to 2 GiB a thread, so that threads which log without a pause may leave work for many seconds. Later
/// messages are dropped. A registry whose first use comes after the library's own destruction is empty.
class KLogger {
public:
    /// The one instance; the first call may come from any thread. Throws what starting a thread throws.
    static KLogger& get_instance();

    /// Whether the registry was destroyed already, or can no longer be made. Objects that outlive it at exit
    /// must not call `get_instance`.
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

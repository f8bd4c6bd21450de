// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <quill/Logger.h>

#include <cstdint>
#include <unordered_map>

namespace vela VELA_API {

/// Key of one of the library's loggers.
enum class LOGGER_NAME : std::int32_t {
    CORE = 0,  ///< the core types
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const LOGGER_NAME& value);

/// The process-wide registry of the library's quill loggers. The first use creates it and starts quill's
/// backend (a thread) unless the program has started it before; it is destroyed at exit. The loggers belong
/// to quill, and the registry never releases them. Programs that want neither thread nor quill's output set a
/// `LogHook`.
///
/// Put a logger of your own under `LOGGER_NAME::CORE` to send the library's messages elsewhere, or change
/// that logger's level to silence them. Do so before other threads log: the map has no lock.
///
/// Backend: it is started with quill's own options, except that bytes above 127 (UTF-8) are printed
/// unchanged and another copy of quill may run in the process. A program that wants other options calls
/// `quill::Backend::start` before the first message.
///
/// Late messages: a message is dropped when logging has ended on its thread, that is, when it comes from a
/// `thread_local` object older than the thread's first message, or from a static object after the main thread
/// has logged. It is also dropped after the registry's destruction, and while a backend that the registry
/// started is stopped by `quill::Backend::stop`.
///
/// `fork`: a backend that the registry started is stopped before the process forks, which writes all queued
/// messages, and started again in both processes; this takes some tenths of a millisecond plus the sink's
/// time. Messages of other threads wait meanwhile, none is lost or doubled, and the child may log and end
/// with `exit`. Messages that a program logs through quill directly do not wait: threads that do so without a
/// pause can delay the fork. A backend that the program started is left alone: its child must end with
/// `_exit`.
///
/// `exit`: queued messages are written first, as fast as the sink takes them. quill's queues grow to 2 GiB
/// per thread, so threads that log without a pause may leave work for many seconds. Later messages are
/// dropped. A registry that is first used after the library's own destruction is empty.
class KLogger {
public:
    /// The only instance; the first call may come from any thread. Throws what starting a thread throws.
    static KLogger& get_instance();

    /// Whether the registry has been destroyed or can no longer be created. Objects that outlive it at exit
    /// must not call `get_instance`.
    static bool isDestroyed() noexcept;

    KLogger(const KLogger&) = delete;
    KLogger& operator=(const KLogger&) = delete;

    /// Starts with one logger, `CORE`, which writes to standard error.
    std::unordered_map<LOGGER_NAME, quill::Logger*> loggers;

private:
    KLogger();
    ~KLogger();
};

}  // namespace vela

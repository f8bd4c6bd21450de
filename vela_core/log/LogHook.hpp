// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

namespace vela VELA_API {

/// Receives the library's messages instead of the logger registry. `text` is the message as the registry's
/// logger would print it after time stamp and source, including the tag and without a line feed ("[Mat]  in
/// read : no such file"); it is valid only during the call. The hook runs on the thread that reports, on
/// several threads at once if they report at once, and also during static destruction. Exceptions that leave
/// it are dropped.
using LogHook = void (*)(const char* text);

/// Sends every further message to `hook` and does not touch the registry, so that a program or an extension
/// module that embeds the library gets no logger thread. The levels of loggers do not apply. Null sends
/// messages to the registry again. Any thread may call this. Returns the previous hook, null at first.
LogHook setLogHook(LogHook hook) noexcept;

}  // namespace vela

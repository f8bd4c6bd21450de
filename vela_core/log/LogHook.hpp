// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

namespace vela VELA_API {

/// Takes the library's messages in place of the logger registry. `text` is the whole message as the
/// registry's logger would print it after its time stamp and source, tag included and without a line end
/// ("[Mat]  in read : no such file"); it is valid during the call only. The hook is called on the thread that
/// reports, as often at a time as there are such threads, also during static destruction; an exception that
/// leaves it is dropped.
using LogHook = void (*)(const char* text);

/// Sends every message from now on to `hook`: the registry is not touched, so that a program or an extension
/// module that embeds the library gets no logger thread. Levels of loggers do not apply. Null sends messages
/// to the registry again. Any thread may call this. Returns the hook that was set before, null at first.
LogHook setLogHook(LogHook hook) noexcept;

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
// A plugin with its own copy of the library, as in programs that load modules with hidden symbols.
#include "vela_core/log/KLogger.hpp"
#include "vela_core/log/detail/statements.hpp"

#define EXPORTED extern "C" [[gnu::visibility("default")]]

/// Logs, and waits until it is written.
EXPORTED void plugin_log(const char* detail) {
    vela::detail::logError(vela::detail::LogStatement::READ_EXCEPTION, detail);
    vela::KLogger::get_instance().loggers.at(vela::LOGGER_NAME::CORE)->flush_log();
}

EXPORTED vela::String* plugin_make_text() {
    return new vela::String(static_cast<const char*>(nullptr));
}

EXPORTED void plugin_destroy_text(vela::String* text) {
    delete text;
}

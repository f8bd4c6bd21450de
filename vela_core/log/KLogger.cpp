#include "vela_core/log/KLogger.hpp"

#include "vela_core/types/detail/enum_table.hpp"

#include <quill/Backend.h>
#include <quill/Frontend.h>
#include <quill/sinks/ConsoleSink.h>

#include <atomic>

namespace vela {
namespace {

constexpr EnumName<LOGGER_NAME> LOGGER_NAMES[] = {{LOGGER_NAME::CORE, "CORE"}};

std::atomic<bool> destroyed{false};

/// Mat names and file names may be UTF-8; control characters are still shown as numbers.
bool isPrintable(char c) {
    return static_cast<unsigned char>(c) >= ' ' && c != '\x7f';
}

}  // namespace

String toString(const LOGGER_NAME& value) {
    return nameIn(LOGGER_NAMES, value);
}

KLogger& KLogger::get_instance() {
    static KLogger instance;
    return instance;
}

bool KLogger::isDestroyed() noexcept {
    return destroyed.load(std::memory_order_relaxed);
}

KLogger::KLogger() {
    quill::BackendOptions backend;
    backend.check_printable_char = isPrintable;
    quill::Backend::start(backend);

    quill::ConsoleSinkConfig console;
    console.set_stream("stderr");
    auto sink = quill::Frontend::create_or_get_sink<quill::ConsoleSink>("vela.stderr", console);
    loggers[LOGGER_NAME::CORE] = quill::Frontend::create_or_get_logger("vela.core", std::move(sink));
}

KLogger::~KLogger() {
    destroyed.store(true, std::memory_order_relaxed);
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/log/KLogger.hpp"

#include <gtest/gtest.h>
#include <quill/Frontend.h>
#include <quill/sinks/Sink.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vela::test {

/// What `action` writes to standard output.
template <class Action>
std::string printedBy(Action action) {
    ::testing::internal::CaptureStdout();
    action();
    return ::testing::internal::GetCapturedStdout();
}

/// Passes each message on as "path:line LEVEL message", on the backend thread.
class FunctionSink : public quill::Sink {
public:
    explicit FunctionSink(std::function<void(const std::string&)> take) : take_(std::move(take)) {}

    void write_log(quill::MacroMetadata const* metadata, uint64_t, std::string_view, std::string_view,
                   std::string const&, std::string_view, quill::LogLevel, std::string_view level,
                   std::string_view, std::vector<std::pair<std::string, std::string>> const*,
                   std::string_view message, std::string_view) override {
        take_(std::string(metadata->source_location()) + " " + std::string(level) + " " +
              std::string(message) + "\n");
    }
    void flush_sink() override {}

private:
    std::function<void(const std::string&)> take_;
};

/// During its lifetime, captures the library's messages instead of printing them to standard error.
class LogCapture {
public:
    LogCapture() : original_(KLogger::get_instance().loggers.at(LOGGER_NAME::CORE)) {
        logger()->set_log_level(quill::LogLevel::Info);
        KLogger::get_instance().loggers[LOGGER_NAME::CORE] = logger();
        take();
    }
    ~LogCapture() { KLogger::get_instance().loggers[LOGGER_NAME::CORE] = original_; }
    LogCapture(LogCapture&&) = delete;

    /// The messages since the last call, one per line.
    std::string take() {
        logger()->flush_log();
        return std::exchange(text(), {});
    }

    static quill::Logger* logger() {
        static quill::Logger* const capturing = quill::Frontend::create_or_get_logger(
            "vela.test", quill::Frontend::create_or_get_sink<FunctionSink>(
                             "vela.test", [](const std::string& message) { text() += message; }));
        return capturing;
    }

private:
    /// Written by the backend thread, read after a flush.
    static std::string& text() {
        static auto* const messages = new std::string;
        return *messages;
    }

    quill::Logger* original_;
};

}  // namespace vela::test

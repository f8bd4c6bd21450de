// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/log/CudaSafeCall.hpp"
#include "vela_core/log/KLogger.hpp"
#include "vela_core/log/LogHook.hpp"
#include "vela_core/log/detail/statements.hpp"

#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>

namespace vela::test {
namespace {

using detail::logError;
using detail::LogStatement;

void misuse() {
    logError(LogStatement::SET_SUB_VECTOR3F);
}

TEST(Log, StatementsHaveFixedSourcesAndTexts) {
    LogCapture log;
    for (std::size_t i = 0; i <= static_cast<std::size_t>(LogStatement::SET_SUB_VECTOR4F); ++i) {
        logError(static_cast<LogStatement>(i), "DETAIL");  // omitted where the text has no placeholder
    }
    EXPECT_EQ(log.take(), contentOf(VELA_TEST_FOLDER "/log/statements.txt"));
}

TEST(Log, ArgumentsAreTakenByValue) {
    LogCapture log;
    std::string name = "caf\xC3\xA9\x01\x7F\r\n\t";
    logError(LogStatement::READ_EXCEPTION, name.c_str());
    name.assign(name.size(), '?');
    logError(LogStatement::READ_EXCEPTION, nullptr);
    EXPECT_EQ(log.take(),
              "vela_core/utils/Mat.cpp:917 ERROR [Mat]  in read : caf\xC3\xA9\\x01\\x7F\r\n\t\n"
              "vela_core/utils/Mat.cpp:917 ERROR [Mat]  in read : \n");
}

TEST(Log, TheCallerDoesNotWaitForTheBackEnd) {
    const LogCapture restoresTheLogger;
    std::promise<void> release;
    std::atomic<bool> written{false};
    const auto sink = quill::Frontend::create_or_get_sink<FunctionSink>("blocked", [&](const auto&) {
        release.get_future().wait_for(std::chrono::seconds(10));
        written = true;
    });
    quill::Logger* const blocked = quill::Frontend::create_or_get_logger("blocked", sink);
    KLogger::get_instance().loggers[LOGGER_NAME::CORE] = blocked;
    misuse();
    EXPECT_FALSE(written);
    release.set_value();
    blocked->flush_log();
    EXPECT_TRUE(written);
}

TEST(Log, IsSilencedByLevelsAboveErrorAndMissingLoggers) {
    LogCapture log;
    auto& loggers = KLogger::get_instance().loggers;
    LogCapture::logger()->set_log_level(quill::LogLevel::Error);
    misuse();
    EXPECT_NE(log.take(), "");
    LogCapture::logger()->set_log_level(quill::LogLevel::Critical);
    EXPECT_EQ(Matrix4f().setSubVector3f({}, 4), ERROR_CODE::FAILURE);
    LogCapture::logger()->set_log_level(quill::LogLevel::Info);
    quill::Logger* const kept = std::exchange(loggers[LOGGER_NAME::CORE], nullptr);
    misuse();
    loggers.erase(LOGGER_NAME::CORE);
    misuse();
    loggers[LOGGER_NAME::CORE] = kept;
    EXPECT_EQ(log.take(), "");
}

TEST(CudaSafeCall, PrintsFailuresOnly) {
    EXPECT_EQ(printedBy([] { __cudaSafeCall(cudaSuccess, "f", "g", 1); }), "");
    EXPECT_EQ(printedBy([] { __cudaSafeCall(cudaErrorMemoryAllocation, "void f()", "g", 1); }),
              "in void f() : Err [2]: out of memory.\n");
}

std::string hooked;

void keep(const char* text) {
    hooked.append(text).append("\n");
}

void refuse(const char* /*text*/) {
    throw std::runtime_error("refused");
}

TEST(LogHook, GetsWhatTheLoggerWouldPrint) {
    LogCapture log;
    EXPECT_EQ(setLogHook(refuse), nullptr);
    misuse();
    for (std::size_t i = 0; i <= static_cast<std::size_t>(LogStatement::SET_SUB_VECTOR4F); ++i) {
        for (const char* const detail : {"caf\xC3\xA9 {} \x01\n\t\x7F", ""}) {
            const auto id = static_cast<LogStatement>(i);
            LogCapture::logger()->set_log_level(quill::LogLevel::Critical);  // silences loggers only
            setLogHook(keep);
            hooked.clear();
            logError(id, detail);
            EXPECT_EQ(setLogHook(nullptr), keep);
            EXPECT_EQ(log.take(), "");
            LogCapture::logger()->set_log_level(quill::LogLevel::Info);
            logError(id, detail);
            const std::string logged = log.take();
            EXPECT_EQ(hooked, logged.substr(logged.find(" ERROR ") + 7));
        }
    }
}

}  // namespace
}  // namespace vela::test

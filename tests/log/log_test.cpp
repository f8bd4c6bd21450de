#include "vela_core/log/CudaSafeCall.hpp"
#include "vela_core/log/KLogger.hpp"
#include "vela_core/log/statements.hpp"
#include "vela_core/utils/Mat.hpp"

#include "support/capture.hpp"
#include "support/device.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <thread>

namespace vela::test {
namespace {

TEST(Log, StatementsHaveFixedSourcesAndTexts) {
    LogCapture log;
    const std::pair<LogStatement, const char*> withDetail[] = {
        {LogStatement::PARAMETER_NOT_FOUND,
         "fct_intern.cpp:108 ERROR [Core]  Parameter DETAIL not found in given parameter file, default value "
         "used."},
        {LogStatement::GPU_FREE_FAILED,
         "Mat.cpp:580 ERROR [Mat]  DETAIL Mat with GPU memory allocated should be freed before deleting the "
         "Camera "
         "object to avoid GPU context issues."},
        {LogStatement::READ_EXCEPTION, "Mat.cpp:917 ERROR [Mat]  in read : DETAIL"},
        {LogStatement::WRITE_EXCEPTION, "Mat.cpp:1090 ERROR [Mat]  in write : DETAIL"}};
    for (const auto& [statement, text] : withDetail) {
        logError(statement, "DETAIL");
        EXPECT_EQ(log.take(), std::string("vela_core/utils/") + text + "\n");
    }
    const std::pair<LogStatement, const char*> plain[] = {
        {LogStatement::WRAP_UNSUPPORTED_TYPE, "440 ERROR [Mat]  Mat type currently not supported."},
        {LogStatement::UPDATE_CPU_OF_REFERENCE,
         "844 ERROR [Mat]  updateCPUfromGPU for reference Mat is forbidden."},
        {LogStatement::UPDATE_GPU_OF_REFERENCE,
         "868 ERROR [Mat]  updateGPUfromCPU for reference Mat is forbidden."},
        {LogStatement::WRITE_DEPTH_FAILED, "962 ERROR [Mat]  Mat type currently not supported."},
        {LogStatement::WRITE_CLOUD3_FAILED, "982 ERROR [Mat]  Mat type currently not supported."},
        {LogStatement::WRITE_CLOUD4_FAILED, "1009 ERROR [Mat]  Mat type currently not supported."},
        {LogStatement::WRITE_UNSUPPORTED_TYPE, "1084 ERROR [Mat]  Mat type currently not supported."},
        {LogStatement::SET_SUB_MATRIX3F, "1679 ERROR [Mat]  setSubMatrix3f Invalid Parameters."},
        {LogStatement::SET_SUB_VECTOR3F, "1701 ERROR [Mat]  setSubVector3f Invalid Parameters."},
        {LogStatement::SET_SUB_VECTOR4F, "1714 ERROR [Mat]  setSubVector4f Invalid Parameters."}};
    for (const auto& [statement, text] : plain) {
        logError(statement);
        EXPECT_EQ(log.take(), std::string("vela_core/utils/Mat.cpp:") + text + "\n");
    }
}

TEST(Log, ArgumentsAreTakenByValue) {
    LogCapture log;
    std::string name = "caf\xC3\xA9\x01";
    logError(LogStatement::READ_EXCEPTION, name.c_str());
    name.assign(name.size(), '?');
    logError(LogStatement::READ_EXCEPTION, nullptr);
    EXPECT_EQ(log.take(),
              "vela_core/utils/Mat.cpp:917 ERROR [Mat]  in read : caf\xC3\xA9\\x01\n"
              "vela_core/utils/Mat.cpp:917 ERROR [Mat]  in read : \n");
}

TEST(Log, LevelsAboveErrorAndMissingLoggersSilence) {
    LogCapture log;
    auto& loggers = KLogger::get_instance().loggers;
    LogCapture::logger()->set_log_level(quill::LogLevel::Error);
    logError(LogStatement::SET_SUB_VECTOR3F);
    EXPECT_NE(log.take(), "");
    LogCapture::logger()->set_log_level(quill::LogLevel::Critical);
    logError(LogStatement::SET_SUB_VECTOR3F);
    LogCapture::logger()->set_log_level(quill::LogLevel::Info);
    quill::Logger* const kept = std::exchange(loggers[LOGGER_NAME::CORE], nullptr);
    logError(LogStatement::SET_SUB_VECTOR3F);
    loggers.erase(LOGGER_NAME::CORE);
    logError(LogStatement::SET_SUB_VECTOR3F, "detail");
    loggers[LOGGER_NAME::CORE] = kept;
    EXPECT_EQ(log.take(), "");
}

TEST(CudaSafeCall, PrintsFailuresOnly) {
    EXPECT_EQ(printedBy([] { __cudaSafeCall(cudaSuccess, "f", "g", 1); }), "");
    EXPECT_EQ(printedBy([] { __cudaSafeCall(cudaErrorMemoryAllocation, "void f()", "g", 1); }),
              "in void f() : Err [2]: out of memory.\n");
}

std::ptrdiff_t threads() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/task"), directory_iterator());
}

/// Each test runs in a process of its own, from its start to its exit.
class LogProcessTest : public DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }
};

void misuse() {
    logError(LogStatement::SET_SUB_VECTOR3F);
}

void useDevice() {
    void* memory = nullptr;
    std::size_t pitch = 0;
    const char byte = 0;
    EXPECT_EQ(cudaMallocPitch(&memory, &pitch, 1, 1), cudaSuccess);
    EXPECT_EQ(cudaMemcpy2D(memory, pitch, &byte, 1, 1, 1, cudaMemcpyHostToDevice), cudaSuccess);
    EXPECT_EQ(cudaFree(memory), cudaSuccess);
}

TEST_F(LogProcessTest, NoThreadBeforeTheFirstMessage) {
    const auto program = [] {
        useDevice();  // a driver starts threads of its own
        const std::ptrdiff_t before = threads();
        { const Mat mat = filled(4, 4, MAT_TYPE::MAT_8U_C1, MEM_BOTH); }
        const bool quiet = threads() == before;
        misuse();
        std::exit(quiet && threads() > before ? 0 : 1);
    };
    EXPECT_EXIT(program(), testing::ExitedWithCode(0), "setSubVector3f Invalid Parameters");
}

TEST_F(LogProcessTest, QueuedMessagesAreWrittenAtExit) {
    const auto program = [] {
        for (int i = 0; i < 1000; ++i) {
            logError(LogStatement::READ_EXCEPTION, std::to_string(i).c_str());
        }
        std::exit(0);
    };
    EXPECT_EXIT(program(), testing::ExitedWithCode(0), "in read : 0\n(.|\n)*in read : 999\n");
}

#ifdef VELA_GPU_SOFTWARE
TEST_F(LogProcessTest, MatsMayOutliveTheRegistry) {
    const auto program = [] {
        static Mat outliving(4, 4, MAT_TYPE::MAT_8U_C1, MEM::GPU);
        misuse();  // the registry is younger and dies first
        software_device::failCall("cudaFree", 1, cudaErrorCudartUnloading);
        std::exit(0);
    };
    EXPECT_EXIT(program(), testing::ExitedWithCode(0), "^[^\n]*setSubVector3f Invalid Parameters\\.\n$");
}
#endif

TEST_F(LogProcessTest, MayBeFirstUsedAtExitOrFromManyThreads) {
    const auto atExit = [] {
        std::atexit(misuse);
        std::exit(0);
    };
    EXPECT_EXIT(atExit(), testing::ExitedWithCode(0), "setSubVector3f Invalid Parameters");
    const auto fromThreads = [] {
        std::thread others[4];
        for (std::thread& other : others) {
            other = std::thread(misuse);
        }
        for (std::thread& other : others) {
            other.join();
        }
        std::exit(0);
    };
    EXPECT_EXIT(fromThreads(), testing::ExitedWithCode(0), "(setSubVector3f(.|\n)*){4}");
}

}  // namespace
}  // namespace vela::test

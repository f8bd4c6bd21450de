#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/log/CudaSafeCall.hpp"
#include "vela_core/log/KLogger.hpp"
#include "vela_core/log/detail/statements.hpp"
#include "vela_core/utils/Mat.hpp"

#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "support/device.hpp"

#include <cstdlib>
#include <iterator>
#include <thread>

namespace vela::test {
namespace {

void misuse() {
    logError(LogStatement::SET_SUB_VECTOR3F);
}

TEST(Log, StatementsHaveFixedSourcesAndTexts) {
    LogCapture log;
    for (std::size_t i = 0; i <= static_cast<std::size_t>(LogStatement::SET_SUB_VECTOR4F); ++i) {
        logError(static_cast<LogStatement>(i), "DETAIL");  // left out where the text has no place for it
    }
    EXPECT_EQ(log.take(), contentOf(VELA_TEST_FOLDER "/log/statements.txt"));
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

std::ptrdiff_t threads() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/task"), directory_iterator());
}

// Programs that run from their start to their exit.

void useDevice() {
    void* memory = nullptr;
    std::size_t pitch = 0;
    const char byte = 0;
    EXPECT_EQ(cudaMallocPitch(&memory, &pitch, 1, 1), cudaSuccess);
    EXPECT_EQ(cudaMemcpy2D(memory, pitch, &byte, 1, 1, 1, cudaMemcpyHostToDevice), cudaSuccess);
    EXPECT_EQ(cudaFree(memory), cudaSuccess);
}

void startsAThreadWithItsFirstMessage() {
    useDevice();  // a driver starts threads of its own
    const std::ptrdiff_t before = threads();
    { const Mat mat = filled(4, 4, MAT_TYPE::MAT_8U_C1, MEM_BOTH); }
    if (threads() != before) std::exit(1);
    misuse();
    if (threads() == before) std::exit(2);
}

void leavesManyMessagesQueued() {
    for (int i = 0; i < 1000; ++i) {
        logError(LogStatement::READ_EXCEPTION, std::to_string(i).c_str());
    }
}

void logsFirstAtExit() {
    std::atexit(misuse);
}

void logsFromManyThreads() {
    std::thread others[4];
    for (std::thread& other : others) {
        other = std::thread(misuse);
    }
    for (std::thread& other : others) {
        other.join();
    }
}

#ifdef VELA_GPU_SOFTWARE
void freesAMatAfterTheRegistry() {
    static Mat outliving(4, 4, MAT_TYPE::MAT_8U_C1, MEM::GPU);
    misuse();  // the registry is younger and dies first
    software_device::failCall("cudaFree", 1, cudaErrorCudartUnloading);
}
#endif

class LogProgramTest : public DeviceTest {};

TEST_F(LogProgramTest, WritesWhatItLogged) {
    const std::pair<void (*)(), const char*> programs[] = {
        {startsAThreadWithItsFirstMessage, "setSubVector3f Invalid Parameters"},
        {leavesManyMessagesQueued, "in read : 0\n(.|\n)*in read : 999\n"},
        {logsFirstAtExit, "setSubVector3f Invalid Parameters"},
        {logsFromManyThreads, "(setSubVector3f(.|\n)*){4}"},
#ifdef VELA_GPU_SOFTWARE
        {freesAMatAfterTheRegistry, "^[^\n]*setSubVector3f Invalid Parameters\\.\n$"},
#endif
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto& [program, pattern] : programs) {
        EXPECT_EXIT((program(), std::exit(0)), testing::ExitedWithCode(0), pattern);
    }
}

}  // namespace
}  // namespace vela::test

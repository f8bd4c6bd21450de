// SPDX-License-Identifier: Apache-2.0
// Programs that log, fork and end. Each runs from its start to its exit, in a process of its own.
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/log/LogHook.hpp"
#include "vela_core/log/detail/statements.hpp"

#include <fcntl.h>
#include <quill/LogMacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace vela::test {
namespace {

using detail::logError;
using detail::LogStatement;

using std::chrono::milliseconds;

void misuse() {
    logError(LogStatement::SET_SUB_VECTOR3F);
}

std::ptrdiff_t threads() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/task"), directory_iterator());
}

void expect(bool condition, int code) {
    if (!condition) std::_Exit(code);
}

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
    setLogHook([](const char* text) { std::fprintf(stderr, "hook: %s\n", text); });
    misuse();
    expect(threads() == before, 1);
    setLogHook(nullptr);
    misuse();
    expect(threads() != before, 2);
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

/// Files and pipes that a program opens must not become what the library takes for standard error.
void logsWithoutStandardError() {
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    misuse();
    KLogger::get_instance().loggers[LOGGER_NAME::CORE]->flush_log();
    expect(fcntl(STDOUT_FILENO, F_GETFD) == -1 && fcntl(STDERR_FILENO, F_GETFD) == -1, 1);
}

void findsTheRegistryDestroyed() {
    static const struct Older {
        ~Older() { expect(KLogger::isDestroyed(), 1); }
    } older;
    expect(!KLogger::isDestroyed(), 2);
    misuse();
    expect(!KLogger::isDestroyed(), 3);
}

// Messages that come late.

/// Gives the back end time to release what a thread has left.
struct LongGoodbye {
    ~LongGoodbye() { std::this_thread::sleep_for(milliseconds(300)); }
};

#ifdef VELA_GPU_SOFTWARE
void failNextFree() {
    software_device::failCall("cudaFree", 1, cudaErrorCudartUnloading);
}

void freesAMatAfterTheRegistry() {
    static const Mat outliving(4, 4, MAT_TYPE::MAT_8U_C1, MEM::GPU);
    misuse();  // the registry is younger and dies first
    failNextFree();
}

void freesAStaticMatAfterTheMainThreadsContext() {
    misuse();
    static const Mat young(4, 4, MAT_TYPE::MAT_8U_C1, MEM::GPU);
    static const LongGoodbye goodbye;
    failNextFree();
}

template <class Report>
void freesAThreadsMatAfterItsContext(Report report) {
    std::thread([=] {
        static thread_local const Mat mat(4, 4, MAT_TYPE::MAT_8U_C1, MEM::GPU);
        static thread_local const LongGoodbye goodbye;
        report();
        failNextFree();
    }).join();
}

void freesAThreadsMatAfterOurMessage() {
    freesAThreadsMatAfterItsContext(misuse);
}

void freesAThreadsMatAfterTheProgramsMessage() {
    freesAThreadsMatAfterItsContext([logger = KLogger::get_instance().loggers[LOGGER_NAME::CORE]] {
        LOG_ERROR(logger, "setSubVector3f Invalid Parameters.");
    });
}

void freesAThreadsMatBeforeItsContext() {
    std::thread([] {
        logError(LogStatement::WRAP_UNSUPPORTED_TYPE);
        static thread_local const Mat mat(4, 4, MAT_TYPE::MAT_8U_C1, MEM::GPU);
        failNextFree();
    }).join();
}
#endif

// Forks.

int statusOf(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

template <class Program>
pid_t forked(Program program) {
    const pid_t child = fork();
    if (child != 0) return child;
    alarm(20);
    program();
    std::exit(0);
}

void forksAfterAMessage() {
    misuse();
    const pid_t child = forked([] { logError(LogStatement::READ_EXCEPTION, "child"); });
    expect(statusOf(child) == 0, 1);
    logError(LogStatement::READ_EXCEPTION, "parent");
}

void forksAndLeavesAtOnce() {
    misuse();
    expect(statusOf(forked([] {})) == 0, 1);
}

/// Every message of every thread and process comes once.
[[maybe_unused]] void forksWhileThreadsLog() {
    constexpr int FORKS = 50;
    constexpr int LOGGERS = 3;
    char name[] = "/tmp/vela_forks_XXXXXX";
    const int file = mkstemp(name);
    dup2(file, STDERR_FILENO);
    std::atomic<bool> over{false};
    int sent[LOGGERS] = {};
    std::thread loggers[LOGGERS];
    for (int i = 0; i < LOGGERS; ++i) {
        loggers[i] = std::thread([&over, &count = sent[i], id = std::to_string(i)] {
            for (; !over; ++count) {
                logError(LogStatement::READ_EXCEPTION, (id + "." + std::to_string(count) + ".").c_str());
                std::this_thread::sleep_for(std::chrono::microseconds(20));
            }
        });
    }
    for (int i = 0; i < FORKS; ++i) {
        const pid_t child =
            forked([i] { logError(LogStatement::READ_EXCEPTION, ("c" + std::to_string(i)).c_str()); });
        expect(statusOf(child) == 0, 1);
    }
    over = true;
    for (std::thread& logger : loggers) {
        logger.join();
    }
    KLogger::get_instance().loggers[LOGGER_NAME::CORE]->flush_log();
    std::ifstream messages(name);
    std::map<std::string, int> times;
    for (std::string line; std::getline(messages, line);) {
        ++times[line.substr(line.rfind(' '))];
    }
    unlink(name);
    expect(times.size() == static_cast<std::size_t>(FORKS + sent[0] + sent[1] + sent[2]), 2);
    for (const auto& [message, count] : times) {
        expect(count == 1, 3);
    }
}

// Exits.

template <class Program>
void runsOften(int times, Program program) {
    for (int i = 0; i < times; ++i) {
        expect(statusOf(forked([=] { program(i); })) == 0, 1);
    }
}

/// Some of them for the first time.
void exitsWhileThreadsLog() {
    runsOften(10, [](int i) {
        for (int thread = 0; thread < 3; ++thread) {
            std::thread([] {
                for (;;) {
                    misuse();
                    std::this_thread::sleep_for(std::chrono::microseconds(1));
                }
            }).detach();
        }
        std::this_thread::sleep_for(milliseconds(i));
    });
}

const char* const ONE = "^[^\n]*setSubVector3f Invalid Parameters\\.\n$";

const struct {
    const char* name;
    void (*program)();
    const char* prints;
} PROGRAMS[] = {
    {"startsAThreadWithItsFirstMessage", startsAThreadWithItsFirstMessage,
     "^hook: \\[Mat\\]  setSubVector3f Invalid Parameters\\.\n[^\n]*setSubVector3f Invalid Parameters\\.\n$"},
    {"leavesManyMessagesQueued", leavesManyMessagesQueued, "in read : 0\n(.|\n)*in read : 999\n"},
    {"logsFirstAtExit", logsFirstAtExit, ONE},
    {"logsFromManyThreads", logsFromManyThreads, "(setSubVector3f(.|\n)*){4}"},
    {"logsWithoutStandardError", logsWithoutStandardError, "^$"},
    {"findsTheRegistryDestroyed", findsTheRegistryDestroyed, ONE},
    {"forksAfterAMessage", forksAfterAMessage,
     "^[^\n]*setSubVector3f Invalid Parameters\\.\n[^\n]*in read : child\n[^\n]*in read : parent\n$"},
    {"forksAndLeavesAtOnce", forksAndLeavesAtOnce, ONE},
// Sanitizers take the threads that a child does not have for leaks, or start no thread in it.
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
    {"forksWhileThreadsLog", forksWhileThreadsLog, ""},
#endif
    {"exitsWhileThreadsLog", exitsWhileThreadsLog, ""},
#ifdef VELA_GPU_SOFTWARE
    {"freesAMatAfterTheRegistry", freesAMatAfterTheRegistry, ONE},
    {"freesAStaticMatAfterTheMainThreadsContext", freesAStaticMatAfterTheMainThreadsContext, ONE},
    {"freesAThreadsMatAfterOurMessage", freesAThreadsMatAfterOurMessage, ONE},
    {"freesAThreadsMatAfterTheProgramsMessage", freesAThreadsMatAfterTheProgramsMessage, ONE},
    {"freesAThreadsMatBeforeItsContext", freesAThreadsMatBeforeItsContext,
     "not supported\\.\n[^\n]*should be freed before[^\n]*\n$"},
#endif
};

class LogProgramTest : public DeviceTest {};

TEST_F(LogProgramTest, WritesWhatItLoggedAndEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto& [name, program, prints] : PROGRAMS) {
        SCOPED_TRACE(name);
        EXPECT_EXIT((alarm(60), program(), std::exit(0)), testing::ExitedWithCode(0), prints);
    }
}

}  // namespace
}  // namespace vela::test

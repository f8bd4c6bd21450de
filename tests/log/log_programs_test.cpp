// SPDX-License-Identifier: Apache-2.0
// Programs that log, fork and end. Each runs from start to exit in a separate process.
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/log/LogHook.hpp"
#include "vela_core/log/detail/statements.hpp"

#include <fcntl.h>
#include <quill/Backend.h>
#include <quill/Frontend.h>
#include <quill/LogMacros.h>
#include <quill/sinks/Sink.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

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

/// Gives the backend time to release the data of a thread that has ended.
struct LongGoodbye {
    ~LongGoodbye() { std::this_thread::sleep_for(milliseconds(300)); }
};

#ifdef VELA_GPU_SOFTWARE
void failNextFree() {
    software_device::failCall("cudaFree", 1, cudaErrorCudartUnloading);
}

template <class Report>
void freesAThreadsMatAfterItsContext(Report report) {
    std::thread([=] {
        static thread_local const Mat mat(4, 4, U1, MEM::GPU);
        static thread_local const LongGoodbye goodbye;
        report();
        failNextFree();
    }).join();
}
#endif

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

/// Expects every message of every thread and process exactly once.
[[maybe_unused]] void forksWhileThreadsLog() {
    constexpr std::size_t FORKS = 50;
    constexpr int LOGGERS = 3;
    char name[] = "/tmp/vela_forks_XXXXXX";
    const int file = mkstemp(name);
    dup2(file, STDERR_FILENO);
    std::atomic<bool> over{false};
    std::size_t sent[LOGGERS] = {};
    std::thread loggers[LOGGERS];
    for (int i = 0; i < LOGGERS; ++i) {
        loggers[i] = std::thread([&over, &count = sent[i], id = std::to_string(i)] {
            for (; !over; ++count) {
                logError(LogStatement::READ_EXCEPTION, (id + "." + std::to_string(count) + ".").c_str());
                std::this_thread::sleep_for(std::chrono::microseconds(20));
            }
        });
    }
    for (std::size_t i = 0; i < FORKS; ++i) {
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
    expect(times.size() == FORKS + sent[0] + sent[1] + sent[2], 2);
    for (const auto& [message, count] : times) {
        expect(count == 1, 3);
    }
}

[[noreturn]] void logsWithoutEnd() {
    for (;;) {
        misuse();
        std::this_thread::sleep_for(std::chrono::microseconds(1));
    }
}

/// Lets the backend write a thousand messages a second at most.
class SlowSink : public quill::Sink {
public:
    void write_log(const quill::MacroMetadata*, std::uint64_t, std::string_view, std::string_view,
                   const std::string&, std::string_view, quill::LogLevel, std::string_view, std::string_view,
                   const std::vector<std::pair<std::string, std::string>>*, std::string_view,
                   std::string_view) override {
        std::this_thread::sleep_for(milliseconds(1));
    }
    void flush_sink() override {}
};

const char* const ONE = "^[^\n]*setSubVector3f Invalid Parameters\\.\n$";

/// Programs, and what they write to standard error.
const struct {
    const char* name;
    void (*program)();
    const char* prints;
} PROGRAMS[] = {
    {"the first message starts a thread",
     [] {
         useDevice();  // a driver starts its own threads
         const std::ptrdiff_t before = threads();
         { const Mat mat = filled(4, 4, U1, MEM_BOTH); }
         setLogHook([](const char* text) { std::fprintf(stderr, "hook: %s\n", text); });
         misuse();
         expect(threads() == before, 1);
         setLogHook(nullptr);
         misuse();
         expect(threads() != before, 2);
     },
     "^hook: \\[Mat\\]  setSubVector3f Invalid Parameters\\.\n[^\n]*setSubVector3f Invalid Parameters\\.\n$"},
    {"many messages are queued at the end",
     [] {
         for (int i = 0; i < 1000; ++i) {
             logError(LogStatement::READ_EXCEPTION, std::to_string(i).c_str());
         }
     },
     "in read : 0\n(.|\n)*in read : 999\n"},
    {"the first message comes at exit", [] { std::atexit(misuse); }, ONE},
    // The library must not mistake a file or pipe that the program opens for standard error.
    {"standard error is closed",
     [] {
         close(STDOUT_FILENO);
         close(STDERR_FILENO);
         misuse();
         KLogger::get_instance().loggers[LOGGER_NAME::CORE]->flush_log();
         expect(fcntl(STDOUT_FILENO, F_GETFD) == -1 && fcntl(STDERR_FILENO, F_GETFD) == -1, 1);
     },
     "^$"},
    {"the registry is found destroyed",
     [] {
         static const struct Older {
             ~Older() { expect(KLogger::isDestroyed(), 1); }
         } older;
         expect(!KLogger::isDestroyed(), 2);
         misuse();
         expect(!KLogger::isDestroyed(), 3);
     },
     ONE},
    {"parent and child log after a fork",
     [] {
         misuse();
         expect(statusOf(forked([] { logError(LogStatement::READ_EXCEPTION, "child"); })) == 0, 1);
         logError(LogStatement::READ_EXCEPTION, "parent");
     },
     "^[^\n]*setSubVector3f Invalid Parameters\\.\n[^\n]*in read : child\n[^\n]*in read : parent\n$"},
// Sanitizers report threads that a forked child lacks as leaks, or cannot start threads in it.
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
    {"it forks while threads log", forksWhileThreadsLog, ""},
#endif
    {"it ends while threads log, some for the first time",
     [] {
         for (int i = 0; i < 10; ++i) {
             const pid_t child = forked([i] {
                 for (int thread = 0; thread < 3; ++thread) {
                     std::thread(logsWithoutEnd).detach();
                 }
                 std::this_thread::sleep_for(milliseconds(i));
             });
             expect(statusOf(child) == 0, 1);
         }
     },
     ""},
    // As quill does by itself when the process ends while the registry is being made.
    {"its backend is stopped while threads log faster than it writes",
     [] {
         KLogger::get_instance().loggers[LOGGER_NAME::CORE] = quill::Frontend::create_or_get_logger(
             "slow", quill::Frontend::create_or_get_sink<SlowSink>("slow"));
         std::thread(logsWithoutEnd).detach();
         std::this_thread::sleep_for(milliseconds(5));
         quill::Backend::stop();
     },
     ""},
#ifdef VELA_GPU_SOFTWARE
    {"a Mat outlives the registry",
     [] {
         static const Mat outliving(4, 4, U1, MEM::GPU);
         misuse();  // the registry is newer, so it is destroyed first
         failNextFree();
     },
     ONE},
    {"a static Mat outlives the main thread's context",
     [] {
         misuse();
         static const Mat young(4, 4, U1, MEM::GPU);
         static const LongGoodbye goodbye;
         failNextFree();
     },
     ONE},
    {"a thread's Mat outlives the context of the library's message",
     [] { freesAThreadsMatAfterItsContext(misuse); }, ONE},
    {"a thread's Mat outlives the context of the program's message",
     [] {
         freesAThreadsMatAfterItsContext([logger = KLogger::get_instance().loggers[LOGGER_NAME::CORE]] {
             LOG_ERROR(logger, "setSubVector3f Invalid Parameters.");
         });
     },
     ONE},
    {"a thread's Mat dies before its context",
     [] {
         std::thread([] {
             logError(LogStatement::WRAP_UNSUPPORTED_TYPE);
             static thread_local const Mat mat(4, 4, U1, MEM::GPU);
             failNextFree();
         }).join();
     },
     "not supported\\.\n[^\n]*should be freed before[^\n]*\n$"},
#endif
};

class LogProgramTest : public DeviceTest {};

TEST_F(LogProgramTest, EveryProgramWritesItsMessagesAndEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto& [name, program, prints] : PROGRAMS) {
        SCOPED_TRACE(name);
        EXPECT_EXIT((alarm(60), program(), std::exit(0)), testing::ExitedWithCode(0), prints);
    }
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "support/children.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <system_error>

namespace vela::bench {
namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// A figure of /proc/self/status in bytes.
std::size_t statusBytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(field + ":", 0) != 0) continue;
        std::istringstream numbers(line.substr(field.size() + 1));
        std::size_t kilobytes = 0;
        numbers >> kilobytes;
        return kilobytes * 1024;
    }
    return 0;
}

/// Makes the highest resident size so far the present one.
void resetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

int exitStatusOf(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

}  // namespace

int runProgram(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? exitStatusOf(child) : -1;
}

std::size_t peakMemoryOf(const std::function<void()>& work) {
    int ends[2];
    if (pipe(ends) != 0) fail("pipe");
    const pid_t child = fork();
    if (child < 0) fail("fork");
    if (child == 0) {
        resetPeak();
        const std::size_t before = statusBytes("VmRSS");
        work();
        const std::size_t peak = statusBytes("VmHWM") - before;
        _exit(write(ends[1], &peak, sizeof peak) == sizeof peak ? 0 : 1);
    }
    close(ends[1]);
    std::size_t peak = 0;
    const bool received = read(ends[0], &peak, sizeof peak) == sizeof peak;
    close(ends[0]);
    if (exitStatusOf(child) != 0 || !received)
        throw std::runtime_error("a child that was to be measured failed");
    return peak;
}

}  // namespace vela::bench

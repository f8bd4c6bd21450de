// SPDX-License-Identifier: Apache-2.0
#include "support/children.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
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

/// -1 unless the child ended by itself.
int exitStatusOf(pid_t child, rusage* usage = nullptr) {
    int status = 0;
    if (wait4(child, &status, 0, usage) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

/// Starts a program, found on the search path. `socket` is its standard input and output; without one it has
/// no output.
/// @return the child; 0 if it could not be started.
pid_t start(const std::vector<std::string>& command, int socket = -1) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (socket < 0) {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    } else {
        posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, socket, STDOUT_FILENO);
    }
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? child : 0;
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

}  // namespace

int runProgram(const std::vector<std::string>& command) {
    const pid_t child = start(command);
    return child == 0 ? -1 : exitStatusOf(child);
}

double processorSecondsOf(const std::vector<std::string>& command) {
    rusage usage = {};
    const pid_t child = start(command);
    if (child == 0 || exitStatusOf(child, &usage) != 0) throw std::runtime_error(command.front() + " failed");
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Dialogue::Dialogue(const std::vector<std::string>& command) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) fail("socketpair");
    socket_ = ends[0];
    child_ = start(command, ends[1]);
    close(ends[1]);
    if (child_ != 0) return;
    close(socket_);
    throw std::runtime_error(command.front() + " cannot be started");
}

Dialogue::~Dialogue() {
    close(socket_);
    exitStatusOf(child_);
}

std::string Dialogue::listen() {
    std::size_t end = 0;
    while ((end = received_.find('\n')) == std::string::npos) {
        char bytes[256];
        const ssize_t count = read(socket_, bytes, sizeof bytes);
        if (count <= 0) throw std::runtime_error("a program ended that was to answer");
        received_.append(bytes, static_cast<std::size_t>(count));
    }
    std::string line = received_.substr(0, end);
    received_.erase(0, end + 1);
    return line;
}

std::string Dialogue::ask(const std::string& line) {
    const std::string text = line + '\n';
    // A program that has ended must not end this one by a signal: listen() will tell.
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = send(socket_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) break;
        sent += static_cast<std::size_t>(count);
    }
    return listen();
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

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vela::bench {

/// Runs a program, found on the search path, and waits for its end. What it prints is dropped.
/// @return its exit status; -1 if it could not be started or a signal ended it.
int runProgram(const std::vector<std::string>& command);

/// Runs a program as `runProgram` does. Throws unless it exits with 0.
/// @return the processor time that it took, in seconds, the kernel's share included.
double processorSecondsOf(const std::vector<std::string>& command);

/// A program that answers each line on its standard input by one on its standard output.
class Dialogue {
public:
    /// Starts the program. Throws where that is impossible.
    explicit Dialogue(const std::vector<std::string>& command);
    /// Closes the program's input and waits for its end.
    ~Dialogue();
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;

    /// The next line of the program, without its end. Throws if the program has ended.
    std::string listen();
    std::string ask(const std::string& line);

private:
    int socket_ = -1;
    int child_ = 0;
    std::string received_;  ///< what follows the last line that was returned
};

/// The peak memory of `work` in a child process, in bytes, beyond what the process held before.
std::size_t peakMemoryOf(const std::function<void()>& work);

}  // namespace vela::bench

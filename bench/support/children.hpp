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

/// The most memory, in bytes, that `work` held in a child process, above what the process held before.
std::size_t peakMemoryOf(const std::function<void()>& work);

}  // namespace vela::bench

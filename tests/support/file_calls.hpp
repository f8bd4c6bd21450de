// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

namespace vela::test {

/// Controls the file-system calls of this thread during its lifetime. The program must be linked with
/// file_calls.cpp, whose functions replace those of the C library.
class FileCalls {
public:
    enum class Fate {
        DONE,
        INTERRUPTED,  ///< the nth call fails once, with EINTR
        REFUSED,      ///< the nth call fails once, with ENOSPC
        OVERTAKEN,    ///< `rival` runs, then the nth call succeeds
    };

    /// Applies `fate` to the nth (1 = next) call of `function`, for example "write". Calls that move bytes
    /// move at most `largest`.
    FileCalls(std::string function, int nth, Fate fate, std::size_t largest,
              std::function<void()> rival = nullptr);
    ~FileCalls();
    FileCalls(FileCalls&&) = delete;

    /// Asked by each call first: whether to fail; sets `errno`.
    bool fails(const char* function);

    bool reached() const { return nth_ <= 0; }  ///< whether there was an nth call
    std::size_t largest;
    bool kernelMoves = true;   ///< whether copy_file_range works
    int lowestWritten = 1000;  ///< the lowest descriptor that was written to
    int inherited = 0;         ///< writes to files that programs started from here would inherit
    int badCloses = 0;         ///< calls that closed a descriptor that was not open

private:
    std::string function_;
    int nth_;
    Fate fate_;
    std::function<void()> rival_;
};

}  // namespace vela::test

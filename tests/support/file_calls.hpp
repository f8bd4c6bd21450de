// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

namespace vela::test {

/// How the file-system calls of this thread go while it lives. The program must be linked with
/// file_calls.cpp, whose functions stand before those of the C library.
class FileCalls {
public:
    enum class Fate {
        DONE,
        INTERRUPTED,  ///< the nth call is, once
        REFUSED,      ///< the nth call is, once
        OVERTAKEN,    ///< the nth call goes through, after `rival` ran
    };

    /// The nth (1 = next) call of `function`, "write" say, meets its fate. Calls that move bytes move at most
    /// `largest`.
    FileCalls(std::string function, int nth, Fate fate, std::size_t largest,
              std::function<void()> rival = nullptr);
    ~FileCalls();
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;

    /// What the calls ask before they go on: whether to fail, with `errno` set.
    bool fails(const char* function);

    bool met() const { return nth_ <= 0; }  ///< whether there was an nth call
    std::size_t largest;
    bool kernelMoves = true;   ///< whether copy_file_range works
    int lowestWritten = 1000;  ///< the lowest descriptor that was written to
    int inherited = 0;         ///< writes to files that programs started from here would inherit
    int badCloses = 0;         ///< closed what was not open

private:
    std::string function_;
    int nth_;
    Fate fate_;
    std::function<void()> rival_;
};

}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/io.hpp"

#include <new>
#include <string>
#include <utility>

namespace vela::io::detail {

/// Thrown inside the library and turned into a `Result` at its border. The text does not name the file.
struct Failure {
    ERROR_CODE code = ERROR_CODE::FAILURE;
    std::string text;
    int systemError = 0;
    std::size_t line = 0;  ///< of a text file, from 1; 0 if the failure is not on a line
};

/// For Mats and options that do not fit the format.
[[noreturn]] void refuse(std::string text);
/// For files that are not as their format says.
[[noreturn]] void failFormat(std::string text, std::size_t line = 0);
/// For a system call that failed with `error`.
[[noreturn]] void failSystem(int error, const std::string& what = {});
/// For a progress function that asked to stop.
[[noreturn]] void failCancelled();

/// The result of a failure while `path` was worked on.
Result resultOf(const Failure& failure, const String& path);
/// The name of a path in messages.
std::string nameOf(const String& path);

/// Runs `work(result)`, which fills the counts in, and reports what it throws.
template <class Work>
Result guarded(const String& path, Work work) {
    Result result;
    Failure failure;
    try {
        work(result);
        return result;
    } catch (const Failure& thrown) {
        failure = thrown;
    } catch (const std::bad_alloc&) {
        failure.text = "out of memory";
    } catch (...) {
        failure.text = "the progress function threw";
    }
    const Result failed = resultOf(failure, path);
    result.code = failed.code;
    result.text = failed.text;
    result.systemError = failed.systemError;
    return result;
}

}  // namespace vela::io::detail

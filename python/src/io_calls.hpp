// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bindings.hpp"

#include <vela_io/io.hpp>

#include <cstddef>
#include <exception>

// How the functions of vela.io call those of the library.

// Annotations of arguments that most of them have.
#define VELA_PATH "str | os.PathLike[str]"
#define VELA_PROGRESS "collections.abc.Callable[[int, int], object] | None = None"

namespace vela::python {

/// A path as the system wants it, of a `str`, `bytes` or any object that stands for a path.
String pathOf(nb::handle path);

/// Calls a Python function with the bytes done and all bytes. What it raises ends the work and is raised
/// again when the work has ended.
class PyProgress {
public:
    explicit PyProgress(nb::handle function) : function_(function) {}

    /// What to give the library; empty if the function is None.
    io::Progress function();
    void rethrow() const;

private:
    bool call(std::size_t done, std::size_t total);

    nb::handle function_;
    std::exception_ptr raised_;
};

/// Raises unless the call succeeded: OSError, with errno and path, where the system refused something, else
/// `vela.Error`.
void require(const io::Result& result, const String& path, const char* operation);

/// Runs one call of the library without the interpreter's lock.
template <class Call>
io::Result run(const String& path, const char* operation, PyProgress& progress, Call call) {
    io::Result result;
    {
        const nb::gil_scoped_release released;
        result = call();
    }
    progress.rethrow();
    require(result, path, operation);
    return result;
}

}  // namespace vela::python

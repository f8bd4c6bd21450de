// SPDX-License-Identifier: Apache-2.0
#include "support/file_calls.hpp"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <utility>

namespace {

using vela::test::FileCalls;

thread_local FileCalls* plan = nullptr;

/// Calls the C library's function of that name, or fails as planned.
template <class Function, class... Arguments>
auto passOn(const char* name, Arguments... arguments) -> decltype(std::declval<Function*>()(arguments...)) {
    if (plan != nullptr && plan->fails(name)) return -1;
    auto* const next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    return next(arguments...);
}

std::size_t limited(std::size_t count) {
    return plan == nullptr ? count : std::min(count, plan->largest);
}

}  // namespace

namespace vela::test {

FileCalls::FileCalls(std::string function, int nth, Fate fate, std::size_t largest_,
                     std::function<void()> rival)
    : largest(largest_), function_(std::move(function)), nth_(nth), fate_(fate), rival_(std::move(rival)) {
    plan = this;
}

FileCalls::~FileCalls() {
    plan = nullptr;
}

bool FileCalls::fails(const char* function) {
    if (fate_ == Fate::DONE || function_ != function || --nth_ != 0) return false;
    if (fate_ == Fate::OVERTAKEN) {
        rival_();
        return false;
    }
    errno = fate_ == Fate::INTERRUPTED ? EINTR : ENOSPC;
    return true;
}

}  // namespace vela::test

extern "C" {

// NOLINTNEXTLINE(cert-dcl50-cpp): the C library's own declaration
int open(const char* path, int flags, ...) {
    std::va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return passOn<int(const char*, int, ...)>("open", path, flags, mode);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
    if (plan != nullptr) {
        plan->lowestWritten = std::min(plan->lowestWritten, descriptor);
        plan->inherited += (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0 ? 1 : 0;
    }
    return passOn<decltype(write)>("write", descriptor, bytes, limited(count));
}

ssize_t read(int descriptor, void* bytes, size_t count) {
    return passOn<decltype(read)>("read", descriptor, bytes, limited(count));
}

ssize_t pread(int descriptor, void* bytes, size_t count, off_t offset) {
    return passOn<decltype(pread)>("pread", descriptor, bytes, count, offset);
}

ssize_t copy_file_range(int source, off_t* from, int destination, off_t* to, size_t count, unsigned flags) {
    if (plan != nullptr && !plan->kernelMoves) {
        errno = EXDEV;
        return -1;
    }
    return passOn<decltype(copy_file_range)>("copy_file_range", source, from, destination, to, limited(count),
                                             flags);
}

int fsync(int descriptor) {
    return passOn<decltype(fsync)>("fsync", descriptor);
}

int close(int descriptor) {
    const int result = passOn<decltype(close)>("close", descriptor);
    if (plan != nullptr && result != 0 && errno == EBADF) ++plan->badCloses;
    return result;
}
}

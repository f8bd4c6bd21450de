// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string>

namespace vela::fuzz {

/// Ends the program when a promise is broken; the fuzzer keeps the input.
inline void require(bool promise) {
    if (!promise) std::abort();
}

/// An in-memory file with a path.
class MemoryFile {
public:
    MemoryFile() : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) { require(descriptor_ >= 0); }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(MemoryFile&&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

    /// Closes every descriptor opened since.
    void closeLaterOnes() const { require(close_range(static_cast<unsigned>(descriptor_) + 1, ~0U, 0) == 0); }

    void put(const void* bytes, std::size_t size) {
        require(ftruncate(descriptor_, 0) == 0 &&
                pwrite(descriptor_, bytes, size, 0) == static_cast<ssize_t>(size));
    }

private:
    int descriptor_;
};

}  // namespace vela::fuzz

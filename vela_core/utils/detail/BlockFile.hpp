// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace vela::detail {

/// A file that is written in large blocks. Errors are not reported; after the first one nothing more is
/// written, so that what is there is the beginning of what should be.
class VELA_API BlockFile {
public:
    /// The most that one `reserve` may ask for.
    static constexpr std::size_t LARGEST_RESERVE = 4096;

    /// A file that is not open yet. Takes all the memory that it needs; throws `std::bad_alloc`.
    BlockFile();
    ~BlockFile();
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;

    /// Opens a file for writing, empty; false if that fails.
    bool open(const std::string& path) noexcept;

    /// Makes a file of its own under `path`, replacing what has the name, to be written and then read by
    /// `appendFile`. Where that fails the existing file is opened, empty; a symbolic link is never followed.
    bool openTemporary(const std::string& path) noexcept;

    bool isOpen() const { return descriptor_ >= 0; }

    /// Room for at least LARGEST_RESERVE characters, to be written from the returned place on and then
    /// committed with the place behind the last one.
    char* reserve() noexcept {
        if (used_ > BLOCK - LARGEST_RESERVE) flush();
        return buffer_.get() + used_;
    }
    void commit(const char* end) noexcept { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    /// Writes what was committed so far.
    void flush() noexcept;

    /// Adds a text of up to LARGEST_RESERVE characters.
    void append(std::string_view text) noexcept;

    /// Adds all that was written to a temporary file, without its last byte if that is `unwantedEnd`. If some
    /// of it could not be written there or read back, nothing more is written here either.
    void appendFile(BlockFile& temporary, char unwantedEnd) noexcept;

    /// Writes what is left and closes the file.
    void close() noexcept;

private:
    static constexpr std::size_t BLOCK = std::size_t{256} << 10;

    void write(const char* bytes, std::size_t count) noexcept;
    void copyFrom(int source, std::size_t count) noexcept;

    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
    int descriptor_ = -1;
    bool failed_ = false;
};

}  // namespace vela::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace vela::detail {

/// A file written in large blocks. Errors are not reported; after the first one nothing more is written, so
/// that the file is cut short there.
class VELA_API BlockFile {
public:
    /// Characters that `reserve` makes room for.
    static constexpr std::size_t LARGEST_RESERVE = 4096;

    /// A file that is not yet open. Allocates all the memory it will need; throws `std::bad_alloc`.
    BlockFile();
    /// Writes the rest and closes the file.
    ~BlockFile();
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;

    /// Opens an empty file for writing; returns false if that fails.
    bool open(const std::string& path) noexcept;

    /// Creates a new file under `path`, replacing any that exists, to be written and then read by
    /// `appendFile`. Where that fails, truncates and opens the existing file. Never follows a symbolic link.
    bool openTemporary(const std::string& path) noexcept;

    bool isOpen() const { return descriptor_ >= 0; }

    /// Returns room for LARGEST_RESERVE characters; `commit` takes the end of what was written there.
    char* reserve() noexcept {
        if (used_ > BLOCK - LARGEST_RESERVE) flush();
        return buffer_.get() + used_;
    }
    void commit(const char* end) noexcept { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    /// Writes everything committed so far.
    void flush() noexcept;

    /// Appends a text of up to LARGEST_RESERVE characters.
    void append(std::string_view text) noexcept;

    /// Appends the content of a temporary file, without its last byte if that is `unwantedEnd`. If part of it
    /// could not be written or read back, nothing more is written here either.
    void appendFile(BlockFile& temporary, char unwantedEnd) noexcept;

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

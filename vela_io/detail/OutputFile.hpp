// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/Failure.hpp"

#include <sys/types.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace vela::io::detail {

/// A file that appears under its name once it is whole: it is written in large blocks under a fresh name
/// beside the target, and renamed after `close` has succeeded. Without `finish` it is removed. Standard
/// output
/// ("-"), pipes and devices are written in place. All failures throw.
class OutputFile {
public:
    /// The most that one `reserve` may ask for.
    static constexpr std::size_t LARGEST_RESERVE = 32768;

    struct Settings {
        bool sync = false;
        const Progress* progress = nullptr;
    };

    OutputFile(const String& path, Settings settings);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Says how large the file will be, for messages and progress; 0 is unknown.
    void expect(std::size_t totalBytes) { total_ = totalBytes; }

    /// Returns room for LARGEST_RESERVE bytes. Write there, then call `commit` with the end of what was
    /// written.
    char* reserve() {
        if (used_ > BLOCK - LARGEST_RESERVE) flush();
        return buffer_.get() + used_;
    }
    void commit(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    void append(const void* bytes, std::size_t count);
    void append(std::string_view text) { append(text.data(), text.size()); }

    /// Writes what is left, closes and renames. Returns the size of the file.
    std::size_t finish();

private:
    static constexpr std::size_t BLOCK = std::size_t{256} << 10;

    bool openInPlace(const std::string& name);
    void openBeside();
    void flush();
    void write(const char* bytes, std::size_t count);
    [[noreturn]] void failWriting(int error) const;
    void close();

    std::string target_;     ///< the path with symbolic links followed
    std::string temporary_;  ///< empty where the file is written in place
    Settings settings_;
    int descriptor_ = -1;
    std::size_t used_ = 0;
    std::size_t written_ = 0;
    std::size_t reported_ = 0;
    std::size_t total_ = 0;
    std::unique_ptr<char[]> buffer_;
};

}  // namespace vela::io::detail

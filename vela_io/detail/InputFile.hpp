// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/Failure.hpp"

#include <memory>
#include <string>
#include <string_view>

namespace vela::io::detail {

/// Reads a file from front to back, block by block. Its size is known from the start: standard input ("-"),
/// pipes and devices are first copied into an unnamed temporary file. All failures throw.
class InputFile {
public:
    /// The block. A token or line of a text file that does not fit into half of it is an error.
    static constexpr std::size_t BLOCK = std::size_t{256} << 10;

    explicit InputFile(const String& path, const Progress* progress = nullptr);
    /// The same file from another place on, read beside `other`.
    InputFile(const InputFile& other, std::size_t position);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::size_t size() const { return size_; }
    std::size_t position() const { return base_ + used_; }
    /// Whether the block reaches the end of the file.
    bool blockEndsFile() const { return base_ + filled_ == size_; }
    std::size_t left() const { return size_ - position(); }

    /// The bytes in the block that were not taken yet. `end` is followed by a zero byte.
    const char* begin() const { return buffer_.get() + used_; }
    const char* end() const { return buffer_.get() + filled_; }
    /// Marks the bytes before `place` as taken.
    void take(const char* place) { used_ = static_cast<std::size_t>(place - buffer_.get()); }

    /// Reads on until the block holds `wanted` bytes (at most BLOCK) that were not taken yet. Returns false
    /// if the file ends before.
    bool fill(std::size_t wanted);

    /// The first bytes of the file, as many as tell its format. Nothing may have been taken.
    std::string_view start();

    /// Takes `count` bytes; a file that ends before is an error.
    void read(void* out, std::size_t count);
    void skip(std::size_t count);
    void rewind();

private:
    void open(const std::string& path);
    void spool(int source);
    void empty();
    std::size_t readSome(char* out, std::size_t count);

    int descriptor_ = -1;
    std::size_t size_ = 0;
    std::size_t base_ = 0;  ///< place in the file of the block's first byte
    std::size_t used_ = 0;
    std::size_t filled_ = 0;
    std::size_t reported_ = 0;
    const Progress* progress_;
    std::unique_ptr<char[]> buffer_;
};

}  // namespace vela::io::detail

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace vela {

/// A file that is written in large blocks. Errors are not reported: what cannot be written is lost.
class BlockFile {
public:
    /// The most that one `reserve` may ask for.
    static constexpr std::size_t LARGEST_RESERVE = 4096;

    /// Opens the file for writing, empty.
    explicit BlockFile(const std::string& path);
    ~BlockFile();
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }

    /// Room for at least LARGEST_RESERVE characters, to be written from the returned place on and then
    /// committed with the place behind the last one.
    char* reserve() {
        if (used_ > BLOCK - LARGEST_RESERVE) flush();
        return buffer_.get() + used_;
    }
    void commit(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    void append(std::string_view text);

    /// Adds `count` floats, which need not be aligned, each as `change` makes it.
    template <class Change>
    void appendFloats(const unsigned char* floats, std::size_t count, Change change) {
        constexpr std::size_t PART = LARGEST_RESERVE / sizeof(float);
        for (std::size_t done = 0; done < count; done += PART) {
            const std::size_t part = std::min(PART, count - done);
            char* const out = reserve();
            for (std::size_t i = 0; i < part; ++i) {
                float value = 0.0F;
                std::memcpy(&value, floats + (done + i) * sizeof value, sizeof value);
                value = change(value);
                std::memcpy(out + i * sizeof value, &value, sizeof value);
            }
            commit(out + part * sizeof(float));
        }
    }

    /// Adds the bytes of another file, without its last byte if that is `unwantedEnd`.
    void appendFile(const std::string& path, char unwantedEnd);

    /// Writes what is left and closes the file.
    void close();

private:
    static constexpr std::size_t BLOCK = std::size_t{256} << 10;

    void flush();
    void write(const char* bytes, std::size_t count);
    void copyFrom(int source, std::size_t count);

    int descriptor_;
    std::size_t used_ = 0;
    std::unique_ptr<char[]> buffer_;
};

}  // namespace vela

#include "vela_core/utils/detail/BlockFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vela {
namespace {

constexpr mode_t READ_WRITE_ALL = 0666;  // less the process's umask

/// Repeats a system call that a signal interrupted.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// Number of bytes to take of a file that should not end with `unwantedEnd`.
std::size_t wantedSize(int descriptor, char unwantedEnd) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || status.st_size <= 0) return 0;
    char last = '\0';
    const bool ends = pread(descriptor, &last, 1, status.st_size - 1) == 1 && last == unwantedEnd;
    return static_cast<std::size_t>(status.st_size) - (ends ? 1 : 0);
}

}  // namespace

BlockFile::BlockFile(const std::string& path)
    : descriptor_(uninterrupted(
          [&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, READ_WRITE_ALL); })),
      buffer_(new char[BLOCK]) {}

BlockFile::~BlockFile() {
    close();
}

void BlockFile::append(std::string_view text) {
    for (std::size_t done = 0; done < text.size(); done += LARGEST_RESERVE) {
        const std::size_t count = std::min(LARGEST_RESERVE, text.size() - done);
        char* const out = reserve();
        std::memcpy(out, text.data() + done, count);
        commit(out + count);
    }
}

void BlockFile::appendFile(const std::string& path, char unwantedEnd) {
    flush();
    const int source = uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); });
    if (source < 0) return;
    copyFrom(source, wantedSize(source, unwantedEnd));
    ::close(source);
}

void BlockFile::copyFrom(int source, std::size_t count) {
    // The kernel moves the bytes where both files allow it; otherwise they pass through the buffer.
    while (count > 0) {
        const ssize_t moved =
            uninterrupted([&] { return copy_file_range(source, nullptr, descriptor_, nullptr, count, 0); });
        if (moved <= 0) break;
        count -= static_cast<std::size_t>(moved);
    }
    while (count > 0) {
        const ssize_t taken =
            uninterrupted([&] { return read(source, buffer_.get(), std::min(BLOCK, count)); });
        if (taken <= 0) break;
        write(buffer_.get(), static_cast<std::size_t>(taken));
        count -= static_cast<std::size_t>(taken);
    }
}

void BlockFile::close() {
    if (!isOpen()) return;
    flush();
    ::close(descriptor_);
    descriptor_ = -1;
}

void BlockFile::flush() {
    write(buffer_.get(), used_);
    used_ = 0;
}

void BlockFile::write(const char* bytes, std::size_t count) {
    while (isOpen() && count > 0) {
        const ssize_t written = uninterrupted([&] { return ::write(descriptor_, bytes, count); });
        if (written <= 0) break;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

}  // namespace vela

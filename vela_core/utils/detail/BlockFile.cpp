// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/detail/BlockFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vela::detail {
namespace {

constexpr mode_t READ_WRITE_ALL = 0666;  // the umask still applies

/// Repeats a system call that a signal interrupted.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// Opens a file that programs started from here do not inherit; -1 on failure.
int openFile(const std::string& path, int flags) {
    const int descriptor =
        uninterrupted([&] { return open(path.c_str(), flags | O_CLOEXEC, READ_WRITE_ALL); });
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    // A standard stream is closed: the file must not take its number, or messages would land in it.
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(descriptor);
    return moved;
}

/// Creates a file that did not exist before; -1 on failure. Another program may create one of the same name
/// between the two calls: then they are repeated.
int makeFile(const std::string& path) {
    constexpr int TRIES = 100;
    for (int i = 0; i < TRIES; ++i) {
        if (unlink(path.c_str()) != 0 && errno != ENOENT) return -1;
        const int descriptor = openFile(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW);
        if (descriptor >= 0 || errno != EEXIST) return descriptor;
    }
    return -1;
}

/// Size of a file without a last byte equal to `unwantedEnd`; -1 if it cannot be determined.
off_t wantedSize(int descriptor, char unwantedEnd) {
    const off_t size = lseek(descriptor, 0, SEEK_END);
    if (size <= 0) return size;
    char last = '\0';
    if (uninterrupted([&] { return pread(descriptor, &last, 1, size - 1); }) != 1) return -1;
    return last == unwantedEnd ? size - 1 : size;
}

}  // namespace

BlockFile::BlockFile() : buffer_(new char[BLOCK]) {}

BlockFile::~BlockFile() {
    if (!isOpen()) return;
    flush();
    close(descriptor_);
}

bool BlockFile::open(const std::string& path) noexcept {
    descriptor_ = openFile(path, O_WRONLY | O_CREAT | O_TRUNC);
    return isOpen();
}

bool BlockFile::openTemporary(const std::string& path) noexcept {
    descriptor_ = makeFile(path);
    if (!isOpen()) descriptor_ = openFile(path, O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW);
    return isOpen();
}

void BlockFile::append(std::string_view text) noexcept {
    char* const out = reserve();
    std::memcpy(out, text.data(), text.size());
    commit(out + text.size());
}

void BlockFile::appendFile(BlockFile& temporary, char unwantedEnd) noexcept {
    flush();
    const off_t size = wantedSize(temporary.descriptor_, unwantedEnd);
    if (size > 0 && lseek(temporary.descriptor_, 0, SEEK_SET) == 0) {
        copyFrom(temporary.descriptor_, static_cast<std::size_t>(size));
    }
    failed_ = failed_ || temporary.failed_ || size < 0;
}

void BlockFile::copyFrom(int source, std::size_t count) noexcept {
    // The kernel copies the bytes where both files allow it; otherwise they pass through the buffer.
    while (count > 0 && !failed_) {
        const ssize_t moved =
            uninterrupted([&] { return copy_file_range(source, nullptr, descriptor_, nullptr, count, 0); });
        if (moved <= 0) break;
        count -= static_cast<std::size_t>(moved);
    }
    while (count > 0 && !failed_) {
        const ssize_t taken =
            uninterrupted([&] { return read(source, buffer_.get(), std::min(BLOCK, count)); });
        if (taken <= 0) break;
        write(buffer_.get(), static_cast<std::size_t>(taken));
        count -= static_cast<std::size_t>(taken);
    }
    failed_ = failed_ || count > 0;
}

void BlockFile::flush() noexcept {
    write(buffer_.get(), used_);
    used_ = 0;
}

void BlockFile::write(const char* bytes, std::size_t count) noexcept {
    while (isOpen() && count > 0 && !failed_) {
        const ssize_t written = uninterrupted([&] { return ::write(descriptor_, bytes, count); });
        if (written <= 0) {
            failed_ = true;
            return;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

}  // namespace vela::detail

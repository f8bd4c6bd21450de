// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/InputFile.hpp"

#include "vela_io/detail/system.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace vela::io::detail {
namespace {

constexpr std::size_t REPORT_BYTES = std::size_t{1} << 20;

const char* temporaryFolder() {
    const char* const folder = std::getenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe): nothing is set here
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

/// An empty file that no folder lists.
int openUnnamed() {
    std::string name = std::string(temporaryFolder()) + "/vela.XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) failSystem(errno, name);
    unlink(name.c_str());
    return descriptor;
}

}  // namespace

InputFile::InputFile(const String& path, const Progress* progress)
    : progress_(progress), buffer_(new char[BLOCK + 1]) {
    buffer_[0] = '\0';
    open(toStdString(path));
}

InputFile::InputFile(const InputFile& other, std::size_t position)
    : descriptor_(fcntl(other.descriptor_, F_DUPFD_CLOEXEC, 0)),
      size_(other.size_),
      base_(position),
      progress_(nullptr),
      buffer_(new char[BLOCK + 1]) {
    if (descriptor_ < 0) failSystem(errno);
    empty();
}

InputFile::~InputFile() {
    if (descriptor_ >= 0) close(descriptor_);
}

void InputFile::open(const std::string& path) {
    descriptor_ = path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                              : uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); });
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) failSystem(errno);
    if (S_ISDIR(status.st_mode)) failSystem(EISDIR);
    // A regular file on standard input may have been read in part by others.
    const bool direct = S_ISREG(status.st_mode) && path != "-";
    if (direct) {
        size_ = static_cast<std::size_t>(status.st_size);
    } else {
        const int source = std::exchange(descriptor_, openUnnamed());
        spool(source);
    }
}

void InputFile::spool(int source) {
    for (;;) {
        const ssize_t got = uninterrupted([&] { return ::read(source, buffer_.get(), BLOCK); });
        const int error = errno;
        if (got <= 0) {
            close(source);
            if (got < 0) failSystem(error);
            break;
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = uninterrupted([&] {
                return ::write(descriptor_, buffer_.get() + done, static_cast<std::size_t>(got - done));
            });
            if (put <= 0) {
                const int writeError = errno;
                close(source);
                failSystem(writeError, temporaryFolder());
            }
            done += put;
        }
        size_ += static_cast<std::size_t>(got);
    }
    buffer_[0] = '\0';
}

std::size_t InputFile::readSome(char* out, std::size_t count) {
    const std::size_t place = base_ + filled_;
    count = std::min(count, size_ - place);  // what is added to the file meanwhile is not read
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = uninterrupted(
            [&] { return pread(descriptor_, out + done, count - done, static_cast<off_t>(place + done)); });
        if (got < 0) failSystem(errno);
        if (got == 0) failFormat("the file became shorter while it was read");
        done += static_cast<std::size_t>(got);
    }
    if (progress_ != nullptr && *progress_ && place + done - std::min(place, reported_) >= REPORT_BYTES) {
        reported_ = place + done;
        if (!(*progress_)(reported_, size_)) failCancelled();
    }
    return done;
}

bool InputFile::fill(std::size_t wanted) {
    if (filled_ - used_ >= wanted) return true;
    std::memmove(buffer_.get(), buffer_.get() + used_, filled_ - used_);
    base_ += used_;
    filled_ -= used_;
    used_ = 0;
    filled_ += readSome(buffer_.get() + filled_, BLOCK - filled_);
    buffer_[filled_] = '\0';
    return filled_ >= wanted;
}

std::string_view InputFile::start() {
    constexpr std::size_t ENOUGH = 4096;
    fill(ENOUGH);
    return {begin(), std::min(ENOUGH, static_cast<std::size_t>(end() - begin()))};
}

void InputFile::read(void* out, std::size_t count) {
    if (count > left()) failFormat("the file ends too early");
    char* to = static_cast<char*>(out);
    const std::size_t here = std::min(count, filled_ - used_);
    std::memcpy(to, buffer_.get() + used_, here);
    used_ += here;
    to += here;
    count -= here;
    while (count >= BLOCK) {  // past the block, straight to where it belongs
        base_ += used_;
        empty();
        const std::size_t got = readSome(to, std::min(count, REPORT_BYTES));
        base_ += got;
        to += got;
        count -= got;
    }
    if (count == 0) return;
    fill(count);
    std::memcpy(to, buffer_.get() + used_, count);
    used_ += count;
}

void InputFile::skip(std::size_t count) {
    if (count > left()) failFormat("the file ends too early");
    const std::size_t here = std::min(count, filled_ - used_);
    used_ += here;
    if (count == here) return;
    base_ += used_ + count - here;
    empty();
}

void InputFile::empty() {
    used_ = filled_ = 0;
    buffer_[0] = '\0';
}

void InputFile::rewind() {
    base_ = reported_ = 0;
    empty();
}

}  // namespace vela::io::detail

// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/OutputFile.hpp"

#include "vela_io/detail/system.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdio>
#include <ctime>

namespace vela::io::detail {
namespace {

constexpr mode_t READ_WRITE_ALL = 0666;  // minus the process's umask
constexpr mode_t PERMISSIONS = 07777;
constexpr std::size_t REPORT_BYTES = std::size_t{1} << 20;

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

/// The path that a chain of symbolic links ends at, whether or not there is a file.
std::string followLinks(std::string path) {
    constexpr int LONGEST_CHAIN = 40;  // the kernel's own limit
    char link[PATH_MAX];
    for (int i = 0; i < LONGEST_CHAIN; ++i) {
        const ssize_t length = readlink(path.c_str(), link, sizeof link);
        if (length < 0) return path;
        const std::string next(link, static_cast<std::size_t>(length));
        path = next.empty() || next[0] == '/' ? next : folderOf(path).append("/").append(next);
    }
    failSystem(ELOOP);
}

/// A name beside `target` that no other process and no other call uses.
std::string freshName(const std::string& target) {
    static std::atomic<unsigned> calls{0};
    const std::size_t slash = target.rfind('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    constexpr std::size_t LONGEST_STEM = 200;  // file names have 255 bytes at most
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return target.substr(0, start) + "." + target.substr(start, LONGEST_STEM) + "." +
           std::to_string(getpid()) + "." + std::to_string(now.tv_nsec % 1000000) + "." +
           std::to_string(calls++) + ".tmp";
}

std::string megabytes(std::size_t bytes) {
    char text[32];
    std::snprintf(text, sizeof text, "%zu.%zu", bytes / 1000000, bytes / 100000 % 10);
    return text;
}

/// 0 if the file or folder was synced, or cannot be: pipes and some file systems say EINVAL.
int errorOfSync(int descriptor) {
    const int status = uninterrupted([=] { return fsync(descriptor); });
    return status == 0 || errno == EINVAL ? 0 : errno;
}

void syncFolder(const std::string& path) {
    const int folder = uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (folder < 0) failSystem(errno);
    const int error = errorOfSync(folder);
    ::close(folder);
    if (error != 0) failSystem(error);
}

}  // namespace

OutputFile::OutputFile(const String& path, Settings settings)
    : settings_(settings), buffer_(new char[BLOCK]) {
    const std::string name = toStdString(path);
    if (name.empty()) failSystem(ENOENT);
    if (name == "-") {
        descriptor_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
        if (descriptor_ < 0) failSystem(errno);
        return;
    }
    target_ = followLinks(name);
    if (target_.back() == '/') failSystem(EISDIR);
    if (!openInPlace(name)) openBeside();
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

/// Pipes and devices are written in place; so is a file that can be reached only by a link in /proc, not by a
/// path.
bool OutputFile::openInPlace(const std::string& name) {
    struct stat given {};
    if (stat(name.c_str(), &given) != 0) return false;
    if (S_ISDIR(given.st_mode)) failSystem(EISDIR);
    struct stat followed {};
    const bool reached = stat(target_.c_str(), &followed) == 0 && followed.st_dev == given.st_dev &&
                         followed.st_ino == given.st_ino;
    if (S_ISREG(given.st_mode) && reached) return false;
    descriptor_ = uninterrupted([&] { return open(name.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC); });
    if (descriptor_ < 0) failSystem(errno);
    return true;
}

/// A replaced file keeps its mode and, if the process may set it, its owner. A file without permission to
/// write is not replaced.
void OutputFile::openBeside() {
    struct stat old {};
    const bool exists = stat(target_.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) failSystem(errno);
    if (exists && faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) failSystem(errno);
    const mode_t mode = exists ? old.st_mode & READ_WRITE_ALL : READ_WRITE_ALL;
    do {
        temporary_ = freshName(target_);
        descriptor_ = uninterrupted(
            [&] { return open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode); });
    } while (descriptor_ < 0 && errno == EEXIST);
    if (descriptor_ < 0) {
        temporary_.clear();
        failSystem(errno, "no file can be made beside it");
    }
    if (!exists) return;
    const bool foreign = old.st_uid != geteuid() || old.st_gid != getegid();
    if (foreign && fchown(descriptor_, old.st_uid, old.st_gid) != 0) {
        old.st_mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    }
    if (fchmod(descriptor_, old.st_mode & PERMISSIONS) != 0) failSystem(errno);
}

void OutputFile::append(const void* bytes, std::size_t count) {
    const char* from = static_cast<const char*>(bytes);
    if (count >= BLOCK) {  // nothing is gained by a copy
        flush();
        for (; count > 0; count -= std::min(count, REPORT_BYTES), from += REPORT_BYTES) {
            write(from, std::min(count, REPORT_BYTES));
        }
        return;
    }
    while (count > 0) {
        if (used_ == BLOCK) flush();
        const std::size_t part = std::min(count, BLOCK - used_);
        std::memcpy(buffer_.get() + used_, from, part);
        used_ += part;
        from += part;
        count -= part;
    }
}

std::size_t OutputFile::finish() {
    flush();
    if (const int error = settings_.sync ? errorOfSync(descriptor_) : 0) failWriting(error);
    close();
    if (temporary_.empty()) return written_;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) failSystem(errno);
    temporary_.clear();
    if (settings_.sync) syncFolder(folderOf(target_));
    return written_;
}

void OutputFile::flush() {
    const std::size_t count = used_;
    used_ = 0;
    write(buffer_.get(), count);
}

void OutputFile::write(const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t done = uninterrupted([&] { return ::write(descriptor_, bytes, count); });
        if (done < 0) failWriting(errno);
        if (done == 0) failWriting(ENOSPC);
        bytes += done;
        count -= static_cast<std::size_t>(done);
        written_ += static_cast<std::size_t>(done);
    }
    if (settings_.progress == nullptr || !*settings_.progress || written_ - reported_ < REPORT_BYTES) return;
    reported_ = written_;
    if (!(*settings_.progress)(written_, std::max(total_, written_))) failCancelled();
}

void OutputFile::failWriting(int error) const {
    try {
        failSystem(error);
    } catch (Failure& failure) {
        failure.text += " (written " + megabytes(written_);
        if (total_ >= written_ && total_ > 0) failure.text += " of " + megabytes(total_);
        failure.text += " MB)";
        throw;
    }
}

void OutputFile::close() {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    // After EINTR the descriptor is closed all the same.
    if (::close(descriptor) != 0 && errno != EINTR) failWriting(errno);
}

}  // namespace vela::io::detail

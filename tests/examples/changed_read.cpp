// SPDX-License-Identifier: Apache-2.0
// Loaded before the C library, this makes every program read a wrong last byte from the file that
// VELA_CHANGED_FILE names.
#include <dlfcn.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

extern "C" ssize_t pread(int file, void* bytes, size_t count, off_t offset) {
    static const auto real = reinterpret_cast<decltype(&pread)>(dlsym(RTLD_NEXT, "pread"));
    const ssize_t done = real(file, bytes, count, offset);
    const char* const wanted = std::getenv("VELA_CHANGED_FILE");
    struct stat status {};
    if (done < 2 || wanted == nullptr || fstat(file, &status) != 0 || offset + done != status.st_size)
        return done;
    char path[PATH_MAX] = {};
    const ssize_t size = readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path - 1);
    if (size < 0 || std::filesystem::path(path).filename() != wanted) return done;
    char& changed = static_cast<char*>(bytes)[done - 2];
    changed = static_cast<char>(changed ^ 1);
    return done;
}

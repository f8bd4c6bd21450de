// SPDX-License-Identifier: Apache-2.0
#include "support/files.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace vela::bench {
namespace {

/// An open file; failures throw.
class Descriptor {
public:
    Descriptor(const std::string& path, int flags) : number_(open(path.c_str(), flags | O_CLOEXEC, 0666)) {
        require(number_ >= 0);
    }
    ~Descriptor() { close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void write(const char* bytes, std::size_t count) const {
        while (count > 0) {
            const ssize_t written = ::write(number_, bytes, count);
            require(written > 0);
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
    }

private:
    static void require(bool fine) {
        if (!fine) throw std::system_error(errno, std::generic_category());
    }

    int number_;
};

}  // namespace

ScratchFolder::ScratchFolder(const std::string& parent) : path_(parent + "/vela_bench_XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::system_error(errno, std::generic_category(), path_);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string memoryFolder() {
    constexpr const char* SHARED_MEMORY = "/dev/shm";
    if (access(SHARED_MEMORY, W_OK | X_OK) == 0) return SHARED_MEMORY;
    return std::filesystem::temp_directory_path().string();
}

std::string contentOf(const std::string& path) {
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void writeRaw(const std::string& path, const std::string& content) {
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
    file.write(content.data(), content.size());
}

}  // namespace vela::bench

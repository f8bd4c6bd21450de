// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace vela::bench {

/// A temporary folder inside another, removed when this is destroyed.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& parent);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string operator/(const std::string& name) const { return path_ + '/' + name; }

private:
    std::string path_;
};

/// An in-memory folder if there is one, so that no disk is measured.
std::string memoryFolder();

/// All bytes of a file.
std::string contentOf(const std::string& path);

/// Writes bytes to a file by as few calls as the system needs.
void writeRaw(const std::string& path, const std::string& content);

}  // namespace vela::bench

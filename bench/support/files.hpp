// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace vela::bench {

/// A folder of the program's own inside another, which goes away with it.
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

/// A folder in memory where there is one, so that no disk is measured.
std::string memoryFolder();

/// All bytes of a file.
std::string contentOf(const std::string& path);

/// Puts bytes into a file by as few calls as the system needs.
void writeRaw(const std::string& path, const std::string& content);

}  // namespace vela::bench

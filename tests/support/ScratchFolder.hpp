// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/bytes.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

namespace vela::test {

namespace fs = std::filesystem;

/// A folder for one test, removed when this is destroyed.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = (fs::temp_directory_path() / "vela_XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no scratch folder at " << name;
        path_ = name;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    ScratchFolder(ScratchFolder&&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    /// The text with the folder in place of each @.
    std::string expand(std::string text) const {
        for (std::size_t at = 0; (at = text.find('@')) != std::string::npos;)
            text.replace(at, 1, path_ / "");
        return text;
    }

    /// Names of the files in the folder or one inside it, sorted, separated by blanks.
    std::string listing(const std::string& inside = "") const {
        std::string text;
        for (const auto& entry : std::set(fs::directory_iterator(path_ / inside), {})) {
            text += (text.empty() ? "" : " ") + entry.path().filename().string();
        }
        return text;
    }

private:
    fs::path path_;
};

inline int openDescriptors() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

inline void put(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream bytes;  // istreambuf_iterator takes most of a debug build's test time
    bytes << file.rdbuf();
    return bytes.str();
}

}  // namespace vela::test

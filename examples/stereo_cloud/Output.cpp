#include "Output.hpp"

#include "Options.hpp"

#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <vector>

namespace stereo {

namespace fs = std::filesystem;

Output::Output(const fs::path& folder) : folder_(folder) {
    std::error_code error;
    madeFolder_ = fs::create_directories(folder_, error);
    std::string name = (folder_ / ".partial-XXXXXX").string();
    if (error || mkdtemp(name.data()) == nullptr) {
        if (madeFolder_) fs::remove(folder_, error);
        throw UserError("cannot write into the folder '" + folder_.string() + "'");
    }
    staging_ = name;
}

Output::~Output() {
    std::error_code ignored;
    fs::remove_all(staging_, ignored);
    if (madeFolder_) fs::remove(folder_, ignored);  // only if it is still empty
}

void Output::publish() {
    std::vector<fs::path> published;
    for (const auto& entry : fs::directory_iterator(staging_)) {
        const fs::path target = folder_ / entry.path().filename();
        std::error_code error;
        fs::rename(entry.path(), target, error);
        if (error) {
            for (const fs::path& earlier : published) {
                fs::remove(earlier);
            }
            throw UserError("cannot write '" + target.string() + "'");
        }
        published.push_back(target);
    }
}

std::size_t countLines(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return static_cast<std::size_t>(
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n'));
}

}  // namespace stereo

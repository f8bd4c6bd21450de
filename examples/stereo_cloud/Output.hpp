#pragma once

#include <filesystem>
#include <string>

namespace stereo {

/// The folder of the results. They are made in a hidden folder inside it and appear all at once in `publish`;
/// without it nothing is left behind.
class Output {
public:
    /// Throws UserError if the folder cannot be written.
    explicit Output(const std::filesystem::path& folder);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Where to make a file of the given name.
    std::string path(const std::string& name) const { return (staging_ / name).string(); }

    /// Throws UserError.
    void publish();

private:
    std::filesystem::path folder_;
    std::filesystem::path staging_;
    bool madeFolder_;
};

/// Number of line ends in a file; exporters do not report a full disk, counting lines shows it.
std::size_t countLines(const std::string& path);

}  // namespace stereo

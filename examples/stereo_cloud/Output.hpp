// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <mutex>
#include <string>

namespace stereo {

/// The folder of the results. They are made in a hidden folder inside it and replace earlier ones in
/// `publish`; without that call nothing is left behind.
class Output {
public:
    /// Throws UserError if the folder cannot be written.
    explicit Output(const std::filesystem::path& folder);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// The path at which to create a file of this name.
    std::string path(const std::string& name) const { return (staging_ / name).string(); }

    /// All results appear, or earlier ones stay as they were and UserError is thrown.
    void publish();

    /// From now on SIGHUP, SIGINT and SIGTERM end the program only after its unpublished files are removed.
    /// Call this once, before starting any other thread; it cleans up the Output that exists when the signal
    /// arrives.
    static void removePartialFilesOnSignals();

private:
    void replace(const std::filesystem::path& name, const std::filesystem::path& earlier) const;
    void remove();

    std::filesystem::path folder_;
    std::filesystem::path staging_;
    bool madeFolder_ = false;
};

}  // namespace stereo

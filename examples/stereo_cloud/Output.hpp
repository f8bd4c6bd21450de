// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <mutex>
#include <string>

namespace stereo {

/// The folder of the results. They are made in a hidden folder inside it and take the place of earlier ones
/// in `publish`; without it nothing is left behind.
class Output {
public:
    /// Throws UserError if the folder cannot be written.
    explicit Output(const std::filesystem::path& folder);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Where to make a file of the given name.
    std::string path(const std::string& name) const { return (staging_ / name).string(); }

    /// All results appear, or earlier ones stay as they were and UserError is thrown.
    void publish();

    /// From now on SIGHUP, SIGINT and SIGTERM end the program only after what it has not published is
    /// removed. To be called once, before any other thread is started; the Output that exists then is cleaned
    /// up.
    static void removePartialFilesOnSignals();

private:
    void replace(const std::filesystem::path& name, const std::filesystem::path& earlier) const;
    void remove();

    std::filesystem::path folder_;
    std::filesystem::path staging_;
    bool madeFolder_ = false;
};

}  // namespace stereo

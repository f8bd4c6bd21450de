// SPDX-License-Identifier: Apache-2.0
#include "Output.hpp"

#include "Options.hpp"

#include <pthread.h>
#include <signal.h>
#include <stdlib.h>

#include <exception>
#include <initializer_list>
#include <set>
#include <system_error>
#include <thread>
#include <vector>

namespace stereo {

namespace fs = std::filesystem;

namespace {

/// Locked while `current` changes and while results are published.
std::mutex mutex;
Output* current = nullptr;

}  // namespace

Output::Output(const fs::path& folder) : folder_(folder) {
    const std::lock_guard<std::mutex> lock(mutex);
    std::error_code error;
    madeFolder_ = fs::create_directories(folder_, error);
    std::string name = (folder_ / ".partial-XXXXXX").string();
    if (error || mkdtemp(name.data()) == nullptr) {
        if (madeFolder_) fs::remove(folder_, error);
        throw UserError("cannot write into the folder '" + folder_.string() + "'");
    }
    staging_ = name;
    current = this;
}

Output::~Output() {
    const std::lock_guard<std::mutex> lock(mutex);
    current = nullptr;
    remove();
}

void Output::remove() {
    // Another thread may still be creating files there.
    std::error_code error;
    for (int i = 0; i < 100 && fs::exists(staging_, error); ++i) {
        fs::remove_all(staging_, error);
    }
    if (madeFolder_) fs::remove(folder_, error);  // only if it is still empty
}

void Output::replace(const fs::path& name, const fs::path& earlier) const {
    std::error_code error;
    if (fs::exists(fs::symlink_status(folder_ / name))) {
        fs::create_hard_link(folder_ / name, earlier / name, error);
        if (error) fs::copy_file(folder_ / name, earlier / name, error);
    }
    if (!error) fs::rename(staging_ / name, folder_ / name, error);
    if (error) throw UserError("cannot write '" + (folder_ / name).string() + "'");
}

void Output::publish() {
    const std::lock_guard<std::mutex> lock(mutex);
    std::set<fs::path> names;  // in this order
    for (const auto& entry : fs::directory_iterator(staging_)) {
        names.insert(entry.path().filename());
    }
    const fs::path earlier = staging_ / ".earlier";
    std::vector<fs::path> published;
    try {
        fs::create_directory(earlier);
        for (const fs::path& name : names) {
            replace(name, earlier);
            published.push_back(name);
        }
    } catch (const std::exception&) {
        std::error_code ignored;
        for (const fs::path& name : published) {
            fs::rename(earlier / name, folder_ / name, ignored);
            if (ignored) fs::remove(folder_ / name, ignored);
        }
        throw;
    }
}

void Output::removePartialFilesOnSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction present = {};
        sigaction(signal, nullptr, &present);
        if (present.sa_handler != SIG_IGN) sigaddset(&signals, signal);  // keep nohup's setting
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        int signal = 0;
        sigwait(&signals, &signal);
        mutex.lock();  // for good: the program ends here
        if (current != nullptr) current->remove();
        ::signal(signal, SIG_DFL);
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        raise(signal);
    }).detach();
}

}  // namespace stereo

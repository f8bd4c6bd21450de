// SPDX-License-Identifier: Apache-2.0
// Whatever befalls a file while it is written, the old one or the whole new one is there.
#include "support/ScratchFolder.hpp"
#include "vela_io/io.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <thread>
#include <vector>

namespace vela::io {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::put;
using test::ScratchFolder;
using namespace std::string_literals;

constexpr uid_t NOBODY = 65534;

/// Every kind of file, of 40 to 400 KB.
struct Operation {
    const char* name;
    std::function<Result(const String& path, const Progress& progress)> write;
};

class SafeFilesTest : public testing::Test {
protected:
    SafeFilesTest() {
        std::mt19937 random(1);
        for (std::size_t i = 0; i < 256 * 100 * 4; ++i) {
            cloud_.getPtr<float>()[i] = std::uniform_real_distribution<float>(1, 60)(random);
        }
        std::memcpy(depth_.ptrCPU, cloud_.ptrCPU, 256 * 100 * 4);
        const auto cloud = [this](ENCODING encoding) {
            return [=](const String& path, const Progress& progress) {
                CloudOptions options;
                options.encoding = encoding;
                options.progress = progress;
                return writeCloud(cloud_, path, options);
            };
        };
        const auto depth = [this](std::optional<double> scale) {
            return [=](const String& path, const Progress& progress) {
                DepthOptions options;
                options.scale = scale;
                options.progress = progress;
                return writeDepth(depth_, path, options);
            };
        };
        operations_ = {{"a.ply", cloud(ENCODING::BINARY)},
                       {"b.ply", cloud(ENCODING::ASCII)},
                       {"a.pcd", cloud(ENCODING::BINARY)},
                       {"b.pcd", cloud(ENCODING::BINARY_COMPRESSED)},
                       {"a.vtk", cloud(ENCODING::BINARY)},
                       {"a.xyz", cloud(ENCODING::ASCII)},
                       {"a.png", depth(1000)},
                       {"a.pgm", depth(1000)},
                       {"a.pfm", depth({})},
                       {"a.npy", [this](const String& path, const Progress& progress) {
                            NpyOptions options;
                            options.progress = progress;
                            return writeNpy(depth_, path, options);
                        }}};
    }

    Result write(const Operation& operation, const std::string& path, const Progress& progress = {}) {
        return operation.write(path, progress);
    }

    Mat cloud_{256, 100, MAT_TYPE::MAT_32F_C4};
    Mat depth_{256, 100, MAT_TYPE::MAT_32F_C1};
    std::vector<Operation> operations_;
};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST_F(SafeFilesTest, FaultsAreToldAndLeaveEverythingAsItWas) {
    const struct {
        std::string before;  ///< the name of the file
        const char* text;
        int error;
    } faults[] = {{"missing/", ": no file can be made beside it: no such file or directory", ENOENT},
                  {"folder.", ": is a directory", EISDIR},
                  {"file/", ": not a directory", ENOTDIR},
                  {"endless link.", ": too many levels of symbolic links", ELOOP},
                  {std::string(300, 'x'), ": file name too long", ENAMETOOLONG}};
    const ScratchFolder folder;
    put(folder / "file", "");
    for (const Operation& operation : operations_) {
        fs::create_directory(folder / ("folder."s + operation.name));
        const std::string link = "endless link."s + operation.name;
        fs::create_symlink(link, folder / link);
        const std::string before = folder.listing();
        for (const auto& fault : faults) {
            const std::string path = folder / (fault.before + operation.name);
            const Result result = write(operation, path);
            EXPECT_EQ(result.code, ERROR_CODE::FAILURE);
            EXPECT_EQ(toStdString(result.text), path + fault.text);
            EXPECT_EQ(result.systemError, fault.error);
            EXPECT_EQ(folder.listing(), before);
        }
    }
}

/// Runs `work` in a child process as a user who is not root.
template <class Work>
void expectInChildAsNobody(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        if (seteuid(NOBODY) != 0) _exit(77);
        work();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(status == 0 || WEXITSTATUS(status) == 77);
}

TEST_F(SafeFilesTest, WhatMayNotBeWrittenIsNotReplaced) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to become another user";
    const ScratchFolder folder;
    put(folder / "a.ply", "old");
    chmod((folder / "a.ply").c_str(), 0644);  // root's, while anyone may make files beside it
    chmod((folder / "").c_str(), 0777);
    expectInChildAsNobody([&] {
        const Result result = write(operations_[0], folder / "a.ply");
        EXPECT_EQ(result.systemError, EACCES);
        EXPECT_EQ(contentOf(folder / "a.ply"), "old");
    });
    chmod((folder / "").c_str(), 0555);
    chmod((folder / "a.ply").c_str(), 0666);
    expectInChildAsNobody([&] {
        const Result result = write(operations_[0], folder / "a.ply");
        EXPECT_EQ(toStdString(result.text),
                  folder / "a.ply: no file can be made beside it: permission denied");
        EXPECT_EQ(contentOf(folder / "a.ply"), "old");
    });
    EXPECT_EQ(folder.listing(), "a.ply");
}

TEST_F(SafeFilesTest, ModeAndLinksAreKept) {
    const ScratchFolder folder;
    const mode_t mask = umask(027);
    for (const Operation& operation : operations_) {
        const std::string name = operation.name;
        ASSERT_TRUE(write(operation, folder / name).ok());
        EXPECT_EQ(modeOf(folder / name), 0640U) << "what the umask leaves";
        const std::string content = contentOf(folder / name);

        fs::create_directory(folder / "d");
        put(folder / ("d/" + name), "old");
        chmod((folder / ("d/" + name)).c_str(), 0604);
        fs::create_symlink("d/" + name, folder / ("link." + name));
        fs::create_symlink("link." + name, folder / ("again." + name));
        ASSERT_TRUE(write(operation, folder / ("again." + name)).ok());
        EXPECT_TRUE(fs::is_symlink(folder / ("again." + name)));
        EXPECT_EQ(contentOf(folder / ("d/" + name)), content);
        EXPECT_EQ(modeOf(folder / ("d/" + name)), 0604U) << "that of the file replaced";

        fs::create_symlink("new." + name, folder / ("dangling." + name));
        ASSERT_TRUE(write(operation, folder / ("dangling." + name)).ok());
        EXPECT_EQ(contentOf(folder / ("new." + name)), content);
        for (const auto& entry : fs::directory_iterator(folder / "")) {
            EXPECT_EQ(entry.path().extension().string().find("tmp"), std::string::npos);
            fs::remove_all(entry.path());
        }
    }
    umask(mask);
}

TEST_F(SafeFilesTest, AReplacedFileKeepsItsOwner) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to own files of another user";
    const ScratchFolder folder;
    const std::string path = folder / "a.ply";
    put(path, "old");
    ASSERT_EQ(chown(path.c_str(), NOBODY, NOBODY), 0);
    CloudOptions options;
    options.sync = true;
    ASSERT_TRUE(writeCloud(cloud_, path, options).ok());
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, NOBODY);
    EXPECT_EQ(status.st_gid, NOBODY);
    EXPECT_GT(status.st_size, 3);
}

TEST_F(SafeFilesTest, ACancelledFileIsNotThereAndAnOldOneStays) {
    Mat large(1280, 720, MAT_TYPE::MAT_32F_C4);
    large.setTo(Vector4<float>(1, 2, 3, 4));
    const ScratchFolder folder;
    put(folder / "a.ply", "old");
    std::size_t calls = 0;
    std::size_t last = 0;
    CloudOptions options;
    options.progress = [&](std::size_t done, std::size_t total) {
        EXPECT_GE(done, last);
        EXPECT_GE(total, done);
        last = done;
        return ++calls < 4;
    };
    Result result = writeCloud(large, folder / "a.ply", options);
    EXPECT_EQ(result.systemError, ECANCELED);
    EXPECT_EQ(toStdString(result.text), folder / "a.ply: cancelled");
    EXPECT_EQ(calls, 4U);
    EXPECT_EQ(contentOf(folder / "a.ply"), "old");
    options.progress = [](std::size_t, std::size_t) -> bool { throw 1; };
    EXPECT_EQ(toStdString(writeCloud(large, folder / "a.ply", options).text),
              folder / "a.ply: the progress function threw");
    EXPECT_EQ(folder.listing(), "a.ply");

    options.progress = {};
    ASSERT_TRUE(writeCloud(large, folder / "a.ply", options).ok());
    Mat back(1, 1, MAT_TYPE::MAT_8U_C1);
    CloudReadOptions reading;
    reading.progress = [](std::size_t done, std::size_t total) { return done < total / 2; };
    result = readCloud(folder / "a.ply", back, reading);
    EXPECT_EQ(result.systemError, ECANCELED);
    EXPECT_EQ(back.width, 1U);
}

TEST_F(SafeFilesTest, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    std::mt19937 random(9);
    for (const Operation& operation : operations_) {
        const ScratchFolder folder;
        const std::string path = folder / operation.name;
        ASSERT_TRUE(write(operation, path).ok());
        const std::string whole = contentOf(path);
        for (int i = 0; i < 12; ++i) {
            put(path, "old");
            const pid_t child = fork();
            if (child == 0) {
                write(operation, path);
                _exit(0);
            }
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            const std::string content = contentOf(path);
            EXPECT_TRUE(content == "old" || content == whole) << operation.name << " " << content.size();
        }
    }
}

TEST_F(SafeFilesTest, SignalsDoNotCutFiles) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) {};  // without SA_RESTART: calls end early
    sigaction(SIGALRM, &action, &before);
    const itimerval often{{0, 50}, {0, 50}};
    const itimerval never{};
    const ScratchFolder folder;
    for (const Operation& operation : operations_) {
        ASSERT_TRUE(write(operation, folder / "quiet."s.append(operation.name)).ok());
        setitimer(ITIMER_REAL, &often, nullptr);
        const Result result = write(operation, folder / operation.name);
        setitimer(ITIMER_REAL, &never, nullptr);
        ASSERT_TRUE(result.ok()) << result.text;
        EXPECT_EQ(contentOf(folder / operation.name), contentOf(folder / "quiet."s.append(operation.name)));
    }
    sigaction(SIGALRM, &before, nullptr);
}

TEST_F(SafeFilesTest, PipesAndStandardStreamsAreWrittenAndRead) {
    const ScratchFolder folder;
    for (const Operation& operation : operations_) {
        const std::string path = folder / operation.name;
        ASSERT_TRUE(write(operation, path).ok());
        const std::string pipe = folder / "pipe."s.append(operation.name);
        ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        std::string seen;
        std::thread reader([&] { seen = contentOf(pipe); });
        EXPECT_TRUE(write(operation, pipe).ok());
        reader.join();
        EXPECT_EQ(seen, contentOf(path));
    }
    std::thread writer([&] { put(folder / "pipe.a.ply", contentOf(folder / "a.ply")); });
    Mat back;
    const Result read = readCloud(folder / "pipe.a.ply", back);
    writer.join();
    EXPECT_TRUE(read.ok()) << read.text;
    EXPECT_EQ(back.width, 256U * 100U);

    const int saved = dup(STDOUT_FILENO);
    const int file = open((folder / "out").c_str(), O_WRONLY | O_CREAT, 0600);
    dup2(file, STDOUT_FILENO);
    CloudOptions options;
    options.format = CLOUD_FILE::PLY;
    const Result written = writeCloud(cloud_, "-", options);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    close(file);
    EXPECT_TRUE(written.ok()) << written.text;
    EXPECT_EQ(contentOf(folder / "out"), contentOf(folder / "a.ply"));
}

TEST_F(SafeFilesTest, AFileThatOnlyADescriptorLeadsToIsWrittenInPlace) {
    const ScratchFolder folder;
    const int file = open((folder / "gone").c_str(), O_RDWR | O_CREAT, 0600);
    unlink((folder / "gone").c_str());
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    CloudOptions options;
    options.format = CLOUD_FILE::PLY;
    ASSERT_TRUE(writeCloud(cloud_, path, options).ok());
    ASSERT_TRUE(writeCloud(cloud_, folder / "a.ply", options).ok());
    EXPECT_EQ(contentOf(path), contentOf(folder / "a.ply"));
    EXPECT_EQ(folder.listing(), "a.ply");
    close(file);
}

constexpr int REFUSED = 77;
constexpr const char* ON_SMALL_DISK = "VELA_TEST_ON_SMALL_DISK";

/// Runs this test again in a world of its own, where the folder for scratch is a disk of that many pages.
[[noreturn]] void runOnSmallDisk(const std::string& folder) {
    const uid_t user = geteuid();
    if (unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) != 0) _exit(REFUSED);
    if (user == 0) mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    if (mount("none", folder.c_str(), "tmpfs", 0, "size=8k") != 0) _exit(REFUSED);
    setenv(ON_SMALL_DISK, folder.c_str(), 1);
    execl("/proc/self/exe", "safe_files", "--gtest_filter=SafeFilesTest.DiskFullAtEveryPage", nullptr);
    _exit(REFUSED);
}

TEST_F(SafeFilesTest, DiskFullAtEveryPage) {
    const char* const disk = std::getenv(ON_SMALL_DISK);
    if (disk == nullptr) {
        const ScratchFolder folder;
        const pid_t child = fork();
        if (child == 0) runOnSmallDisk(folder / "");
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        if (WIFEXITED(status) && WEXITSTATUS(status) == REFUSED)
            GTEST_SKIP() << "no disk may be mounted here";
        EXPECT_EQ(status, 0);
        return;
    }
    for (const Operation& operation : operations_) {
        const std::string path = std::string(disk) + "/" + operation.name;
        Result result;
        for (int pages = 3; !result.ok() || pages == 3; ++pages) {
            const std::string size = "size=" + std::to_string(4 * pages) + "k";
            ASSERT_EQ(mount("none", disk, nullptr, MS_REMOUNT, size.c_str()), 0) << errno;
            put(path, "old");
            result = write(operation, path);
            if (result.ok()) break;
            EXPECT_EQ(result.systemError, ENOSPC);
            EXPECT_NE(toStdString(result.text).find(": no space left on device (written "), std::string::npos)
                << result.text;
            EXPECT_EQ(contentOf(path), "old");
            const auto entries = std::distance(fs::directory_iterator(disk), fs::directory_iterator());
            ASSERT_EQ(entries, 1) << operation.name << ": nothing of the new file stays";
            ASSERT_LT(pages, 300);
        }
        EXPECT_EQ(contentOf(path).size(), result.bytes);
        fs::remove(path);
    }
}

}  // namespace
}  // namespace vela::io

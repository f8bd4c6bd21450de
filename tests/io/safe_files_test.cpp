// SPDX-License-Identifier: Apache-2.0
// Whatever fails while a file is written, the path must hold the old file or the whole new one.
#include "support/ScratchFolder.hpp"
#include "support/file_calls.hpp"
#include "vela_io/io.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <functional>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

namespace vela::io {
namespace {

using namespace test;
using namespace std::string_literals;

constexpr uid_t NOBODY = 65534;

/// A kind of file.
struct Operation {
    const char* name;
    std::function<Result(const String& path, const Progress& progress)> run;
};

class SafeFilesTest : public testing::Test {
protected:
    SafeFilesTest() {
        fill(256, 100);
        const auto set = [this](auto options, const Progress& progress) {
            options.sync = sync_;
            options.progress = progress;
            return options;
        };
        const auto cloud = [=](ENCODING encoding) {
            return [=](const String& path, const Progress& progress) {
                CloudOptions options;
                options.encoding = encoding;
                return writeCloud(cloud_, path, set(options, progress));
            };
        };
        const auto depth = [=](std::optional<double> scale) {
            return [=](const String& path, const Progress& progress) {
                DepthOptions options;
                options.scale = scale;
                return writeDepth(depth_, path, set(options, progress));
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
                       {"a.npy", [=](const String& path, const Progress& progress) {
                            return writeNpy(depth_, path, set(NpyOptions(), progress));
                        }}};
    }

    /// A cloud and a depth map of that size; the first ones make files of 40 to 400 KB.
    void fill(std::size_t width, std::size_t height) {
        cloud_ = Mat(width, height, MAT_TYPE::MAT_32F_C4);
        depth_ = Mat(width, height, MAT_TYPE::MAT_32F_C1);
        std::mt19937 random(1);
        std::generate_n(cloud_.getPtr<float>(), 4 * width * height,
                        [&] { return std::uniform_real_distribution<float>(1, 60)(random); });
        std::memcpy(depth_.ptrCPU, cloud_.ptrCPU, width * height * sizeof(float));
    }

    static Result write(const Operation& operation, const std::string& path, const Progress& progress = {}) {
        return operation.run(path, progress);
    }
    static Result read(const std::string& path, Mat& mat, const Progress& progress) {
        if (kindOf(path) == FILE_KIND::ARRAY) return readNpy(path, mat, progress);
        CloudReadOptions cloud;
        DepthReadOptions depth;
        cloud.progress = depth.progress = progress;
        return kindOf(path) == FILE_KIND::CLOUD ? readCloud(path, mat, cloud) : readDepth(path, mat, depth);
    }

    Mat cloud_;
    Mat depth_;
    bool sync_ = false;
    std::vector<Operation> operations_;
};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST_F(SafeFilesTest, FailedWritesAreReportedAndKeepTheOldFile) {
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

TEST_F(SafeFilesTest, FilesWithoutWritePermissionAreKept) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to become another user";
    const ScratchFolder folder;
    put(folder / "a.ply", "old");
    const struct {
        mode_t folder, file;
        const char* text;
    } rows[] = {{0777, 0644, "permission denied"},
                {0555, 0666, "no file can be made beside it: permission denied"}};
    for (const auto& row : rows) {
        chmod((folder / "").c_str(), row.folder);
        chmod((folder / "a.ply").c_str(), row.file);
        expectInChildAsNobody([&] {
            const Result result = write(operations_[0], folder / "a.ply");
            EXPECT_EQ(toStdString(result.text), folder / "a.ply: " + row.text);
            EXPECT_EQ(contentOf(folder / "a.ply"), "old");
        });
    }
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
        EXPECT_TRUE(sameBytes(contentOf(folder / ("d/" + name)), content));
        EXPECT_EQ(modeOf(folder / ("d/" + name)), 0604U) << "that of the file replaced";

        fs::create_symlink("new." + name, folder / ("dangling." + name));
        ASSERT_TRUE(write(operation, folder / ("dangling." + name)).ok());
        EXPECT_TRUE(sameBytes(contentOf(folder / ("new." + name)), content));
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
    ASSERT_TRUE(write(operations_[0], path).ok());
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, NOBODY);
    EXPECT_EQ(status.st_gid, NOBODY);
    EXPECT_GT(status.st_size, 3);
}

TEST_F(SafeFilesTest, CancellingKeepsTheOldFileAndTheMat) {
    fill(960, 640);  // files larger than the megabyte between two progress calls
    for (const Operation& operation : operations_) {
        SCOPED_TRACE(operation.name);
        const ScratchFolder folder;
        const std::string path = folder / operation.name;
        put(path, "old");
        int calls = 0;
        std::size_t last = 0;
        const Progress cancel = [&](std::size_t done, std::size_t total) {
            EXPECT_GT(done, last);
            EXPECT_GE(total, done);
            last = done;
            ++calls;
            return false;
        };
        const Result written = write(operation, path, cancel);
        EXPECT_EQ(written.systemError, ECANCELED);
        EXPECT_EQ(toStdString(written.text), path + ": cancelled");
        const Progress fail = [](std::size_t, std::size_t) -> bool { throw 1; };
        EXPECT_EQ(toStdString(write(operation, path, fail).text), path + ": the progress function threw");
        EXPECT_EQ(contentOf(path), "old");
        EXPECT_EQ(folder.listing(), operation.name);

        const Progress goOn = [](std::size_t, std::size_t) { return true; };
        ASSERT_TRUE(write(operation, path, goOn).ok());
        last = 0;
        Mat back(1, 1, MAT_TYPE::MAT_8U_C1);
        EXPECT_EQ(read(path, back, cancel).systemError, ECANCELED);
        EXPECT_EQ(back.width, 1U);
        EXPECT_EQ(calls, 2) << "once writing, once reading";
        EXPECT_TRUE(read(path, back, goOn).ok());
    }
}

TEST_F(SafeFilesTest, InterruptedCallsAreRepeatedAndARefusedOneKeepsTheOldFile) {
    using Fate = FileCalls::Fate;
    for (const Operation& operation : operations_) {
        const ScratchFolder folder;
        const std::string path = folder / operation.name;
        ASSERT_TRUE(write(operation, path).ok());
        const std::string whole = contentOf(path);
        for (std::size_t i = 0; i < 8; ++i) {
            const char* const function = std::array{"open", "write", "fsync", "close"}[i / 2];
            const Fate fate = i % 2 == 0 ? Fate::INTERRUPTED : Fate::REFUSED;
            sync_ = std::string_view(function) == "fsync";
            int nth = 1;
            for (bool reached = true; reached; ++nth) {
                SCOPED_TRACE(testing::Message() << operation.name << ", " << function << " " << nth);
                put(path, "old");
                Result result;
                {
                    const FileCalls calls(function, nth, fate, 100000);
                    result = write(operation, path);
                    reached = calls.reached();
                }
                const bool refused = reached && fate == Fate::REFUSED;
                EXPECT_EQ(result.systemError, refused ? ENOSPC : 0) << result.text;
                const std::string text = toStdString(result.text);
                EXPECT_EQ(text.find("no space left on device") != std::string::npos, refused) << text;
                // The second sync is for the folder, after the rename.
                EXPECT_TRUE(sameBytes(contentOf(path), refused && !(sync_ && nth == 2) ? "old" : whole));
                EXPECT_EQ(folder.listing(), operation.name);
            }
            EXPECT_GE(nth, sync_ ? 4 : 3) << function << " is called, and on file and folder";
        }
    }
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

TEST_F(SafeFilesTest, PipesAreWrittenAndRead) {
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
        EXPECT_TRUE(sameBytes(seen, contentOf(path)));
    }
    std::thread writer([&] { put(folder / "pipe.a.ply", contentOf(folder / "a.ply")); });
    Mat back;
    const Result read = readCloud(folder / "pipe.a.ply", back);
    writer.join();
    EXPECT_TRUE(read.ok()) << read.text;
    EXPECT_EQ(back.width, 256U * 100U);
}

TEST_F(SafeFilesTest, AnUnlinkedFileIsWrittenInPlace) {
    const ScratchFolder folder;
    const int file = open((folder / "gone").c_str(), O_RDWR | O_CREAT, 0600);
    unlink((folder / "gone").c_str());
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    CloudOptions options;
    options.format = CLOUD_FILE::PLY;
    ASSERT_TRUE(writeCloud(cloud_, path, options).ok());
    ASSERT_TRUE(writeCloud(cloud_, folder / "a.ply", options).ok());
    EXPECT_TRUE(sameBytes(contentOf(path), contentOf(folder / "a.ply")));
    EXPECT_EQ(folder.listing(), "a.ply");
    close(file);
}

}  // namespace
}  // namespace vela::io

// SPDX-License-Identifier: Apache-2.0
// Interrupts, refuses or shortens system calls of exporters: the file must be complete, or a prefix of the
// complete one, and nothing may be left open.
#include "support/file_calls.hpp"
#include "support/ScratchFolder.hpp"
#include "support/exports.hpp"
#include "support/locale.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string_view>
#include <thread>

namespace vela::test {
namespace {

using Fate = FileCalls::Fate;

class FileCallsTest : public testing::Test {
protected:
    /// Exports with a fate for the nth call; false if the export made fewer. The file must be complete or,
    /// with `cut`, a prefix of the complete one.
    static bool exportReaches(const Export& e, const char* function, int nth, Fate fate, std::size_t largest,
                              bool cut) {
        SCOPED_TRACE(testing::Message() << e.extension << ", " << function << " " << nth);
        const ScratchFolder folder;
        const std::string path = folder / "a" + e.extension;
        const int before = openDescriptors();
        bool result = false;
        bool reached = false;
        {
            FileCalls calls(function, nth, fate, largest);
            calls.kernelMoves = std::string_view(function) != "read";
            result = e.run(path);
            reached = calls.reached();
            EXPECT_GT(calls.lowestWritten, STDERR_FILENO);
            EXPECT_EQ(calls.inherited, 0);
            EXPECT_EQ(calls.badCloses, 0);
        }
        EXPECT_EQ(openDescriptors(), before);
        const std::string seen = fs::exists(path) ? contentOf(path) : "";
        if (cut && reached) {
            EXPECT_TRUE(beginsLike(seen, e.whole));
            EXPECT_EQ(result, fs::exists(path));
        } else {
            EXPECT_TRUE(result);
            EXPECT_TRUE(sameBytes(seen, e.whole));
            EXPECT_EQ(folder.listing(), "a" + e.extension) << "no temporary file";
        }
        return reached;
    }

    const Exports all_{12000};  // a third more than fits into a file block
    const std::vector<Export>& exports_ = all_.list;
};

constexpr std::size_t UNLIMITED = std::size_t{1} << 30;
constexpr std::size_t PART = 40001;

TEST_F(FileCallsTest, InterruptedAndShortCallsLeaveTheWholeAndRefusedOnesItsBeginning) {
    for (const Export& e : exports_) {
        exportReaches(e, "", 1, Fate::DONE, UNLIMITED, false);
        exportReaches(e, "", 1, Fate::DONE, e.extension == ".pfm" ? 1 : 13, false);
        for (const char* const function : {"open", "write", "pread", "read", "copy_file_range"}) {
            for (const Fate fate : {Fate::INTERRUPTED, Fate::REFUSED}) {
                // If the kernel cannot copy the bytes, or stops doing so, they pass through the buffer.
                const bool cut = fate == Fate::REFUSED && std::string_view(function) != "copy_file_range";
                for (int nth = 1; exportReaches(e, function, nth, fate, PART, cut) && !HasFailure(); ++nth) {
                }
            }
        }
    }
}

TEST_F(FileCallsTest, NeedsTwoFreeDescriptors) {
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const Export& e = exports_[PLY];
    for (rlim_t free = 0; free < 3; ++free) {
        const ScratchFolder folder;
        const int lowest = dup(0);
        close(lowest);
        rlimit few = usual;
        few.rlim_cur = static_cast<rlim_t>(lowest) + free;
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
        const bool result = e.run(folder / "a.ply");
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
        const std::string wanted[] = {"", "a.ply_tmp0.txt", "a.ply"};
        EXPECT_EQ(folder.listing(), wanted[free]);
        EXPECT_EQ(result, free == 2);
        EXPECT_TRUE(free < 2 || sameBytes(contentOf(folder / "a.ply"), e.whole));
    }
}

/// If the file took one of them, the program's next output would end up among the points.
TEST_F(FileCallsTest, ClosedStandardStreamsStayClosed) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const int kept = fcntl(stream, F_DUPFD_CLOEXEC, 10);
        ASSERT_GE(kept, 10);
        close(stream);
        for (const Export& e : exports_) {
            exportReaches(e, "", 1, Fate::DONE, UNLIMITED, false);
            EXPECT_EQ(fcntl(stream, F_GETFD), -1);
        }
        dup2(kept, stream);
        close(kept);
    }
}

TEST_F(FileCallsTest, TheTemporaryFileIsAlwaysNew) {
    const ScratchFolder folder;
    const ScratchFolder elsewhere;
    const std::string path = folder / "a.xyz";
    const std::string temporary = path + "_tmp0.txt";
    std::ofstream(elsewhere / "victim") << "precious";
    const std::function<void()> obstacles[] = {[&] { fs::create_symlink(elsewhere / "victim", temporary); },
                                               [&] { fs::create_symlink(elsewhere / "nothing", temporary); },
                                               [&] { fs::create_hard_link(elsewhere / "victim", temporary); },
                                               [&] { ASSERT_EQ(mkfifo(temporary.c_str(), 0600), 0); },
                                               [&] { std::ofstream(temporary) << std::string(1000000, '7'); },
                                               [&] {
                                                   std::ofstream(temporary) << "stale";
                                                   fs::permissions(temporary, fs::perms(0));
                                               }};
    for (const auto& obstacle : obstacles) {
        for (const bool late : {false, true}) {  // late: between the calls that remove and create the file
            if (!late) obstacle();
            const FileCalls calls("open", late ? 1 : 0, Fate::OVERTAKEN, UNLIMITED, obstacle);
            EXPECT_TRUE(exports_[XYZ].run(path));
            EXPECT_TRUE(sameBytes(contentOf(path), exports_[XYZ].whole));
            EXPECT_EQ(folder.listing(), "a.xyz");
            EXPECT_EQ(elsewhere.listing(), "victim");
            ASSERT_EQ(contentOf(elsewhere / "victim"), "precious");
        }
    }
    const mode_t usual = umask(0027);
    fs::remove(path);
    EXPECT_TRUE(exports_[XYZ].run(path));
    umask(usual);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U) << "readable as far as the process allows";
}

/// Exports in different formats share the temporary file; in the same format, the final path too.
TEST_F(FileCallsTest, ExportsUnderOneNameDoNotDisturbEachOther) {
    for (int round = 0; round < 20; ++round) {
        const ScratchFolder folder;
        std::thread threads[3];
        for (std::size_t i = 0; i < 3; ++i) {
            threads[i] = std::thread([&, i] { exports_[PCD + i].run(folder / "a"); });
        }
        const pid_t child = fork();
        if (child == 0) _exit(exports_[XYZ].run(folder / "a.xyz") ? 0 : 1);
        EXPECT_TRUE(exports_[XYZ].run(folder / "a.xyz"));
        int status = 1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(folder.listing(), "a.pcd a.ply a.vtk a.xyz");
        for (std::size_t i = 0; i < 4; ++i) {
            const Export& e = exports_[XYZ + i];
            EXPECT_TRUE(sameBytes(contentOf(folder / "a" + e.extension), e.whole)) << e.extension;
        }
    }
}

TEST_F(FileCallsTest, NumbersHaveAPointInEveryLocale) {
    const CommaLocale comma;
    for (const Export& e : exports_) {
        exportReaches(e, "", 1, Fate::DONE, UNLIMITED, false);
    }
}

}  // namespace
}  // namespace vela::test

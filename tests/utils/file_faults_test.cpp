// SPDX-License-Identifier: Apache-2.0
// Every operation that makes or reads a file, met by every fault that befalls files. What must come of it
// stands in file_faults.txt: the result, what lies at the path afterwards, and what is printed and logged.
#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/utils/Mat.hpp"
#include "vela_core/utils/depth_export.hpp"
#include "vela_core/utils/point_cloud_export.hpp"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/fsuid.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cstdlib>
#include <functional>
#include <vector>

namespace vela::test {
namespace {

namespace fs = std::filesystem;

constexpr uid_t NOBODY = 65534;

struct Operation {
    std::string name;
    std::string extension;
    std::function<std::string(const std::string& path)> run;
};

struct Fault {
    std::string name;
    std::function<std::string(const ScratchFolder& folder, const std::string& file)> pathOf;
    bool readOnly;
};

class FileFaultsTest : public testing::Test {
protected:
    FileFaultsTest() {
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
        cloud_.setTo(Vector4<float>(1, 2, 3, 4));
        depth_.setTo(2.5F);
        cv::Mat picture(160, 256, CV_8UC3, picture_.ptrCPU);
        cv::randu(picture, 0, 256);  // noise cannot be compressed
        const auto success = [](bool result) { return std::string(result ? "true" : "false"); };
        const std::pair<const char*, POINT_CLOUD_FORMAT> clouds[] = {
            {".xyz", XYZ}, {".pcd", PCD}, {".ply", PLY}, {".vtk", VTK}};
        for (const auto& [extension, format] : clouds) {
            operations_.push_back({"savePointCloudAs", extension, [=, f = format](const std::string& path) {
                                       return success(savePointCloudAs(cloud_, f, path, true));
                                   }});
        }
        const std::pair<const char*, DEPTH_FORMAT> depths[] = {{".png", PNG}, {".pfm", PFM}, {".pgm", PGM}};
        for (const auto& [extension, format] : depths) {
            operations_.push_back({"saveDepthAs", extension, [=, f = format](const std::string& path) {
                                       return success(saveDepthAs(depth_, f, path, 1000.0F));
                                   }});
        }
        const std::pair<const char*, Mat*> mats[] = {
            {".png", &picture_}, {".pfm", &depth_}, {".ply", &cloud3_}, {".pcd", &cloud_}};
        for (const auto& [extension, mat] : mats) {
            operations_.push_back({"write", extension, [m = mat](const std::string& path) {
                                       return toStdString(toString(m->write(path)));
                                   }});
        }
        operations_.push_back({"read", ".png", [](const std::string& path) {
                                   Mat mat(1, 1, MAT_TYPE::MAT_8U_C1);
                                   const String result = toString(mat.read(path));
                                   return toStdString(result) + ", Mat " +
                                          (mat.width == 1 ? "kept" : "replaced");
                               }});
    }

    /// What comes of an operation on a path, as in file_faults.txt.
    std::string outcome(const Operation& operation, const std::string& path) {
        std::string text;
        const std::string printed = printedBy([&] { text = operation.run(path); });
        std::error_code ignored;
        const fs::file_status status = fs::status(path, ignored);
        if (fs::is_directory(status)) text += ", folder";
        if (fs::is_regular_file(status)) text += fs::file_size(path) == 0 ? ", empty" : ", written";
        if (fs::is_regular_file(path + "_tmp0.txt", ignored)) text += ", temporary file left";
        const std::string said = printed + log_.take();
        return "    " + operation.name + " " + operation.extension + ": " + text +
               (said.empty() ? "\n" : ", " + said);
    }

    void expectWhatIsPromised(const Fault& fault) {
        std::string seen = fault.name + "\n";
        for (const Operation& operation : operations_) {
            const ScratchFolder folder;
            const std::string path = fault.pathOf(folder, "a" + operation.extension);
            if (operation.name == "read") cv::imwrite(path, cv::Mat(8, 8, CV_8UC3));
            fs::permissions(folder / "", fs::perms(fault.readOnly ? 0555 : 0755));
            setfsuid(fault.readOnly ? NOBODY : geteuid());  // root may write everywhere
            seen += outcome(operation, path);
            setfsuid(geteuid());
            fs::permissions(folder / "", fs::perms(0755));
        }
        const std::string all = contentOf(VELA_TEST_FOLDER "/utils/file_faults.txt");
        const std::size_t start = all.find(fault.name);
        EXPECT_EQ(seen, all.substr(start, all.find("\n\n", start) + 1 - start));
    }

    Mat cloud_{64, 64, MAT_TYPE::MAT_32F_C4};
    Mat cloud3_{64, 64, MAT_TYPE::MAT_32F_C3, cloud_.ptrCPU, 64 * 12, MEM::CPU};
    Mat depth_{256, 160, MAT_TYPE::MAT_32F_C1};
    Mat picture_{256, 160, MAT_TYPE::MAT_8U_C3};
    std::vector<Operation> operations_;
    LogCapture log_;
};

TEST_F(FileFaultsTest, ComeToWhatIsPromised) {
    const Fault faults[] = {
        {"missing folder", [](auto& folder, auto& file) { return folder / ("missing/" + file); }, false},
        {"folder in its place",
         [](auto& folder, auto& file) {
             fs::create_directory(folder / file);
             return folder / file;
         },
         false},
        {"read-only folder", [](auto& folder, auto& file) { return folder / file; }, true},
        {"name of 4,000 characters",
         [](auto& folder, auto& file) { return folder / (std::string(4000, 'x') + file); }, false},
        {"path of 4,000 characters",
         [](auto& folder, auto& file) {
             std::string path = folder / "";
             while (path.size() < 3790)
                 path += std::string(200, 'x') + "/";
             path += std::string(3995 - path.size(), 'x');
             fs::create_directories(path);
             return path + "/" + file;
         },
         false},
        {"no room for the temporary file",
         [](auto& folder, auto& file) {
             fs::create_directories(folder / (file + "_tmp0.txt/kept"));
             return folder / file;
         },
         false},
        {"blank and non-ASCII letters",
         [](auto& folder, auto& file) { return folder / ("caf\xC3\xA9 \xE5\x9B\xBE" + file); }, false}};
    for (const Fault& fault : faults) {
        expectWhatIsPromised(fault);
    }
}

constexpr int REFUSED = 77;
constexpr const char* ON_FULL_DISK = "VELA_TEST_ON_FULL_DISK";

/// Runs this program's test again in a world of its own, where the folder for scratch is a disk of 64 KiB.
[[noreturn]] void runOnFullDisk(const std::string& folder) {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) != 0) _exit(REFUSED);
    if (user == 0) {
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    } else {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    if (mount("none", folder.c_str(), "tmpfs", 0, "size=64k") != 0) _exit(REFUSED);
    setenv(ON_FULL_DISK, folder.c_str(), 1);
    execl("/proc/self/exe", "file_faults", "--gtest_filter=FileFaultsTest.FullDisk", nullptr);
    _exit(REFUSED);
}

TEST_F(FileFaultsTest, FullDisk) {
    if (const char* const full = std::getenv(ON_FULL_DISK); full != nullptr) {
        setenv("TMPDIR", full, 1);  // not earlier: sanitizers put files of their own there when they start
        expectWhatIsPromised({"full disk", [](auto& folder, auto& file) { return folder / file; }, false});
        return;
    }
    const ScratchFolder disk;
    const pid_t child = fork();
    if (child == 0) runOnFullDisk(disk / "");
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == REFUSED) GTEST_SKIP() << "no disk may be mounted here";
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace vela::test

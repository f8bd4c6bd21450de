// SPDX-License-Identifier: Apache-2.0
// Every operation that writes or reads a file, with every fault that a file can have: checks the result, what
// is at the path afterwards, and what is printed and logged.
#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/utils/Mat.hpp"
#include "vela_core/utils/depth_export.hpp"
#include "vela_core/utils/point_cloud_export.hpp"

#include <sys/fsuid.h>
#include <sys/resource.h>
#include <unistd.h>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>

#include <csignal>
#include <functional>
#include <vector>

namespace vela::test {
namespace {

constexpr uid_t NOBODY = 65534;

struct Operation {
    std::string extension;
    std::function<std::string(const std::string& path)> run;
    std::string success;
    std::string failure;
    int line = 0;  ///< in the message about a failure; 0: no message
};

enum class Effect { NONE, NO_FILE, FOLDER_IN_ITS_PLACE, READ_ONLY, FULL_DISK };

struct Fault {
    std::string name;
    Effect effect;
    std::function<std::string(const ScratchFolder& folder, const std::string& file)> pathOf;
};

class FileFaultsTest : public testing::Test {
protected:
    FileFaultsTest() {
        signal(SIGXFSZ, SIG_IGN);  // a file-size limit then acts like a full disk
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
        cloud_.setTo(Vector4<float>(1, 2, 3, 4));
        depth_.setTo(2.5F);
        cv::Mat picture(160, 256, CV_8UC3, picture_.ptrCPU);
        cv::randu(picture, 0, 256);  // noise cannot be compressed
        const auto save = [&](const char* extension, const auto& function) {
            const auto run = [=](const std::string& path) { return function(path) ? "true" : "false"; };
            operations_.push_back({extension, run, "true", "false"});
        };
        save(".xyz", [=](auto& path) { return savePointCloudAs(cloud_, XYZ, path, true); });
        save(".pcd", [=](auto& path) { return savePointCloudAs(cloud_, PCD, path, true); });
        save(".ply", [=](auto& path) { return savePointCloudAs(cloud_, PLY, path, true); });
        save(".vtk", [=](auto& path) { return savePointCloudAs(cloud_, VTK, path, true); });
        save(".png", [=](auto& path) { return saveDepthAs(depth_, PNG, path, 1000.0F); });
        save(".pfm", [=](auto& path) { return saveDepthAs(depth_, PFM, path, 1000.0F); });
        save(".pgm", [=](auto& path) { return saveDepthAs(depth_, PGM, path, 1000.0F); });
        const auto write = [&](const char* extension, Mat& mat, const char* failure, int line) {
            const auto run = [m = &mat](const std::string& path) {
                return toStdString(toString(m->write(path)));
            };
            operations_.push_back({extension, run, "SUCCESS", failure, line});
        };
        write(".png", picture_, "SUCCESS", 0);  // the encoder's result is ignored
        write(".pfm", depth_, "FAILURE", 962);
        write(".ply", cloud3_, "FAILURE", 982);
        write(".pcd", cloud_, "FAILURE", 1009);
    }

    /// Results of `read`; a picture is at the path unless the fault prevents that.
    static Operation read() {
        const auto run = [](const std::string& path) {
            Mat mat(1, 1, MAT_TYPE::MAT_8U_C1);
            const String result = toString(mat.read(path));
            return toStdString(result) + (mat.width == 1 ? ", kept" : ", replaced");
        };
        return {".png", run, "SUCCESS, replaced", "FAILURE, kept"};
    }

    /// Clouds are written to a temporary file first, which remains if a folder is at the path.
    static std::string promised(const Operation& operation, Effect effect, bool works) {
        const bool cloud = operation.extension == ".xyz" || operation.extension == ".pcd" ||
                           operation.extension == ".ply" || operation.extension == ".vtk";
        std::string text = works ? operation.success : operation.failure;
        if (effect == Effect::FOLDER_IN_ITS_PLACE) text += cloud ? ", folder, temporary file" : ", folder";
        if (works) text += ", written";
        const std::string message = " ERROR [Mat]  Mat type currently not supported.\n";
        if (works || operation.line == 0) return text;
        return text + ", vela_core/utils/Mat.cpp:" + std::to_string(operation.line) + message;
    }

    /// Runs an operation on a path and describes the outcome in the words of `promised`.
    std::string outcome(const Operation& operation, const std::string& path) {
        std::string text;
        const std::string printed = printedBy([&] { text = operation.run(path); });
        std::error_code ignored;
        const fs::file_status status = fs::status(path, ignored);
        if (fs::is_directory(status)) text += ", folder";
        if (fs::is_regular_file(status)) text += fs::file_size(path) == 0 ? ", empty" : ", written";
        if (fs::is_regular_file(path + "_tmp0.txt", ignored)) text += ", temporary file";
        const std::string said = printed + log_.take();
        return said.empty() ? text : text + ", " + said;
    }

    void expectPromised(const Fault& fault, const Operation& operation, bool works, bool reads) {
        SCOPED_TRACE(fault.name + ", " + (reads ? "read " : "write ") + operation.extension);
        const ScratchFolder folder;
        const std::string path = fault.pathOf(folder, "a" + operation.extension);
        if (reads) cv::imwrite(path, cv::Mat(8, 8, CV_8UC3));
        const bool readOnly = fault.effect == Effect::READ_ONLY;
        fs::permissions(folder / "", fs::perms(readOnly ? 0555 : 0755));
        setfsuid(readOnly ? NOBODY : geteuid());  // root may write everywhere
        rlimit usual{};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
        const rlimit few{32 << 10, usual.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, fault.effect == Effect::FULL_DISK ? &few : &usual), 0);
        const std::string seen = outcome(operation, path);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
        setfsuid(geteuid());
        fs::permissions(folder / "", fs::perms(0755));
        EXPECT_EQ(seen, promised(operation, fault.effect, works));
    }

    void expectWhatIsPromised(const Fault& fault) {
        const Effect effect = fault.effect;
        for (const Operation& operation : operations_) {
            const bool fits = effect == Effect::FULL_DISK && operation.extension != ".png";
            expectPromised(fault, operation, effect == Effect::NONE || fits, false);
        }
        const bool none = effect == Effect::NO_FILE || effect == Effect::FOLDER_IN_ITS_PLACE;
        expectPromised(fault, read(), !none, true);
    }

    Mat cloud_{64, 64, MAT_TYPE::MAT_32F_C4};
    Mat cloud3_{64, 64, MAT_TYPE::MAT_32F_C3, cloud_.ptrCPU, 64 * 12, MEM::CPU};
    Mat depth_{256, 160, MAT_TYPE::MAT_32F_C1};
    Mat picture_{256, 160, MAT_TYPE::MAT_8U_C3};
    std::vector<Operation> operations_;
    LogCapture log_;
};

TEST_F(FileFaultsTest, EveryFaultHasItsResultFileAndMessage) {
    const Fault faults[] = {
        {"missing folder", Effect::NO_FILE,
         [](auto& folder, auto& file) { return folder / ("missing/" + file); }},
        {"folder in its place", Effect::FOLDER_IN_ITS_PLACE,
         [](auto& folder, auto& file) {
             fs::create_directory(folder / file);
             return folder / file;
         }},
        {"read-only folder", Effect::READ_ONLY, [](auto& folder, auto& file) { return folder / file; }},
        {"name of 4,000 characters", Effect::NO_FILE,
         [](auto& folder, auto& file) { return folder / (std::string(4000, 'x') + file); }},
        {"path of 4,000 characters", Effect::NONE,
         [](auto& folder, auto& file) {
             std::string path = folder / "";
             while (path.size() < 3790)
                 path += std::string(200, 'x') + "/";
             path += std::string(3995 - path.size(), 'x');
             fs::create_directories(path);
             return path + "/" + file;
         }},
        {"no room for the temporary file", Effect::NONE,
         [](auto& folder, auto& file) {
             fs::create_directories(folder / (file + "_tmp0.txt/kept"));
             return folder / file;
         }},
        {"blank and non-ASCII letters", Effect::NONE,
         [](auto& folder, auto& file) { return folder / ("caf\xC3\xA9 \xE5\x9B\xBE" + file); }},
        {"full disk", Effect::FULL_DISK, [](auto& folder, auto& file) { return folder / file; }}};
    for (const Fault& fault : faults) {
        expectWhatIsPromised(fault);
    }
}

/// A new temporary file cannot be made in such a folder, so the old one would be written.
TEST_F(FileFaultsTest, ALinkInAReadOnlyFolderIsNotFollowed) {
    const ScratchFolder folder;
    const std::string path = folder / "a.xyz";
    for (const std::string& name : {path, folder / "victim"}) {
        put(name, "precious");
        fs::permissions(name, fs::perms(0666));
    }
    fs::create_symlink("victim", path + "_tmp0.txt");
    fs::permissions(folder / "", fs::perms(0555));
    setfsuid(NOBODY);
    EXPECT_TRUE(savePointCloudAs(cloud_, XYZ, path, true));
    setfsuid(geteuid());
    fs::permissions(folder / "", fs::perms(0755));
    EXPECT_EQ(contentOf(folder / "victim"), "precious");
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
// Faults of files are in file_faults_test.
#include "vela_core/utils/detail/mat_files.hpp"

#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/types/Vector.hpp"

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <climits>
#include <tuple>

namespace vela::test {
namespace {

using detail::wrapAsCvMat;

constexpr auto US = MAT_TYPE::MAT_US16_C1;
constexpr const char* UNSUPPORTED = "Mat type currently not supported.\n";

class MatFilesTest : public DeviceTest {
protected:
    void TearDown() override {
        EXPECT_EQ(log_.take(), "") << "nothing else is logged";
        DeviceTest::TearDown();
    }

    ERROR_CODE write(Mat& mat, const std::string& name, MEM mem = MEM::CPU, int compression = -1) {
        return mat.write(folder_ / name, mem, compression);
    }

    /// Takes the logged text, which must begin with this.
    void expectLogged(int line, const std::string& start) {
        const std::string wanted =
            "vela_core/utils/Mat.cpp:" + std::to_string(line) + " ERROR [Mat]  " + start;
        EXPECT_EQ(log_.take().substr(0, wanted.size()), wanted);
    }

    /// First and last line of a text, without unprintable bytes; for a picture, its format.
    static std::string endsOf(std::string content) {
        const auto unprintable = [](char c) { return c != '\n' && (c < ' ' || c > '~'); };
        content.erase(std::remove_if(content.begin(), content.end(), unprintable), content.end());
        content = "\n" + content.substr(0, content.find_last_not_of('\n') + 1);
        const std::string first = content.substr(1, content.find('\n', 1) - 1);
        return first == "PNG" ? first : first + " ... " + content.substr(content.rfind('\n') + 1);
    }

    ScratchFolder folder_;
    LogCapture log_;
};

TEST_F(MatFilesTest, EncodesWithTheCompressionAskedFor) {
    constexpr int LEVEL = cv::IMWRITE_PNG_COMPRESSION;
    constexpr int QUALITY = cv::IMWRITE_JPEG_QUALITY;
    constexpr int NONE = -1;
    const std::tuple<const char*, int, int, int> cases[] = {
        {"a.png", -1, LEVEL, 3},    {"a.png", 5, LEVEL, 0},           {"a.png", -50, LEVEL, 0},
        {"a.png", 10, LEVEL, 1},    {"a.png", 95, LEVEL, 9},          {"a.png", 1000, LEVEL, 9},
        {"x.y/a.PNG", 95, NONE, 0}, {"a.jpg", -1, QUALITY, 95},       {"a.jpeg", 20, QUALITY, 80},
        {"a.jpg", 150, QUALITY, 0}, {"a.jpg", INT_MIN, QUALITY, 100}, {"a.JPG", 20, NONE, 0},
        {"a.bmp", 20, NONE, 0}};
    fs::create_directory(folder_ / "x.y");
    Mat mat = filled(67, 41, U3, MEM::CPU);
    const cv::Mat same(41, 67, CV_8UC3, mat.ptrCPU);
    for (const auto& [name, compression, parameter, value] : cases) {
        SCOPED_TRACE(testing::Message() << name << " " << compression);
        EXPECT_EQ(write(mat, name, MEM::CPU, compression), OK);
        Bytes wanted;
        cv::imencode(fs::path(name).extension().string(), same, wanted,
                     parameter == NONE ? std::vector<int>() : std::vector{parameter, value});
        EXPECT_TRUE(sameBytes(contentOf(folder_ / name), std::string(wanted.begin(), wanted.end())));
    }
}

TEST_F(MatFilesTest, PicturesAreReadBackUnchanged) {
    for (const MAT_TYPE type : {U1, U3, U4, US}) {
        for (const std::size_t width : {1U, 33U, 5000U}) {
            const Window window(width, 7, type);
            Mat mat(width, 7, type, window.part.ptrCPU, window.part.stepBytesCPU, MEM::CPU);
            EXPECT_EQ(write(mat, "a.png"), OK);
            Mat back = filled(2, 2, F4, MEM_BOTH);
            back.name = "kept";
            back.timestamp = 7;
            EXPECT_EQ(back.read(folder_ / "a.png"), OK);
            EXPECT_TRUE(back.name == "kept" && back.timestamp == 7);
            EXPECT_TRUE(back.memoryOwner && back.memType == MEM::CPU && back.dataType == type);
            EXPECT_EQ(back.width, width);
            EXPECT_TRUE(sameBytes(load(back, MEM::CPU), load(mat, MEM::CPU)));
        }
    }
    Mat mat(2, 1, S4);
    mat.setTo(Vector4<char>(1, static_cast<char>(-1), 127, 4));
    EXPECT_EQ(write(mat, "a.png"), OK);
    EXPECT_EQ(mat.read(folder_ / "a.png"), OK);
    EXPECT_EQ(load(mat, MEM::CPU), (Bytes{1, 0, 127, 4, 1, 0, 127, 4}))
        << "the encoder has no negative values";
}

TEST_F(MatFilesTest, ReadsPicturesWrittenByOtherPrograms) {
    cv::Mat wide(3, 5, CV_16UC3);
    cv::randu(wide, 0, 65536);
    cv::imwrite(folder_ / "wide.png", wide);
    Mat mat;
    EXPECT_EQ(mat.read(folder_ / "wide.png"), OK);
    EXPECT_EQ(mat.dataType, U1) << "what is not supported gives its first bytes";
    EXPECT_EQ(load(mat, MEM::CPU), Bytes(wide.data, wide.data + 15));
    cv::imwrite(folder_ / "blue.jpg", cv::Mat(4, 4, CV_8UC3, cv::Scalar(250, 10, 20)));
    EXPECT_EQ(mat.read(folder_ / "blue.jpg"), OK);
    EXPECT_EQ(mat.dataType, U3);
    EXPECT_GT(mat.ptrCPU[0], 200) << "blue comes first";
}

/// Writing two pixels of a type, given by name or as "type NUMBER", under a file name: the result, the file's
/// first and last line, and the log.
TEST_F(MatFilesTest, ExtensionAndTypeChooseTheKindOfFile) {
    std::ifstream table(VELA_TEST_FOLDER "/utils/write_cases.txt");
    std::string element, channels, name, wanted;
    while (table >> element >> channels >> name && std::getline(table, wanted)) {
        std::int32_t type = element == "type" ? std::stoi(channels) : 0;
        const std::string key = std::string(element).append(" ").append(channels);
        while (element != "type" && type < 10 && toString(fromValue<MAT_TYPE>(type)) != key)
            ++type;
        const ScratchFolder folder;
        fs::create_directory(folder / "old.d");
        // Four floats per pixel; three-channel clouds are read like that, too.
        float pixels[] = {2, 2, 3, 1e-40F, 5, 6, 7, 2e-40F};
        Mat mat(2, 1, fromValue<MAT_TYPE>(type), reinterpret_cast<unsigned char*>(pixels), 32, MEM::CPU);
        std::string seen = " -> " + toStdString(toString(mat.write(folder / name)));
        for (const auto& entry : fs::recursive_directory_iterator(folder / "")) {
            if (!entry.is_regular_file()) continue;
            seen += ", " + fs::relative(entry, folder / "").string() + ": " + endsOf(contentOf(entry.path()));
        }
        const std::string logged = log_.take();
        if (!logged.empty()) seen += ", " + logged.substr(0, logged.find('\n'));
        EXPECT_EQ(seen, wanted) << key << " " << name;
    }
}

TEST_F(MatFilesTest, EachFailureLogsItsOwnStatement) {
    std::tuple<Mat, const char*, int> cases[] = {{Mat(2, 2, F1, MEM::GPU), "a", 962},
                                                 {Mat(2, 2, F3, MEM::GPU), "a", 982},
                                                 {Mat(2, 2, F4, MEM::GPU), "a", 1009},
                                                 {Mat(0, 4, U3), "a.png", 1084},  // nothing to encode
                                                 {Mat(0, 0, F1), "a.png", 1090},
                                                 {Mat(2, 2, U3), "a.unknown", 1090},
                                                 {Mat(2, 2, U3, nullptr, 6, MEM::CPU), "a.png", 1090}};
    for (auto& [refused, name, line] : cases) {
        EXPECT_EQ(write(refused, name), BAD);
        expectLogged(line, line == 1090 ? "in write : OpenCV(" : UNSUPPORTED);
    }
    EXPECT_EQ(folder_.listing(), "");
    EXPECT_TRUE(wrapAsCvMat(Mat(2, 2, F4)).empty());
    expectLogged(440, UNSUPPORTED);
    std::ofstream(folder_ / "huge.pgm") << "P5 2000000 1 255\n";
    Mat mat = filled(2, 2, U3, MEM::CPU);
    EXPECT_EQ(mat.read(folder_ / "huge.pgm"), BAD);
    expectLogged(917, "in read : OpenCV(");
    EXPECT_EQ(load(mat, MEM::CPU), pattern(12));
}

TEST_F(MatFilesTest, UninitialisedMatsAndOtherSidesAreRefusedSilently) {
    Mat mat;
    EXPECT_EQ(write(mat, "a.png"), BAD);
    EXPECT_EQ(write(mat, "a.png", MEM_BOTH), BAD) << "uninitialised comes first";
    mat.alloc(2, 2, U3, MEM_BOTH);
    for (const std::int32_t mem : {0, 3, 4, -1}) {
        EXPECT_EQ(write(mat, "a.png", fromValue<MEM>(mem)), ERROR_CODE::INVALID_FUNCTION_CALL);
    }
    EXPECT_EQ(folder_.listing(), "");
}

TEST_F(MatFilesTest, EncoderFailuresAreIgnoredAndTheErrorHandlerIsReset) {
    static int handled = 0;
    cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return ++handled; });
    Mat mat = filled(2, 2, U3, MEM::CPU);
    EXPECT_EQ(write(mat, "missing/a.png"), OK);
    EXPECT_THROW(cv::error(cv::Error::StsError, "test", "f", "file", 1), cv::Exception);
    EXPECT_EQ(handled, 0);
}

TEST_F(MatFilesTest, WritingFromTheDeviceBringsTheHostSideUpToDate) {
    Mat both = filled(4, 4, U3, MEM_BOTH, 1);
    store(both, MEM::GPU, pattern(48, 2).data());
    EXPECT_EQ(write(both, "a.unknown", MEM::GPU), BAD);
    expectLogged(1090, "in write : OpenCV(");
    EXPECT_TRUE(sameBytes(load(both, MEM::CPU), pattern(48, 2))) << "also when the write fails";
    Mat device = filled(4, 4, U3, MEM::GPU, 3);
    EXPECT_EQ(write(device, "a.png", MEM::GPU), OK);
    Mat back;
    EXPECT_EQ(back.read(folder_ / "a.png"), OK);
    EXPECT_TRUE(sameBytes(load(back, MEM::CPU), pattern(48, 3)));
}

TEST_F(MatFilesTest, UndecodableFilesLeaveTheMatUnchanged) {
    Mat picture = filled(64, 64, U3, MEM::CPU, 5);
    EXPECT_EQ(write(picture, "whole.png"), OK);
    put(folder_ / "head.png", contentOf(folder_ / "whole.png").substr(0, 20));
    put(folder_ / "noise.jpg", "no picture at all");
    put(folder_ / "empty.png", "");
    Mat mat = filled(3, 2, F4, MEM_BOTH);
    mat.name = "kept";
    mat.timestamp = 5;
    mat.extraFlag = true;
    const std::string before = fieldsOf(mat);
    for (const char* const name : {"head.png", "noise.jpg", "empty.png", "", "."}) {
        EXPECT_EQ(mat.read(folder_ / name), BAD) << name;
        EXPECT_EQ(fieldsOf(mat), before);
        EXPECT_TRUE(sameBytes(load(mat, MEM::CPU), pattern(96)));
        EXPECT_TRUE(sameBytes(load(mat, MEM::GPU), pattern(96)));
    }
    EXPECT_EQ(mat.read(String(static_cast<const char*>(nullptr))), BAD);
}

}  // namespace
}  // namespace vela::test

#include "vela_core/utils/mat_files.hpp"

#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/types/enum_cast.hpp"

#include <gtest/gtest.h>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <limits>

namespace vela::test {
namespace {

namespace fs = std::filesystem;

constexpr auto OK = ERROR_CODE::SUCCESS;
constexpr auto BAD = ERROR_CODE::FAILURE;
constexpr auto U1 = MAT_TYPE::MAT_8U_C1;
constexpr auto U3 = MAT_TYPE::MAT_8U_C3;
constexpr auto U4 = MAT_TYPE::MAT_8U_C4;
constexpr auto US = MAT_TYPE::MAT_US16_C1;
constexpr auto F1 = MAT_TYPE::MAT_32F_C1;
constexpr auto F3 = MAT_TYPE::MAT_32F_C3;
constexpr auto F4 = MAT_TYPE::MAT_32F_C4;

std::string unsupported(int line) {
    return "vela_core/utils/Mat.cpp:" + std::to_string(line) +
           " ERROR [Mat]  Mat type currently not supported.\n";
}

int ignoreError(int, const char*, const char*, const char*, int, void*) {
    return 0;
}

class MatFilesTest : public DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
        cv::redirectError(ignoreError);
    }
    void TearDown() override {
        cv::redirectError(nullptr);
        DeviceTest::TearDown();
    }

    ERROR_CODE write(Mat& mat, const std::string& name, MEM mem = MEM::CPU, int compression = -1) {
        return mat.write(folder_ / name, mem, compression);
    }

    ScratchFolder folder_;
    LogCapture log_;
};

TEST_F(MatFilesTest, EncodesWithTheCompressionAskedFor) {
    constexpr int INT_LEAST = std::numeric_limits<int>::min();
    constexpr int PNG_LEVEL = cv::IMWRITE_PNG_COMPRESSION;
    constexpr int QUALITY = cv::IMWRITE_JPEG_QUALITY;
    struct Case {
        const char* name;
        int compression;
        std::vector<int> parameters;
    };
    const Case cases[] = {{"a.png", -1, {PNG_LEVEL, 3}},
                          {"a.png", 0, {PNG_LEVEL, 0}},
                          {"a.png", 5, {PNG_LEVEL, 0}},
                          {"a.png", -5, {PNG_LEVEL, 0}},
                          {"a.png", -50, {PNG_LEVEL, 0}},
                          {"a.png", 10, {PNG_LEVEL, 1}},
                          {"a.png", 95, {PNG_LEVEL, 9}},
                          {"a.png", 100, {PNG_LEVEL, 9}},
                          {"a.png", 1000, {PNG_LEVEL, 9}},
                          {"a.PNG", 95, {}},
                          {"a.jpg", -1, {QUALITY, 95}},
                          {"a.jpeg", 20, {QUALITY, 80}},
                          {"a.jpg", 150, {QUALITY, 0}},
                          {"a.jpg", -20, {QUALITY, 100}},
                          {"a.jpg", INT_LEAST, {QUALITY, 100}},
                          {"a.JPG", 20, {}},
                          {"a.bmp", 20, {}},
                          {"x.y/a b.png", -1, {PNG_LEVEL, 3}},
                          {"caf\xC3\xA9.png", 100, {PNG_LEVEL, 9}}};
    fs::create_directory(folder_ / "x.y");
    Mat mat = filled(67, 41, U3, MEM::CPU);
    const cv::Mat same(41, 67, CV_8UC3, mat.ptrCPU);
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.name << " " << c.compression);
        EXPECT_EQ(write(mat, c.name, MEM::CPU, c.compression), OK);
        std::vector<unsigned char> wanted;
        cv::imencode(fs::path(c.name).extension().string(), same, wanted, c.parameters);
        const std::string content = contentOf(folder_ / c.name);
        EXPECT_TRUE(std::vector<unsigned char>(content.begin(), content.end()) == wanted);
    }
    EXPECT_EQ(log_.take(), "");
}

TEST_F(MatFilesTest, PicturesComeBackAsTheyWere) {
    for (const MAT_TYPE type : {U1, U3, U4, US}) {
        for (const auto& [width, height] : {std::pair(1, 1), std::pair(33, 7), std::pair(5000, 1)}) {
            Mat mat =
                filled(static_cast<std::size_t>(width), static_cast<std::size_t>(height), type, MEM::CPU);
            EXPECT_EQ(write(mat, "a.png"), OK);
            Mat back = filled(2, 2, F4, MEM_BOTH);
            back.name = "back";
            EXPECT_EQ(back.read(folder_ / "a.png"), OK);
            EXPECT_EQ(back.dataType, type);
            EXPECT_TRUE(back.memoryOwner && back.memType == MEM::CPU && back.name == "back");
            EXPECT_EQ(back.width, mat.width);
            EXPECT_EQ(load(back, MEM::CPU), load(mat, MEM::CPU));
        }
    }
}

TEST_F(MatFilesTest, HonoursTheHostStepAndSignedBytes) {
    Bytes rows(3 * 20, 0);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i] = static_cast<std::uint8_t>(i);
    }
    Mat padded(5, 3, U3, rows.data(), 20, MEM::CPU);
    EXPECT_EQ(write(padded, "a.png"), OK);
    Mat back;
    EXPECT_EQ(back.read(folder_ / "a.png"), OK);
    EXPECT_EQ(back.ptrCPU[15], 20) << "the second row starts at the step";
    Mat bytes(2, 1, MAT_TYPE::MAT_8S_C4);
    bytes.setTo(Vector4<char>(1, static_cast<char>(-1), 127, 4));
    EXPECT_EQ(write(bytes, "b.png"), OK);
    EXPECT_EQ(back.read(folder_ / "b.png"), OK);
    EXPECT_EQ(load(back, MEM::CPU), (Bytes{1, 0, 127, 4, 1, 0, 127, 4}))
        << "as the encoder takes negative values";
}

TEST_F(MatFilesTest, ExtensionAndTypeChooseTheExporter) {
    fs::create_directory(folder_ / "archive.old");
    struct Case {
        MAT_TYPE type;
        const char* name;
        const char* file;
        const char* start;
    };
    const Case cases[] = {
        {F1, "a.png", "a.png", "\x89PNG"},
        {F1, "a.pgm", "a.pgm", "P2"},
        {F1, "a.pfm", "a.pfm", "Pf\n4 1"},
        {F1, "depth.tiff", "depth.tiff.pfm", "Pf\n"},
        {F1, "depth", "depth.pfm", "Pf\n"},
        {F1, "b.PNG", "b.PNG.pfm", "Pf\n"},
        {F4, "c.xyz", "c.xyz", "# Point Cloud"},
        {F4, "c.ply", "c.ply", "ply\n"},
        {F4, "c.vtk", "c.vtk", "# vtk"},
        {F4, "c.pcd", "c.pcd", "# .PCD v.7 - Point Cloud Data file format\nVERSION .7\nFIELDS x y z rgb"},
        {F4, "cloud.abcde", "cloud.abcde.pcd", "# .PCD"},
        {F4, "cloud.PLY", "cloud.PLY.pcd", "# .PCD"},
        {F4, "archive.old/cloud", "archive.old/cloud.pcd", "# .PCD"},
        {F4, "archive.old/", "archive.old/.pcd", "# .PCD"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Mat mat(4, 1, c.type);
        std::memset(mat.ptrCPU, 0, packedSize(mat));
        EXPECT_EQ(write(mat, c.name), OK);
        EXPECT_EQ(contentOf(folder_ / c.file).rfind(c.start, 0), 0U);
    }
    // Three channels are handed over as they are: four floats are taken for a point, so that 4 x 1 reads 3
    // pixels.
    float four[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, NAN, 0, 0, 0};
    Mat three(4, 1, F3, reinterpret_cast<unsigned char*>(four), sizeof four, MEM::CPU);
    EXPECT_EQ(write(three, "three.ply"), OK);
    EXPECT_EQ(contentOf(folder_ / "three.ply"),
              "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float "
              "z\nend_header\n"
              "1.000000 2.000000 3.000000\n5.000000 6.000000 7.000000\n9.000000 10.000000 11.000000");
    EXPECT_EQ(log_.take(), "");
}

TEST_F(MatFilesTest, RefusalsHaveEachTheirOwnLine) {
    struct Case {
        MAT_TYPE type;
        const char* name;
        int line;
    };
    const Case cases[] = {{F1, "missing/a.pfm", 962},
                          {F1, "missing/a.png", 962},
                          {F3, "missing/a.ply", 982},
                          {F4, "missing/a.ply", 1009},
                          {MAT_TYPE::MAT_32F_C2, "a.png", 1084},
                          {MAT_TYPE::MAT_8U_C2, "a.png", 1084},
                          {fromValue<MAT_TYPE>(-1), "a.png", 1084},
                          {fromValue<MAT_TYPE>(10), "a.png", 1084},
                          {US, "depth16.pgm", 1084},
                          {US, "a", 1084}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.name << " " << c.line);
        Mat mat(2, 2, c.type);
        EXPECT_EQ(write(mat, c.name), BAD);
        EXPECT_EQ(log_.take(), unsupported(c.line));
    }
    for (const auto& [type, line] : {std::pair(F1, 962), std::pair(F3, 982), std::pair(F4, 1009)}) {
        Mat noHost(2, 2, type, MEM::GPU);
        EXPECT_EQ(write(noHost, "a"), BAD) << "without a host buffer";
        EXPECT_EQ(log_.take(), unsupported(line));
    }
    Mat empty(0, 4, U3);
    EXPECT_EQ(write(empty, "a.png"), BAD);
    EXPECT_EQ(log_.take(), unsupported(1084)) << "nothing to encode";
    EXPECT_EQ(folder_.listing(), "");
    EXPECT_TRUE(wrapAsCvMat(Mat(2, 2, F4)).empty());
    EXPECT_EQ(log_.take(), unsupported(440));
}

TEST_F(MatFilesTest, UninitialisedMatsAndOtherSidesAreRefusedSilently) {
    Mat mat;
    EXPECT_EQ(write(mat, "a.png"), BAD);
    EXPECT_EQ(write(mat, "a.png", MEM_BOTH), BAD) << "uninitialised comes first";
    mat.alloc(2, 2, U3, MEM_BOTH);
    for (const std::int32_t mem : {0, 3, 4, -1}) {
        EXPECT_EQ(write(mat, "a.png", fromValue<MEM>(mem)), ERROR_CODE::INVALID_FUNCTION_CALL);
    }
    EXPECT_EQ(log_.take(), "");
    EXPECT_EQ(folder_.listing(), "");
}

TEST_F(MatFilesTest, ExceptionsOfOpenCvAreLogged) {
    Mat mat = filled(2, 2, U3, MEM::CPU);
    EXPECT_EQ(write(mat, "a.unknown"), BAD);
    EXPECT_EQ(log_.take().rfind("vela_core/utils/Mat.cpp:1090 ERROR [Mat]  in write : OpenCV(", 0), 0U);
    Mat noHost(2, 2, U3, nullptr, 6, MEM::CPU);
    EXPECT_EQ(write(noHost, "a.png"), BAD);
    EXPECT_EQ(log_.take().rfind("vela_core/utils/Mat.cpp:1090 ERROR [Mat]  in write : OpenCV(", 0), 0U);
    Mat emptyDepth(0, 0, F1);
    EXPECT_EQ(write(emptyDepth, "a.png"), BAD);
    EXPECT_EQ(log_.take().rfind("vela_core/utils/Mat.cpp:1090 ERROR [Mat]  in write : OpenCV(", 0), 0U);
}

TEST_F(MatFilesTest, AnEncoderThatReportsFailureDoesNotShowAndTheErrorHandlerIsReset) {
    Mat mat = filled(2, 2, U3, MEM::CPU);
    static int handled = 0;
    cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return ++handled; });
    EXPECT_EQ(write(mat, "missing/a.png"), OK);
    testing::internal::CaptureStderr();
    EXPECT_THROW(cv::error(cv::Error::StsError, "test", "f", "file", 1), cv::Exception);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(handled, 0);
    EXPECT_EQ(log_.take(), "");
}

TEST_F(MatFilesTest, WritingFromTheDeviceBringsTheHostSideUpToDate) {
    Mat both = filled(4, 4, U3, MEM_BOTH, 1);
    store(both, MEM::GPU, pattern(48, 2).data());
    EXPECT_EQ(write(both, "a.unknown", MEM::GPU), BAD);
    EXPECT_EQ(load(both, MEM::CPU), pattern(48, 2)) << "also when the write fails";
    Mat device = filled(4, 4, U3, MEM::GPU, 3);
    EXPECT_EQ(write(device, "a.png", MEM::GPU), OK);
    EXPECT_EQ(device.memType, MEM_BOTH);
    Mat back;
    EXPECT_EQ(back.read(folder_ / "a.png"), OK);
    EXPECT_EQ(load(back, MEM::CPU), pattern(48, 3));
    log_.take();
    Mat reference(back);
    EXPECT_EQ(write(reference, "b.png", MEM::GPU), BAD);
    EXPECT_NE(log_.take().find("updateCPUfromGPU for reference Mat is forbidden"), std::string::npos);
#ifdef VELA_GPU_SOFTWARE
    software_device::failCall("cudaMemcpy2D", 1, cudaErrorUnknown);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(write(both, "b.png", MEM::GPU), BAD); }),
              "in vela::ERROR_CODE vela::Mat::updateCPUfromGPU(cudaStream_t) : Err [999]: unknown error.\n");
#endif
    EXPECT_FALSE(fs::exists(folder_ / "b.png"));
}

TEST_F(MatFilesTest, WhatCannotBeDecodedLeavesTheMatAlone) {
    Mat picture = filled(64, 64, U3, MEM::CPU, 5);
    EXPECT_EQ(write(picture, "whole.png"), OK);
    const std::string whole = contentOf(folder_ / "whole.png");
    std::ofstream(folder_ / "head.png") << whole.substr(0, 20);
    std::ofstream(folder_ / "noise.jpg") << "no picture at all";
    std::ofstream(folder_ / "empty.png") << "";
    Mat mat = filled(3, 2, F4, MEM_BOTH);
    for (const char* const name : {"missing.png", "head.png", "noise.jpg", "empty.png", "", "."}) {
        EXPECT_EQ(mat.read(folder_ / name), BAD) << name;
    }
    EXPECT_EQ(mat.read(String(static_cast<const char*>(nullptr))), BAD);
    EXPECT_EQ(load(mat, MEM::CPU), pattern(96));
    EXPECT_EQ(load(mat, MEM::GPU), pattern(96));
    EXPECT_EQ(log_.take(), "");
    for (std::size_t size = 40; size < whole.size(); size += 97) {
        std::string broken = whole;
        broken[size] = static_cast<char>(~broken[size]);
        std::ofstream(folder_ / "broken.png") << (size % 2 == 0 ? whole.substr(0, size) : broken);
        Mat result;
        if (result.read(folder_ / "broken.png") == OK) {
            EXPECT_EQ(packedSize(result), 64U * 64U * 3U);
        }
    }
}

TEST_F(MatFilesTest, UnsupportedPicturesGiveTheirFirstBytes) {
    cv::Mat wide(3, 5, CV_16UC3);
    cv::randu(wide, 0, 65536);
    cv::imwrite(folder_ / "wide.png", wide);
    Mat mat;
    EXPECT_EQ(mat.read(folder_ / "wide.png"), OK);
    EXPECT_EQ(mat.dataType, U1);
    EXPECT_EQ(load(mat, MEM::CPU), Bytes(wide.data, wide.data + 15));
    cv::Mat colors(4, 4, CV_8UC3, cv::Scalar(250, 10, 20));
    cv::imwrite(folder_ / "blue.jpg", colors);
    EXPECT_EQ(mat.read(folder_ / "blue.jpg"), OK);
    EXPECT_EQ(mat.dataType, U3);
    EXPECT_GT(mat.ptrCPU[0], 200) << "blue comes first";
}

TEST_F(MatFilesTest, AFullDiskDoesNotCrash) {
    for (const char* const name : {"a.png", "b.jpg", "c.bmp"}) {
        fs::create_symlink("/dev/full", folder_ / name);
        Mat mat = filled(64, 64, U3, MEM::CPU);
        write(mat, name);
    }
    fs::create_symlink("/dev/full", folder_ / "d.pfm");
    Mat depth(64, 64, F1);
    EXPECT_EQ(write(depth, "d.pfm"), OK);
}

}  // namespace
}  // namespace vela::test

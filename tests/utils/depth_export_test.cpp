// SPDX-License-Identifier: Apache-2.0
// Faults of files are in file_faults_test.
#include "vela_core/utils/depth_export.hpp"

#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"

#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <iterator>
#include <limits>
#include <sstream>
#include <vector>

namespace vela::test {
namespace {

class DepthExportTest : public testing::Test {
protected:
    /// Exports floats through a Mat that refers to them; returns the only file.
    std::string saved(std::vector<float> depth, std::size_t width, DEPTH_FORMAT format, float factor) {
        const std::size_t height = width == 0 ? 0 : depth.size() / width;
        Mat mat(width, height, MAT_TYPE::MAT_32F_C1, reinterpret_cast<unsigned char*>(depth.data()), 999,
                MEM::CPU);  // the step is ignored
        EXPECT_TRUE(saveDepthAs(mat, format, folder_ / "depth", factor));
        return contentOf(folder_ / folder_.listing());
    }

    ScratchFolder folder_;
};

constexpr float LARGEST = std::numeric_limits<float>::max();

/// Halves round to even: 1234.5 becomes 1234, 0.5 becomes 0. NaN and infinities become what OpenCV makes of
/// them.
TEST_F(DepthExportTest, SixteenBitSamplesAreRoundedAndSaturated) {
    std::vector<float> depth = {1.2345F, 70.0F,   -1.0F,   0.0F, 0.0005F,  0.0014F,
                                0.0016F, 65.535F, 65.536F, NAN,  INFINITY, -INFINITY};
    std::vector<int> wanted = {1234, 65535, 0, 0, 0, 1, 2, 65535, 65535};
    cv::Mat asOpenCvDoes;  // differs between processors
    cv::Mat(3, 4, CV_32F, depth.data()).convertTo(asOpenCvDoes, CV_16U, 1000.0);
    for (int column = 1; column < 4; ++column) {
        wanted.push_back(asOpenCvDoes.at<std::uint16_t>(2, column));
    }
    const std::string pgm = saved(depth, 4, PGM, 1000.0F);
    EXPECT_EQ(pgm.substr(0, 2), "P2") << "the plain form";
    EXPECT_NE(pgm.find("\n4 3\n65535\n"), std::string::npos);
    std::istringstream digits(pgm.substr(pgm.find("65535\n") + 6));
    EXPECT_EQ((std::vector<int>(std::istream_iterator<int>(digits), {})), wanted);
    std::filesystem::remove(folder_ / "depth.pgm");

    const std::string png = saved(depth, 4, PNG, 1000.0F);
    const cv::Mat read = cv::imread(folder_ / "depth.png", cv::IMREAD_UNCHANGED);
    ASSERT_EQ(read.type(), CV_16UC1);
    EXPECT_EQ(read.size(), cv::Size(4, 3));
    EXPECT_EQ((std::vector<int>(read.begin<std::uint16_t>(), read.end<std::uint16_t>())), wanted);
    // Two bytes of zlib header, then a stored deflate block (type bits 00).
    EXPECT_EQ(png[png.find("IDAT") + 6] & 6, 0) << "not compressed";
}

TEST_F(DepthExportTest, PfmHoldsTheFloatsTopRowFirst) {
    std::vector<float> depth = {1.5F, NAN, -2.0F, INFINITY, LARGEST, -LARGEST, -INFINITY, -0.0F, 1e-45F};
    std::vector<float> wanted = {1.5F, 0.0F, -2.0F, 0.0F, LARGEST, -LARGEST, 0.0F, -0.0F, 1e-45F};
    for (int i = 0; i < 300000; ++i) {  // more than fits into a file block
        depth.push_back(static_cast<float>(i));
        wanted.push_back(static_cast<float>(i));
    }
    const std::string bytes(reinterpret_cast<const char*>(wanted.data()), wanted.size() * sizeof(float));
    EXPECT_TRUE(sameBytes(saved(depth, 3, PFM, 1000.0F), "Pf\n3 100003\n-1.000000\n" + bytes));
    EXPECT_EQ(saved({}, 0, PFM, 1.0F), "Pf\n0 0\n-1.000000\n");
}

TEST_F(DepthExportTest, CompletesNamesAndRefusesUnknownFormats) {
    Mat mat(1, 1, MAT_TYPE::MAT_32F_C1);
    const std::pair<const char*, DEPTH_FORMAT> names[] = {{"a", PFM},     {"b.pfm", PFM}, {"c.PFM", PFM},
                                                          {"d.png", PNG}, {"e.pgm", PNG}, {"f", PGM}};
    for (const auto& [name, format] : names) {
        EXPECT_TRUE(saveDepthAs(mat, format, folder_ / name, 1.0F));
    }
    const std::string files = "a.pfm b.pfm c.PFM.pfm d.png e.pgm.png f.pgm";
    EXPECT_EQ(folder_.listing(), files);
    for (const int format : {3, -1}) {
        const auto unknown = static_cast<DEPTH_FORMAT>(format);
        EXPECT_EQ(printedBy([&] { EXPECT_FALSE(saveDepthAs(mat, unknown, folder_ / "none", 1.0F)); }),
                  " Invalid Depth Format\n");
    }
    Mat nowhere(2, 2, MAT_TYPE::MAT_32F_C1, nullptr, 8, MEM::CPU);
    EXPECT_TRUE(saveDepthAs(nowhere, PFM, folder_ / "a", 1.0F));
    mat.width = 0;
    EXPECT_THROW(saveDepthAs(mat, PNG, folder_ / "none", 1.0F), cv::Exception) << "the encoder's own";
    EXPECT_EQ(folder_.listing(), files);
}

}  // namespace
}  // namespace vela::test

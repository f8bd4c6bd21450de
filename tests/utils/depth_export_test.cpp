#include "vela_core/utils/depth_export.hpp"

#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <sstream>
#include <vector>

namespace vela::test {
namespace {

namespace fs = std::filesystem;

class DepthExportTest : public testing::Test {
protected:
    /// A Mat that refers to the floats.
    static Mat wrap(std::vector<float>& depth, std::size_t width) {
        return {width,
                width == 0 ? 0 : depth.size() / width,
                MAT_TYPE::MAT_32F_C1,
                reinterpret_cast<unsigned char*>(depth.data()),
                width * sizeof(float),
                MEM::CPU};
    }

    ScratchFolder folder_;
};

TEST_F(DepthExportTest, SixteenBitSamplesAreRoundedAndSaturated) {
    std::vector<float> depth = {1.2345F, 70.0F,   -1.0F,   0.0F, 0.0005F,  0.0014F,
                                0.0016F, 65.535F, 65.536F, NAN,  INFINITY, -INFINITY};
    Mat mat = wrap(depth, 4);
    mat.stepBytesCPU = 999;  // not looked at
    cv::Mat nan(1, 3, CV_32F, &depth[9]);
    cv::Mat mapped;
    nan.convertTo(mapped, CV_16U, 1000.0);
    // Halves go to the even neighbour: 1234.5 becomes 1234, 0.5 becomes 0.
    const std::vector<int> wanted = {1234,
                                     65535,
                                     0,
                                     0,
                                     0,
                                     1,
                                     2,
                                     65535,
                                     65535,
                                     mapped.at<std::uint16_t>(0),
                                     mapped.at<std::uint16_t>(1),
                                     mapped.at<std::uint16_t>(2)};
    for (const DEPTH_FORMAT format : {PNG, PGM}) {
        EXPECT_TRUE(saveDepthAs(mat, format, folder_ / "depth", 1000.0F));
        const cv::Mat read =
            cv::imread(folder_ / (format == PNG ? "depth.png" : "depth.pgm"), cv::IMREAD_UNCHANGED);
        ASSERT_EQ(read.type(), CV_16UC1);
        ASSERT_EQ(read.size(), cv::Size(4, 3));
        EXPECT_EQ((std::vector<int>(read.begin<std::uint16_t>(), read.end<std::uint16_t>())), wanted);
    }
    const std::string pgm = contentOf(folder_ / "depth.pgm");
    EXPECT_EQ(pgm.substr(0, 2), "P2") << "the plain form";
    std::istringstream digits(pgm.substr(pgm.find("65535\n") + 6));
    EXPECT_EQ((std::vector<int>(std::istream_iterator<int>(digits), {})), wanted);
    // Two bytes of zlib header, then a deflate block that is stored (type bits 00).
    const std::string png = contentOf(folder_ / "depth.png");
    const std::size_t data = png.find("IDAT") + 4;
    EXPECT_EQ(png[data + 2] & 6, 0) << "not compressed";
}

TEST_F(DepthExportTest, PfmHoldsTheFloatsTopRowFirst) {
    const float largest = std::numeric_limits<float>::max();
    std::vector<float> depth = {1.5F, NAN, -2.0F, INFINITY, largest, -largest, -INFINITY, -0.0F, 1e-45F};
    Mat mat = wrap(depth, 3);
    EXPECT_TRUE(saveDepthAs(mat, PFM, folder_ / "depth.pfm", 1000.0F)) << "the factor is ignored";
    const std::vector<float> wanted = {1.5F, 0.0F, -2.0F, 0.0F, largest, -largest, 0.0F, -0.0F, 1e-45F};
    std::string bytes(36, '\0');
    std::memcpy(bytes.data(), wanted.data(), bytes.size());
    EXPECT_EQ(contentOf(folder_ / "depth.pfm"), "Pf\n3 3\n-1.000000\n" + bytes);
}

TEST_F(DepthExportTest, LargePfmFilesAreWhole) {
    std::vector<float> depth(641 * 479);
    for (std::size_t i = 0; i < depth.size(); ++i) {
        depth[i] = i % 1000 == 7 ? NAN : static_cast<float>(i);
    }
    Mat mat = wrap(depth, 641);
    EXPECT_TRUE(saveDepthAs(mat, PFM, folder_ / "depth", 1.0F));
    const std::string content = contentOf(folder_ / "depth.pfm");
    const std::string head = "Pf\n641 479\n-1.000000\n";
    ASSERT_EQ(content.size(), head.size() + depth.size() * sizeof(float));
    for (std::size_t i = 0; i < depth.size(); ++i) {
        float seen = 0;
        std::memcpy(&seen, content.data() + head.size() + i * sizeof seen, sizeof seen);
        ASSERT_EQ(seen, i % 1000 == 7 ? 0.0F : depth[i]) << i;
    }
}

TEST_F(DepthExportTest, CompletesNamesAndRefusesUnknownFormats) {
    std::vector<float> depth = {1.0F};
    Mat mat = wrap(depth, 1);
    const std::pair<const char*, DEPTH_FORMAT> names[] = {{"a", PFM},     {"b.pfm", PFM}, {"c.PFM", PFM},
                                                          {"d.png", PNG}, {"e.pgm", PNG}, {"f", PGM}};
    for (const auto& [name, format] : names) {
        EXPECT_TRUE(saveDepthAs(mat, format, folder_ / name, 1.0F));
    }
    EXPECT_EQ(folder_.listing(), "a.pfm b.pfm c.PFM.pfm d.png e.pgm.png f.pgm");
    for (const int format : {3, -1}) {
        EXPECT_EQ(printedBy([&, f = format] {
                      EXPECT_FALSE(saveDepthAs(mat, static_cast<DEPTH_FORMAT>(f), folder_ / "none", 1.0F));
                  }),
                  " Invalid Depth Format\n");
    }
    EXPECT_EQ(folder_.listing().find("none"), std::string::npos);
}

TEST_F(DepthExportTest, FilesThatCannotBeOpenedFail) {
    std::vector<float> depth = {1.0F};
    Mat mat = wrap(depth, 1);
    for (const DEPTH_FORMAT format : {PNG, PFM, PGM}) {
        EXPECT_FALSE(saveDepthAs(mat, format, folder_ / "missing/depth", 1.0F)) << format;
    }
    fs::create_directory(folder_ / "depth.pfm");
    EXPECT_FALSE(saveDepthAs(mat, PFM, folder_ / "depth", 1.0F));
    fs::create_symlink("/dev/full", folder_ / "full.pfm");
    EXPECT_TRUE(saveDepthAs(mat, PFM, folder_ / "full", 1.0F)) << "a full disk does not show";
}

TEST_F(DepthExportTest, EmptyMaps) {
    std::vector<float> none;
    Mat mat = wrap(none, 0);
    EXPECT_TRUE(saveDepthAs(mat, PFM, folder_ / "depth", 1.0F));
    EXPECT_EQ(contentOf(folder_ / "depth.pfm"), "Pf\n0 0\n-1.000000\n");
    EXPECT_THROW(saveDepthAs(mat, PNG, folder_ / "depth", 1.0F), cv::Exception) << "the encoder's own";
}

}  // namespace
}  // namespace vela::test

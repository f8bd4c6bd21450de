// SPDX-License-Identifier: Apache-2.0
// The page of writeHtml in a headless browser; skipped where there is none.
#include "support/ScratchFolder.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_io/pictures.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <opencv2/imgcodecs.hpp>
#include <random>
#include <sstream>
#include <string>

namespace vela::io {
namespace {

constexpr struct {
    float x, y, z;
    unsigned char red, green, blue;
} BLOBS[] = {{-1, -1, 4, 255, 0, 0},
             {1, -1, 4, 0, 255, 0},
             {1, 1, 4, 0, 0, 255},
             {-1, 1, 4, 255, 255, 0},
             {0, 0, 2, 255, 0, 255}};

/// Five blobs, given in the axes of a picture, in another axis convention.
Mat blobs(COORDINATE_SYSTEM axes) {
    constexpr std::size_t EACH = 2000;
    std::mt19937 random(3);  // NOLINT(cert-msc51-cpp): the same every time
    Mat cloud(EACH, std::size(BLOBS), MAT_TYPE::MAT_32F_C4);
    for (std::size_t i = 0; i < EACH * std::size(BLOBS); ++i) {
        const auto& blob = BLOBS[i / EACH];
        const auto spread = [&] { return static_cast<float>(random() % 1000) / 5000 - 0.1F; };
        const float point[] = {blob.x + spread(), blob.y + spread(), blob.z + spread()};
        const unsigned char color[] = {blob.red, blob.green, blob.blue, 255};
        std::memcpy(cloud.ptrCPU + 16 * i, point, sizeof point);
        std::memcpy(cloud.ptrCPU + 16 * i + 12, color, sizeof color);
    }
    convertCoordinateSystem(cloud, COORDINATE_SYSTEM::IMAGE, axes, MEM::CPU);
    return cloud;
}

class ViewerTest : public testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v chromium >/dev/null 2>&1") != 0) GTEST_SKIP() << "no chromium";
    }

    /// What the browser prints for a page, with further options.
    std::string browse(const std::string& options, const std::string& page) {
        const std::string command =
            "timeout 150 chromium --headless=new --no-sandbox --disable-dev-shm-usage "
            "--use-angle=swiftshader "
            "--enable-unsafe-swiftshader --hide-scrollbars --force-device-scale-factor=1 "
            "--window-size=600,500 "
            "--virtual-time-budget=20000 --user-data-dir='" +
            (folder_ / "profile") + "' " + options + " 'file://" + (folder_ / page) + "' 2>/dev/null";
        std::string printed;
        std::FILE* const pipe = popen(command.c_str(), "r");
        std::array<char, 4096> block{};
        for (std::size_t n = 0; (n = std::fread(block.data(), 1, block.size(), pipe)) > 0;) {
            printed.append(block.data(), n);
        }
        pclose(pipe);
        return printed;
    }

    static std::string attribute(const std::string& document, const std::string& name) {
        const std::string start = "data-" + name + "=\"";
        const std::size_t at = document.find(start);
        if (at == std::string::npos) return "none";
        return document.substr(at + start.size(), document.find('"', at + start.size()) - at - start.size());
    }

    void write(COORDINATE_SYSTEM axes) {
        HtmlOptions options;
        options.axes = axes;
        options.unit = UNIT::METER;
        const Result result = writeHtml(blobs(axes), folder_ / "cloud.html", options);
        ASSERT_TRUE(result.ok()) << result.text.c_str();
    }

    test::ScratchFolder folder_;
};

TEST_F(ViewerTest, DrawsWithoutErrorsAndPicksThePointThatIsClicked) {
    write(COORDINATE_SYSTEM::IMAGE);
    // Level, seen along Z: the magenta blob is in the middle, in front of the others.
    const std::string document = browse("--dump-dom", "cloud.html#pitch=0&pick=0.5,0.5");
    ASSERT_EQ(attribute(document, "state"), "drawn");
    EXPECT_EQ(attribute(document, "error"), "0");
    EXPECT_EQ(attribute(document, "points"), "10000");
    EXPECT_GT(std::stoi(attribute(document, "lit")), 3000);
    std::istringstream picked(attribute(document, "picked"));
    double x = 9;
    double y = 9;
    double z = 9;
    picked >> x >> y >> z;
    EXPECT_NEAR(x, 0, 0.1);
    EXPECT_NEAR(y, 0, 0.1);
    EXPECT_NEAR(z, 2, 0.11) << "the nearest of what lies there";
    const std::string beside = browse("--dump-dom", "cloud.html#pitch=0&pick=0.5,0.08");
    EXPECT_EQ(attribute(beside, "picked"), "") << "nothing lies there";
}

TEST_F(ViewerTest, ShowsBlobsAtTheSamePixelsInEveryAxisConvention) {
    int expected[std::size(BLOBS)][3] = {};
    for (int axes = 0; axes <= 5; ++axes) {
        write(static_cast<COORDINATE_SYSTEM>(axes));
        browse("--screenshot='" + (folder_ / "shot.png") + "'", "cloud.html");
        const cv::Mat shot = cv::imread(folder_ / "shot.png");
        ASSERT_FALSE(shot.empty());
        for (std::size_t i = 0; i < std::size(BLOBS); ++i) {
            const auto& blob = BLOBS[i];
            int sums[3] = {0, 0, 0};
            for (int y = 0; y < shot.rows; ++y) {
                for (int x = 0; x < shot.cols; ++x) {
                    if (shot.at<cv::Vec3b>(y, x) != cv::Vec3b(blob.blue, blob.green, blob.red)) continue;
                    sums[0] += x;
                    sums[1] += y;
                    ++sums[2];
                }
            }
            ASSERT_GT(sums[2], 100) << "blob " << i << ", axes " << axes;
            const int spot[] = {sums[0] / sums[2], sums[1] / sums[2]};
            if (axes == 0) std::copy(spot, spot + 2, expected[i]);
            EXPECT_NEAR(spot[0], expected[i][0], 1) << "blob " << i << ", axes " << axes;
            EXPECT_NEAR(spot[1], expected[i][1], 1) << "blob " << i << ", axes " << axes;
        }
    }
    EXPECT_LT(expected[0][0], expected[4][0]);
    EXPECT_GT(expected[1][0], expected[4][0]);
    EXPECT_LT(expected[0][1], expected[4][1]);
    EXPECT_GT(expected[2][0], expected[4][0]);
    EXPECT_GT(expected[3][1], expected[4][1]);
}

}  // namespace
}  // namespace vela::io

// SPDX-License-Identifier: Apache-2.0
// The page of writeHtml in a headless browser; skipped where there is none.
#include "support/ScratchFolder.hpp"
#include "support/blobs.hpp"
#include "vela_io/pictures.hpp"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>

namespace vela::io {
namespace {

class ViewerTest : public testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v chromium >/dev/null 2>&1") != 0) GTEST_SKIP() << "no chromium";
    }

    /// What the browser prints for a page, with further options.
    std::string browse(const std::string& options, const std::string& page) {
        const std::string command =
            "timeout 150 chromium --headless=new --no-sandbox --disable-dev-shm-usage "
            "--use-angle=swiftshader --enable-unsafe-swiftshader --hide-scrollbars "
            "--force-device-scale-factor=1 "
            "--window-size=600,500 --virtual-time-budget=20000 --user-data-dir='" +
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
        const Result result = writeHtml(test::blobs(axes), folder_ / "cloud.html", options);
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
    double x = 9, y = 9, z = 9;
    picked >> x >> y >> z;
    EXPECT_NEAR(x, 0, 0.1);
    EXPECT_NEAR(y, 0, 0.1);
    EXPECT_NEAR(z, 2, 0.11) << "the nearest of what lies there";
    const std::string beside = browse("--dump-dom", "cloud.html#pitch=0&pick=0.5,0.08");
    EXPECT_EQ(attribute(beside, "picked"), "") << "nothing lies there";
}

TEST_F(ViewerTest, ShowsBlobsAtTheSamePixelsInEveryAxisConvention) {
    test::Spots expected;
    for (int axes = 0; axes <= 5; ++axes) {
        SCOPED_TRACE(axes);
        write(static_cast<COORDINATE_SYSTEM>(axes));
        browse("--screenshot='" + (folder_ / "shot.png") + "'", "cloud.html");
        const cv::Mat shot = cv::imread(folder_ / "shot.png");
        ASSERT_FALSE(shot.empty());
        const test::Spots spots = test::spotsIn(shot);
        if (axes == 0) expected = spots;
        test::expectFrontView(spots, expected);
    }
}

}  // namespace
}  // namespace vela::io

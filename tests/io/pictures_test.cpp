// SPDX-License-Identifier: Apache-2.0
#include "vela_io/pictures.hpp"
#include "support/ScratchFolder.hpp"
#include "support/blobs.hpp"
#include "vela_io/pictures/scale.hpp"

#include <zlib.h>

#include <cerrno>
#include <cmath>
#include <functional>
#include <opencv2/imgcodecs.hpp>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace vela::io {
namespace {

using namespace test;

class PreviewTest : public testing::Test {
protected:
    /// The picture of a Mat; leaves the report of `preview` in `result_`.
    cv::Mat drawn(const Mat& mat, const PreviewOptions& options) {
        result_ = preview(mat, folder_ / "a.png", options);
        EXPECT_TRUE(result_.ok()) << result_.text;
        return cv::imread(folder_ / "a.png");
    }
    ScratchFolder folder_;
    Result result_;
};

TEST(Ticks, AreRoundNumbersThatAllDiffer) {
    const struct {
        double low, high;
        int count;
        std::string text;
    } rows[] = {{0, 1, 5, "0.0 0.2 0.4 0.6 0.8 1.0"},
                {-3, 7, 5, "-2 0 2 4 6"},
                {612, 1988, 5, "1000 1500"},
                {0.0123, 0.0151, 4, "0.013 0.014 0.015"},
                {-1, 1, 1, "0"},
                {1e12, 3e12, 2, "1.000e+12 2.000e+12 3.000e+12"}};
    for (const auto& row : rows) {
        const detail::Ticks ticks({row.low, row.high}, row.count);
        std::string text;
        for (const double value : ticks.values)
            text += (text.empty() ? "" : " ") + ticks.text(value);
        EXPECT_EQ(text, row.text) << row.low << " to " << row.high;
    }
}

TEST_F(PreviewTest, ShowsEachPixelInTheColourOfItsDepth) {
    Mat depth(400, 300, MAT_TYPE::MAT_32F_C1);
    const float invalid[] = {NAN, INFINITY, 0, -1};
    for (std::size_t i = 0; i < 400 * 300; ++i) {
        const std::size_t x = i % 400;
        const bool marked = x < 80 && i / 400 < 20;
        depth.setValue(x, i / 400, marked ? invalid[x / 20] : 1000.F + static_cast<float>(x));
    }
    PreviewOptions options;
    options.unit = UNIT::MILLIMETER;
    options.width = 640;
    options.height = 400;
    const cv::Mat picture = drawn(depth, options);
    EXPECT_EQ(std::tuple(result_.points, result_.dropped, result_.written),
              std::tuple(120000U, 1600U, 118400U));
    EXPECT_EQ(result_.bytes, std::filesystem::file_size(folder_ / "a.png"));

    // 12 pixels of margin; near is warm and light, far is cold and dark, brightness falls throughout.
    const auto brightness = [&](int x, int y) {
        const cv::Vec3b& bgr = picture.at<cv::Vec3b>(y + 12, x + 12);
        return bgr[0] + bgr[1] + bgr[2];
    };
    for (int x = 12; x + 40 < 400; x += 40)
        EXPECT_GT(brightness(x, 150), brightness(x + 40, 150)) << x;
    EXPECT_GT(picture.at<cv::Vec3b>(162, 20)[2], picture.at<cv::Vec3b>(162, 20)[0]) << "near is red";
    EXPECT_LT(picture.at<cv::Vec3b>(162, 405)[2], picture.at<cv::Vec3b>(162, 405)[0]) << "far is blue";
    for (int i = 0; i < 4; ++i) {
        std::set<int> hatched;
        for (int x = 0; x < 20; ++x)
            hatched.insert(brightness(20 * i + x, 10));
        EXPECT_EQ(hatched.size(), 2U) << "two greys at " << i;
    }
    // The bar has the colours of the depths, with the near end at the bottom.
    const int bar = picture.cols - 12 - 130;
    EXPECT_GT(brightness(bar, 290), brightness(bar, 150));
    EXPECT_GT(brightness(bar, 150), brightness(bar, 30));
}

TEST_F(PreviewTest, EnlargesAndThinsByWholeFactors) {
    Mat small(4, 2, MAT_TYPE::MAT_US16_C1);
    small.setTo<unsigned short>(500);
    small.setValue<unsigned short>(3, 1, 0);
    Mat large(5000, 3000, MAT_TYPE::MAT_32F_C1);
    large.setTo(1.F);
    PreviewOptions options;
    options.width = 600;
    options.height = 400;
    for (const Mat& depth : {small, large}) {
        const cv::Mat picture = drawn(depth, options);
        EXPECT_EQ(result_.dropped, depth.width == 4 ? 1U : 0U);
        EXPECT_LE(picture.cols, 600);
        EXPECT_LE(picture.rows, 400);
        EXPECT_EQ(picture.at<cv::Vec3b>(12, 12), picture.at<cv::Vec3b>(12 + 100, 12 + 100)) << "one depth";
    }
}

TEST_F(PreviewTest, PutsBlobsAtTheSamePixelsInEveryAxisConvention) {
    PreviewOptions options;
    options.views = {CLOUD_VIEW::FRONT, CLOUD_VIEW::TOP};
    Spots front;
    Spots top;
    for (int axes = 0; axes <= 5; ++axes) {
        SCOPED_TRACE(axes);
        options.axes = static_cast<COORDINATE_SYSTEM>(axes);
        const cv::Mat picture = drawn(blobs(options.axes), options);
        ASSERT_EQ(picture.size(), cv::Size(1280, 720));
        Spots frontNow = spotsIn(picture.colRange(0, 640));
        Spots topNow = spotsIn(picture.colRange(640, 1280));
        if (axes == 0) std::tie(front, top) = std::tie(frontNow, topNow);
        expectFrontView(frontNow, front);
        EXPECT_NEAR(topNow["magenta"].y, top["magenta"].y, 1);
    }
    EXPECT_GT(top["magenta"].y, top["red"].y) << "nearer is lower, seen from above";
    EXPECT_GT(top["red"].count, 3 * top["yellow"].count) << "red lies above yellow";
}

TEST_F(PreviewTest, ShowsSidesAndCountsInvisiblePoints) {
    const auto spots = [&](CLOUD_VIEW view) {
        PreviewOptions options;
        options.views = {view};
        return spotsIn(drawn(blobs(COORDINATE_SYSTEM::IMAGE), options));
    };
    auto back = spots(CLOUD_VIEW::BACK);
    EXPECT_GT(back["red"].x, back["green"].x);
    auto left = spots(CLOUD_VIEW::LEFT);
    EXPECT_GT(left["magenta"].x, left["red"].x) << "the camera side is on the right, seen from the left";
    EXPECT_GT(left["red"].count, 3 * left["green"].count) << "red hides green";
    auto right = spots(CLOUD_VIEW::RIGHT);
    EXPECT_LT(right["magenta"].x, right["green"].x);

    Mat cloud = cloudOf(std::vector<ColoredPoint>(1000, {0, 0, 1, {9, 9, 9}}));
    cloud.setValue(0, 0, Vector4<float>(NAN, 0, 1, 0));
    cloud.setValue(1, 0, Vector4<float>(3e38F, 0, 1, 0));
    drawn(cloud, {});
    EXPECT_EQ(std::tuple(result_.points, result_.dropped, result_.written), std::tuple(1000U, 1U, 998U))
        << "one is far outside";
}

TEST(Pictures, AreRefusedWithAReasonAndLeaveNoFile) {
    const ScratchFolder folder;
    const struct {
        const char* text;
        MAT_TYPE type;
        std::function<void(PreviewOptions&)> change;
    } rows[] = {
        {"only depth maps and clouds can be drawn", MAT_TYPE::MAT_8U_C3, [](auto&) {}},
        {"the size of a picture runs from 320 x 200 to 16384 x 16384", MAT_TYPE::MAT_32F_C3,
         [](auto& o) { o.width = 319; }},
        {"the size of a picture runs from 320 x 200 to 16384 x 16384", MAT_TYPE::MAT_32F_C1,
         [](auto& o) { o.height = 16385; }},
        {"one to four views can be drawn", MAT_TYPE::MAT_32F_C3, [](auto& o) { o.views.clear(); }},
        {"an unknown view", MAT_TYPE::MAT_32F_C3, [](auto& o) { o.views = {static_cast<CLOUD_VIEW>(5)}; }},
        {"the picture is too narrow for so many views", MAT_TYPE::MAT_32F_C3,
         [](auto& o) { o.width = 320, o.views.resize(4); }},
        {"an unknown axis convention", MAT_TYPE::MAT_32F_C3,
         [](auto& o) { o.axes = static_cast<COORDINATE_SYSTEM>(6); }},
        {"the nearest value must be below the farthest", MAT_TYPE::MAT_32F_C1,
         [](auto& o) { o.nearest = o.farthest = 2.F; }}};
    const std::string path = folder / "x.png";
    for (const auto& row : rows) {
        PreviewOptions options;
        row.change(options);
        Mat mat(4, 4, row.type);
        const Result result = preview(mat, path, options);
        EXPECT_FALSE(result.ok()) << row.text;
        EXPECT_EQ(std::string(result.text.c_str()), path + ": " + row.text);
    }
    EXPECT_FALSE(preview(Mat(), path).ok());
    EXPECT_FALSE(writeHtml(Mat(4, 4, MAT_TYPE::MAT_32F_C1), path).ok());
    EXPECT_FALSE(writeHtml(Mat(), path).ok());
    HtmlOptions html;
    html.color = static_cast<COLOR_BY>(3);
    EXPECT_FALSE(writeHtml(blobs(COORDINATE_SYSTEM::IMAGE), path, html).ok());
    EXPECT_EQ(writeHtml(blobs(COORDINATE_SYSTEM::IMAGE), folder / "none/x.html").systemError, ENOENT);
    EXPECT_EQ(folder.listing(), "");
}

/// The part of a page between two texts.
std::string between(const std::string& page, const std::string& before, const std::string& after) {
    const std::size_t start = page.find(before) + before.size();
    return page.substr(start, page.find(after, start) - start);
}

/// The points of a page, as its script unpacks them.
std::vector<cv::Vec<int, 6>> pointsOf(const std::string& page) {
    const std::string text = between(page, R"(<script id="points" type="text/plain">)", "</script>");
    std::string packed;
    std::uint32_t word = 0;
    unsigned bits = 0;
    for (const char c : text) {
        const std::size_t digit =
            std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/").find(c);
        if (digit == std::string::npos) continue;
        word = word << 6U | static_cast<std::uint32_t>(digit);
        if ((bits += 6) >= 8) packed += static_cast<char>(word >> (bits -= 8) & 255U);
    }
    std::vector<unsigned char> bytes(std::size_t{9} << 20U);
    uLongf size = bytes.size();
    EXPECT_EQ(uncompress(bytes.data(), &size, reinterpret_cast<const Bytef*>(packed.data()), packed.size()),
              Z_OK);
    const std::size_t count = std::stoul(between(page, R"("drawn":)", ","));
    EXPECT_EQ(size, 9 * count);
    std::vector<cv::Vec<int, 6>> points(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < 6; ++k) {
            const int before = i == 0 ? 0 : points[i - 1][static_cast<int>(k)];
            const int step = k < 3 ? bytes[2 * k * count + i] + 256 * bytes[(2 * k + 1) * count + i]
                                   : bytes[(3 + k) * count + i];
            points[i][static_cast<int>(k)] = (before + step) % (k < 3 ? 65536 : 256);
        }
    }
    return points;
}

TEST(WriteHtml, QuantisesCoordinatesTo16Bits) {
    const ScratchFolder folder;
    Mat cloud = cloudOf(
        {{-2, 5, 1, {1, 2, 3}}, {NAN, 0, 0, {9, 9, 9}}, {2, 5, 1.5F, {250, 0, 7}}, {1, 5, 3, {4, 5, 6}}});
    HtmlOptions options;
    options.unit = UNIT::METER;
    options.title = "a </script> & \"b\"\\";
    const Result result = writeHtml(cloud, folder / "c.html", options);
    ASSERT_TRUE(result.ok()) << result.text.c_str();
    EXPECT_EQ(std::tuple(result.points, result.written, result.dropped), std::tuple(4U, 3U, 1U));
    const std::string page = contentOf(folder / "c.html");
    EXPECT_EQ(result.bytes, page.size());
    const std::vector<cv::Vec<int, 6>> expected = {
        {0, 0, 0, 1, 2, 3}, {65535, 0, 16384, 250, 0, 7}, {49151, 0, 65535, 4, 5, 6}};
    EXPECT_EQ(pointsOf(page), expected);
    EXPECT_NE(page.find(R"("low":[-2,5,1],"high":[2,5,3])"), std::string::npos);
    EXPECT_NE(page.find("default-src 'none'"), std::string::npos);
    EXPECT_EQ(between(page, "<title>", "</title>"), "a &lt;/script> &amp; \"b\"\\");
    EXPECT_EQ(between(page, R"({"text":)", ",\"unit\""),
              R"("a \u003c/script> \u0026 \u0022b\u0022\u005c\u000a3 points, 1 invalid")");
    EXPECT_EQ(page.find("%META%"), std::string::npos);
    EXPECT_EQ(page.find("http"), page.find("http-equiv")) << "nothing is fetched";
}

TEST(WriteHtml, ChoosesAmongTooManyPointsAndStaysWithinTenMegabytes) {
    const ScratchFolder folder;
    Mat noise(1000, 900, MAT_TYPE::MAT_32F_C4);  // compresses worst
    std::mt19937 random(5);                      // NOLINT(cert-msc51-cpp): the same every time
    for (std::size_t i = 0; i < 4 * 900000; ++i) {
        const auto color = static_cast<std::uint32_t>(random());
        noise.getPtr<float>()[i] = static_cast<float>(color);
        if (i % 4 == 3) std::memcpy(noise.getPtr<float>() + i, &color, sizeof color);
    }
    HtmlOptions options;
    options.maxPoints = 800000;
    const Result result = writeHtml(noise, folder / "n.html", options);
    EXPECT_EQ(result.written, 800000U);
    EXPECT_LE(result.bytes, 10'000'000U);
    const auto points = pointsOf(contentOf(folder / "n.html"));
    double sum = 0;
    for (const auto& point : points)
        sum += point[0];
    EXPECT_NEAR(sum / 800000, 32767, 200) << "no part of the cloud is preferred";

    EXPECT_EQ(writeHtml(cloudOf({{NAN, 0, 0, {0, 0, 0}}}), folder / "e.html").written, 0U);
}

}  // namespace
}  // namespace vela::io

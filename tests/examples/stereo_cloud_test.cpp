// SPDX-License-Identifier: Apache-2.0
// Runs the example as a user does, on a pair made here.
#include "support/ScratchFolder.hpp"
#include "support/device.hpp"
#include "vela_io/io.hpp"

#include <sys/wait.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <vector>

namespace vela::test {
namespace {

class StereoCloudTest : public DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        cv::theRNG().state = 7;
        cv::randu(left_, 0, 256);
        cv::Mat right = cv::Mat::zeros(left_.size(), left_.type());
        left_.colRange(12, 320).copyTo(right.colRange(0, 308));
        cv::imwrite(folder_ / "left.png", left_);
        cv::imwrite(folder_ / "right.png", right);
        cv::imwrite(folder_ / "small.png", left_.rowRange(0, 50));
        cv::imwrite(folder_ / "tiny.png", left_(cv::Rect(0, 0, 63, 16)));
        std::ofstream(folder_ / "broken.png") << "no picture";
    }

    /// Runs the example; returns its exit code and what it wrote to standard error.
    std::string run(const std::string& options, const std::string& prefix = "") const {
        const std::string command = prefix + " " STEREO_CLOUD " --focal 100 --baseline 60 --left @left.png ";
        const int status = std::system(folder_.expand(command + options + " >@stdout 2>@stderr").c_str());
        return std::to_string(WEXITSTATUS(status)) + " " + contentOf(folder_ / "stderr");
    }
    cv::Mat picture(const std::string& name) const {
        return cv::imread(folder_ / name, cv::IMREAD_UNCHANGED);
    }
    std::string printed() const { return contentOf(folder_ / "stdout"); }

    ScratchFolder folder_;
    cv::Mat left_ = cv::Mat(60, 320, CV_8UC3);
};

TEST_F(StereoCloudTest, MakesACloudOfTheUsersPair) {
    ASSERT_EQ(run("--right @right.png --offset -2 --out @new/out"), "0 ");
    EXPECT_NE(printed().find("cloud Ts 0 vela::Mat of size [320,60], with 4 channels of type float allocated "
                             "on both CPU and GPU (memory owned). Host rows of 5120 bytes."),
              std::string::npos);
    EXPECT_EQ(
        folder_.listing("new/out"),
        "cloud.html cloud.pcd cloud.ply cloud.vtk cloud.xyz cloud_binary.ply cloud_organised.pcd depth.pfm "
        "depth.pgm depth.png depth_metric.png depth_preview.png left.png preview.png");
    EXPECT_EQ(cv::norm(picture("new/out/left.png"), left_, cv::NORM_L1), 0.0);
    const std::string points = contentOf(folder_ / "new/out/cloud.ply");
    for (const cv::Point& pixel : {cv::Point(100, 20), cv::Point(200, 30), cv::Point(290, 50)}) {
        // 100 px * 60 mm / (12 - 2) px is 0.6 m; the camera looks along -Z, Y is up.
        EXPECT_EQ(picture("new/out/depth.png").at<std::uint16_t>(pixel), 600);
        EXPECT_FLOAT_EQ(picture("new/out/depth.pfm").at<float>(pixel), 0.6F);
        const auto& bgr = left_.at<cv::Vec3b>(pixel);
        char point[100];
        std::snprintf(point, sizeof point, "\n%f %f %f %d %d %d\n", 0.006 * (pixel.x - 159.5),
                      0.006 * (29.5 - pixel.y), -0.6, bgr[2], bgr[1], bgr[0]);
        EXPECT_NE(points.find(point), std::string::npos) << point;
    }
    EXPECT_GT(std::count(points.begin(), points.end(), '\n'), 320 * 60 / 2);
}

TEST_F(StereoCloudTest, TakesAPrincipalPointAndTenBitsInFilesOfSixteen) {
    for (const std::string name : {"left", "right"}) {
        cv::Mat picture = cv::imread(folder_ / (name + ".png"));
        picture.convertTo(picture, CV_16U, 1023.0 / 255.0);
        cv::imwrite(folder_ / (name + "10.png"), picture);
    }
    ASSERT_EQ(run("--left @left10.png --right @right10.png --offset -2 --cx 149.5 --cy 39.5 --out @out"),
              "0 ");
    EXPECT_LE(cv::norm(cv::imread(folder_ / "out/left.png"), left_, cv::NORM_INF), 1.0);
    EXPECT_EQ(picture("out/depth.png").at<std::uint16_t>(30, 200), 600);
    char point[40];
    std::snprintf(point, sizeof point, "\n%f %f %f\n", 0.006 * (200 - 149.5), 0.006 * (39.5 - 30), -0.6);
    EXPECT_NE(contentOf(folder_ / "out/cloud.xyz").find(point), std::string::npos);
}

TEST_F(StereoCloudTest, MeasuresDisparitiesAbove2047) {
    cv::Mat left(16, 10400, CV_8UC3);
    cv::randu(left, 0, 256);
    cv::Mat right = cv::Mat::zeros(left.size(), left.type());
    left.colRange(2060, 10400).copyTo(right.colRange(0, 10400 - 2060));
    cv::imwrite(folder_ / "left.png", left);
    cv::imwrite(folder_ / "right.png", right);
    ASSERT_EQ(run("--right @right.png --focal 20600 --out @out"), "0 ");
    EXPECT_NEAR(picture("out/depth.png").at<std::uint16_t>(8, 6000), 600, 1);
}

TEST_F(StereoCloudTest, WritesFilesThatStateTheirUnitAndAxes) {
    ASSERT_EQ(run("--right @right.png --offset -2 --out @out"), "0 ");
    const std::string text = contentOf(folder_ / "out/cloud.ply");
    const auto points = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 9;
    for (const std::string name : {"cloud_binary.ply", "cloud_organised.pcd"}) {
        Mat cloud;
        io::CloudInfo info;
        ASSERT_TRUE(io::readCloud(folder_ / ("out/" + name), cloud, &info).ok());
        EXPECT_EQ(info.unit, UNIT::METER);
        EXPECT_EQ(info.axes, COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD);
        EXPECT_EQ(info.encoding, io::ENCODING::BINARY);
        EXPECT_EQ(info.height, info.format == io::CLOUD_FILE::PCD ? 60U : 1U);
        EXPECT_EQ(info.points - info.invalid, points);
        Vector4<float> last;
        cloud.getValue(cloud.width - 1, cloud.height - 1, &last);
        EXPECT_NEAR(last.z, -0.6F, 0.01F);
    }
    Mat depth;
    io::DepthInfo info;
    ASSERT_TRUE(io::readDepth(folder_ / "out/depth_metric.png", depth, &info).ok());
    EXPECT_EQ(info.unit, UNIT::METER);
    EXPECT_EQ(info.withDepth, points);
    EXPECT_EQ(picture("out/depth_metric.png").at<std::uint16_t>(30, 200), 600) << "millimetres";
    const std::string page = contentOf(folder_ / "out/cloud.html");
    EXPECT_NE(page.find("\"unit\":\"m\",\"drawn\":" + std::to_string(points)), std::string::npos);
    EXPECT_NE(page.find(R"("up":[0,1,0],"forward":[0,0,-1])"), std::string::npos) << "Y up, Z backward";
    EXPECT_FALSE(picture("out/preview.png").empty() || picture("out/depth_preview.png").empty());
    for (const char* const name : {"cloud_binary.ply", "cloud_organised.pcd", "depth_metric.png"})
        EXPECT_TRUE(std::regex_search(printed(), std::regex(name + std::string(".* ms, the same")))) << name;
}

TEST_F(StereoCloudTest, DetectsFilesThatDifferFromWhatWasWritten) {
    const std::pair<const char*, const char*> files[] = {
        {"cloud_binary.ply", "the cloud"}, {"cloud_organised.pcd", "the cloud"}, {"depth_metric.png", ""}};
    for (const auto& [name, thing] : files) {
        const std::string said =
            run("--right @right.png --offset -2 --out @out",
                "ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD=" CHANGED_READ " VELA_CHANGED_FILE=" +
                    std::string(name));
        EXPECT_EQ(said.substr(0, 16), "1 stereo_cloud: ");
        EXPECT_NE(said.find(std::string(name) + (*thing == '\0' ? ": " : " does not hold ") + thing),
                  std::string::npos)
            << said;
        EXPECT_FALSE(fs::exists(folder_ / "out"));
    }
}

TEST_F(StereoCloudTest, CountsDepthsWithoutASample) {
    // 1000 px * 1000 mm / (12 - 2) px is 100 m; 16 bits of millimetres reach only 65.5 m.
    ASSERT_EQ(run("--right @right.png --offset -2 --focal 1000 --baseline 1000 --out @out"), "0 ");
    EXPECT_NE(printed().find(" depths have no sample\n"), std::string::npos);
    EXPECT_EQ(picture("out/depth_metric.png").at<std::uint16_t>(30, 200), 65535);
}

TEST_F(StereoCloudTest, PrintsHelpAndAHintAtSwappedPictures) {
    EXPECT_EQ(run("--help"), "0 ");
    EXPECT_EQ(printed().substr(0, 20), "usage: stereo_cloud ");
    const std::string hint = "hint: hardly a pixel has depth: are left and right swapped";
    for (const auto& [offset, hinted] : {std::pair("-2", false), std::pair("-12.1", true)}) {
        EXPECT_EQ(run(std::string("--right @right.png --out @out --offset ") + offset), "0 ");
        EXPECT_EQ(printed().find(hint) != std::string::npos, hinted) << offset;
    }
}

TEST_F(StereoCloudTest, ReportsEachErrorInOneLine) {
    std::istringstream cases(contentOf(VELA_TEST_FOLDER "/examples/stereo_cloud_errors.txt"));
    for (std::string line; std::getline(cases, line);) {
        const std::size_t at = line.find(" => ");
        EXPECT_EQ(run(line.substr(0, at)), folder_.expand("1 stereo_cloud: " + line.substr(at + 4) + "\n"));
        EXPECT_EQ(folder_.listing(), "broken.png left.png right.png small.png stderr stdout tiny.png")
            << line;
    }
}

TEST_F(StereoCloudTest, KeepsEarlierResultsWhenItFails) {
    const char* const earlier[] = {"cloud.pcd", "cloud.vtk", "cloud.xyz", "depth.pfm", "left.png"};
    for (const std::string name : earlier) {
        fs::create_directories(folder_ / "out/preview.png/in the way");
        std::ofstream(folder_ / ("out/" + name)) << "earlier";
    }
    const std::string before = folder_.listing("out");
    EXPECT_EQ(run("--right @right.png --out @out"),
              folder_.expand("1 stereo_cloud: cannot write '@out/preview.png'\n"));
    EXPECT_EQ(folder_.listing("out"), before) << "nothing half written";
    for (const std::string name : earlier)
        EXPECT_EQ(contentOf(folder_ / ("out/" + name)), "earlier");
    fs::remove_all(folder_ / "out/preview.png");
    EXPECT_EQ(run("--right @right.png --out @out"), "0 ");
    for (const std::string name : earlier)
        EXPECT_NE(contentOf(folder_ / ("out/" + name)), "earlier");
    EXPECT_EQ(folder_.listing("out").find(".earlier"), std::string::npos);
}

TEST_F(StereoCloudTest, NeverPublishesACutFile) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"--offset -2", {"cloud.ply", "cloud.pcd"}},  // each is larger than the ones before it
        {"--offset -12.1", {"depth.png", "depth.pfm", "cloud_organised.pcd"}}};  // few points
    for (const auto& [options, files] : cases) {
        const std::string command = std::string("--right @right.png --out @out ") + options;
        ASSERT_EQ(run(command), "0 ");
        std::vector<std::uintmax_t> sizes;
        for (const std::string& file : files)
            sizes.push_back(fs::file_size(folder_ / ("out/" + file)));
        fs::remove_all(folder_ / "out");
        for (const std::uintmax_t size : sizes) {
            for (const unsigned missing : {1U, 9U}) {
                const std::string most = "prlimit --fsize=" + std::to_string(size - missing);
                EXPECT_EQ(run(command, most).substr(0, 1), "1") << size << " less " << missing;
                EXPECT_FALSE(fs::exists(folder_ / "out"));
            }
        }
    }
}

TEST_F(StereoCloudTest, RemovesPartialResultsWhenStopped) {
    cv::Mat noise(600, 1200, CV_8UC3);
    cv::randu(noise, 0, 256);
    cv::imwrite(folder_ / "left.png", noise);
    for (const char* const signal : {"HUP", "INT", "TERM"}) {
        const std::string started =
            "#!/bin/bash\nset -m\n" STEREO_CLOUD
            " --focal 100 --baseline 60 --left @left.png --right @left.png --out @out "
            ">@stdout 2>@stderr &\nuntil compgen -G '@out/.partial-*' >@found; do "
            "sleep 0.01; done\nkill -" +
            std::string(signal) + " $!\nwait $!\n(( $? > 128 ))\n";
        std::ofstream(folder_ / "script") << folder_.expand(started);
        EXPECT_EQ(std::system(folder_.expand("timeout 60 bash @script").c_str()), 0) << signal;
        EXPECT_FALSE(fs::exists(folder_ / "out")) << signal;
    }
}

}  // namespace
}  // namespace vela::test

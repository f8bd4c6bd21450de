// SPDX-License-Identifier: Apache-2.0
// Runs the example as a user does, on a pair made here.
#include "support/ScratchFolder.hpp"
#include "support/device.hpp"

#include <sys/wait.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
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

    /// The text with the test's folder for each @.
    std::string inFolder(std::string text) const {
        for (std::size_t at = 0; (at = text.find('@')) != std::string::npos;) {
            text.replace(at, 1, folder_ / "");
        }
        return text;
    }
    /// Runs the example; returns its exit code and what it wrote to standard error.
    std::string run(const std::string& options, const std::string& prefix = "") const {
        const std::string command = prefix + " " STEREO_CLOUD " --focal 100 --baseline 60 --left @left.png ";
        const int status = std::system(inFolder(command + options + " >@stdout 2>@stderr").c_str());
        return std::to_string(WEXITSTATUS(status)) + " " + contentOf(folder_ / "stderr");
    }
    /// Runs it while no file may grow beyond `bytes`; returns its exit code.
    std::string runWithin(std::uintmax_t bytes, const std::string& options) const {
        return run(options, "prlimit --fsize=" + std::to_string(bytes)).substr(0, 1);
    }

    ScratchFolder folder_;
    cv::Mat left_ = cv::Mat(60, 320, CV_8UC3);
};

TEST_F(StereoCloudTest, MakesACloudOfTheUsersPair) {
    ASSERT_EQ(run("--right @right.png --offset -2 --out @new/out"), "0 ");
    const std::string printed = contentOf(folder_ / "stdout");
    EXPECT_NE(printed.find("cloud Ts 0 vela::Mat of size [320,60], with 4 channels of type float allocated "
                           "on both CPU and GPU (memory owned). Host rows of 5120 bytes."),
              std::string::npos)
        << printed;
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "new/out")) {
        files.insert(entry.path().filename());
    }
    EXPECT_EQ(files, (std::set<std::string>{"cloud.pcd", "cloud.ply", "cloud.vtk", "cloud.xyz", "depth.pfm",
                                            "depth.pgm", "depth.png", "left.png", "preview.png"}));
    EXPECT_EQ(cv::norm(cv::imread(folder_ / "new/out/left.png"), left_, cv::NORM_L1), 0.0);
    const cv::Mat millimetres = cv::imread(folder_ / "new/out/depth.png", cv::IMREAD_UNCHANGED);
    const cv::Mat metres = cv::imread(folder_ / "new/out/depth.pfm", cv::IMREAD_UNCHANGED);
    const std::string points = contentOf(folder_ / "new/out/cloud.ply");
    for (const cv::Point& pixel : {cv::Point(100, 20), cv::Point(200, 30), cv::Point(290, 50)}) {
        // 100 px * 60 mm / (12 - 2) px is 0.6 m; the camera looks along -Z, Y is up.
        EXPECT_EQ(millimetres.at<std::uint16_t>(pixel), 600);
        EXPECT_FLOAT_EQ(metres.at<float>(pixel), 0.6F);
        const auto& bgr = left_.at<cv::Vec3b>(pixel);
        char point[100];
        std::snprintf(point, sizeof point, "\n%f %f %f %d %d %d\n", 0.006 * (pixel.x - 159.5),
                      0.006 * (29.5 - pixel.y), -0.6, bgr[2], bgr[1], bgr[0]);
        EXPECT_NE(points.find(point), std::string::npos) << point;
    }
    EXPECT_GT(std::count(points.begin(), points.end(), '\n'), 320 * 60 / 2);
}

TEST_F(StereoCloudTest, PutsThePrincipalPointWhereItIsSaid) {
    ASSERT_EQ(run("--right @right.png --offset -2 --cx 149.5 --cy 39.5 --out @out"), "0 ");
    char point[40];
    std::snprintf(point, sizeof point, "\n%f %f %f\n", 0.006 * (200 - 149.5), 0.006 * (39.5 - 30), -0.6);
    EXPECT_NE(contentOf(folder_ / "out/cloud.xyz").find(point), std::string::npos);
}

TEST_F(StereoCloudTest, TakesTenBitsInFilesOfSixteen) {
    for (const std::string name : {"left", "right"}) {
        cv::Mat picture = cv::imread(folder_ / (name + ".png"));
        picture.convertTo(picture, CV_16U, 1023.0 / 255.0);
        cv::imwrite(folder_ / (name + "10.png"), picture);
    }
    ASSERT_EQ(run("--left @left10.png --right @right10.png --offset -2 --out @out"), "0 ");
    EXPECT_LE(cv::norm(cv::imread(folder_ / "out/left.png"), left_, cv::NORM_INF), 1.0);
    const cv::Mat millimetres = cv::imread(folder_ / "out/depth.png", cv::IMREAD_UNCHANGED);
    EXPECT_EQ(millimetres.at<std::uint16_t>(30, 200), 600);
}

TEST_F(StereoCloudTest, MeasuresDisparitiesAbove2047) {
    cv::Mat left(16, 10400, CV_8UC3);
    cv::randu(left, 0, 256);
    cv::Mat right = cv::Mat::zeros(left.size(), left.type());
    left.colRange(2060, 10400).copyTo(right.colRange(0, 10400 - 2060));
    cv::imwrite(folder_ / "left.png", left);
    cv::imwrite(folder_ / "right.png", right);
    ASSERT_EQ(run("--right @right.png --focal 20600 --out @out"), "0 ");
    const cv::Mat millimetres = cv::imread(folder_ / "out/depth.png", cv::IMREAD_UNCHANGED);
    EXPECT_NEAR(millimetres.at<std::uint16_t>(8, 6000), 600, 1);
}

TEST_F(StereoCloudTest, ShowsTheDepthsOfItsColours) {
    ASSERT_EQ(run("--right @right.png --out @out"), "0 ");
    const cv::Mat preview = cv::imread(folder_ / "out/preview.png");
    ASSERT_EQ(preview.cols, 3 * left_.cols);
    ASSERT_GT(preview.rows, left_.rows);
    const cv::Mat legend = preview.rowRange(left_.rows, preview.rows);
    const auto has = [](const cv::Mat& part, const cv::Scalar& color) {
        cv::Mat found;
        cv::inRange(part, color, color, found);
        return cv::countNonZero(found) > 0;
    };
    EXPECT_TRUE(has(legend.col(left_.cols), {0, 0, 128})) << "red for near";
    EXPECT_TRUE(has(legend.col(2 * left_.cols - 1), {128, 0, 0})) << "blue for far";
    EXPECT_TRUE(has(legend.colRange(2 * left_.cols, 3 * left_.cols), {255, 255, 255})) << "the scale";
}

TEST_F(StereoCloudTest, HelpsAndHints) {
    EXPECT_EQ(run("--help"), "0 ");
    EXPECT_EQ(contentOf(folder_ / "stdout").substr(0, 20), "usage: stereo_cloud ");
    const std::string hint = "hint: hardly a pixel has depth: are left and right swapped";
    for (const auto& [offset, hinted] : {std::pair("-2", false), std::pair("-12.1", true)}) {
        EXPECT_EQ(run(std::string("--right @right.png --out @out --offset ") + offset), "0 ");
        EXPECT_EQ(contentOf(folder_ / "stdout").find(hint) != std::string::npos, hinted) << offset;
    }
}

TEST_F(StereoCloudTest, SaysInOneLineWhatIsWrong) {
    std::istringstream cases(contentOf(VELA_TEST_FOLDER "/examples/stereo_cloud_errors.txt"));
    for (std::string options, complaint; std::getline(cases, options) && std::getline(cases, complaint);) {
        EXPECT_EQ(run(options), inFolder("1 stereo_cloud: " + complaint + "\n")) << options;
        EXPECT_EQ(folder_.listing(), "broken.png left.png right.png small.png stderr stdout tiny.png")
            << options;
    }
}

TEST_F(StereoCloudTest, LeavesNothingHalfWrittenBehind) {
    std::filesystem::create_directories(folder_ / "cloud.ply/in the way");
    const std::string wanted = "broken.png cloud.ply left.png right.png small.png stderr stdout tiny.png";
    EXPECT_EQ(run("--right @right.png --out @"), inFolder("1 stereo_cloud: cannot write '@cloud.ply'\n"));
    EXPECT_EQ(folder_.listing(), wanted);
}

TEST_F(StereoCloudTest, KeepsEarlierResultsWhenItFails) {
    const std::vector<std::string> earlier = {"cloud.pcd", "cloud.vtk", "cloud.xyz", "depth.pfm", "left.png"};
    std::filesystem::create_directories(folder_ / "out/preview.png/in the way");
    for (const std::string& name : earlier)
        std::ofstream(folder_ / ("out/" + name)) << "earlier";
    EXPECT_EQ(run("--right @right.png --out @out"),
              inFolder("1 stereo_cloud: cannot write '@out/preview.png'\n"));
    for (const std::string& name : earlier)
        EXPECT_EQ(contentOf(folder_ / ("out/" + name)), "earlier");
    std::filesystem::remove_all(folder_ / "out/preview.png");
    EXPECT_EQ(run("--right @right.png --out @out"), "0 ");
    for (const std::string& name : earlier)
        EXPECT_NE(contentOf(folder_ / ("out/" + name)), "earlier");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out/.earlier"));
}

TEST_F(StereoCloudTest, NeverPublishesACutFile) {
    struct Case {
        const char* options;
        std::vector<const char*> files;  // each is larger than those made before it
    };
    const Case cases[] = {
        {"--offset -2", {"cloud.ply", "cloud.pcd"}},
        {"--offset -12.1", {"depth.png", "depth.pfm", "preview.png"}},  // few points
    };
    for (const auto& [options, files] : cases) {
        const std::string command = std::string("--right @right.png --out @out ") + options;
        ASSERT_EQ(run(command), "0 ");
        std::vector<std::uintmax_t> sizes;
        for (const char* const file : files) {
            sizes.push_back(std::filesystem::file_size(folder_ / (std::string("out/") + file)));
        }
        std::filesystem::remove_all(folder_ / "out");
        for (const std::uintmax_t size : sizes) {
            for (const unsigned missing : {1U, 9U}) {
                EXPECT_EQ(runWithin(size - missing, command), "1") << size << " less " << missing;
                EXPECT_FALSE(std::filesystem::exists(folder_ / "out"));
            }
        }
    }
}

TEST_F(StereoCloudTest, RemovesWhatItBeganWhenItIsStopped) {
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
        std::ofstream(folder_ / "script") << inFolder(started);
        EXPECT_EQ(std::system(inFolder("timeout 60 bash @script").c_str()), 0) << signal;
        EXPECT_FALSE(std::filesystem::exists(folder_ / "out")) << signal;
    }
}

}  // namespace
}  // namespace vela::test

// Runs the example as a user does, on a pair made here.
#include "support/ScratchFolder.hpp"
#include "support/device.hpp"

#include <sys/wait.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

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
    std::string run(const std::string& options) const {
        const std::string command = STEREO_CLOUD " --focal 100 --baseline 60 --left @left.png " + options;
        const int status = std::system(inFolder(command + " >@stdout 2>@stderr").c_str());
        return std::to_string(WEXITSTATUS(status)) + " " + contentOf(folder_ / "stderr");
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

TEST_F(StereoCloudTest, SaysInOneLineWhatIsWrong) {
    std::istringstream cases(contentOf(VELA_TEST_FOLDER "/examples/stereo_cloud_errors.txt"));
    for (std::string options, complaint; std::getline(cases, options) && std::getline(cases, complaint);) {
        EXPECT_EQ(run(options), inFolder("1 stereo_cloud: " + complaint + "\n")) << options;
        EXPECT_EQ(folder_.listing(), "broken.png left.png right.png small.png stderr stdout") << options;
    }
}

TEST_F(StereoCloudTest, LeavesNothingHalfWrittenBehind) {
    std::filesystem::create_directories(folder_ / "cloud.ply/in the way");
    const std::string before = "broken.png cloud.ply left.png right.png small.png";
    EXPECT_EQ(run("--right @right.png --out @"), inFolder("1 stereo_cloud: cannot write '@cloud.ply'\n"));
    EXPECT_EQ(folder_.listing(), before + " stderr stdout");
}

}  // namespace
}  // namespace vela::test

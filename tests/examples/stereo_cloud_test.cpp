// Runs the example as a user does, on a pair made here.
#include "support/ScratchFolder.hpp"
#include "support/device.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <cstdlib>

namespace vela::test {
namespace {

namespace fs = std::filesystem;

constexpr int WIDTH = 320;
constexpr int HEIGHT = 60;
constexpr int DISPARITY = 12;

class StereoCloudTest : public DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        cv::Mat left(HEIGHT, WIDTH, CV_8UC3);
        cv::theRNG().state = 7;
        cv::randu(left, 0, 256);
        cv::Mat right = cv::Mat::zeros(left.size(), left.type());
        left.colRange(DISPARITY, WIDTH).copyTo(right.colRange(0, WIDTH - DISPARITY));
        cv::imwrite(folder_ / "left.png", left);
        cv::imwrite(folder_ / "right.png", right);
        cv::imwrite(folder_ / "small.png", left.rowRange(0, 50));
        std::ofstream(folder_ / "broken.png") << "no picture";
        left_ = left;
    }

    std::string pair() const {
        return "--left " + folder_ / "left.png" + " --right " + folder_ / "right.png";
    }

    /// Runs the example and returns its exit code; what it printed is in `printed_` and `complaint_`.
    int run(const std::string& arguments) {
        const std::string command = std::string(STEREO_CLOUD) + " " + arguments + " >" + folder_ / "stdout" +
                                    " 2>" + folder_ / "stderr";
        const int status = std::system(command.c_str());
        printed_ = contentOf(folder_ / "stdout");
        complaint_ = contentOf(folder_ / "stderr");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    ScratchFolder folder_;
    cv::Mat left_;
    std::string printed_;
    std::string complaint_;
};

TEST_F(StereoCloudTest, MakesACloudOfTheUsersPair) {
    ASSERT_EQ(run(pair() + " --focal 100 --baseline 60 --offset -2 --out " + folder_ / "new/out"), 0)
        << complaint_;
    EXPECT_EQ(complaint_, "");
    EXPECT_NE(printed_.find("cloud Ts 0 vela::Mat of size [320,60], with 4 channels of type float allocated "
                            "on both CPU and GPU (memory owned). Host rows of 5120 bytes."),
              std::string::npos)
        << printed_;
    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(folder_ / "new/out")) {
        files.insert(entry.path().filename());
    }
    EXPECT_EQ(files, (std::set<std::string>{"cloud.pcd", "cloud.ply", "cloud.vtk", "cloud.xyz", "depth.pfm",
                                            "depth.pgm", "depth.png", "left.png", "preview.png"}));

    const cv::Mat depth = cv::imread(folder_ / "new/out/depth.png", cv::IMREAD_UNCHANGED);
    EXPECT_EQ(depth.at<std::uint16_t>(30, 200), 600) << "millimetres";
    EXPECT_EQ(cv::norm(cv::imread(folder_ / "new/out/left.png"), left_, cv::NORM_L1), 0.0);

    std::ifstream ply(folder_ / "new/out/cloud.ply");
    std::string line;
    while (line != "end_header" && std::getline(ply, line)) {
    }
    float x = 0;
    float y = 0;
    float z = 0;
    int red = 0;
    int green = 0;
    int blue = 0;
    int points = 0;
    int good = 0;
    while (ply >> x >> y >> z >> red >> green >> blue) {
        ++points;
        // 100 px * 60 mm / (12 - 2) px is 0.6 m; the camera looks along -Z, Y is up.
        const auto column = std::lround(x / 0.6F * 100.0F + (WIDTH - 1) / 2.0F);
        const auto row = std::lround(-y / 0.6F * 100.0F + (HEIGHT - 1) / 2.0F);
        if (std::abs(z + 0.6F) > 1e-4F || column < 0 || column >= WIDTH || row < 0 || row >= HEIGHT) continue;
        const cv::Vec3b bgr = left_.at<cv::Vec3b>(static_cast<int>(row), static_cast<int>(column));
        if (bgr == cv::Vec3b(static_cast<uchar>(blue), static_cast<uchar>(green), static_cast<uchar>(red)))
            ++good;
    }
    EXPECT_GT(points, WIDTH * HEIGHT / 2);
    EXPECT_GT(good, points * 9 / 10) << "of " << points;
}

TEST_F(StereoCloudTest, SaysInOneLineWhatIsWrong) {
    const std::string good = pair() + " --focal 100 --baseline 60 --out " + folder_ / "out";
    const std::string left =
        "--left " + folder_ / "left.png" + " --focal 100 --baseline 60 --out " + folder_ / "out";
    const std::pair<std::string, const char*> cases[] = {
        {left, "--left and --right"},
        {left + " --right " + folder_ / "missing.png", "cannot read the right picture"},
        {left + " --right " + folder_ / "broken.png", "cannot read the right picture"},
        {left + " --right " + folder_ / "", "cannot read the right picture"},
        {left + " --right " + folder_ / "small.png", "320x50 pixels, the left picture has 320x60"},
        {good + " --truth " + folder_ / "small.png", "320x50"},
        {good + " --focal 0", "--focal must be"},
        {good + " --focal nan", "--focal needs a number"},
        {good + " --baseline -3", "--baseline must be"},
        {good + " --baseline 3mm", "--baseline needs a number"},
        {good + " --offset inf", "--offset needs a number"},
        {good + " --offset", "--offset needs a value"},
        {good + " --wrong 1", "unknown option '--wrong'"},
        {good + " --out " + folder_ / "left.png", "cannot write into the folder"},
        {good + " --out " + folder_ / "left.png/out", "cannot write into the folder"},
        {good + " --out /dev/full/x", "cannot write into the folder"},
    };
    for (const auto& [arguments, text] : cases) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(run(arguments), 1);
        EXPECT_EQ(complaint_.rfind("stereo_cloud: ", 0), 0U) << complaint_;
        EXPECT_NE(complaint_.find(text), std::string::npos) << complaint_;
        EXPECT_EQ(complaint_.find('\n'), complaint_.size() - 1) << complaint_;
        EXPECT_FALSE(fs::exists(folder_ / "out"));
    }
}

TEST_F(StereoCloudTest, LeavesNothingHalfWrittenBehind) {
    fs::create_directories(folder_ / "out/cloud.ply/in the way");
    EXPECT_EQ(run(pair() + " --focal 100 --baseline 60 --out " + folder_ / "out"), 1);
    EXPECT_NE(complaint_.find("cannot write"), std::string::npos) << complaint_;
    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(folder_ / "out")) {
        files.insert(entry.path().filename());
    }
    EXPECT_EQ(files, std::set<std::string>{"cloud.ply"});
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/tool.hpp"
#include "support/ScratchFolder.hpp"
#include "tools/commands/Progress.hpp"
#include "vela_core/version.hpp"
#include "vela_io/io.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vela::tools {
namespace {

using test::contentOf;
using test::ScratchFolder;

struct Outcome {
    int code = 0;
    std::string out;
    std::string err;
};

Outcome run(std::vector<std::string> words) {
    words.insert(words.begin(), "/usr/bin/velatool");
    std::vector<const char*> argv;
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    std::ostringstream out;
    std::ostringstream err;
    const int code = runTool(static_cast<int>(argv.size()), argv.data(), out, err);
    return {code, out.str(), err.str()};
}

class ToolTest : public testing::Test {
protected:
    std::string write(const std::string& name, const std::string& content) {
        std::ofstream(folder_ / name, std::ios::binary) << content;
        return folder_ / name;
    }
    /// Two points of a row of three, in millimetres, with a colour each.
    std::string cloud() {
        return write(
            "a.ply",
            "ply\nformat ascii 1.0\ncomment unit millimeter\ncomment axes IMAGE\nelement vertex 3\n"
            "property float x\nproperty float y\nproperty float z\nproperty uchar red\nproperty uchar green\n"
            "property uchar blue\nend_header\n"
            "100 200 3000 1 2 3\nnan 0 1000 4 5 6\n-50 0 1000 7 8 9\n");
    }
    /// Metres, 2 x 2, the last pixel without a depth.
    std::string depth() {
        Mat mat(2, 2, MAT_TYPE::MAT_32F_C1);
        const float values[] = {1, 2, 4, 0};
        std::copy(values, values + 4, mat.getPtr<float>());
        io::DepthOptions options;
        options.unit = options.targetUnit = UNIT::METER;
        options.scale = 1000;
        EXPECT_TRUE(io::writeDepth(mat, folder_ / "d.png", options).ok());
        return folder_ / "d.png";
    }
    /// The exit code of a command line of the shell, run in the folder; "velatool" is ours.
    int shell(const std::string& command) {
        const std::string line =
            "cd '" + (folder_ / ".") + "' && velatool() { '" VELATOOL "' \"$@\"; } && " + command;
        const int status = std::system(("bash -c '" + quoted(line) + "'").c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    static std::string quoted(const std::string& text) {
        std::string out;
        for (const char c : text)
            out += c == '\'' ? std::string("'\\''") : std::string(1, c);
        return out;
    }

    ScratchFolder folder_;
};

TEST_F(ToolTest, InfoTellsWhatAFileHolds) {
    const std::string path = cloud();
    const Outcome text = run({"info", path});
    EXPECT_EQ(text.code, 0) << text.err;
    EXPECT_EQ(text.out,
              path +
                  "\n  kind          cloud\n  format        PLY\n  encoding      ASCII\n"
                  "  type          32F C4\n  width         3\n  height        1\n  bytes         " +
                  std::to_string(contentOf(path).size()) +
                  "\n  unit          MILLIMETER\n  axes          IMAGE\n"
                  "  x             -50 to 100, 33.33 % NaN\n  y             0 to 200\n  z             1000 "
                  "to 3000\n"
                  "  red           1 to 7\n  green         2 to 8\n  blue          3 to 9\n"
                  "  alpha         255 to 255\n  box           150 x 200 x 2000\n");
    const Outcome json = run({"info", "--json", path, depth()});
    EXPECT_EQ(json.code, 0) << json.err;
    for (const char* const part :
         {"[\n  {\"file\": \"", "\"width\": 3, \"height\": 1", "\"unit\": \"MILLIMETER\"",
          "{\"name\": \"x\", \"min\": -50, \"max\": 100, \"nan\": 1, \"infinite\": 0}",
          "\"box\": {\"min\": [-50, 0, 1000], \"max\": [100, 200, 3000]}}", "\"kind\": \"depth\"",
          "\"scale\": 1000", "{\"name\": \"depth\", \"min\": 1, \"max\": 4, \"nan\": 1, \"infinite\": 0}",
          "}\n]\n"}) {
        EXPECT_NE(json.out.find(part), std::string::npos) << part << "\n" << json.out;
    }
}

TEST_F(ToolTest, ConvertChangesFormatUnitAndAxes) {
    const std::string out = folder_ / "b.xyz";
    const Outcome outcome =
        run({"convert", cloud(), out, "--unit-to", "m", "--axes-to", "opengl", "--no-color"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out.substr(0, outcome.out.rfind(',')),
              "3 points in, 2 written, 1 dropped, " + std::to_string(contentOf(out).size()) + " bytes");
    std::istringstream lines(contentOf(out));
    std::vector<float> numbers;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line[0] == '#' ? "" : line);
        for (float value = 0; words >> value;)
            numbers.push_back(value);
    }
    ASSERT_EQ(numbers.size(), 6U);
    const float expected[] = {0.1F, -0.2F, -3, -0.05F, 0, -1};  // y up, z backward
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_FLOAT_EQ(numbers[i], expected[i]) << i;

    const Outcome grid = run({"convert", cloud(), folder_ / "g.pcd", "--keep-grid", "--encoding", "ascii"});
    EXPECT_EQ(grid.out.substr(0, 34), "3 points in, 3 written, 0 dropped,");
    EXPECT_EQ(run({"diff", cloud(), folder_ / "g.pcd"}).code, 0) << "colours, NaN, unit and axes are kept";
    EXPECT_EQ(run({"convert", depth(), folder_ / "d.pfm", "--unit-to", "cm"}).code, 0);
    Mat back;
    ASSERT_TRUE(io::readDepth(folder_ / "d.pfm", back).ok());
    EXPECT_EQ(back.getPtr<float>()[2], 400);
}

TEST_F(ToolTest, ReadsStandardInputAndWritesStandardOutput) {
    cloud();
    EXPECT_EQ(shell("velatool convert - - --format ply --encoding ascii --keep-grid <a.ply >b.ply 2>said"),
              0);
    EXPECT_EQ(run({"diff", folder_ / "a.ply", folder_ / "b.ply"}).code, 0);
    EXPECT_EQ(contentOf(folder_ / "said").substr(0, 12), "3 points in,") << "not among the points";
    EXPECT_EQ(shell("velatool info a.ply >/dev/full 2>said"), 2);
    EXPECT_EQ(contentOf(folder_ / "said"), "velatool: standard output: cannot be written\n");
    EXPECT_EQ(shell("velatool convert a.ply - --format ply >/dev/full 2>said"), 2);
}

TEST_F(ToolTest, DiffTellsSameDifferentAndTrouble) {
    const std::string a = cloud();
    EXPECT_EQ(run({"diff", a, a}).code, 0);
    EXPECT_EQ(run({"diff", a, a}).out, "");
    std::string other = contentOf(a);
    other.replace(other.find("-50 0 1000 7"), 12, "-50 3 1004 6");
    const std::string b = write("b.ply", other);
    const Outcome different = run({"diff", a, b});
    EXPECT_EQ(different.code, 1);
    EXPECT_EQ(different.out,
              "1 of 3 points are further apart than 0\nlargest distance: 5 at column 2, row 0\n"
              "1 points have another colour\n");
    EXPECT_EQ(run({"diff", a, b, "--tolerance", "5"}).out, "1 points have another colour\n");
    std::string moved = contentOf(a);
    moved.replace(moved.find("nan"), 3, "1  ");
    EXPECT_EQ(run({"diff", a, write("c.ply", moved), "--tolerance", "1e9"}).code, 1)
        << "a point against none";
    moved.replace(moved.find("IMAGE"), 5, "RIGHT_HANDED_Y_UP_AND_Z_BACKWARD");
    const std::string axes = "axes: RIGHT_HANDED_Y_UP_AND_Z_BACKWARD and IMAGE\n";
    EXPECT_EQ(run({"diff", write("c.ply", moved), a, "--tolerance", "1e9"}).out.substr(0, axes.size()), axes);
    EXPECT_EQ(run({"diff", a, depth()}).code, 2);
    EXPECT_EQ(run({"diff", a, folder_ / "none"}).code, 2);
}

TEST_F(ToolTest, DepthBecomesACloudByThePinholeModel) {
    const std::string out = folder_ / "c.ply";
    const std::string picture = folder_ / "p.png";
    Mat colors(2, 2, MAT_TYPE::MAT_8U_C3);
    colors.setTo(Vector3<unsigned char>(30, 20, 10));
    ASSERT_EQ(colors.write(picture), ERROR_CODE::SUCCESS);
    const Outcome outcome = run({"depth2cloud", depth(), out, "--fx", "2", "--fy", "4", "--cx", "0.5", "--cy",
                                 "1", "--color", picture, "--unit-to", "mm"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out.substr(0, 27), "4 pixels, 3 points written,");
    Mat cloud;
    io::CloudInfo info;
    ASSERT_TRUE(io::readCloud(out, cloud, &info).ok());
    EXPECT_EQ(info.axes, COORDINATE_SYSTEM::IMAGE);
    EXPECT_EQ(info.unit, UNIT::MILLIMETER);
    ASSERT_EQ(cloud.width * cloud.height, 3U);
    const auto* const points = cloud.getPtr<const Vector4<float>>();
    const float expected[][3] = {{-250, -250, 1000}, {500, -500, 2000}, {-1000, 0, 4000}};
    for (int i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_FLOAT_EQ(points[i][k], expected[i][k]) << i << " " << k;
    }
    const unsigned char rgb[] = {10, 20, 30};
    EXPECT_EQ(std::memcmp(&points[0].w, rgb, 3), 0);
}

TEST_F(ToolTest, ViewDrawsPicturesAndPages) {
    for (const std::string& in : {cloud(), depth()}) {
        const Outcome outcome =
            run({"view", in, "-o", folder_ / "x.png", "--size", "400x300", "--views", "front,top"});
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(contentOf(folder_ / "x.png").substr(1, 3), "PNG");
    }
    EXPECT_EQ(run({"view", cloud(), "-o", folder_ / "x.html", "--max-points", "1"}).out.substr(0, 18),
              "1 of 3 points show");
    EXPECT_EQ(contentOf(folder_ / "x.html").substr(0, 15), "<!doctype html>");
}

TEST_F(ToolTest, SaysEachMistakeInOneLineAndWritesNothing) {
    const std::string a = cloud();
    const std::string d = depth();
    const std::string bare = write("bare.xyz", "1 2 3\n");
    const std::string cut = write("cut.ply", contentOf(a).substr(0, contentOf(a).size() - 8));
    const std::string small = folder_ / "small.png";
    ASSERT_EQ(Mat(1, 2, MAT_TYPE::MAT_8U_C3).write(small), ERROR_CODE::SUCCESS);
    const std::string cutPicture = write("cut.png", contentOf(d).substr(0, contentOf(d).size() - 30));
    const std::string out = folder_ / "out.ply";
    const std::string units = " is none of mm, cm, m, in, ft, millimeter, centimeter, meter, inch, foot";
    const std::string before = folder_.listing();
    const struct {
        std::vector<std::string> words;
        std::string text;  ///< how the line goes on; with "..." only its start
    } rows[] = {
        {{}, "A subcommand is required"},
        {{"shrink"}, "..."},
        {{"info"}, "FILE is required"},
        {{"info", folder_ / "none.ply"}, (folder_ / "none.ply") + ": ..."},
        {{"info", cut}, cut + ":..."},
        {{"info", a, "--depht"}, "..."},
        {{"convert", a}, "OUT is required"},
        {{"convert", a, out, "--unit-to", "mile"}, "--unit-to: 'mile'" + units},
        {{"convert", a, out, "--unit-from", "yd"}, "--unit-from: 'yd'" + units},
        {{"convert", a, out, "--axes-to", "up"}, "--axes-to: 'up' is none of image, opengl, ros, ..."},
        {{"convert", a, out, "--encoding", "b"},
         "--encoding: 'b' is none of ascii, binary, big-endian, compressed"},
        {{"convert", a, out, "--format", "stl"}, "--format: 'stl' is none of xyz, pcd, ply, vtk"},
        {{"convert", d, out, "--rows-to", "left"}, "--rows-to: 'left' is none of top, bottom"},
        {{"convert", d, folder_ / "x.pfm", "--axes-to", "ros"}, "--axes-to: a depth map has no axes"},
        {{"convert", bare, out, "--unit-to", "m"}, bare + ": states no unit; say --unit-from"},
        {{"convert", bare, out, "--axes-to", "ros"}, bare + ": states no axes; say --axes-from"},
        {{"convert", a, folder_ / "x.doc"}, (folder_ / "x.doc") + ": ..."},
        {{"convert", a, folder_ / "none/x.ply"}, (folder_ / "none/x.ply") + ": ..."},
        {{"view", a, "-o", folder_ / "x.gif"}, (folder_ / "x.gif") + ": a picture is a .png or .html file"},
        {{"view", d, "-o", folder_ / "x.html"},
         d + ": a depth map has no page; draw a PNG or use depth2cloud"},
        {{"view", a, "-o", folder_ / "x.png", "--size", "12"}, "--size: '12' is not like 1280x720"},
        {{"view", a, "-o", folder_ / "x.png", "--size", "1x2x"}, "--size: '1x2x' is not like 1280x720"},
        {{"view", a, "-o", folder_ / "x.png", "--color", "red"},
         "--color: 'red' is none of rgb, depth, height"},
        {{"view", a, "-o", folder_ / "x.png", "--views", "down"},
         "--views: 'down' is none of front, top, left, right, back"},
        {{"diff", a, a, "--tolerance", "-1"}, "--tolerance: must not be negative"},
        {{"diff", a, d}, "a cloud and a depth map cannot be compared"},
        {{"depth2cloud", d, out, "--fx", "0", "--fy", "1", "--cx", "0", "--cy", "0"},
         "--fx and --fy: must be above 0"},
        {{"depth2cloud", a, out, "--fx", "1", "--fy", "1", "--cx", "0", "--cy", "0"},
         a + ": a cloud, not a depth map"},
        {{"depth2cloud", d, out, "--fx", "1", "--fy", "1", "--cx", "0", "--cy", "0", "--color", small},
         small + ": 1 x 2 pixels, but the depth map has 2 x 2"},
        {{"depth2cloud", d, out, "--fx", "1", "--fy", "1", "--cx", "0", "--cy", "0", "--color", cutPicture},
         cutPicture + ": not a PNG picture that can be read: ..."},
        {{"depth2cloud", d, out, "--fx", "1", "--fy", "1", "--cx", "0", "--cy", "0", "--color", a},
         a + ": not a PNG picture that can be read: ..."}};
    for (const auto& row : rows) {
        const Outcome outcome = run(row.words);
        const std::string line = "velatool: " + row.text;
        const bool open = line.size() > 3 && line.compare(line.size() - 3, 3, "...") == 0;
        EXPECT_EQ(outcome.code, 2) << line;
        EXPECT_EQ(outcome.out, "") << line;
        EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << "one line: " << outcome.err;
        EXPECT_EQ(open ? outcome.err.substr(0, line.size() - 3) : outcome.err,
                  open ? line.substr(0, line.size() - 3) : line + "\n");
    }
    EXPECT_EQ(folder_.listing(), before);
}

TEST_F(ToolTest, StartsWithoutOpenCv) {
    EXPECT_EQ(shell("ldd '" VELATOOL "' >libraries && ! grep opencv libraries"), 0);
}

TEST_F(ToolTest, CompletionOffersTheOptionsOfEachCommand) {
    EXPECT_EQ(run({"--version"}).out, "velatool " VELA_VERSION "\n");
    for (const std::string command : {"info", "convert", "view", "diff", "depth2cloud"}) {
        EXPECT_EQ(shell("source '" VELA_COMPLETION "' && COMP_WORDS=(velatool " + command +
                        " --) COMP_CWORD=2 && _velatool && printf \"%s\\n\" \"${COMPREPLY[@]}\" >offered"),
                  0);
        const auto optionsIn = [](const std::string& text) {
            std::set<std::string> options;
            std::istringstream words(text);
            for (std::string word; words >> word;) {
                const std::size_t at = word.find("--");
                if (at == 0 || (at == 3 && word[2] == ',')) options.insert(word.substr(at));
            }
            return options;
        };
        std::set<std::string> offered = optionsIn(contentOf(folder_ / "offered"));
        offered.erase("--help-all");
        std::set<std::string> known;
        std::istringstream help(run({command, "--help"}).out);
        for (std::string line; std::getline(help, line);) {
            known.merge(optionsIn(line.substr(0, 26)));  // left of the descriptions
        }
        known.erase("--help-all");
        EXPECT_EQ(offered, known) << command;
    }
}

TEST(ProgressBar, ComesAfterAWhileAndGoes) {
    std::ostringstream err;
    {
        ProgressBar bar(err, std::chrono::milliseconds(0));
        const io::Progress progress = bar.callback();
        EXPECT_TRUE(progress(1, 4));
        EXPECT_TRUE(progress(1, 4));
        EXPECT_EQ(err.str(), "\r[##########                              ] 25 %") << "once";
        EXPECT_TRUE(progress(5, 0)) << "of nobody knows how much";
    }
    EXPECT_EQ(err.str().substr(err.str().size() - 50), "\r" + std::string(48, ' ') + "\r");
    std::ostringstream quiet;
    {
        ProgressBar patient(quiet, std::chrono::hours(1));
        EXPECT_TRUE(patient.callback()(1, 4));
        ProgressBar elsewhere(quiet);
        EXPECT_TRUE(elsewhere.callback()(1, 4));
    }
    EXPECT_EQ(quiet.str(), "");
}

}  // namespace
}  // namespace vela::tools

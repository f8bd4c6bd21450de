// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/tool.hpp"
#include "support/ScratchFolder.hpp"
#include "tools/commands/Progress.hpp"
#include "vela_core/version.hpp"
#include "vela_io/io.hpp"

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vela::tools {
namespace {

using namespace test;

struct Outcome {
    int code = 0;
    std::string out;
    std::string err;
};

const std::string HEADER =
    "ply\nformat ascii 1.0\ncomment unit millimeter\ncomment axes IMAGE\nelement vertex 3\n"
    "property float x\nproperty float y\nproperty float z\nproperty uchar red\nproperty uchar green\n"
    "property uchar blue\nend_header\n";

class ToolTest : public testing::Test {
protected:
    void write(const std::string& name, const std::string& content) { put(folder_ / name, content); }
    void SetUp() override {
        write("a.ply", HEADER + "100 200 3000 1 2 3\nnan 0 1000 4 5 6\n-50 0 1000 7 8 9\n");
        // Metres, 2 x 2, the last pixel without a depth.
        float values[] = {1, 2, 4, 0};
        const Mat mat(2, 2, MAT_TYPE::MAT_32F_C1, reinterpret_cast<unsigned char*>(values), 8, MEM::CPU);
        io::DepthOptions options;
        options.unit = options.targetUnit = UNIT::METER;
        options.scale = 1000;
        EXPECT_TRUE(io::writeDepth(mat, folder_ / "d.png", options).ok());
    }
    /// Runs a command line in this process.
    Outcome run(const std::string& line) const {
        std::istringstream split("/usr/bin/velatool " + folder_.expand(line));
        const std::vector<std::string> words{std::istream_iterator<std::string>(split), {}};
        std::vector<const char*> argv(words.size());
        std::transform(words.begin(), words.end(), argv.begin(),
                       [](const std::string& word) { return word.c_str(); });
        std::ostringstream out;
        std::ostringstream err;
        const int code = runTool(static_cast<int>(argv.size()), argv.data(), out, err);
        return {code, out.str(), err.str()};
    }
    /// Runs a shell command in the folder, with our "velatool"; returns its exit code.
    int shell(const std::string& command) {
        write("script", "cd \"${0%/*}\" && velatool() { '" VELATOOL "' \"$@\"; } && " + command);
        const int status = std::system(folder_.expand("bash '@script'").c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    ScratchFolder folder_;
};

TEST_F(ToolTest, InfoDescribesTheFile) {
    EXPECT_EQ(run("info @a.ply").out,
              folder_.expand("@a.ply\n  kind          cloud\n  format        PLY\n  encoding      ASCII\n"
                             "  type          32F C4\n  width         3\n  height        1\n"
                             "  bytes         ") +
                  std::to_string(contentOf(folder_ / "a.ply").size()) +
                  "\n  unit          MILLIMETER\n  axes          IMAGE\n"
                  "  x             -50 to 100, 33.33 % NaN\n  y             0 to 200\n"
                  "  z             1000 to 3000\n  red           1 to 7\n  green         2 to 8\n"
                  "  blue          3 to 9\n  alpha         255 to 255\n"
                  "  box           150 x 200 x 2000\n");
    const Outcome json = run("info --json @a.ply @d.png");
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
    const Outcome outcome = run("convert @a.ply @b.xyz --unit-to m --axes-to opengl --no-color");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out.substr(0, outcome.out.rfind(',')),
              "3 points in, 2 written, 1 dropped, " + std::to_string(contentOf(folder_ / "b.xyz").size()) +
                  " bytes");
    Mat back;
    ASSERT_TRUE(io::readCloud(folder_ / "b.xyz", back).ok());
    ASSERT_EQ(back.dataType, MAT_TYPE::MAT_32F_C3) << "no colours";
    ASSERT_EQ(back.width, 2U);
    const float expected[] = {0.1F, -0.2F, -3, -0.05F, 0, -1};  // y up, z backward
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_FLOAT_EQ(back.getPtr<float>()[i], expected[i]) << i;

    EXPECT_EQ(run("convert @a.ply @g.pcd --keep-grid --encoding ascii").out.substr(0, 34),
              "3 points in, 3 written, 0 dropped,");
    EXPECT_EQ(run("diff @a.ply @g.pcd").code, 0) << "colours, NaN, unit and axes are kept";
    EXPECT_EQ(run("convert @d.png @d.pfm --unit-to cm").code, 0);
    ASSERT_TRUE(io::readDepth(folder_ / "d.pfm", back).ok());
    EXPECT_EQ(back.getPtr<float>()[2], 400);
}

TEST_F(ToolTest, ReadsStandardInputAndWritesStandardOutput) {
    EXPECT_EQ(shell("velatool convert - - --format ply --encoding ascii --keep-grid <a.ply >b.ply 2>said"),
              0);
    EXPECT_EQ(run("diff @a.ply @b.ply").code, 0);
    EXPECT_EQ(contentOf(folder_ / "said").substr(0, 12), "3 points in,") << "not among the points";
    EXPECT_EQ(shell("velatool info a.ply >/dev/full 2>said"), 2);
    EXPECT_EQ(contentOf(folder_ / "said"), "velatool: standard output: cannot be written\n");
    EXPECT_EQ(shell("velatool convert a.ply - --format ply >/dev/full 2>said"), 2);
}

TEST_F(ToolTest, DiffExitCodeTellsSameDifferentAndError) {
    const std::string a = contentOf(folder_ / "a.ply");
    const auto with = [&](std::string text, const std::string& old, const std::string& now) {
        return text.replace(text.find(old), old.size(), now);
    };
    write("b.ply", with(a, "-50 0 1000 7", "-50 3 1004 6"));
    const std::string moved = with(a, "nan", "1  ");
    write("c.ply", moved);
    write("d.ply", with(moved, "IMAGE", "RIGHT_HANDED_Y_UP_AND_Z_BACKWARD"));
    const struct {
        const char* line;
        int code;
        std::string out;  ///< how the output begins
    } rows[] = {{"@a.ply @a.ply", 0, ""},
                {"@a.ply @b.ply", 1,
                 "1 of 3 points are further apart than 0\nlargest distance: 5 at column 2, row 0\n"
                 "1 points have another colour\n"},
                {"@a.ply @b.ply --tolerance 5", 1, "1 points have another colour\n"},
                {"@a.ply @c.ply --tolerance 1e9", 1, ""},  // a point is compared with none
                {"@d.ply @a.ply --tolerance 1e9", 1, "axes: RIGHT_HANDED_Y_UP_AND_Z_BACKWARD and IMAGE\n"},
                {"@a.ply @d.png", 2, ""},
                {"@a.ply @none", 2, ""}};
    for (const auto& row : rows) {
        const Outcome outcome = run(std::string("diff ") + row.line);
        EXPECT_EQ(outcome.code, row.code) << row.line;
        EXPECT_EQ(outcome.out.substr(0, row.out.size()), row.out) << row.line;
        EXPECT_EQ(outcome.out.empty(), row.code != 1) << row.line;
    }
}

TEST_F(ToolTest, DepthBecomesACloudByThePinholeModel) {
    Mat colors(2, 2, MAT_TYPE::MAT_8U_C3);
    colors.setTo(Vector3<unsigned char>(30, 20, 10));
    ASSERT_EQ(colors.write(folder_ / "p.png"), ERROR_CODE::SUCCESS);
    const Outcome outcome =
        run("depth2cloud @d.png @c.ply --fx 2 --fy 4 --cx 0.5 --cy 1 --color @p.png --unit-to mm");
    EXPECT_EQ(outcome.out.substr(0, 27), "4 pixels, 3 points written,") << outcome.err;
    write("wanted.ply", HEADER + "-250 -250 1000 10 20 30\n500 -500 2000 10 20 30\n-1000 0 4000 10 20 30\n");
    EXPECT_EQ(run("diff @c.ply @wanted.ply --tolerance 1e-3").out, "");
}

TEST_F(ToolTest, ViewDrawsPicturesAndPages) {
    for (const std::string in : {"@a.ply", "@d.png"}) {
        const Outcome outcome = run("view " + in + " -o @x.png --size 400x300 --views front,top");
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(contentOf(folder_ / "x.png").substr(1, 3), "PNG");
    }
    EXPECT_EQ(run("view @a.ply -o @x.html --max-points 1").out.substr(0, 18), "1 of 3 points show");
    EXPECT_EQ(contentOf(folder_ / "x.html").substr(0, 15), "<!doctype html>");
}

TEST_F(ToolTest, ReportsEachMistakeInOneLineAndWritesNothing) {
    write("bare.xyz", "1 2 3\n");
    const std::string cloud = contentOf(folder_ / "a.ply");
    write("cut.ply", cloud.substr(0, cloud.size() - 8));
    const std::string picture = contentOf(folder_ / "d.png");
    write("cut.png", picture.substr(0, picture.size() - 30));
    ASSERT_EQ(Mat(1, 2, MAT_TYPE::MAT_8U_C3).write(folder_ / "small.png"), ERROR_CODE::SUCCESS);
    const std::string before = folder_.listing();
    std::istringstream rows(contentOf(VELA_MISTAKES));
    for (std::string row; std::getline(rows, row);) {
        const std::size_t at = row.find("=> ");
        if (row[0] == '#') continue;
        const std::string line = folder_.expand("velatool: " + row.substr(at + 3));
        const bool open = line.compare(line.size() - 3, 3, "...") == 0;
        const Outcome outcome = run(row.substr(0, at));
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
    EXPECT_EQ(run("--version").out, "velatool " VELA_VERSION "\n");
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
        std::istringstream help(run(command + " --help").out);
        for (std::string line; std::getline(help, line);) {
            known.merge(optionsIn(line.substr(0, 26)));  // left of the descriptions
        }
        known.erase("--help-all");
        EXPECT_EQ(offered, known) << command;
    }
}

TEST(ProgressBar, AppearsAfterADelayAndIsErased) {
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

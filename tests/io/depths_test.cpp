// SPDX-License-Identifier: Apache-2.0
#include "support/ScratchFolder.hpp"
#include "support/geometry.hpp"
#include "vela_io/io.hpp"

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace vela::io {
namespace {

using namespace test;

/// A depth map of one row of the given depths.
struct Row {
    explicit Row(std::vector<float> values) : depths(std::move(values)) {
        mat = Mat(depths.size(), 1, MAT_TYPE::MAT_32F_C1, reinterpret_cast<unsigned char*>(depths.data()),
                  depths.size() * sizeof(float), MEM::CPU);
    }
    std::vector<float> depths;
    Mat mat;
};

std::vector<float> valuesOf(const Mat& mat) {
    const float* const first = mat.getPtr<float>();
    return {first, first + mat.width * mat.height};
}

class DepthsTest : public testing::Test {
protected:
    /// Writes a file and reads it; leaves the reports in `written_`, `read_` and `info_`.
    std::vector<float> exchanged(const Mat& depth, const std::string& name, const DepthOptions& options = {},
                                 const DepthReadOptions& reading = {}) {
        written_ = writeDepth(depth, folder_ / name, options);
        EXPECT_TRUE(written_.ok()) << written_.text;
        Mat back;
        read_ = readDepth(folder_ / name, back, reading, &info_);
        EXPECT_TRUE(read_.ok()) << read_.text;
        return valuesOf(back);
    }
    ScratchFolder folder_;
    Result written_;
    Result read_;
    DepthInfo info_;
};

TEST_F(DepthsTest, FloatsComeBackBitForBitAndOtherwiseAsSamples) {
    std::mt19937 random(3);
    constexpr std::size_t WIDTH = 83;
    constexpr std::size_t HEIGHT = 57;
    constexpr std::size_t STEP = WIDTH * 4 + 20;
    std::vector<unsigned char> bytes(STEP * HEIGHT);
    Mat depth(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C1, bytes.data(), STEP, MEM::CPU);
    const auto at = [&](std::size_t x, std::size_t y) {
        return reinterpret_cast<float*>(bytes.data() + y * STEP) + x;
    };
    const struct {
        const char* name;
        ENCODING encoding;
        bool samples;
    } kinds[] = {{"a.png", ENCODING::BINARY, true},
                 {"a.pgm", ENCODING::BINARY, true},
                 {"a.pgm", ENCODING::ASCII, true},
                 {"a.pfm", ENCODING::BINARY, false},
                 {"a.npy", ENCODING::BINARY, false}};
    for (const auto& kind : kinds) {
        SCOPED_TRACE(std::string(kind.name) + " " + toStdString(toString(kind.encoding)));
        for (std::size_t i = 0; i < WIDTH * HEIGHT; ++i) {
            const auto bits = static_cast<std::uint32_t>(random());
            float value = 0;
            std::memcpy(&value, &bits, sizeof value);
            if (kind.samples)
                value = i % 7 == 0 ? NAN : std::uniform_real_distribution<float>(0.1F, 65)(random);
            *at(i % WIDTH, i / WIDTH) = value;
        }
        DepthOptions options;
        options.encoding = kind.encoding;
        options.unit = UNIT::METER;
        const std::vector<float> back = exchanged(depth, kind.name, options);
        EXPECT_EQ(written_.bytes, contentOf(folder_ / kind.name).size());
        ASSERT_EQ(back.size(), WIDTH * HEIGHT);
        ASSERT_EQ(info_.width, WIDTH);
        EXPECT_EQ(info_.encoding, kind.encoding);
        EXPECT_EQ(read_.dropped, written_.dropped);
        for (std::size_t i = 0; i < WIDTH * HEIGHT; ++i) {
            const float in = *at(i % WIDTH, i / WIDTH);
            const float out = back[i];
            if (!kind.samples) {
                // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): the bits count
                ASSERT_EQ(std::memcmp(&in, &out, sizeof in), 0) << i;
            } else if (std::isnan(in)) {
                ASSERT_TRUE(std::isnan(out)) << i;
            } else {
                ASSERT_NEAR(out, in, 0.000501F) << i;  // samples are millimetres
            }
        }
        if (kind.samples) {
            EXPECT_EQ(info_.unit, UNIT::METER);
            EXPECT_EQ(info_.scale, 1000);
            EXPECT_EQ(info_.invalid, 0);
        }
    }
}

TEST_F(DepthsTest, RoundsToTheNearestSampleAndCountsTheRest) {
    Row row({0, -0.0F, NAN, INFINITY, -INFINITY, 0.0004F, 0.0006F, 1.2344F, 65.535F, 65.5354F, 65.5356F,
             1e30F, -0.0004F, -2});
    DepthOptions options;
    options.scale = 1000;
    for (const char* const name : {"a.png", "a.pgm"}) {
        const Result refused = writeDepth(row.mat, folder_ / name, options);
        EXPECT_EQ(refused.code, ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
        EXPECT_EQ(toStdString(refused.text),
                  folder_ / name +
                      ": 5 depths have no sample from 0 to 65535 at 1000 samples per unit, the first in "
                      "row 0: change 'scale' or set 'allowClipping'");
        EXPECT_EQ(refused.clipped, 5U);
        EXPECT_FALSE(std::filesystem::exists(folder_ / name));

        options.allowClipping = true;
        expectNear(
            exchanged(row.mat, name, options),
            {NAN, NAN, NAN, NAN, NAN, NAN, 0.001F, 1.234F, 65.535F, 65.535F, 65.535F, 65.535F, NAN, NAN},
            0.0F);
        EXPECT_EQ(written_.clipped, 5U);
        EXPECT_EQ(written_.dropped, 5U);
        options.allowClipping = false;
    }
}

TEST_F(DepthsTest, AnInvalidSampleOtherThanZeroIsStatedAndReserved) {
    Row row({0, NAN, 65534, 65535, 1});
    DepthOptions options;
    options.invalid = 65535;
    options.allowClipping = true;
    expectNear(exchanged(row.mat, "a.png", options), {NAN, NAN, 65534, 65534, 1}, 0.0F);
    EXPECT_EQ(written_.clipped, 1U);
    EXPECT_EQ(info_.invalid, 65535);
}

TEST_F(DepthsTest, UnitsAreConvertedInBothDirections) {
    Row row({1.5F, 0.25F, NAN});
    for (const char* const name : {"a.png", "a.pgm", "a.pfm", "a.npy"}) {
        SCOPED_TRACE(name);
        DepthOptions options;
        options.unit = UNIT::METER;
        options.targetUnit = UNIT::CENTIMETER;
        DepthReadOptions reading;
        reading.unit = UNIT::CENTIMETER;  // PFM and NumPy files do not state it
        expectNear(exchanged(row.mat, name, options, reading), {150, 25, NAN}, 0.0F);
        EXPECT_EQ(info_.unit, UNIT::CENTIMETER);
        reading.targetUnit = UNIT::MILLIMETER;
        expectNear(exchanged(row.mat, name, options, reading), {1500, 250, NAN}, 0.0F);
        EXPECT_EQ(info_.unit, UNIT::MILLIMETER);
    }
    DepthReadOptions reading;
    reading.targetUnit = UNIT::METER;
    EXPECT_EQ(toStdString(readDepth(folder_ / "a.pfm", row.mat, reading).text),
              folder_ / "a.pfm: the unit is not known: give the option 'unit' to convert it");
}

std::string bytesOf(std::initializer_list<int> values) {
    return {values.begin(), values.end()};
}

TEST_F(DepthsTest, ReadsDepthMapsOfOtherPrograms) {
    struct Habit {
        const char* name;
        std::string content;
        std::vector<float> wanted;
        ROW_ORDER rows = ROW_ORDER::BOTTOM_FIRST;
    };
    const std::string pair = bytesOf({0, 0, 0x80, 0x3f, 0, 0, 0, 0x40});  // 1 and 2
    const Habit habits[] = {
        {"8 bits", "P5 2 1 255 " + bytesOf({7, 200}), {7, 200}},
        {"comments, tabs and returns",
         "P2\r\n# made by hand\r\n2\t1 # unit meter\r\n# scale 10\r\n9\r\n5\r\n9\r\n",
         {0.5F, 0.9F}},
        {"16 bits", "P5\n1 2\n300\n" + bytesOf({1, 2, 0, 9}), {258, 9}},
        {"big-endian floats", "Pf\n1 1\n1.0\n" + bytesOf({0x3f, 0x80, 0, 0}), {1}},
        {"floats in one line, the lowest row first", "Pf 1 2 -2.5e0 " + pair, {2, 1}},
        {"the highest row first", "Pf 1 2 -1 " + pair, {1, 2}, ROW_ORDER::TOP_FIRST},
    };
    for (const Habit& habit : habits) {
        SCOPED_TRACE(habit.name);
        std::ofstream(folder_ / "a") << habit.content;
        EXPECT_EQ(kindOf(folder_ / "a"), FILE_KIND::DEPTH);
        Mat back;
        DepthReadOptions reading;
        reading.rows = habit.rows;
        const Result read = readDepth(folder_ / "a", back, reading);
        ASSERT_TRUE(read.ok()) << read.text;
        expectNear(valuesOf(back), habit.wanted, 0.0F);
    }
}

TEST_F(DepthsTest, DamagedFilesAreRefusedAndLeaveTheMat) {
    Row row({1, 2, 3});
    ASSERT_TRUE(writeDepth(row.mat, folder_ / "a.png").ok());
    const std::string png = contentOf(folder_ / "a.png");
    std::string flipped = png;
    flipped[png.size() - 20] ^= 1;
    std::string huge = png;
    huge[16] = 0x7f;  // width
    const std::pair<std::string, std::string> cases[] = {
        {"", "not a depth file of a known format"},
        {"PF\n1 1\n-1\n123456789012", "a picture of three channels is not a depth map"},
        {"Pf\n2 2\n-1\n123456789012345", "the file is too short for its 2 x 2 pixels"},
        {"Pf\n1 1\n0\n1234", ":3: the scale is 0"},
        {"Pf\n-1 1\n-1\n1234", ":2: a whole number is expected"},
        {"P5\n4294967295 4294967295\n255\n1234",
         "the file is too short for its 4294967295 x 4294967295 pixels"},
        {"P5\n2 1\n65536\n1234", ":3: an impossible largest sample"},
        {"P5\n2 1", ":2: the header has no end"},
        {"P2\n2 1\n9\n1 10\n", ":4: a sample above the largest"},
        {"P2\n2 1\n9\n1 x\n", ":4: a number is expected"},
        {png.substr(0, 30), "the file ends too early"},
        {png.substr(0, png.size() - 13), "the file ends too early"},
        {flipped, "not a sound PNG file: IDAT: incorrect data check"},
        {huge, "not a sound PNG file: IHDR: CRC error"},
    };
    for (const auto& [content, text] : cases) {
        std::ofstream(folder_ / "b", std::ios::binary) << content;
        Mat mat(1, 1, MAT_TYPE::MAT_8U_C1);
        const Result read = readDepth(folder_ / "b", mat);
        EXPECT_EQ(read.code, ERROR_CODE::FAILURE);
        EXPECT_EQ(toStdString(read.text), folder_ / "b" + (text[0] == ':' ? text : ": " + text));
        EXPECT_EQ(mat.width, 1U);
    }
}

TEST_F(DepthsTest, OptionsThatNoFileCanHaveAreRefused) {
    const Row row({1});
    const struct {
        const char* name;
        const char* text;
        void (*change)(DepthOptions&);
    } refusals[] = {
        {"a.tif", "the extension names no depth format: .png, .pfm, .pgm, .npy", [](auto&) {}},
        {"a", "an unknown depth format", [](auto& o) { o.format = static_cast<DEPTH_FILE>(4); }},
        {"a.png", "PNG files have no encoding ASCII", [](auto& o) { o.encoding = ENCODING::ASCII; }},
        {"a.pgm", "PGM files have no encoding BINARY_BIG_ENDIAN",
         [](auto& o) { o.encoding = ENCODING::BINARY_BIG_ENDIAN; }},
        {"a.npy", "NPY files have no scale", [](auto& o) { o.scale = 2; }},
        {"a.png", "the scale is not above 0", [](auto& o) { o.scale = 0; }},
        {"a.png", "the compression must be -1 or 0 to 9", [](auto& o) { o.compression = 10; }},
        {"a.png", "the compression must be -1 or 0 to 9", [](auto& o) { o.compression = -2; }},
        {"a.pfm", "an unknown order of rows", [](auto& o) { o.rows = static_cast<ROW_ORDER>(2); }},
        {"a.png", "the invalid value is not a sample from 0 to 65535", [](auto& o) { o.invalid = 0.5; }},
        {"a.png", "the unit is not known: give the option 'unit' to convert it",
         [](auto& o) { o.targetUnit = UNIT::METER; }}};
    for (const auto& [name, text, change] : refusals) {
        DepthOptions options;
        change(options);
        const Result refused = writeDepth(row.mat, folder_ / name, options);
        EXPECT_EQ(refused.code, ERROR_CODE::INVALID_FUNCTION_PARAMETERS) << text;
        EXPECT_EQ(toStdString(refused.text), folder_ / name + ": " + text);
    }
    EXPECT_EQ(folder_.listing(), "");
}

}  // namespace
}  // namespace vela::io

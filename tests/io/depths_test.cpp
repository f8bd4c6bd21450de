// SPDX-License-Identifier: Apache-2.0
#include "support/ScratchFolder.hpp"
#include "vela_io/io.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace vela::io {
namespace {

using test::contentOf;
using test::ScratchFolder;

constexpr float NAN_F = std::numeric_limits<float>::quiet_NaN();
constexpr float INF_F = std::numeric_limits<float>::infinity();

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

void expectSame(const std::vector<float>& seen, const std::vector<float>& wanted) {
    ASSERT_EQ(seen.size(), wanted.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_TRUE(seen[i] == wanted[i] || (std::isnan(seen[i]) && std::isnan(wanted[i])))
            << i << ": " << seen[i] << ", wanted " << wanted[i];
    }
}

TEST(DepthsTest, FloatsComeBackBitForBitAndOtherwiseAsSamples) {
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
                value = i % 7 == 0 ? NAN_F : std::uniform_real_distribution<float>(0.1F, 65)(random);
            *at(i % WIDTH, i / WIDTH) = value;
        }
        const ScratchFolder folder;
        DepthOptions options;
        options.encoding = kind.encoding;
        options.unit = UNIT::METER;
        const Result written = writeDepth(depth, folder / kind.name, options);
        ASSERT_TRUE(written.ok()) << written.text;
        EXPECT_EQ(written.bytes, contentOf(folder / kind.name).size());
        Mat back;
        DepthInfo info;
        const Result read = readDepth(folder / kind.name, back, &info);
        ASSERT_TRUE(read.ok()) << read.text;
        ASSERT_EQ(back.width, WIDTH);
        ASSERT_EQ(back.height, HEIGHT);
        EXPECT_EQ(info.encoding, kind.encoding);
        EXPECT_EQ(read.dropped, written.dropped);
        for (std::size_t i = 0; i < WIDTH * HEIGHT; ++i) {
            const float in = *at(i % WIDTH, i / WIDTH);
            const float out = back.getPtr<float>()[i];
            if (!kind.samples) {
                ASSERT_EQ(std::memcmp(&in, &out, sizeof in), 0) << i;
            } else if (std::isnan(in)) {
                ASSERT_TRUE(std::isnan(out)) << i;
            } else {
                ASSERT_NEAR(out, in, 0.000501F) << i;  // samples are millimetres
            }
        }
        if (kind.samples) {
            EXPECT_EQ(info.unit, UNIT::METER);
            EXPECT_EQ(info.scale, 1000);
            EXPECT_EQ(info.invalid, 0);
        }
    }
}

TEST(DepthsTest, SamplesAreNearestAndWhatHasNoneIsCounted) {
    Row row({0, -0.0F, NAN_F, INF_F, -INF_F, 0.0004F, 0.0006F, 1.2344F, 65.535F, 65.5354F, 65.5356F, 1e30F,
             -0.0004F, -2});
    DepthOptions options;
    options.scale = 1000;
    for (const char* const name : {"a.png", "a.pgm"}) {
        const ScratchFolder folder;
        const Result refused = writeDepth(row.mat, folder / name, options);
        EXPECT_EQ(refused.code, ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
        EXPECT_EQ(toStdString(refused.text),
                  folder / name +
                      ": 5 depths have no sample from 0 to 65535 at 1000 samples per unit, the first in "
                      "row 0: change 'scale' or set 'allowClipping'");
        EXPECT_EQ(refused.clipped, 5U);
        EXPECT_EQ(folder.listing(), "");

        options.allowClipping = true;
        const Result written = writeDepth(row.mat, folder / name, options);
        ASSERT_TRUE(written.ok()) << written.text;
        EXPECT_EQ(written.clipped, 5U);
        EXPECT_EQ(written.dropped, 5U);
        Mat back;
        ASSERT_TRUE(readDepth(folder / name, back).ok());
        expectSame(valuesOf(back), {NAN_F, NAN_F, NAN_F, NAN_F, NAN_F, NAN_F, 0.001F, 1.234F, 65.535F,
                                    65.535F, 65.535F, 65.535F, NAN_F, NAN_F});
        options.allowClipping = false;
    }
}

TEST(DepthsTest, AnotherInvalidSampleIsStatedAndKeptFree) {
    Row row({0, NAN_F, 65534, 65535, 1});
    DepthOptions options;
    options.invalid = 65535;
    options.allowClipping = true;
    const ScratchFolder folder;
    const Result written = writeDepth(row.mat, folder / "a.png", options);
    EXPECT_EQ(written.clipped, 1U);
    Mat back;
    DepthInfo info;
    ASSERT_TRUE(readDepth(folder / "a.png", back, &info).ok());
    EXPECT_EQ(info.invalid, 65535);
    expectSame(valuesOf(back), {NAN_F, NAN_F, 65534, 65534, 1});
}

TEST(DepthsTest, UnitsAreConvertedOnTheWay) {
    Row row({1.5F, 0.25F, NAN_F});
    for (const char* const name : {"a.png", "a.pgm", "a.pfm", "a.npy"}) {
        SCOPED_TRACE(name);
        const ScratchFolder folder;
        DepthOptions options;
        options.unit = UNIT::METER;
        options.targetUnit = UNIT::CENTIMETER;
        ASSERT_TRUE(writeDepth(row.mat, folder / name, options).ok());
        Mat back;
        DepthInfo info;
        DepthReadOptions reading;
        reading.unit = UNIT::CENTIMETER;  // PFM and NumPy files do not say
        ASSERT_TRUE(readDepth(folder / name, back, reading, &info).ok());
        EXPECT_EQ(info.unit, UNIT::CENTIMETER);
        expectSame(valuesOf(back), {150, 25, NAN_F});
        reading.targetUnit = UNIT::MILLIMETER;
        ASSERT_TRUE(readDepth(folder / name, back, reading, &info).ok());
        EXPECT_EQ(info.unit, UNIT::MILLIMETER);
        expectSame(valuesOf(back), {1500, 250, NAN_F});
    }
    const ScratchFolder folder;
    ASSERT_TRUE(writeDepth(row.mat, folder / "a.pfm").ok());
    DepthReadOptions reading;
    reading.targetUnit = UNIT::METER;
    EXPECT_EQ(toStdString(readDepth(folder / "a.pfm", row.mat, reading).text),
              folder / "a.pfm: the unit is not known: give the option 'unit' to convert it");
}

std::string bytesOf(std::initializer_list<int> values) {
    return {values.begin(), values.end()};
}

TEST(DepthsTest, OtherWritersHabitsAreUnderstood) {
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
        const ScratchFolder folder;
        std::ofstream(folder / "a") << habit.content;
        EXPECT_EQ(kindOf(folder / "a"), FILE_KIND::DEPTH);
        Mat back;
        DepthReadOptions reading;
        reading.rows = habit.rows;
        const Result read = readDepth(folder / "a", back, reading);
        ASSERT_TRUE(read.ok()) << read.text;
        expectSame(valuesOf(back), habit.wanted);
    }
}

TEST(DepthsTest, DamagedFilesAreRefusedAndLeaveTheMat) {
    const ScratchFolder folder;
    Row row({1, 2, 3});
    ASSERT_TRUE(writeDepth(row.mat, folder / "a.png").ok());
    const std::string png = contentOf(folder / "a.png");
    std::string flipped = png;
    flipped[png.size() - 20] ^= 1;
    std::string huge = png;
    huge[16] = 0x7f;  // width
    const std::pair<std::string, std::string> cases[] = {
        {"", "not a depth file of a known format"},
        {"PF\n1 1\n-1\n123456789012", "a picture of three channels is no depth map"},
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
        std::ofstream(folder / "b", std::ios::binary) << content;
        Mat mat(1, 1, MAT_TYPE::MAT_8U_C1);
        const Result read = readDepth(folder / "b", mat);
        EXPECT_EQ(read.code, ERROR_CODE::FAILURE);
        EXPECT_EQ(toStdString(read.text), folder / "b" + (text[0] == ':' ? text : ": " + text));
        EXPECT_EQ(mat.width, 1U);
    }
}

}  // namespace
}  // namespace vela::io

// SPDX-License-Identifier: Apache-2.0
// Clouds that are written must be read back bit for bit.
#include "support/ScratchFolder.hpp"
#include "support/cloud_kinds.hpp"
#include "support/device.hpp"
#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/units.hpp"
#include "vela_io/io.hpp"

#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

namespace vela::io {
namespace {

using namespace test;

struct Pixel {
    float x;
    float y;
    float z;
    std::uint8_t color[4];
};

bool sameFloat(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

bool isValid(const Pixel& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// A random cloud of all kinds of floats, with padded rows, and a second Mat of normals.
class Cloud {
public:
    Cloud(std::size_t width, std::size_t height, MAT_TYPE type, unsigned seed) : random_(seed) {
        const std::size_t pixelBytes = getPixelBytes(type);
        const std::size_t step = width * pixelBytes + 12 * (seed % 3);
        bytes_.resize(step * height + 1);
        for (std::size_t i = 0; i < width * height; ++i) {
            Pixel pixel{number(), number(), number(), {}};
            const auto color = static_cast<std::uint32_t>(random_());
            std::memcpy(pixel.color, &color, sizeof color);
            const float normal[4] = {number(), number(), number(), 0};
            normals_.insert(normals_.end(), normal, normal + 4);
            std::memcpy(&bytes_[i / width * step + i % width * pixelBytes], &pixel, pixelBytes);
            pixels_.push_back(pixel);
        }
        mat = Mat(width, height, type, bytes_.data(), step, MEM::CPU);
        normals = Mat(width, height, MAT_TYPE::MAT_32F_C4, reinterpret_cast<unsigned char*>(normals_.data()),
                      width * 16, MEM::CPU);
    }

    /// The valid points, which a file without the grid holds, or all.
    std::vector<std::size_t> indices(bool all) const {
        std::vector<std::size_t> list;
        for (std::size_t i = 0; i < pixels_.size(); ++i) {
            if (all || isValid(pixels_[i])) list.push_back(i);
        }
        return list;
    }
    const Pixel& pixel(std::size_t i) const { return pixels_[i]; }
    const float* normal(std::size_t i) const { return &normals_[4 * i]; }

    Mat mat;
    Mat normals;

private:
    float number() {
        const float special[] = {0.0F,  -0.0F,  1e-45F,   -1.1e-38F, 3.4e38F,
                                 -1.5F, 255.0F, INFINITY, -INFINITY, NAN};
        const auto choice = random_() % 40;
        if (choice < std::size(special)) return special[choice];
        if (choice > 20) return std::uniform_real_distribution<float>(-5000, 5000)(random_);
        const auto bits = static_cast<std::uint32_t>(random_());
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    std::mt19937 random_;
    std::vector<unsigned char> bytes_;
    std::vector<Pixel> pixels_;
    std::vector<float> normals_;
};

const Pixel* pixelsOf(const Mat& mat, std::size_t i) {
    return reinterpret_cast<const Pixel*>(mat.ptrCPU + i * getPixelBytes(mat.dataType));
}

/// Every combination of type, colour, alpha, normals and grid.
void expectAllKept(const CloudKind& kind, unsigned choices) {
    SCOPED_TRACE(kind.name + (" " + std::to_string(choices)));
    const bool four = (choices & 1) != 0;
    const ScratchFolder folder;
    const Cloud cloud(37 + choices % 16, 31, four ? MAT_TYPE::MAT_32F_C4 : MAT_TYPE::MAT_32F_C3, choices);
    CloudOptions options;
    options.encoding = kind.encoding;
    if (kind.format == CLOUD_FILE::XYZ) options.separator = " ,;"[choices % 3];
    options.color = (choices & 2) != 0;
    options.alpha = (choices & 4) != 0;
    options.normals = (choices & 8) != 0 ? &cloud.normals : nullptr;
    options.keepGrid = (choices & 16) != 0;
    if ((choices & 32) != 0) options.unit = static_cast<UNIT>(choices % 5);
    if ((choices & 64) != 0) options.axes = static_cast<COORDINATE_SYSTEM>(choices % 6);
    const bool color = four && options.color;
    const std::vector<std::size_t> wanted = cloud.indices(options.keepGrid);

    const Result written = writeCloud(cloud.mat, folder / kind.name, options);
    ASSERT_TRUE(written.ok()) << written.text;
    EXPECT_EQ(folder.listing(), kind.name);
    EXPECT_EQ(written.points, cloud.mat.width * cloud.mat.height);
    EXPECT_EQ(written.written, wanted.size());
    EXPECT_EQ(written.dropped, written.points - wanted.size());
    const std::string content = contentOf(folder / kind.name);
    EXPECT_EQ(written.bytes, content.size());
    EXPECT_TRUE(kind.format != CLOUD_FILE::XYZ || content.find(options.separator) != std::string::npos);

    Mat back;
    Mat normals;
    CloudInfo info;
    CloudReadOptions reading;
    reading.normals = &normals;
    const Result read = readCloud(folder / kind.name, back, reading, &info);
    ASSERT_TRUE(read.ok()) << read.text;
    EXPECT_EQ(read.text, "");
    EXPECT_EQ(info.encoding, kind.encoding);
    EXPECT_EQ(info.unit, options.unit);
    EXPECT_EQ(info.axes, options.axes);
    EXPECT_EQ(info.hasColor, color);
    EXPECT_EQ(info.hasAlpha, color && options.alpha && kind.alpha);
    EXPECT_EQ(normals.isInit, options.normals != nullptr);
    EXPECT_EQ(info.invalid, options.keepGrid ? cloud.indices(true).size() - cloud.indices(false).size() : 0U);
    ASSERT_EQ(back.dataType, color ? MAT_TYPE::MAT_32F_C4 : MAT_TYPE::MAT_32F_C3);
    ASSERT_EQ(back.width, options.keepGrid ? cloud.mat.width : wanted.size());
    ASSERT_EQ(back.height, options.keepGrid ? cloud.mat.height : 1U);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const Pixel& in = cloud.pixel(wanted[i]);
        const Pixel& out = *pixelsOf(back, i);
        ASSERT_TRUE(sameFloat(in.x, out.x) && sameFloat(in.y, out.y) && sameFloat(in.z, out.z)) << i;
        if (color) {
            ASSERT_EQ(std::memcmp(in.color, out.color, 3), 0) << i;
            ASSERT_EQ(out.color[3], info.hasAlpha ? in.color[3] : 255) << i;
        }
        for (std::size_t k = 0; options.normals != nullptr && k < 3; ++k) {
            ASSERT_TRUE(sameFloat(cloud.normal(wanted[i])[k], normals.getPtr<float>()[4 * i + k])) << i;
        }
    }
}

TEST(CloudsTest, ComeBackBitForBit) {
    for (const CloudKind& kind : CLOUD_KINDS) {
        for (unsigned choices = 0; choices < 128; choices += 1 + choices % 3) {
            expectAllKept(kind, choices);
        }
    }
}

TEST(CloudsTest, HaveUnitAndAxesConvertedInBothDirections) {
    if (!hasDevice()) GTEST_SKIP() << "copies between host buffers need a CUDA driver";
    Mat cloud(3, 2, MAT_TYPE::MAT_32F_C4);
    Mat normals(3, 2, MAT_TYPE::MAT_32F_C4);
    std::mt19937 random(5);
    for (std::size_t i = 0; i < 24; ++i) {
        cloud.getPtr<float>()[i] = std::uniform_real_distribution<float>(-9, 9)(random);
        normals.getPtr<float>()[i] = std::uniform_real_distribution<float>(-1, 1)(random);
        if (i % 4 == 3) cloud.ptrCPU[4 * i] = static_cast<std::uint8_t>(i / 4);
    }
    Mat before;
    before.clone(cloud);
    for (int source = 0; source < 6; ++source) {
        for (int target = 0; target < 6; ++target) {
            const auto from = static_cast<COORDINATE_SYSTEM>(source);
            const auto to = static_cast<COORDINATE_SYSTEM>(target);
            const ScratchFolder folder;
            CloudOptions options;
            options.unit = UNIT::METER;
            options.axes = from;
            options.targetUnit = UNIT::INCH;
            options.targetAxes = to;
            options.normals = &normals;
            ASSERT_TRUE(writeCloud(cloud, folder / "a.ply", options).ok());
            EXPECT_EQ(std::memcmp(cloud.ptrCPU, before.ptrCPU, 96), 0) << "the Mat is not changed";

            // read as it is, and on the way back to where it came from
            Mat there;
            Mat back;
            Mat turned;
            CloudInfo info;
            CloudReadOptions reading;
            reading.normals = &turned;
            ASSERT_TRUE(readCloud(folder / "a.ply", there, reading, &info).ok());
            EXPECT_TRUE(info.unit == UNIT::INCH && info.axes == to);
            reading.normals = nullptr;
            reading.targetUnit = UNIT::METER;
            reading.targetAxes = from;
            ASSERT_TRUE(readCloud(folder / "a.ply", back, reading, &info).ok());
            EXPECT_TRUE(info.unit == UNIT::METER && info.axes == from);
            const Matrix3f k = getCoordinateTransformConversion3f(from, to);
            for (std::size_t i = 0; i < 24; ++i) {
                const auto product = [&, row = 3 * (i % 4)](const Mat& mat) {
                    const float* const v = mat.getPtr<float>() + i - i % 4;
                    return k.m[row] * v[0] + k.m[row + 1] * v[1] + k.m[row + 2] * v[2];
                };
                if (i % 4 == 3) {
                    EXPECT_EQ(there.ptrCPU[4 * i], i / 4) << "the colour";
                    continue;
                }
                EXPECT_NEAR(there.getPtr<float>()[i], product(before) * 1000.0F / 25.4F, 1e-4F);
                EXPECT_EQ(turned.getPtr<float>()[i], product(normals)) << "normals have no unit";
                EXPECT_NEAR(back.getPtr<float>()[i], before.getPtr<float>()[i], 1e-5F);
            }
        }
    }
}

TEST(CloudsTest, RefusesImpossibleAndAmbiguousOptions) {
    Mat cloud(2, 1, MAT_TYPE::MAT_32F_C3);
    cloud.setTo(Vector3<float>(1, 2, 3));
    Mat depth(2, 1, MAT_TYPE::MAT_32F_C1);
    Mat small(1, 1, MAT_TYPE::MAT_32F_C4);
    Mat empty;
    const struct {
        const Mat* cloud;
        const char* name;
        const char* text;
        std::function<void(CloudOptions&)> change = [](auto&) {};
        ERROR_CODE code = ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    } refusals[] = {
        {&cloud, "a.bin",
         "the extension names no cloud format: .ply, .pcd, .vtk, .xyz, .txt, .csv, .asc, .pts"},
        {&cloud, "a.ply", "PLY files have no encoding BINARY_COMPRESSED",
         [](auto& o) { o.encoding = ENCODING::BINARY_COMPRESSED; }},
        {&cloud, "a.xyz", "XYZ files have no encoding BINARY",
         [](auto& o) { o.encoding = ENCODING::BINARY; }},
        {&cloud, "a.ply", "PLY files have no encoding Unknown",
         [](auto& o) { o.encoding = static_cast<ENCODING>(7); }},
        {&cloud, "a.ply", "an unknown cloud format", [](auto& o) { o.format = static_cast<CLOUD_FILE>(-1); }},
        {&cloud, "a.ply", "the unit is not known: give the option 'unit' to convert it",
         [](auto& o) { o.targetUnit = UNIT::INCH; }},
        {&cloud, "a.ply", "the axis convention is not known: give the option 'axes' to convert it",
         [](auto& o) { o.targetAxes = COORDINATE_SYSTEM::IMAGE; }},
        {&cloud, "a.ply", "an unknown unit", [](auto& o) { o.unit = static_cast<UNIT>(5); }},
        {&cloud, "a.ply", "an unknown axis convention",
         [](auto& o) { o.axes = static_cast<COORDINATE_SYSTEM>(6); }, ERROR_CODE::INVALID_COORDINATE_SYSTEM},
        {&cloud, "a.xyz", "a separator is a blank, ',' or ';'", [](auto& o) { o.separator = '1'; }},
        {&cloud, "a.ply", "the normals have another size than the cloud",
         [&](auto& o) { o.normals = &small; }},
        {&cloud, "a.ply", "normals are a Mat of three or four floats (MAT_32F_C3, MAT_32F_C4)",
         [&](auto& o) { o.normals = &depth; }},
        {&depth, "a.ply", "a cloud is a Mat of three or four floats (MAT_32F_C3, MAT_32F_C4)"},
        {&empty, "a.ply", "the cloud is an empty Mat"},
    };
    for (const auto& [mat, name, text, change, code] : refusals) {
        const ScratchFolder folder;
        CloudOptions options;
        change(options);
        const Result result = writeCloud(*mat, folder / name, options);
        EXPECT_EQ(result.code, code) << text;
        EXPECT_EQ(toStdString(result.text), folder / name + ": " + text);
        EXPECT_EQ(folder.listing(), "");
    }
}

}  // namespace
}  // namespace vela::io

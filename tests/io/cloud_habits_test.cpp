// SPDX-License-Identifier: Apache-2.0
// Cloud files as other programs, and our own exporters, write them; and files that lie.
#include "support/ScratchFolder.hpp"
#include "vela_core/utils/point_cloud_export.hpp"
#include "vela_io/io.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace vela::io {
namespace {

using test::contentOf;
using test::ScratchFolder;
using namespace std::string_literals;

template <class T>
std::string raw(std::initializer_list<T> values) {
    return {reinterpret_cast<const char*>(values.begin()), values.size() * sizeof(T)};
}

/// "x y z" of each point, with "r/g/b" or "r/g/b/a" and "(normal)" where there are such.
std::string textOf(const Mat& cloud, const Mat& normals, bool alpha) {
    std::string text;
    const auto number = [&](float value) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%g", static_cast<double>(value));
        text += digits;
    };
    for (std::size_t i = 0; i < cloud.width * cloud.height; ++i) {
        const float* const p = cloud.getPtr<float>() + i * cloud.channels;
        text += i == 0 ? "" : ", ";
        for (std::size_t k = 0; k < 3; ++k) {
            number(p[k]);
            if (k < 2) text += " ";
        }
        std::uint8_t color[4];
        std::memcpy(color, p + 3, cloud.channels == 4 ? 4 : 0);
        for (std::size_t k = 0; cloud.channels == 4 && k < (alpha ? 4U : 3U); ++k) {
            text += (k == 0 ? " " : "/") + std::to_string(color[k]);
        }
        for (std::size_t k = 0; normals.isInit && k < 3; ++k) {
            text += k == 0 ? " (" : " ";
            number(normals.getPtr<float>()[4 * i + k]);
            if (k == 2) text += ")";
        }
    }
    return text;
}

struct Habit {
    const char* name;
    std::string content;
    std::string points;  ///< as `textOf`, or what is wrong with the file
    std::string note = {};
};

const std::string PLY2 =
    "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\nproperty float z\n";
const std::string PLY1_BINARY = "ply\nformat binary_little_endian 1.0\nelement vertex 1\n";
const std::string PCD_XYZ = "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\n";
const std::string VTK_HEADER = "# vtk DataFile Version 3.0\nt\nASCII\nDATASET POLYDATA\n";

template <class T>
std::string big(T value) {
    std::string text = raw<T>({value});
    return {text.rbegin(), text.rend()};
}

std::vector<Habit> plyHabits() {
    const std::string header = "property float x\nproperty float y\nproperty float z\nend_header\n";
    return {
        {"CRLF, tabs, blank lines",
         "ply\r\nformat ascii 1.0\r\ncomment by hand\r\nelement vertex 2\r\nproperty float "
         "x\r\nproperty\tfloat "
         "y\r\nproperty float z\r\nend_header\r\n 1 2\t3 \r\n\r\n4 5 6",
         "1 2 3, 4 5 6"},
        {"lone returns and a body that begins with a line feed",
         "ply\rformat binary_little_endian 1.0\relement vertex 1\rproperty int x\rproperty char y\rproperty "
         "uchar "
         "z\rend_header\r" +
             raw<int>({10}) + "\xff\x05",
         "10 -1 5"},
        {"a point over two lines, two on one", PLY2 + "end_header\n1\n2 3 4 5 6\n", "1 2 3, 4 5 6"},
        {"doubles, extra properties, any order",
         PLY1_BINARY +
             "property short quality\nproperty double z\nproperty float32 y\nproperty double x\nproperty "
             "uint8 blue\nproperty uint8 green\nproperty uint8 red\nend_header\n" +
             raw<short>({9}) + raw<double>({3.5}) + raw<float>({2}) + raw<double>({-1}) + "\x01\x02\x03",
         "-1 2 3.5 3/2/1"},
        {"big-endian, other types",
         "ply\nformat binary_big_endian 1.0\nelement vertex 1\nproperty int16 x\nproperty double y\nproperty "
         "uint "
         "z\nproperty ushort red\nproperty float green\nproperty int blue\nend_header\n" +
             big<short>(-2) + big<double>(0.25) + big<unsigned>(70000) + big<unsigned short>(0x8001) +
             big<float>(0.5F) + big<int>(300),
         "-2 0.25 70000 128/128/255"},
        {"colours as shares and diffuse_ names",
         PLY2 + "property float diffuse_red\nproperty float diffuse_green\nproperty float "
                "diffuse_blue\nend_header\n1 2 3 0 0.5 1\n4 5 6 -1 0.25 nan\n",
         "1 2 3 0/128/255, 4 5 6 0/64/0"},
        {"a list among the properties, faces and edges",
         "ply\nformat ascii 1.0\nelement camera 1\nproperty list uchar int v\nproperty float f\nelement "
         "vertex "
         "2\nproperty float x\nproperty list uchar float w\nproperty float y\nproperty float z\nelement face "
         "1\nproperty list uchar int vertex_indices\nend_header\n2 7 8 0.5\n1 3 .1 .2 .3 2 3\n4 0 5 6\n3 0 1 "
         "1\n",
         "1 2 3, 4 5 6", "1 of element 'camera' ignored, 1 of element 'face' ignored"},
        {"the same in binary",
         "ply\nformat binary_little_endian 1.0\nelement camera 1\nproperty list uchar short v\nelement "
         "vertex "
         "1\nproperty float x\nproperty list ushort double w\nproperty float y\nproperty float "
         "z\nend_header\n\x02" +
             raw<short>({7, 8}) + raw<float>({1}) + raw<unsigned short>({1}) + raw<double>({9}) +
             raw<float>({2, 3}),
         "1 2 3", "1 of element 'camera' ignored"},
        {"no points", "ply\nformat ascii 1.0\nelement vertex 0\n" + header, ""},
        {"fewer points", PLY2 + "end_header\n1 2 3\n4 5",
         ": the file is too short for its 2 of element 'vertex'"},
        {"binary cut", PLY1_BINARY + header + "12345678901",
         ": the file is too short for its 1 of element 'vertex'"},
        {"far more points than bytes",
         "ply\nformat binary_little_endian 1.0\nelement vertex 4000000000000000000\n" + header + "123",
         ": the file is too short for its 4000000000000000000 of element 'vertex'"},
        {"text", PLY2 + "end_header\n1 2 3\n4 5 z\n", ":9: a number is expected"},
        {"a zero byte", PLY2 + "end_header\n1 2 3\n4 5 " + std::string(1, '\0') + "\n",
         ":9: a number is expected"},
        {"a number of 2,000 digits", PLY2 + "end_header\n1 2 3\n4 5 " + std::string(2000, '1') + "\n",
         "1 2 3, 4 5 inf"},
        {"no z",
         "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\nend_header\n1 2\n",
         ": the points have no 'z'"},
        {"no vertices", "ply\nformat ascii 1.0\nelement face 0\nend_header\n",
         ": the file has no element 'vertex'"},
        {"no end", "ply\nformat ascii 1.0\nelement vertex 1\n", ":3: the header has no end"},
        {"a line of 20,000 characters", "ply\ncomment " + std::string(20000, 'x') + "\n",
         ":2: the line is too long"},
        {"an endless list",
         "ply\nformat ascii 1.0\nelement a 1\nproperty list uint uchar l\nelement vertex 1\n" + header +
             "4294967295 1 2 3\n",
         ":11: a number is missing at the end of the file"},
        {"a list before its binary end",
         "ply\nformat binary_little_endian 1.0\nelement a 1\nproperty list uint uchar l\nelement vertex 1\n" +
             header + raw<unsigned>({0xffffff}) + "12345678901234567890",
         ": the file ends too early"},
        {"a property of no element", "ply\nformat ascii 1.0\nproperty float x\n",
         ":3: a property before the first element"},
        {"an unknown type", "ply\nformat ascii 1.0\nelement vertex 1\nproperty quad x\n",
         ":4: an unknown type of property"},
    };
}

std::vector<Habit> pcdHabits() {
    const std::string one = "WIDTH 1\nHEIGHT 1\nPOINTS 1\nDATA ";
    return {
        {"no COUNT, no HEIGHT, a viewpoint",
         PCD_XYZ + "WIDTH 2\nVIEWPOINT 0 0 1 1 0 0 0\nPOINTS 2\nDATA ascii\n1 2 3\n4 5 6", "1 2 3, 4 5 6",
         "VIEWPOINT ignored"},
        {"colour in a float's bits, as text",
         "FIELDS x y z rgb\nSIZE 4 4 4 4\nTYPE F F F F\n" + one + "ascii\n1 2 3 2.337213e-38\n",
         "1 2 3 254/127/253"},
        {"colour as a whole number in a float field",
         "FIELDS x y z rgb\nSIZE 4 4 4 4\nTYPE F F F F\n" + one + "ascii\n1 2 3 16711935\n",
         "1 2 3 255/0/255"},
        {"signed colours, padding, counts",
         "VERSION .7\nFIELDS x _ y z rgba h\nSIZE 8 1 4 4 4 2\nTYPE F U F F I U\nCOUNT 1 3 1 1 1 2\n" + one +
             "binary\n" + raw<double>({1}) + "abc" + raw<float>({2, 3}) + raw<int>({-0x7f000000 + 0x010203}) +
             "1234",
         "1 2 3 1/2/3/129"},
        {"normals",
         "FIELDS normal_x normal_y normal_z curvature x y z\nSIZE 4 4 4 4 4 4 4\nTYPE F F F F F F F\n" + one +
             "ascii\n0 0 1 9 1 2 nan\n",
         "1 2 nan (0 0 1)"},
        {"POINTS at odds", PCD_XYZ + "WIDTH 2\nHEIGHT 2\nPOINTS 3\nDATA ascii\n",
         ": POINTS is not WIDTH times HEIGHT"},
        {"far more points than bytes", PCD_XYZ + "WIDTH 2000000000\nHEIGHT 2000000000\nDATA binary\n123",
         ": the file is too short for its 4000000000000000000 points"},
        {"sizes that wrap",
         PCD_XYZ + "WIDTH 18446744073709551615\nHEIGHT 18446744073709551615\nDATA binary\n123",
         ": an impossible size"},
        {"lists at odds", "FIELDS x y z\nSIZE 4 4\nTYPE F F F\n" + one + "ascii\n",
         ":7: FIELDS, SIZE, TYPE and COUNT differ in length"},
        {"an unknown size", "FIELDS x y z\nSIZE 4 4 3\nTYPE F F F\n" + one + "ascii\n",
         ":7: a field of an unknown TYPE and SIZE"},
        {"no fields", "FIELDS\n" + one + "binary\n", ": the points have no 'x'"},
        {"a packed length that lies",
         PCD_XYZ + one + "binary_compressed\n" + raw<unsigned>({13, 4000000000U}) + std::string(20, 'a'),
         ": the packed points have another length than the header says"},
        {"packed bytes before the first",
         PCD_XYZ + one + "binary_compressed\n" + raw<unsigned>({2, 12}) + "\x20\x00\x00\x00"s,
         ": the packed points are damaged"},
        {"packed bytes cut", PCD_XYZ + one + "binary_compressed\n" + raw<unsigned>({13, 12}) + "\x0b",
         ": the file ends too early"},
        {"packed by hand: a zero, and eleven copies of it",
         PCD_XYZ + one + "binary_compressed\n" + raw<unsigned>({5, 12}) + "\x00\x00\xe0\x02\x00"s, "0 0 0"},
    };
}

std::vector<Habit> vtkHabits() {
    return {
        {"the next keyword behind the last number",
         VTK_HEADER + "POINTS 2 float\n1 2 3\n4 5 6.5VERTICES 2 4\n1 0\n1 1\n", "1 2 3, 4 5 6.5"},
        {"polygons, colours as bytes, normals",
         VTK_HEADER + "POINTS 2 double\n1 2 3 4 5 6\nPOLYGONS 1 4\n3 0 1 1\nCELL_DATA 1\nSCALARS q "
                      "float\nLOOKUP_TABLE default\n5\nPOINT_DATA 2\nSCALARS c unsigned_char 3\nLOOKUP_TABLE "
                      "default\n1 2 3 4 5 6\nNORMALS n float\n0 0 1 0 1 0\n",
         "1 2 3 1/2/3 (0 0 1), 4 5 6 4/5/6 (0 1 0)", "1 POLYGONS ignored"},
        {"version 5.1, binary, with metadata",
         "# vtk DataFile Version 5.1\nvtk output\nBINARY\nDATASET POLYDATA\nPOINTS 1 float\n" +
             big<float>(1) + big<float>(2) + big<float>(3) +
             "\nMETADATA\nINFORMATION 1\nNAME L2_NORM\n\nVERTICES 2 1\nOFFSETS vtktypeint64\n" +
             std::string(16, '\0') + "\nCONNECTIVITY vtktypeint64\n" + std::string(8, '\0') +
             "\nPOINT_DATA 1\nFIELD FieldData 2\nextra 1 1 double\n" + std::string(8, '\0') +
             "\nRGBA 4 1 unsigned_char\n\x01\x02\x03\x04\n",
         "1 2 3 1/2/3/4"},
        {"a grid of another kind",
         "# vtk DataFile Version 3.0\nt\nASCII\nDATASET STRUCTURED_GRID\nDIMENSIONS 2 1 1\nPOINTS 2 float\n1 "
         "2 3 4 5 6\n",
         "1 2 3, 4 5 6"},
        {"colours with more behind them",
         VTK_HEADER + "POINTS 1 float\n1 2 3\nPOINT_DATA 1\nSCALARS c unsigned_char 6\nLOOKUP_TABLE "
                      "default\n1 2 3 4 5 6\n",
         "1 2 3 1/2/3"},
        {"what nobody knows", VTK_HEADER + "POINTS 1 float\n1 2 3\nHOLOGRAM 3\n", "1 2 3",
         "what begins with 'HOLOGRAM' ignored"},
        {"more points than bytes", VTK_HEADER + "POINTS 2000000000 float\n1 2 3\n",
         ":5: the file is too short for its numbers"},
        {"no points", VTK_HEADER, ": the file has no POINTS"},
        {"a picture", "# vtk DataFile Version 3.0\nt\nASCII\nDATASET STRUCTURED_POINTS\n",
         ":4: a data set without a list of points"},
        {"data of other points", VTK_HEADER + "POINTS 1 float\n1 2 3\nPOINT_DATA 2\n",
         ":7: POINT_DATA of another number than the points"},
    };
}

std::vector<Habit> xyzHabits() {
    return {
        {"numbers alone", "1 2 3\n4 5 6", "1 2 3, 4 5 6"},
        {"commas, comments, blank lines, CRLF", "# made by hand\r\n1, 2, 3\r\n\r\n// more\r\n4,5,6\r\n",
         "1 2 3, 4 5 6"},
        {"names in front", "\xEF\xBB\xBFX;Y;Z;Intensity;R;G;B\n1;2;3;.5;10;20;30\n", "1 2 3 10/20/30"},
        {"names in a comment, in another order", "//r g b z y x\n1 2 3 30 20 10\n", "10 20 30 1/2/3"},
        {"colours by their look", "1 2 3 0 0 255\n4 5 6 1 2 3\n", "1 2 3 0/0/255, 4 5 6 1/2/3"},
        {"colours from 0 to 1", "1 2 3 0 0.5 1.0\n", "1 2 3 0/128/255"},
        {"normals by their look", "1 2 3 0.0 -0.6 0.8\n", "1 2 3 (0 -0.6 0.8)"},
        {"a count in front, an intensity", "2\n1 2 3 77 9 8 7\n4 5 6 78 6 5 4\n", "1 2 3 9/8/7, 4 5 6 6/5/4"},
        {"a line too short", "1 2 3\n4 5\n", ":2: a number is missing"},
        {"letters", "1 2 3\n4 5 6a\n", ":2: a number is expected"},
        {"prose", "Once upon a time\n", ": neither a point nor names of columns"},
        {"nothing", "", ": the file is empty"},
        {"a picture", "\x89PNG\r\n\x1a\n"s + std::string(8, '\0'), ": not a cloud file of a known format"},
    };
}

void expectHabits(const std::vector<Habit>& habits, const char* name) {
    const ScratchFolder folder;
    for (const Habit& habit : habits) {
        SCOPED_TRACE(habit.name);
        const std::string path = folder / name;
        std::ofstream(path, std::ios::binary) << habit.content;
        Mat cloud(1, 1, MAT_TYPE::MAT_8U_C1);
        Mat normals;
        CloudInfo info;
        CloudReadOptions options;
        options.normals = &normals;
        const Result result = readCloud(path, cloud, options, &info);
        const bool wrong = !habit.points.empty() && habit.points[0] == ':';
        if (wrong) {
            EXPECT_EQ(result.code, ERROR_CODE::FAILURE);
            EXPECT_EQ(toStdString(result.text), path + habit.points);
            EXPECT_EQ(cloud.dataType, MAT_TYPE::MAT_8U_C1) << "the Mat is left as it was";
        } else {
            EXPECT_TRUE(result.ok());
            EXPECT_EQ(toStdString(result.text), habit.note.empty() ? "" : path + ": " + habit.note);
            EXPECT_EQ(textOf(cloud, normals, info.hasAlpha), habit.points);
            for (std::size_t i = 0; cloud.channels == 4 && !info.hasAlpha && i < cloud.width * cloud.height;
                 ++i) {
                EXPECT_EQ(cloud.ptrCPU[16 * i + 15], 255) << "of files without an alpha";
            }
            EXPECT_EQ(kindOf(path), FILE_KIND::CLOUD);
        }
    }
}

TEST(CloudHabitsTest, Ply) {
    expectHabits(plyHabits(), "a.ply");
}

TEST(CloudHabitsTest, Pcd) {
    expectHabits(pcdHabits(), "a.pcd");
}

TEST(CloudHabitsTest, Vtk) {
    expectHabits(vtkHabits(), "a.vtk");
}

TEST(CloudHabitsTest, Xyz) {
    expectHabits(xyzHabits(), "a.xyz");
}

TEST(CloudHabitsTest, OurOwnExportersFilesAreRead) {
    Mat cloud(2, 1, MAT_TYPE::MAT_32F_C4);
    const float values[] = {1, -0.25F, 3.5F, 0, 4, 5, 6.125F, 0};
    std::memcpy(cloud.ptrCPU, values, sizeof values);
    cloud.ptrCPU[12] = 100;  // "%e" keeps no more than seven digits of the packed colour
    cloud.ptrCPU[13] = 128;
    cloud.ptrCPU[30] = 9;
    const std::pair<POINT_CLOUD_FORMAT, const char*> formats[] = {
        {XYZ, "a.xyz"}, {PCD, "a.pcd"}, {PLY, "a.ply"}, {VTK, "a.vtk"}};
    for (const auto& [format, name] : formats) {
        const ScratchFolder folder;
        ASSERT_TRUE(savePointCloudAs(cloud, format, String(folder / name), true));
        Mat back;
        const Result result = readCloud(folder / name, back);
        EXPECT_EQ(toStdString(result.text), "");
        const bool colored = format == PCD || format == PLY;
        EXPECT_EQ(textOf(back, Mat(), false),
                  colored ? "1 -0.25 3.5 100/128/0, 4 5 6.125 0/0/9" : "1 -0.25 3.5, 4 5 6.125");
    }
}

TEST(CloudHabitsTest, EveryPrefixOfAFileIsAnErrorOrTheSameCloud) {
    Mat cloud(7, 3, MAT_TYPE::MAT_32F_C4);
    cloud.setTo(Vector4<float>(1.5F, 2, 3, 4));
    for (const char* const name : {"a.ply", "a.pcd", "a.vtk", "b.ply", "b.pcd", "b.vtk", "c.pcd", "d.ply"}) {
        const ScratchFolder folder;
        CloudOptions options;
        if (name[0] == 'b') options.encoding = ENCODING::ASCII;
        if (name[0] == 'c') options.encoding = ENCODING::BINARY_COMPRESSED;
        if (name[0] == 'd') options.encoding = ENCODING::BINARY_BIG_ENDIAN;
        ASSERT_TRUE(writeCloud(cloud, folder / name, options).ok());
        const std::string whole = contentOf(folder / name);
        std::size_t read = 0;
        for (std::size_t size = whole.size(); size-- > 0; size -= std::min<std::size_t>(size, 2)) {
            std::filesystem::resize_file(folder / name, size);
            Mat back;
            const Result result = readCloud(folder / name, back);
            if (!result.ok()) continue;
            ++read;
            EXPECT_EQ(back.width * back.height, 21U) << name << " " << size;
        }
        // What VTK files have behind the points may be missing, and the last digits or line end of text.
        EXPECT_LE(read, name[2] == 'v' ? whole.size() : 4) << name;
    }
}

}  // namespace
}  // namespace vela::io

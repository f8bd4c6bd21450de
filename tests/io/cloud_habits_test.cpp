// SPDX-License-Identifier: Apache-2.0
// Reads cloud files as other programs and our own exporters write them, and files that contradict themselves.
#include "support/ScratchFolder.hpp"
#include "support/cloud_kinds.hpp"
#include "vela_core/utils/point_cloud_export.hpp"
#include "vela_io/io.hpp"

#include <algorithm>
#include <regex>
#include <sstream>
#include <vector>

namespace vela::io {
namespace {

using namespace test;
using namespace std::string_literals;

template <class T>
std::string raw(std::initializer_list<T> values) {
    return {reinterpret_cast<const char*>(values.begin()), values.size() * sizeof(T)};
}

/// "x y z" of each point, with "r/g/b/a" and "(normal)" where present.
std::string textOf(const Mat& cloud, const Mat& normals) {
    std::ostringstream text;
    for (std::size_t i = 0; i < cloud.width * cloud.height; ++i) {
        const float* const p = cloud.getPtr<float>() + i * cloud.channels;
        text << (i == 0 ? "" : ", ") << p[0] << ' ' << p[1] << ' ' << p[2];
        const auto* const color = reinterpret_cast<const std::uint8_t*>(p + 3);
        for (std::size_t k = 0; cloud.channels == 4 && k < 4; ++k)
            text << (k == 0 ? ' ' : '/') << int{color[k]};
        if (!normals.isInit) continue;
        const float* const n = normals.getPtr<float>() + 4 * i;
        text << " (" << n[0] << ' ' << n[1] << ' ' << n[2] << ')';
    }
    return text.str();
}

struct Habit {
    const char* name;
    std::string content;
    std::string points;  ///< as from `textOf`, or the expected error
    std::string note = {};
};

/// The elements are given as "vertex 2: float x, list uchar int v; face 0: ...".
std::string ply(const std::string& format, const std::string& elements, const std::string& body) {
    const std::string lines = std::regex_replace(elements, std::regex("; "), "\nelement ");
    return "ply\nformat " + format + " 1.0\nelement " +
           std::regex_replace(lines, std::regex("[:,] "), "\nproperty ") + "\nend_header\n" + body;
}

const std::string XYZ_FLOATS = ": float x, float y, float z";
const std::string PLY2 = "vertex 2" + XYZ_FLOATS;
const std::string TOO_SHORT = ": the file is too short for its ";
const std::string LITTLE = "binary_little_endian";
const std::string PCD_XYZ = "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\n";
const std::string VTK_HEADER = "# vtk DataFile Version 3.0\nt\nASCII\nDATASET POLYDATA\n";

template <class T>
std::string big(T value) {
    std::string text = raw<T>({value});
    return {text.rbegin(), text.rend()};
}

std::vector<Habit> plyHabits() {
    return {
        {"CRLF, tabs, blank lines",
         "ply\r\nformat ascii 1.0\r\ncomment by hand\r\nelement vertex 2\r\nproperty float x\r\n"
         "property\tfloat y\r\nproperty float z\r\nend_header\r\n 1 2\t3 \r\n\r\n4 5 6",
         "1 2 3, 4 5 6"},
        {"lone returns and a body that begins with a line feed",
         std::regex_replace(ply(LITTLE, "vertex 1: int x, char y, uchar z", ""), std::regex("\n"), "\r") +
             raw<int>({10}) + "\xff\x05",
         "10 -1 5"},
        {"a point over two lines, two on one", ply("ascii", PLY2, "1\n2 3 4 5 6\n"), "1 2 3, 4 5 6"},
        {"doubles, extra properties, any order",
         ply(LITTLE,
             "vertex 1: short quality, double z, float32 y, double x, uint8 blue, uint8 green, uint8 red",
             raw<short>({9}) + raw<double>({3.5}) + raw<float>({2}) + raw<double>({-1}) + "\x01\x02\x03"),
         "-1 2 3.5 3/2/1/255"},
        {"big-endian, other types",
         ply("binary_big_endian", "vertex 1: int16 x, double y, uint z, ushort red, float green, int blue",
             big<short>(-2) + big<double>(0.25) + big<unsigned>(70000) + big<unsigned short>(0x8001) +
                 big<float>(0.5F) + big<int>(300)),
         "-2 0.25 70000 128/128/255/255"},
        {"colours as shares and diffuse_ names",
         ply("ascii", PLY2 + ", float diffuse_red, float diffuse_green, float diffuse_blue",
             "1 2 3 0 0.5 1\n4 5 6 -1 0.05 nan\n"),
         "1 2 3 0/128/255/255, 4 5 6 0/13/0/255"},
        {"a list among the properties, faces and edges",
         ply("ascii",
             "camera 1: list uchar int v, float f; vertex 2: float x, list uchar float w, float y, float z; "
             "face 1: list uchar int vertex_indices",
             "2 7 8 0.5\n1 3 .1 .2 .3 2 3\n4 0 5 6\n3 0 1 1\n"),
         "1 2 3, 4 5 6", "1 of element 'camera' ignored, 1 of element 'face' ignored"},
        {"the same in binary",
         ply(LITTLE,
             "camera 1: list uchar short v; vertex 1: float x, list ushort double w, float y, float z",
             "\x02" + raw<short>({7, 8}) + raw<float>({1}) + raw<unsigned short>({1}) + raw<double>({9}) +
                 raw<float>({2, 3})),
         "1 2 3", "1 of element 'camera' ignored"},
        {"no points", ply("ascii", "vertex 0" + XYZ_FLOATS, ""), ""},
        {"fewer points", ply("ascii", PLY2, "1 2 3\n4 5"), TOO_SHORT + "2 of element 'vertex'"},
        {"binary cut", ply(LITTLE, "vertex 1" + XYZ_FLOATS, "12345678901"),
         TOO_SHORT + "1 of element 'vertex'"},
        {"far more points than bytes", ply(LITTLE, "vertex 4000000000000000000" + XYZ_FLOATS, "123"),
         TOO_SHORT + "4000000000000000000 of element 'vertex'"},
        {"text", ply("ascii", PLY2, "1 2 3\n4 5 z\n"), ":9: a number is expected"},
        {"a zero byte", ply("ascii", PLY2, "1 2 3\n4 5 \0\n"s), ":9: a number is expected"},
        {"a number of 2,000 digits", ply("ascii", PLY2, "1 2 3\n4 5 " + std::string(2000, '1') + "\n"),
         "1 2 3, 4 5 inf"},
        {"no z", ply("ascii", "vertex 1: float x, float y", "1 2\n"), ": the points have no 'z'"},
        {"no vertices", ply("ascii", "face 0", ""), ": the file has no element 'vertex'"},
        {"no end", "ply\nformat ascii 1.0\nelement vertex 1\n", ":3: the header has no end"},
        {"a line of 20,000 characters", "ply\ncomment " + std::string(20000, 'x'),
         ":2: the line is too long"},
        {"an endless list",
         ply("ascii", "a 1: list uint uchar l; vertex 1" + XYZ_FLOATS, "4294967295 1 2 3\n"),
         ":11: a number is missing at the end of the file"},
        {"a list before its binary end",
         ply(LITTLE, "a 1: list uint uchar l; vertex 1" + XYZ_FLOATS,
             raw<unsigned>({0xffffff}) + "12345678901234567890"),
         ": the file ends too early"},
        {"a property of no element", "ply\nformat ascii 1.0\nproperty float x\n",
         ":3: a property before the first element"},
        {"an unknown type", ply("ascii", "vertex 1: quad x", ""), ":4: an unknown type of property"},
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
         "1 2 3 254/127/253/255"},
        {"colour as a whole number in a float field",
         "FIELDS x y z rgb\nSIZE 4 4 4 4\nTYPE F F F F\n" + one + "ascii\n1 2 3 16711935\n",
         "1 2 3 255/0/255/255"},
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
         "1 2 3 1/2/3/255 (0 0 1), 4 5 6 4/5/6/255 (0 1 0)", "1 POLYGONS ignored"},
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
         "1 2 3 1/2/3/255"},
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
        {"names in front", "\xEF\xBB\xBFX;Y;Z;Intensity;R;G;B\n1;2;3;.5;10;20;30\n", "1 2 3 10/20/30/255"},
        {"names in a comment, in another order", "//r g b z y x\n1 2 3 30 20 10\n", "10 20 30 1/2/3/255"},
        {"colours by their look", "1 2 3 0 0 255\n4 5 6 1 2 3\n", "1 2 3 0/0/255/255, 4 5 6 1/2/3/255"},
        {"colours from 0 to 1", "1 2 3 0 0.5 1.0\n", "1 2 3 0/128/255/255"},
        {"normals by their look", "1 2 3 0.0 -0.6 0.8\n", "1 2 3 (0 -0.6 0.8)"},
        {"a count in front, an intensity", "2\n1 2 3 77 9 8 7\n4 5 6 78 6 5 4\n",
         "1 2 3 9/8/7/255, 4 5 6 6/5/4/255"},
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
        put(path, habit.content);
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
            EXPECT_EQ(textOf(cloud, normals), habit.points);
            EXPECT_EQ(kindOf(path), FILE_KIND::CLOUD);
        }
    }
}

TEST(CloudHabitsTest, ReadsForeignFilesAndReportsContradictions) {
    expectHabits(plyHabits(), "a.ply");
    expectHabits(pcdHabits(), "a.pcd");
    expectHabits(vtkHabits(), "a.vtk");
    expectHabits(xyzHabits(), "a.xyz");
}

TEST(CloudHabitsTest, OurOwnExportersFilesAreRead) {
    Mat cloud(2, 1, MAT_TYPE::MAT_32F_C4);
    // "%e" keeps no more than seven digits of the packed colour.
    const std::string pixels = raw<float>({1, -0.25F, 3.5F}) + "\x64\x80\x00\x00"s +
                               raw<float>({4, 5, 6.125F}) + "\x00\x00\x09\x00"s;
    pixels.copy(reinterpret_cast<char*>(cloud.ptrCPU), pixels.size());
    const std::pair<POINT_CLOUD_FORMAT, const char*> formats[] = {
        {XYZ, "a.xyz"}, {PCD, "a.pcd"}, {PLY, "a.ply"}, {VTK, "a.vtk"}};
    for (const auto& [format, name] : formats) {
        const ScratchFolder folder;
        ASSERT_TRUE(savePointCloudAs(cloud, format, String(folder / name), true));
        Mat back;
        const Result result = readCloud(folder / name, back);
        EXPECT_EQ(toStdString(result.text), "");
        const bool colored = format == PCD || format == PLY;
        EXPECT_EQ(textOf(back, Mat()),
                  colored ? "1 -0.25 3.5 100/128/0/255, 4 5 6.125 0/0/9/255" : "1 -0.25 3.5, 4 5 6.125");
    }
}

TEST(CloudHabitsTest, EveryPrefixOfAFileIsAnErrorOrTheSameCloud) {
    Mat cloud(7, 3, MAT_TYPE::MAT_32F_C4);
    cloud.setTo(Vector4<float>(1.5F, 2, 3, 4));
    for (const CloudKind& kind : CLOUD_KINDS) {
        const std::string name = kind.name;
        if (kind.format == CLOUD_FILE::XYZ) continue;  // a prefix may be a smaller XYZ cloud
        const ScratchFolder folder;
        CloudOptions options;
        options.encoding = kind.encoding;
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
        // A VTK file may lack what follows the points; a text file its last digits or line end.
        EXPECT_LE(read, kind.format == CLOUD_FILE::VTK ? whole.size() : 4) << name;
    }
}

}  // namespace
}  // namespace vela::io

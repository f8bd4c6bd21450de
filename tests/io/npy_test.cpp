// SPDX-License-Identifier: Apache-2.0
#include "support/ScratchFolder.hpp"
#include "vela_io/io.hpp"

#include <cstring>
#include <random>
#include <vector>

namespace vela::io {
namespace {

using namespace test;
using namespace std::string_literals;

/// A file of format 1.0 with the given dictionary and elements.
std::string npy(const std::string& dictionary, const std::string& elements) {
    const char size = static_cast<char>(dictionary.size() + 3);
    return "\x93NUMPY\x01"s + '\0' + size + '\0' + "{" + dictionary + "}\n" + elements;
}

/// The same for an array in C order.
std::string npy(const std::string& descr, const std::string& shape, const std::string& elements) {
    return npy("'descr': " + descr + ", 'fortran_order': False, 'shape': (" + shape + "), ", elements);
}

struct Kind {
    MAT_TYPE type;
    const char* descr;
    const char* channels;
};

constexpr Kind KINDS[] = {{MAT_TYPE::MAT_32F_C1, "<f4", ""},    {MAT_TYPE::MAT_32F_C2, "<f4", ", 2"},
                          {MAT_TYPE::MAT_32F_C3, "<f4", ", 3"}, {MAT_TYPE::MAT_32F_C4, "<f4", ", 4"},
                          {MAT_TYPE::MAT_8U_C1, "|u1", ""},     {MAT_TYPE::MAT_8U_C2, "|u1", ", 2"},
                          {MAT_TYPE::MAT_8U_C3, "|u1", ", 3"},  {MAT_TYPE::MAT_8U_C4, "|u1", ", 4"},
                          {MAT_TYPE::MAT_US16_C1, "<u2", ""},   {MAT_TYPE::MAT_8S_C4, "|i1", ", 4"}};

TEST(NpyTest, KeepsEveryByteOfEveryTypeWhateverTheStep) {
    std::mt19937 random(1);
    for (const Kind& kind : KINDS) {
        SCOPED_TRACE(std::string(kind.descr) + kind.channels);
        const ScratchFolder folder;
        constexpr std::size_t WIDTH = 301;  // rows of odd sizes, together larger than a file block
        constexpr std::size_t HEIGHT = 97;
        const std::size_t rowBytes = WIDTH * getPixelBytes(kind.type);
        const std::size_t step = rowBytes + 48;
        std::vector<unsigned char> bytes(step * HEIGHT);
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        const Mat mat(WIDTH, HEIGHT, kind.type, bytes.data(), step, MEM::CPU);
        const Result written = writeNpy(mat, folder / "a.npy");
        ASSERT_TRUE(written.ok()) << written.text;
        const std::string content = contentOf(folder / "a.npy");
        EXPECT_EQ(written.bytes, content.size());
        const std::string dictionary = "{'descr': '" + std::string(kind.descr) +
                                       "', 'fortran_order': False, 'shape': (97, 301" + kind.channels +
                                       "), }";
        EXPECT_EQ(content.substr(10, dictionary.size()), dictionary);
        EXPECT_EQ((content.size() - rowBytes * HEIGHT) % 64, 0U) << "NumPy aligns the elements";

        Mat back;
        const Result read = readNpy(folder / "a.npy", back);
        ASSERT_TRUE(read.ok()) << read.text;
        ASSERT_EQ(back.dataType, kind.type);
        ASSERT_EQ(back.width, WIDTH);
        ASSERT_EQ(back.height, HEIGHT);
        for (std::size_t y = 0; y < HEIGHT; ++y) {
            ASSERT_EQ(std::memcmp(back.ptrCPU + y * rowBytes, bytes.data() + y * step, rowBytes), 0) << y;
        }
    }
}

TEST(NpyTest, ReadsOtherByteOrdersAndFortranOrder) {
    const ScratchFolder folder;
    const std::string path = folder / "a.npy";
    // the six numbers 0x0102 to 0x0607, as NumPy would store [[102, 203, 304], [405, 506, 607]] (hexadecimal)
    const std::string big("\x01\x02\x02\x03\x03\x04\x04\x05\x05\x06\x06\x07", 12);
    const std::string fortranLittle("\x02\x01\x05\x04\x03\x02\x06\x05\x04\x03\x07\x06", 12);
    const std::uint16_t wanted[] = {0x0102, 0x0203, 0x0304, 0x0405, 0x0506, 0x0607};
    for (const std::string& content :
         {npy("'>u2'", "2, 3", big),
          npy("\"shape\":(2,3),\"fortran_order\":True,\"descr\":\"<u2\"", fortranLittle)}) {
        put(path, content);
        Mat mat;
        ASSERT_TRUE(readNpy(path, mat).ok());
        EXPECT_EQ(std::memcmp(mat.ptrCPU, wanted, sizeof wanted), 0);
    }
}

TEST(NpyTest, RefusesUnsupportedArraysAndKeepsTheMat) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "the file ends too early"},
        {"\x93NUMPX............", "not a NumPy array"},
        {npy("'<f8'", "1, 1", "12345678"), "no Mat has elements of 'f8' in 1 channels"},
        {npy("[('x', '<f4')]", "1, 1", "1234"), "elements of a type that no Mat has"},
        {npy("'<f4'", "1, 1, 5", std::string(20, ' ')), "no Mat has elements of 'f4' in 5 channels"},
        {npy("'<f4'", "4,", std::string(16, ' ')), "an array of 1 dimensions"},
        {npy("'descr': '<f4', 'shape': (1, 1), ", "1234"), "the header has no 'fortran_order'"},
        {npy("'<f4'", "2147483647, 2147483647", "1234"),
         "the file is too short for its 2147483647 x 2147483647 pixels"},
        {npy("'<f4'", "99999999999999999999, 1", ""), "a side of the array is too long"},
        {npy("'<f4'", "2, 1", "1234567"), "the file is too short for its 1 x 2 pixels"},
    };
    for (const auto& [content, text] : cases) {
        const ScratchFolder folder;
        put(folder / "a.npy", content);
        Mat mat(3, 2, MAT_TYPE::MAT_8U_C1);
        const unsigned char* const before = mat.ptrCPU;
        const Result result = readNpy(folder / "a.npy", mat);
        EXPECT_EQ(result.code, ERROR_CODE::FAILURE);
        EXPECT_EQ(toStdString(result.text), folder / "a.npy: " + text);
        EXPECT_EQ(mat.ptrCPU, before);
    }
}

}  // namespace
}  // namespace vela::io

#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/types/enum_cast.hpp"
#include "vela_core/utils/Mat.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vela::test {
namespace {

constexpr auto OK = ERROR_CODE::SUCCESS;
constexpr auto BAD = ERROR_CODE::FAILURE;
constexpr std::size_t WIDTHS[] = {1, 2, 3, 15, 16, 17, 63, 64, 65, 129, 513};

template <class Pixel, std::int32_t type, bool floating>
struct Kind {
    using P = Pixel;
    static constexpr auto TYPE = static_cast<MAT_TYPE>(type);
};
using U = unsigned char;
using Kinds =
    testing::Types<Kind<float, 0, true>, Kind<Vector2<float>, 1, true>, Kind<Vector3<float>, 2, true>,
                   Kind<Vector4<float>, 3, true>, Kind<U, 4, false>, Kind<Vector2<U>, 5, false>,
                   Kind<Vector3<U>, 6, false>, Kind<Vector4<U>, 7, false>, Kind<unsigned short, 8, false>,
                   Kind<Vector4<char>, 9, false>>;

template <class K>
class MatAccessTest : public DeviceTest {
protected:
    using Pixel = typename K::P;

    /// A pixel whose bytes all differ.
    static Pixel pixel(unsigned seed = 1) {
        Pixel value{};
        const Bytes bytes = pattern(sizeof value, seed);
        std::memcpy(static_cast<void*>(&value), bytes.data(), sizeof value);
        return value;
    }
    static Bytes bytesOf(const Pixel& value) {
        Bytes bytes(sizeof value);
        std::memcpy(bytes.data(), &value, sizeof value);
        return bytes;
    }
    /// `count` copies of a pixel.
    static Bytes repeated(std::size_t count, unsigned seed = 1) {
        Bytes bytes;
        for (std::size_t i = 0; i < count; ++i) {
            const Bytes one = bytesOf(pixel(seed));
            bytes.insert(bytes.end(), one.begin(), one.end());
        }
        return bytes;
    }
};
TYPED_TEST_SUITE(MatAccessTest, Kinds);

TYPED_TEST(MatAccessTest, FillsWholeImagesOfEveryWidth) {
    for (const std::size_t width : WIDTHS) {
        SCOPED_TRACE(width);
        Mat mat = filled(width, 3, TypeParam::TYPE, MEM_BOTH, 9);
        EXPECT_EQ(mat.setTo(this->pixel(1), MEM::CPU), OK);
        EXPECT_EQ(load(mat, MEM::CPU), this->repeated(width * 3, 1));
        EXPECT_EQ(load(mat, MEM::GPU), pattern(packedSize(mat), 9)) << "the other side is left alone";
        EXPECT_EQ(mat.setTo(this->pixel(2), MEM::GPU), OK);
        EXPECT_EQ(load(mat, MEM::GPU), this->repeated(width * 3, 2));
        EXPECT_EQ(load(mat, MEM::CPU), this->repeated(width * 3, 1));
    }
}

TYPED_TEST(MatAccessTest, FillStopsAtTheLastPixel) {
    Bytes memory(7 * 3 * sizeof(typename TypeParam::P) + 64, 0xEE);
    Mat mat(7, 3, TypeParam::TYPE, memory.data() + 32, 1000, MEM::CPU);
    EXPECT_EQ(mat.setTo(this->pixel()), OK) << "rows are taken as packed, whatever the step";
    Bytes wanted(32, 0xEE);
    const Bytes pixels = this->repeated(21);
    wanted.insert(wanted.end(), pixels.begin(), pixels.end());
    wanted.resize(memory.size(), 0xEE);
    EXPECT_EQ(memory, wanted);
}

TYPED_TEST(MatAccessTest, ReadsAndWritesSinglePixels) {
    using P = typename TypeParam::P;
    for (const MEM mem : {MEM::CPU, MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
        for (const MEM side : {MEM::CPU, MEM::GPU}) {
            SCOPED_TRACE(testing::Message() << toValue(mem) << " " << toValue(side));
            const bool usable = mem == side || mem == MEM_BOTH || mem == MEM_MANAGED;
            Mat mat = filled(5, 3, TypeParam::TYPE, mem, 9);
            EXPECT_EQ(mat.setValue(3, 1, this->pixel(2), side), usable ? OK : BAD);
            P seen = this->pixel(3);
            EXPECT_EQ(mat.getValue(3, 1, &seen, side), usable ? OK : BAD);
            EXPECT_EQ(this->bytesOf(seen), usable ? this->bytesOf(this->pixel(2)) : Bytes(sizeof(P)));
            if (!usable) continue;
            Bytes wanted = pattern(packedSize(mat), 9);
            const Bytes set = this->bytesOf(this->pixel(2));
            std::copy(set.begin(), set.end(), wanted.begin() + static_cast<std::ptrdiff_t>(8 * sizeof(P)));
            EXPECT_EQ(load(mat, side), wanted) << "one pixel and no other";
        }
    }
}

TYPED_TEST(MatAccessTest, HandsOutTypedPointers) {
    using P = typename TypeParam::P;
    const Mat both(2, 2, TypeParam::TYPE, MEM_BOTH);
    EXPECT_EQ(static_cast<void*>(both.getPtr<P>()), both.ptrCPU);
    EXPECT_EQ(static_cast<void*>(both.getPtr<P>(MEM::GPU)), both.ptrGPU);
    EXPECT_EQ(both.getPtr<P>(MEM_BOTH), nullptr);
    const Mat managed(2, 2, TypeParam::TYPE, MEM_MANAGED);
    EXPECT_EQ(managed.getPtr<P>(MEM_MANAGED), managed.getPtr<P>(MEM::CPU));
    EXPECT_EQ(Mat().getPtr<P>(), nullptr);
}

#ifdef VELA_GPU_SOFTWARE
TYPED_TEST(MatAccessTest, PrintsFailedCopiesAndSucceeds) {
    using P = typename TypeParam::P;
    constexpr const char* NAMES[] = {"float",
                                     "vela::Vector2<float>",
                                     "vela::Vector3<float>",
                                     "vela::Vector4<float>",
                                     "unsigned char",
                                     "vela::Vector2<unsigned char>",
                                     "vela::Vector3<unsigned char>",
                                     "vela::Vector4<unsigned char>",
                                     "unsigned short",
                                     "vela::Vector4<char>"};
    const std::string name = NAMES[toValue(TypeParam::TYPE)];
    const std::string end =
        " [with N = " + name + "; size_t = long unsigned int] : Err [999]: unknown error.\n";
    Mat mat = filled(2, 2, TypeParam::TYPE, MEM::GPU);
    P value = this->pixel(2);
    software_device::failCall("cudaMemcpy", 1, cudaErrorUnknown);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(mat.setValue(0, 0, value, MEM::GPU), OK); }),
              "in vela::ERROR_CODE vela::Mat::setValue(size_t, size_t, N, vela::MEM)" + end);
    software_device::failCall("cudaMemcpy", 1, cudaErrorUnknown);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(mat.getValue(0, 0, &value, MEM::GPU), OK); }),
              "in vela::ERROR_CODE vela::Mat::getValue(size_t, size_t, N*, vela::MEM) const" + end);
    EXPECT_EQ(this->bytesOf(value), Bytes(sizeof(P))) << "zeroed before anything else";
    EXPECT_EQ(load(mat, MEM::GPU), pattern(packedSize(mat)));
    software_device::failCall("cudaLaunchKernel", 1, cudaErrorUnknown);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(mat.setTo(value, MEM::GPU), OK); }), "");
}
#endif

class MatAccessRulesTest : public DeviceTest {};

TEST_F(MatAccessRulesTest, ASizeMatchIsEnoughForAType) {
    for (std::int32_t type = -1; type <= 10; ++type) {
        Mat mat = filled(2, 2, fromValue<MAT_TYPE>(type), MEM::CPU);
        const Bytes before = load(mat, MEM::CPU);
        float four = 0;
        unsigned short two = 0;
        EXPECT_EQ(mat.getValue(0, 0, &four), mat.pixelBytes == 4 ? OK : BAD) << type;
        EXPECT_EQ(mat.getValue(0, 0, &two), mat.pixelBytes == 2 ? OK : BAD) << type;
        if (mat.pixelBytes == 4) {
            EXPECT_EQ(std::memcmp(&four, before.data(), 4), 0);
        }
        EXPECT_EQ(mat.setTo(1.0F), mat.pixelBytes == 4 ? OK : BAD) << type;
        EXPECT_EQ(mat.setTo<unsigned short>(1), mat.pixelBytes == 2 ? OK : BAD) << type;
    }
}

TEST_F(MatAccessRulesTest, RefusesOtherSidesAndUninitialisedMats) {
    Mat mat = filled(2, 2, MAT_TYPE::MAT_32F_C1, MEM_BOTH);
    for (const std::int32_t side : {0, 3, 4, 5, -1}) {
        const auto mem = fromValue<MEM>(side);
        float value = 7;
        EXPECT_EQ(mat.setTo(1.0F, mem), BAD);
        EXPECT_EQ(mat.setValue(0, 0, 1.0F, mem), BAD);
        EXPECT_EQ(mat.getValue(0, 0, &value, mem), BAD);
        EXPECT_EQ(value, 0.0F);
    }
    EXPECT_EQ(load(mat, MEM::CPU), pattern(16));
    EXPECT_EQ(load(mat, MEM::GPU), pattern(16));
    mat.free();
    float value = 7;
    EXPECT_EQ(mat.setTo(1.0F), BAD);
    EXPECT_EQ(mat.setValue(0, 0, 1.0F), BAD);
    EXPECT_EQ(mat.getValue(0, 0, &value), BAD);
    EXPECT_EQ(value, 0.0F);
}

TEST_F(MatAccessRulesTest, GettingChecksBoundsAndSettingDoesNot) {
    Mat mat = filled(3, 2, MAT_TYPE::MAT_8U_C1, MEM_BOTH);
    for (const MEM side : {MEM::CPU, MEM::GPU}) {
        unsigned char value = 7;
        EXPECT_EQ(mat.getValue(2, 1, &value, side), OK);
        EXPECT_EQ(value, pattern(6)[5]);
        for (const auto& [x, y] : {std::pair(3, 0), std::pair(0, 2), std::pair(-1, 0)}) {
            value = 7;
            EXPECT_EQ(mat.getValue(static_cast<std::size_t>(x), static_cast<std::size_t>(y), &value, side),
                      BAD);
            EXPECT_EQ(value, 0);
        }
    }
    EXPECT_EQ(mat.setValue<unsigned char>(3, 0, 200), OK);
    EXPECT_EQ(mat.ptrCPU[3], 200) << "the first pixel of the next row";
}

TEST_F(MatAccessRulesTest, EmptyAndBufferlessMatsDoNotCrash) {
    float value = 7;
    for (const auto& [width, height] : {std::pair(0, 2), std::pair(2, 0), std::pair(0, 0)}) {
        Mat mat(static_cast<std::size_t>(width), static_cast<std::size_t>(height), MAT_TYPE::MAT_32F_C1,
                MEM_BOTH);
        EXPECT_EQ(mat.setTo(1.0F), OK);
        EXPECT_EQ(mat.setTo(1.0F, MEM::GPU), OK);
        EXPECT_EQ(mat.getValue(0, 0, &value), OK) << "the bound wraps and does not reject";
        EXPECT_EQ(value, 0.0F);
    }
    Mat nothing(2, 2, MAT_TYPE::MAT_32F_C1, nullptr, 8, MEM::CPU);
    EXPECT_EQ(nothing.setTo(1.0F), BAD);
    EXPECT_EQ(nothing.setValue(0, 0, 1.0F), BAD);
    EXPECT_EQ(nothing.getValue(0, 0, &value), BAD);
}

}  // namespace
}  // namespace vela::test

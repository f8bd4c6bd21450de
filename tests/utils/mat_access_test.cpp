// SPDX-License-Identifier: Apache-2.0
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/utils/Mat.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

namespace vela::test {
namespace {

void overwrite(Bytes& image, std::size_t at, const Bytes& pixels) {
    std::copy(pixels.begin(), pixels.end(), &image[at]);
}

template <class Pixel, std::int32_t type>
struct Kind {
    using P = Pixel;
    static constexpr auto TYPE = static_cast<MAT_TYPE>(type);
};
using U = unsigned char;
using Kinds = testing::Types<Kind<float, 0>, Kind<Vector2<float>, 1>, Kind<Vector3<float>, 2>,
                             Kind<Vector4<float>, 3>, Kind<U, 4>, Kind<Vector2<U>, 5>, Kind<Vector3<U>, 6>,
                             Kind<Vector4<U>, 7>, Kind<unsigned short, 8>, Kind<Vector4<char>, 9>>;

template <class K>
class MatAccessTest : public DeviceTest {
protected:
    using Pixel = typename K::P;

    /// Pixels in which each byte differs from its neighbours.
    static Pixel pixel(unsigned seed) {
        Pixel value{};
        std::memcpy(static_cast<void*>(&value), pattern(sizeof value, seed).data(), sizeof value);
        return value;
    }
    static Bytes repeated(unsigned seed, std::size_t count) {
        Bytes bytes;
        for (const Bytes one = pattern(sizeof(Pixel), seed); count > 0; --count) {
            bytes.insert(bytes.end(), one.begin(), one.end());
        }
        return bytes;
    }
};
TYPED_TEST_SUITE(MatAccessTest, Kinds, );  // clang requires the third argument, even an empty one

TYPED_TEST(MatAccessTest, FillsWindowsOfEveryWidthAndNothingElse) {
    for (const std::size_t width : {1U, 2U, 3U, 15U, 16U, 17U, 63U, 64U, 65U, 129U, 513U, 30011U}) {
        for (const std::size_t x : {0U, 1U}) {
            SCOPED_TRACE(testing::Message() << width << " from " << x);
            Window window(width, 3, TypeParam::TYPE, x, 9);
            Bytes host = load(window.whole, MEM::CPU);
            Bytes device = host;
            window.put(this->repeated(2, width * 3), device);
            EXPECT_EQ(window.part.setTo(this->pixel(2), MEM::GPU), OK);
            EXPECT_TRUE(sameBytes(load(window.whole, MEM::GPU), device));
            EXPECT_TRUE(sameBytes(load(window.whole, MEM::CPU), host)) << "the other side is left alone";
            overwrite(host, window.first, this->repeated(1, width * 3));
            EXPECT_EQ(window.part.setTo(this->pixel(1)), OK);
            EXPECT_TRUE(sameBytes(load(window.whole, MEM::CPU), host))
                << "rows are taken as packed, whatever the step";
            EXPECT_TRUE(sameBytes(load(window.whole, MEM::GPU), device));
        }
    }
}

TYPED_TEST(MatAccessTest, ReadsAndWritesSinglePixels) {
    using P = typename TypeParam::P;
    Window window(5, 3, TypeParam::TYPE, 1, 9);
    Bytes host = load(window.whole, MEM::CPU);
    Bytes device = host;
    overwrite(host, window.first + 8 * sizeof(P), this->repeated(1, 1));  // as if rows were packed
    overwrite(device, window.first + window.whole.stepBytesCPU + 3 * sizeof(P), this->repeated(2, 1));
    for (const auto& [side, seed] : {std::pair(MEM::CPU, 1U), std::pair(MEM::GPU, 2U)}) {
        EXPECT_EQ(window.part.setValue(3, 1, this->pixel(seed), side), OK);
        P seen{};
        EXPECT_EQ(window.part.getValue(3, 1, &seen, side), OK);
        EXPECT_EQ(seen, this->pixel(seed));
    }
    EXPECT_TRUE(sameBytes(load(window.whole, MEM::CPU), host));
    EXPECT_TRUE(sameBytes(load(window.whole, MEM::GPU), device));

    const std::pair<MEM, void*> pointers[] = {{MEM::CPU, window.part.ptrCPU},
                                              {MEM::GPU, window.part.ptrGPU},
                                              {MEM_MANAGED, window.part.ptrGPU},
                                              {MEM_BOTH, nullptr}};
    for (const auto& [side, pointer] : pointers) {
        EXPECT_EQ(window.part.template getPtr<P>(side), pointer);
        EXPECT_EQ(window.part.template getPtr<const P>(side), pointer);
    }
}

#ifdef VELA_GPU_SOFTWARE
TYPED_TEST(MatAccessTest, PrintsFailedCopiesAndSucceeds) {
    const std::string kind = testing::UnitTest::GetInstance()->current_test_info()->type_param();
    const std::string name = kind.substr(kind.find('<') + 1, kind.rfind(',') - kind.find('<') - 1);
    const std::string end =
        " [with N = " + name + "; size_t = long unsigned int] : Err [999]: unknown error.\n";
    Mat mat = filled(2, 2, TypeParam::TYPE, MEM::GPU);
    auto value = this->pixel(2);
    software_device::failCall("cudaMemcpy", 1, cudaErrorUnknown);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(mat.setValue(0, 0, value, MEM::GPU), OK); }),
              "in vela::ERROR_CODE vela::Mat::setValue(size_t, size_t, N, vela::MEM)" + end);
    software_device::failCall("cudaMemcpy", 1, cudaErrorUnknown);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(mat.getValue(0, 0, &value, MEM::GPU), OK); }),
              "in vela::ERROR_CODE vela::Mat::getValue(size_t, size_t, N*, vela::MEM) const" + end);
    EXPECT_EQ(value, typename TypeParam::P{}) << "zeroed before anything else";
    EXPECT_TRUE(sameBytes(load(mat, MEM::GPU), pattern(packedSize(mat))));
}
#endif

class MatAccessRulesTest : public DeviceTest {};

TEST_F(MatAccessRulesTest, DeviceRowsAreWholePixelsApart) {
    Mat bytes = filled(64, 1, U1, MEM::GPU);
    Bytes wanted = pattern(64);
    Mat mat(2, 2, U3, bytes.ptrGPU, 32, MEM::GPU);  // ten pixels and two bytes
    EXPECT_EQ(mat.setValue(1, 1, Vector3<U>(1, 2, 3), MEM::GPU), OK);
    overwrite(wanted, 33, {1, 2, 3});
    EXPECT_TRUE(sameBytes(load(bytes, MEM::GPU), wanted));
    Vector3<U> seen;
    EXPECT_EQ(mat.getValue(1, 1, &seen, MEM::GPU), OK);
    EXPECT_EQ(seen, Vector3<U>(1, 2, 3));
    EXPECT_EQ(mat.setTo(Vector3<U>(4, 5, 6), MEM::GPU), OK);
    overwrite(wanted, 0, {4, 5, 6, 4, 5, 6});
    overwrite(wanted, 30, {4, 5, 6, 4, 5, 6});
    EXPECT_TRUE(sameBytes(load(bytes, MEM::GPU), wanted));
}

#ifdef VELA_GPU_SOFTWARE
TEST_F(MatAccessRulesTest, FillsNothingOfAnImageWithoutPixels) {
    unsigned char pixel = 7;
    for (const auto& [width, height] : {std::pair(0, 1), std::pair(1, 0)}) {
        Mat mat(static_cast<std::size_t>(width), static_cast<std::size_t>(height), U1, &pixel, 1, MEM::CPU);
        EXPECT_EQ(mat.setTo<U>(9), OK);
        EXPECT_EQ(pixel, 7);
    }
}
#endif

TEST_F(MatAccessRulesTest, AnyPixelTypeOfTheSameSizeIsAccepted) {
    constexpr std::size_t SIZES[] = {0, 4, 8, 12, 16, 1, 2, 3, 4, 2, 4, 0};  // that of -1 first
    for (std::int32_t type = -1; type <= 10; ++type) {
        Mat mat = filled(2, 2, fromValue<MAT_TYPE>(type), MEM::CPU);
        EXPECT_EQ(mat.pixelBytes, SIZES[type + 1]) << type;
        float four = 0;
        std::uint16_t two = 0;
        const ERROR_CODE fours = mat.pixelBytes == 4 ? OK : BAD;
        const ERROR_CODE twos = mat.pixelBytes == 2 ? OK : BAD;
        EXPECT_EQ((std::array{mat.getValue(0, 0, &four), mat.setTo(four)}), (std::array{fours, fours}))
            << type;
        EXPECT_EQ((std::array{mat.getValue(0, 0, &two), mat.setTo(two)}), (std::array{twos, twos})) << type;
    }
}

TEST_F(MatAccessRulesTest, GettingIsCheckedAndSettingIsNot) {
    const auto get = [](const Mat& mat, std::size_t x, std::size_t y, std::int32_t side) {
        U value = 7;
        const bool success = mat.getValue(x, y, &value, fromValue<MEM>(side)) == OK;
        return (success ? "" : "refused ") + std::to_string(value);
    };
    Mat mat = filled(3, 2, U1, MEM_BOTH);
    Mat nowhere(2, 2, U1, nullptr, 2, MEM::CPU);
    EXPECT_EQ(get(mat, 2, 1, 1), std::to_string(pattern(6)[5]));
    EXPECT_EQ(get(mat, 2, 1, 2), std::to_string(pattern(6)[5]));
    EXPECT_EQ(get(mat, 3, 0, 1), "refused 0");
    EXPECT_EQ(get(mat, 0, 2, 2), "refused 0");
    EXPECT_EQ(get(Mat(), 0, 0, 1), "refused 0");
    EXPECT_EQ(get(nowhere, 0, 0, 1), "refused 0");
    EXPECT_EQ(get(Mat(0, 2, U1), 0, 0, 1), "0") << "the bound wraps and does not reject";
    EXPECT_EQ(get(Mat(2, 0, U1), 0, 0, 1), "0");
    EXPECT_EQ(mat.setValue<U>(3, 0, 200), OK);
    EXPECT_EQ(mat.ptrCPU[3], 200) << "the first pixel of the next row";
    EXPECT_EQ(mat.setValue(1, 0, Vector2<U>(201, 202)), OK);
    EXPECT_EQ(mat.ptrCPU[3], 202) << "pixels of whatever size";
    for (const std::int32_t side : {-1, 0, 3, 4, 5}) {
        EXPECT_EQ(get(mat, 2, 1, side), "refused 0");
        EXPECT_EQ(mat.setValue<U>(0, 0, 1, fromValue<MEM>(side)), BAD);
        EXPECT_EQ(mat.setTo<U>(1, fromValue<MEM>(side)), BAD);
    }
    EXPECT_EQ(Mat().setValue<U>(0, 0, 1), BAD);
    EXPECT_EQ(nowhere.setValue<U>(0, 0, 1), BAD);
    EXPECT_EQ(nowhere.setTo<U>(1), BAD);
}

TEST(MatSides, AreFalseForUninitialisedMats) {
    U pixel{};
    for (const MEM mem : {MEM::CPU, MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
        Mat mat(1, 1, U1, &pixel, 1, mem);
        EXPECT_EQ(mat.isOnHost(), mem != MEM::GPU) << toValue(mem);
        EXPECT_EQ(mat.isOnDevice(), mem != MEM::CPU) << toValue(mem);
        mat.free();
        EXPECT_FALSE(mat.isOnHost() || mat.isOnDevice()) << toValue(mem);
    }
    EXPECT_FALSE(Mat().isOnHost()) << "though memType starts as CPU";
    static_assert(noexcept(std::declval<const Mat&>().isOnHost() && std::declval<const Mat&>().isOnDevice()));
}

}  // namespace
}  // namespace vela::test

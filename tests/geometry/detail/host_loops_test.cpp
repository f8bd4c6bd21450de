// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/detail/host_loops.hpp"

#include "vela_core/geometry/detail/avx2_rows.hpp"
#include "vela_core/geometry/detail/denormals.hpp"
#include "vela_core/geometry/detail/pixel_loop.hpp"

#include "support/geometry.hpp"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace vela::detail::test {
namespace {

using vela::test::bitsOf;

/// Floats of all kinds; about half of the runs of 64 contain tiny ones, such as colours with alpha 0.
std::vector<float> mixedFloats(std::size_t count, std::mt19937& random) {
    const float special[] = {0.0F, -0.0F, INFINITY, NAN, FLT_MAX, 1e-45F, -1e-45F, FLT_MIN};
    std::vector<float> values(count);
    bool tiny = false;
    for (std::size_t i = 0; i < count; ++i) {
        if (i % 64 == 0) tiny = random() % 2 == 0;
        const auto draw = static_cast<std::uint32_t>(random());
        values[i] = static_cast<float>(draw % 2000000) * 1e-3F - 1000.0F;
        const std::uint32_t bits = draw & 0x81FFFFFF;
        if (tiny && draw % 3 == 0) std::memcpy(&values[i], &bits, sizeof bits);
        if (random() % 16 == 0) values[i] = special[draw % std::size(special)];
    }
    return values;
}

/// Applies the operation to one pixel without the library's loops.
template <class Pixel, class Op>
void applyPlainly(float* values, const Op& op) {
    Pixel pixel;
    std::memcpy(static_cast<void*>(&pixel), values, sizeof pixel);
    pixel = op(pixel);
    std::memcpy(values, &pixel, sizeof pixel);
}

/// Checks every pixel for all widths up to several vectors, with packed, padded and unaligned rows; the
/// floats around and between the rows must not change.
template <class Pixel, class Op, class Apply>
void expectAsPixelByPixel(const Op& op, Apply apply) {
    constexpr std::size_t CHANNELS = sizeof(Pixel) / 4;
    constexpr std::uint32_t HEIGHT = 3;
    std::mt19937 random(7);
    for (std::uint32_t width = 0; width <= 70; ++width) {
        for (const unsigned padding : {0U, 1U, 5U}) {
            const std::size_t step = (width + padding) * CHANNELS;
            std::vector<float> values = mixedFloats(HEIGHT * step + 2 * CHANNELS, random);
            std::vector<float> wanted = values;
            apply(PixelView<Pixel>{reinterpret_cast<Pixel*>(&values[CHANNELS]), width, HEIGHT, step * 4}, op);
            for (std::size_t i = 0; i < HEIGHT * step; i += CHANNELS) {
                if (i % step < width * CHANNELS) applyPlainly<Pixel>(&wanted[CHANNELS + i], op);
            }
            ASSERT_EQ(bitsOf(values), bitsOf(wanted)) << "width " << width;
        }
    }
}

/// Runs the fastest loop and the portable one.
template <class Pixel, class Op>
void expectBothLoopsToDo(const Op& op) {
    expectAsPixelByPixel<Pixel>(op, [](const PixelView<Pixel>& view, const Op& o) { applyOnHost(view, o); });
    expectAsPixelByPixel<Pixel>(op, [](const PixelView<Pixel>& view, const Op& o) { forEachPixel(view, o); });
}

constexpr float FACTORS[] = {0.001F, 0.0254F, 1.0F, 3.28084F, 39.3701F, 1000.0F};

TEST(HostLoops, ApplyTheOperationToEveryPixel) {
    for (const float factor : FACTORS) {
        expectBothLoopsToDo<float>(ScaleAll{factor});
        const auto asRows = [](const auto& view, const ScaleAll& op) { applyOnHost(asFloats(view), op); };
        expectAsPixelByPixel<Vector3<float>>(ScaleAll{factor}, asRows);
        expectAsPixelByPixel<Vector4<float>>(ScaleAll{factor}, asRows);
        expectAsPixelByPixel<Vector4<float>>(
            ScaleAll{factor}, [](const auto& view, const ScaleAll& op) { forEachPixel(view, op); });
    }
    expectBothLoopsToDo<Vector3<float>>(ApplyMatrix3{{1, -2, 0.5F, 0, 3, -1, 7, 0.25F, 1}});
    expectBothLoopsToDo<Vector4<float>>(
        ApplyMatrix4{{1, -2, 0.5F, 10, 0, 3, -1, 0.1F, 7, 0.25F, 1, -3, 9, 9, 9, 9}});
}

TEST(HostLoops, ScalingAroundDenormalsHasTheBitsOfAMultiplication) {
    if (!canScaleAroundDenormals()) GTEST_SKIP() << "needs AVX2";
    for (const float factor : FACTORS) {
        expectAsPixelByPixel<float>(ScaleAll{factor}, [](PixelView<float> view, const ScaleAll& op) {
            for (; view.height > 0; --view.height, view.data += view.stepBytes / sizeof(float)) {
                const std::size_t done = scaleAroundDenormals(view.data, view.width, op.factor);
                EXPECT_EQ(done, view.width / 32 * 32);
                forEachPixel(PixelView<float>{view.data + done, view.width - done, 1, 0}, op);
            }
        });
    }
}

#if defined(__x86_64__)

TEST(HostLoops, ChooseVectorInstructionsThatTheProcessorHas) {
    std::ifstream file("/proc/cpuinfo");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(hasAvx2(), text.find(" avx2") != std::string::npos);
    EXPECT_EQ(canScaleAroundDenormals(), hasAvx2());
    std::vector<float> values(4 * 100);
    const PixelView<Vector4<float>> points{reinterpret_cast<Vector4<float>*>(values.data()), 100, 1, 0};
    const PixelView<Vector3<float>> packed{reinterpret_cast<Vector3<float>*>(values.data()), 50, 2, 600};
    EXPECT_EQ(applyOnHost(points, ApplyMatrix4{}), hasAvx2() ? 100U : 0U);
    EXPECT_EQ(applyOnHost(packed, ApplyMatrix3{}), hasAvx2() ? 96U : 0U);
    EXPECT_EQ(applyOnHost(asFloats(points), ScaleAll{1}), hasAvx2() ? 384U : 0U);
}

TEST(HostLoops, EqualPixelsStayEqualInEveryFloatingPointMode) {
    constexpr unsigned DENORMALS_AS_ZERO = 0x8040;  // what programs linked with -ffast-math set
    constexpr Vector4<float> PIXEL(1, 1e-38F, 3, 9.2e-39F);
    const unsigned modes = _mm_getcsr();
    EXPECT_TRUE(hasDefaultFloatModes());
    for (const unsigned changed : {DENORMALS_AS_ZERO, 0x2000U, 0x4000U, 0x6000U}) {
        for (std::size_t width = 1; width < 40; ++width) {
            std::vector<Vector4<float>> row(width, PIXEL);
            _mm_setcsr(modes | changed);
            EXPECT_FALSE(hasDefaultFloatModes());
            EXPECT_FALSE(denormalsAreSlow());
            applyOnHost(asFloats(PixelView<Vector4<float>>{row.data(), width, 1, 0}), ScaleAll{0.3F});
            _mm_setcsr(modes);
            for (const Vector4<float>& pixel : row) {
                // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): compares bits
                EXPECT_EQ(std::memcmp(&pixel, row.data(), sizeof pixel), 0) << width;
            }
        }
    }
}

#endif

}  // namespace
}  // namespace vela::detail::test

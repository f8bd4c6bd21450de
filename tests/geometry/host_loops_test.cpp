#include "vela_core/geometry/host_loops.hpp"

#include "vela_gpu/pixel_loop.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace vela::test {
namespace {

/// Same bits, or both not a number.
bool same(float a, float b) {
    std::uint32_t bits[2];
    std::memcpy(&bits[0], &a, sizeof a);
    std::memcpy(&bits[1], &b, sizeof b);
    return bits[0] == bits[1] || (std::isnan(a) && std::isnan(b));
}

/// Floats of all kinds; about half of the rows hold tiny ones, such as colours with alpha 0.
std::vector<float> mixedFloats(std::size_t count, std::mt19937& random) {
    using Limits = std::numeric_limits<float>;
    const float special[] = {0.0F,
                             -0.0F,
                             Limits::infinity(),
                             Limits::quiet_NaN(),
                             Limits::max(),
                             Limits::denorm_min(),
                             -Limits::denorm_min(),
                             Limits::min()};
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

/// Both ways over rows of every width up to some vectors, packed and padded, not aligned to vectors; what
/// lies around and between the rows must stay.
template <class Pixel, class Op>
void expectAsPixelByPixel(const Op& op) {
    constexpr std::size_t CHANNELS = sizeof(Pixel) / 4;
    constexpr std::uint32_t HEIGHT = 3;
    std::mt19937 random(7);
    for (std::uint32_t width = 0; width <= 70; ++width) {
        for (const unsigned padding : {0U, 1U, 5U}) {
            const std::size_t step = (width + padding) * sizeof(Pixel);
            std::vector<float> values = mixedFloats(HEIGHT * step / sizeof(float) + 2 * CHANNELS, random);
            std::vector<float> wanted = values;
            applyOnHost(PixelView<Pixel>{reinterpret_cast<Pixel*>(&values[CHANNELS]), width, HEIGHT, step},
                        op);
            forEachPixel(PixelView<Pixel>{reinterpret_cast<Pixel*>(&wanted[CHANNELS]), width, HEIGHT, step},
                         op);
            for (std::size_t i = 0; i < wanted.size(); ++i) {
                ASSERT_TRUE(same(values[i], wanted[i]))
                    << values[i] << " instead of " << wanted[i] << " at " << i << ", width " << width;
            }
        }
    }
}

TEST(HostLoops, GiveWhatPixelByPixelGives) {
    for (const float factor : {0.001F, 0.0254F, 1.0F, 3.28084F, 39.3701F, 1000.0F}) {
        expectAsPixelByPixel<float>(ScaleAll{factor});
        expectAsPixelByPixel<Vector3<float>>(ScaleAll{factor});
        expectAsPixelByPixel<Vector4<float>>(ScaleAll{factor});
    }
    expectAsPixelByPixel<Vector3<float>>(ApplyMatrix3{{1, -2, 0.5F, 0, 3, -1, 7, 0.25F, 1}});
    expectAsPixelByPixel<Vector4<float>>(
        ApplyMatrix4{{1, -2, 0.5F, 10, 0, 3, -1, 0.1F, 7, 0.25F, 1, -3, 9, 9, 9, 9}});
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/mat_conversion.hpp"

#include "support/device.hpp"
#include "support/geometry.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <tuple>

namespace vela::test {
namespace {

using Frame = COORDINATE_SYSTEM;
constexpr auto TO = Frame::RIGHT_HANDED_Z_UP_AND_X_FORWARD;

class MatConversionTest : public DeviceTest {};

/// Alternates ordinary and special values; every fourth channel holds the bits of a signalling NaN.
Numbers samples(const Mat& mat) {
    constexpr float MAX = std::numeric_limits<float>::max();
    constexpr float VALUES[] = {1, -2.5F, 0, 700, -0.0F, 0.1F, INFINITY, -8, -INFINITY, 9, NAN, 1e-42F, MAX};
    Numbers samples(mat.width * mat.height * mat.channels);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = VALUES[i % std::size(VALUES)];
        const std::uint32_t colour = 0x7FA00001U + static_cast<std::uint32_t>(i);
        if (mat.channels == 4 && i % 4 == 3) std::memcpy(&samples[i], &colour, sizeof colour);
    }
    return samples;
}

/// Converts packed pixels, as the test below does, by the plain formula, so that a NaN or an infinity in one
/// coordinate spreads to the others. The device leaves colours alone, the host scales them.
Numbers converted(Numbers values, std::size_t channels, MEM mem) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (mem == MEM::CPU || channels != 4 || i % 4 != 3) values[i] *= 100.0F;
    }
    constexpr float K[3][3] = {{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}};
    for (std::size_t i = 0; channels > 1 && i < values.size(); i += channels) {
        const Vector3<float> p(values[i], values[i + 1], values[i + 2]);
        for (std::size_t row = 0; row < 3; ++row) {
            const float sum = K[row][0] * p.x + K[row][1] * p.y + K[row][2] * p.z;
            // The 4x4 matrix adds a zero, which turns -0 into 0.
            values[i + row] = channels == 4 ? sum + 0.0F : sum;
        }
    }
    return values;
}

TEST_F(MatConversionTest, AppliesThePlainFormulas) {
    for (const MAT_TYPE type : {F1, F3, F4}) {
        for (const std::size_t width : {1U, 3U, 7U, 8U, 9U, 64U, 65U, 129U}) {
            SCOPED_TRACE(testing::Message() << toValue(type) << " " << width);
            Mat device(width, 3, type, MEM::GPU);
            const std::size_t step = width * device.pixelBytes + 8;
            Bytes padded(3 * step, 0x40);
            Mat host(width, 3, type, padded.data(), step, MEM::CPU);
            Mat both(width, 3, type, MEM_BOTH);  // converted on the device, seen on the host
            for (Mat* const mat : {&host, &device, &both}) {
                const MEM mem = mat->memType;
                const Numbers before = samples(*mat);
                store(*mat, mem == MEM::CPU ? MEM::CPU : MEM::GPU, before.data());
                EXPECT_EQ(convertUnit(*mat, UNIT::METER, UNIT::CENTIMETER, mem), OK);
                EXPECT_EQ(convertCoordinateSystem(*mat, Frame::IMAGE, TO, mem),
                          mat->channels > 1 ? OK : ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
                Numbers seen(before.size());
                std::memcpy(seen.data(), load(*mat, mem == MEM::GPU ? MEM::GPU : MEM::CPU).data(),
                            seen.size() * sizeof(float));
                const std::size_t color = mat->channels == 4 ? 4 : SIZE_MAX;
                EXPECT_EQ(bitsOf(seen, color), bitsOf(converted(before, mat->channels, mem), color));
            }
            EXPECT_TRUE(std::all_of(padded.end() - 8, padded.end(), [](int byte) { return byte == 0x40; }));
        }
    }
}

/// Tests the order of the checks for an enumeration with values below `count`; the Mat must not change.
template <class Enum>
void expectChecks(ERROR_CODE (*convert)(Mat&, Enum, Enum, MEM), MAT_TYPE type, bool accepted,
                  std::int32_t count, ERROR_CODE pastTheLast) {
    const ERROR_CODE unlessRefused = accepted ? OK : ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    const std::tuple<std::int32_t, std::int32_t, std::int32_t, ERROR_CODE> cases[] = {
        {99, 99, 1, OK},  // equal values are accepted first, even unknown ones
        // then a signed comparison with the last value, before the type is checked
        {count, 0, 1, pastTheLast},
        {0, count, 1, pastTheLast},
        {-1, count, 1, pastTheLast},
        {-1, 0, 1, unlessRefused},  // negative values count as value 0
        // then the type; for an invalid side nothing is done, and nothing fails
        {0, 1, 0, unlessRefused},
        {0, 1, 4, unlessRefused},
        {0, 1, accepted ? 0 : 1, unlessRefused}};
    for (const auto& [from, to, side, wanted] : cases) {
        Mat mat = filled(4, 2, type, MEM::CPU);
        EXPECT_EQ(convert(mat, fromValue<Enum>(from), fromValue<Enum>(to), fromValue<MEM>(side)), wanted)
            << "type " << toValue(type) << ", " << count << " values, " << from << " to " << to;
        EXPECT_TRUE(sameBytes(load(mat, MEM::CPU), pattern(packedSize(mat))));
    }
}

TEST_F(MatConversionTest, ChecksValuesThenTypeThenSide) {
    for (std::int32_t value = 0; value <= toValue(S4) + 1; ++value) {
        const auto type = fromValue<MAT_TYPE>(value);
        const bool isPoint = type == F3 || type == F4;
        expectChecks<UNIT>(convertUnit, type, isPoint || type == F1, 5,
                           ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
        expectChecks<Frame>(convertCoordinateSystem, type, isPoint, 6, ERROR_CODE::INVALID_COORDINATE_SYSTEM);
    }
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/mat_conversion.hpp"

#include "support/device.hpp"
#include "support/geometry.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace vela::test {
namespace {

using detail::fromValue;
using detail::toValue;

using Frame = COORDINATE_SYSTEM;
constexpr auto TO = Frame::RIGHT_HANDED_Z_UP_AND_X_FORWARD;

class MatConversionTest : public DeviceTest {};

/// Ordinary and special values in turn; each fourth of four channels has a signalling NaN's bits.
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

/// Bit patterns, as a comparison of floats would lose NaNs and the sign of zeros. A coordinate may be any
/// NaN, but a colour is what it is to the bit.
std::vector<std::uint32_t> bits(Numbers values, std::size_t channels) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isnan(values[i]) && !(channels == 4 && i % 4 == 3)) values[i] = NAN;
    }
    std::vector<std::uint32_t> result(values.size());
    std::memcpy(result.data(), values.data(), values.size() * sizeof(float));
    return result;
}

/// What the conversions of the test below make of packed pixels: the plain formula, so that a NaN or an
/// infinity in one coordinate reaches the others. The device leaves colours alone, the host scales them.
Numbers converted(Numbers values, std::size_t channels, MEM mem) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (mem == MEM::CPU || channels != 4 || i % 4 != 3) values[i] *= 100.0F;
    }
    constexpr float K[3][3] = {{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}};
    for (std::size_t i = 0; channels > 1 && i < values.size(); i += channels) {
        const Vector3<float> p(values[i], values[i + 1], values[i + 2]);
        for (std::size_t row = 0; row < 3; ++row) {
            const float sum = K[row][0] * p.x + K[row][1] * p.y + K[row][2] * p.z;
            // The larger matrix has a column of zeros, which makes 0 of -0.
            values[i + row] = channels == 4 ? sum + 0.0F : sum;
        }
    }
    return values;
}

TEST_F(MatConversionTest, AppliesTheFormulasAsTheyStand) {
    for (const MAT_TYPE type : {MAT_TYPE::MAT_32F_C1, MAT_TYPE::MAT_32F_C3, MAT_TYPE::MAT_32F_C4}) {
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
                EXPECT_EQ(convertUnit(*mat, UNIT::METER, UNIT::CENTIMETER, mem), ERROR_CODE::SUCCESS);
                EXPECT_EQ(convertCoordinateSystem(*mat, Frame::IMAGE, TO, mem),
                          mat->channels > 1 ? ERROR_CODE::SUCCESS : ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
                Numbers seen(before.size());
                std::memcpy(seen.data(), load(*mat, mem == MEM::GPU ? MEM::GPU : MEM::CPU).data(),
                            seen.size() * sizeof(float));
                EXPECT_EQ(bits(seen, mat->channels),
                          bits(converted(before, mat->channels, mem), mat->channels));
            }
            EXPECT_TRUE(std::all_of(padded.end() - 8, padded.end(), [](int byte) { return byte == 0x40; }));
        }
    }
}

/// Expects a status of a conversion, which leaves the Mat as it is.
template <class Enum, ERROR_CODE (*convert)(Mat&, Enum, Enum, MEM)>
void expectStatus(ERROR_CODE wanted, MAT_TYPE type, std::int32_t from, std::int32_t to, MEM mem) {
    Mat mat = filled(4, 2, type, MEM::CPU);
    EXPECT_EQ(convert(mat, fromValue<Enum>(from), fromValue<Enum>(to), mem), wanted) << from << " " << to;
    EXPECT_EQ(load(mat, MEM::CPU), pattern(packedSize(mat)));
}

/// The checks in their order, for an enumeration with values below `count`.
template <class Enum, ERROR_CODE (*convert)(Mat&, Enum, Enum, MEM)>
void expectChecks(MAT_TYPE type, bool accepted, std::int32_t count, ERROR_CODE pastTheLast) {
    SCOPED_TRACE(testing::Message() << "type " << toValue(type) << ", " << count << " values");
    const ERROR_CODE unlessRefused = accepted ? ERROR_CODE::SUCCESS : ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    // Equal values come first, whatever they are.
    expectStatus<Enum, convert>(ERROR_CODE::SUCCESS, type, 99, 99, MEM::CPU);
    // Then the check against the last value, which is signed; before the type.
    for (const auto& [from, to] : {std::pair(count, 0), std::pair(0, count), std::pair(-1, count)}) {
        expectStatus<Enum, convert>(pastTheLast, type, from, to, MEM::CPU);
    }
    // Negative values count as the first, so accepted types are converted to what they are.
    expectStatus<Enum, convert>(unlessRefused, type, -1, 0, MEM::CPU);
    // Then the type; a side that is none is no failure, and no work.
    for (const std::int32_t side : {0, 4}) {
        expectStatus<Enum, convert>(unlessRefused, type, 0, 1, fromValue<MEM>(side));
    }
    if (!accepted) expectStatus<Enum, convert>(unlessRefused, type, 0, 1, MEM::CPU);
}

TEST_F(MatConversionTest, ChecksValuesThenTypeThenSide) {
    for (std::int32_t value = 0; value <= toValue(MAT_TYPE::MAT_8S_C4) + 1; ++value) {
        const auto type = fromValue<MAT_TYPE>(value);
        const bool isPoint = type == MAT_TYPE::MAT_32F_C3 || type == MAT_TYPE::MAT_32F_C4;
        expectChecks<UNIT, convertUnit>(type, isPoint || type == MAT_TYPE::MAT_32F_C1, 5,
                                        ERROR_CODE::INVALID_FUNCTION_PARAMETERS);
        expectChecks<Frame, convertCoordinateSystem>(type, isPoint, 6, ERROR_CODE::INVALID_COORDINATE_SYSTEM);
    }
}

}  // namespace
}  // namespace vela::test

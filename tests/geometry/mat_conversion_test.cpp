#include "vela_core/geometry/mat_conversion.hpp"

#include "support/capture.hpp"
#include "support/device.hpp"
#include "support/geometry.hpp"
#include "vela_core/geometry/conversion.hpp"
#include "vela_core/types/enum_cast.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace vela::test {
namespace {

using Frame = COORDINATE_SYSTEM;
constexpr MAT_TYPE FLOAT_TYPES[] = {MAT_TYPE::MAT_32F_C1, MAT_TYPE::MAT_32F_C3, MAT_TYPE::MAT_32F_C4};
constexpr MEM SIDES[] = {MEM::CPU, MEM::GPU, MEM_BOTH};
constexpr std::size_t WIDTHS[] = {1, 3, 7, 8, 9, 64, 65, 129};

class MatConversionTest : public DeviceTest {};

/// Random coordinates, some of them special values; every fourth float is a packed colour's bit pattern.
std::vector<float> samples(const Mat& mat) {
    const float special[] = {
        0.0F, -0.0F, INFINITY, -INFINITY, NAN, 1e-42F, std::numeric_limits<float>::max()};
    std::vector<float> values(mat.width * mat.height * mat.channels);
    Random next(static_cast<unsigned>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = i % 11 == 5 ? special[i / 11 % std::size(special)] : next(-1000, 1000);
        if (mat.channels == 4 && i % 4 == 3) {
            const std::uint32_t colour =
                0x7FA00001U + static_cast<std::uint32_t>(i);  // a signalling NaN's bits
            std::memcpy(&values[i], &colour, sizeof colour);
        }
    }
    return values;
}

/// Floats of one side of a Mat, packed.
std::vector<float> floats(const Mat& mat, MEM side) {
    const Bytes bytes = load(mat, side);
    std::vector<float> values(bytes.size() / sizeof(float));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
}

std::uint32_t bits(float value) {
    std::uint32_t result = 0;
    std::memcpy(&result, &value, sizeof result);
    return result;
}

/// Equal bits, or both NaN where the calculation may give any NaN.
void expectSame(const std::vector<float>& seen, const std::vector<float>& wanted, std::size_t channels) {
    ASSERT_EQ(seen.size(), wanted.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const bool keptColour = channels == 4 && i % 4 == 3;
        const bool sameBits = bits(seen[i]) == bits(wanted[i]);
        EXPECT_TRUE(sameBits || (!keptColour && std::isnan(seen[i]) && std::isnan(wanted[i])))
            << i << ": " << seen[i] << " instead of " << wanted[i];
    }
}

TEST_F(MatConversionTest, ScalesEveryValueOnEitherSide) {
    for (const MAT_TYPE type : FLOAT_TYPES) {
        for (const MEM side : SIDES) {
            for (const std::size_t width : WIDTHS) {
                SCOPED_TRACE(testing::Message() << toValue(type) << " " << toValue(side) << " " << width);
                Mat mat(width, 3, type, MEM_BOTH);
                const std::vector<float> before = samples(mat);
                store(mat, MEM::CPU, before.data());
                store(mat, MEM::GPU, before.data());
                EXPECT_EQ(convertUnit(mat, UNIT::METER, UNIT::CENTIMETER, side), ERROR_CODE::SUCCESS);
                std::vector<float> onHost(before);
                std::vector<float> onDevice(before);
                for (std::size_t i = 0; i < before.size(); ++i) {
                    onHost[i] = before[i] * 100.0F;
                    if (mat.channels != 4 || i % 4 != 3) onDevice[i] = onHost[i];
                }
                // The host scales the fourth channel as well; the device keeps its bits.
                if (side == MEM::CPU) expectSame(floats(mat, MEM::CPU), onHost, 0);
                if (side == MEM::GPU) expectSame(floats(mat, MEM::CPU), before, mat.channels);
                if (side == MEM_BOTH) expectSame(floats(mat, MEM::CPU), onDevice, mat.channels);
                expectSame(floats(mat, MEM::GPU), side == MEM::CPU ? before : onDevice, mat.channels);
            }
        }
    }
}

TEST_F(MatConversionTest, AppliesTheFormulaAsItStandsOnEitherSide) {
    for (const MAT_TYPE type : {MAT_TYPE::MAT_32F_C3, MAT_TYPE::MAT_32F_C4}) {
        for (const MEM side : SIDES) {
            for (std::int32_t to = 1; to < 6; ++to) {
                const std::size_t width = WIDTHS[static_cast<std::size_t>(to) + 1];
                SCOPED_TRACE(testing::Message() << toValue(type) << " " << toValue(side) << " " << to);
                Mat mat(width, 3, type, MEM_BOTH);
                const std::vector<float> before = samples(mat);
                store(mat, MEM::CPU, before.data());
                store(mat, MEM::GPU, before.data());
                EXPECT_EQ(convertCoordinateSystem(mat, Frame::IMAGE, fromValue<Frame>(to), side),
                          ERROR_CODE::SUCCESS);
                const Matrix4f k = getCoordinateTransformConversion4f(Frame::IMAGE, fromValue<Frame>(to));
                std::vector<float> after(before);
                for (std::size_t i = 0; i < before.size(); i += mat.channels) {
                    const float* const p = &before[i];
                    for (int row = 0; row < 3; ++row) {
                        float sum = k(row, 0) * p[0] + k(row, 1) * p[1] + k(row, 2) * p[2];
                        if (mat.channels == 4) sum += k(row, 3);
                        after[i + static_cast<std::size_t>(row)] = sum;
                    }
                }
                expectSame(floats(mat, MEM::CPU), side == MEM::GPU ? before : after, mat.channels);
                expectSame(floats(mat, MEM::GPU), side == MEM::CPU ? before : after, mat.channels);
            }
        }
    }
}

TEST_F(MatConversionTest, MovesAPointAndKeepsItsColour) {
    float point[4] = {1, 2, 3, 4};
    Mat mat(1, 1, MAT_TYPE::MAT_32F_C4, reinterpret_cast<unsigned char*>(point), sizeof point, MEM::CPU);
    EXPECT_EQ(convertCoordinateSystem(mat, Frame::IMAGE, Frame::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD, MEM::CPU),
              ERROR_CODE::SUCCESS);
    EXPECT_TRUE(point[0] == 1 && point[1] == -2 && point[2] == -3 && point[3] == 4);
    EXPECT_EQ(convertUnit(mat, UNIT::METER, UNIT::MILLIMETER, MEM::CPU), ERROR_CODE::SUCCESS);
    EXPECT_TRUE(point[0] == 1000 && point[1] == -2000 && point[2] == -3000 && point[3] == 4000);
}

TEST_F(MatConversionTest, StepsOverThePaddingOfHostRows) {
    for (const MAT_TYPE type : FLOAT_TYPES) {
        constexpr std::size_t step = 100;
        std::vector<float> rows(3 * step / sizeof(float), 1.0F);
        Mat mat(5, 3, type, reinterpret_cast<unsigned char*>(rows.data()), step, MEM::CPU);
        EXPECT_EQ(convertUnit(mat, UNIT::METER, UNIT::CENTIMETER, MEM::CPU), ERROR_CODE::SUCCESS);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(rows[i], i * sizeof(float) % step < 5 * mat.pixelBytes ? 100.0F : 1.0F) << i;
        }
    }
}

TEST_F(MatConversionTest, ChecksComeInOrder) {
    constexpr auto BAD = ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    constexpr auto LAST = Frame::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
    constexpr auto OUT = static_cast<MEM>(0);
    const auto unit = [](std::int32_t value) { return fromValue<UNIT>(value); };
    const auto frame = [](std::int32_t value) { return fromValue<Frame>(value); };
    for (std::int32_t type = 0; type <= 10; ++type) {
        Mat mat = filled(4, 2, fromValue<MAT_TYPE>(type), MEM::CPU);
        const bool points = type == 2 || type == 3;
        const bool scalable = points || type == 0;
        EXPECT_EQ(convertUnit(mat, unit(9), unit(9), MEM::CPU), ERROR_CODE::SUCCESS);
        EXPECT_EQ(convertUnit(mat, unit(5), unit(0), MEM::CPU), BAD);
        EXPECT_EQ(convertUnit(mat, unit(0), unit(5), MEM::CPU), BAD);
        EXPECT_EQ(convertUnit(mat, unit(0), unit(1), OUT), scalable ? ERROR_CODE::SUCCESS : BAD);
        EXPECT_EQ(convertCoordinateSystem(mat, frame(9), frame(9), MEM::CPU), ERROR_CODE::SUCCESS);
        EXPECT_EQ(convertCoordinateSystem(mat, frame(6), LAST, MEM::CPU),
                  ERROR_CODE::INVALID_COORDINATE_SYSTEM);
        EXPECT_EQ(convertCoordinateSystem(mat, LAST, frame(6), MEM::CPU),
                  ERROR_CODE::INVALID_COORDINATE_SYSTEM);
        EXPECT_EQ(convertCoordinateSystem(mat, LAST, frame(0), OUT), points ? ERROR_CODE::SUCCESS : BAD);
        EXPECT_EQ(convertCoordinateSystem(mat, frame(-1), frame(0), MEM_MANAGED),
                  points ? ERROR_CODE::SUCCESS : BAD);
        EXPECT_EQ(load(mat, MEM::CPU), pattern(packedSize(mat))) << "type " << type;
    }
}

TEST_F(MatConversionTest, MissingSidesAndEmptyMatsAreLeftAlone) {
    for (const MEM side : SIDES) {
        Mat empty(0, 4, MAT_TYPE::MAT_32F_C4);
        EXPECT_EQ(convertUnit(empty, UNIT::METER, UNIT::INCH, side), ERROR_CODE::SUCCESS);
    }
    Mat device = filled(4, 2, MAT_TYPE::MAT_32F_C4, MEM::GPU);
    EXPECT_EQ(convertUnit(device, UNIT::METER, UNIT::INCH, MEM::CPU), ERROR_CODE::SUCCESS);
    EXPECT_EQ(load(device, MEM::GPU), pattern(128));
    Mat host = filled(4, 2, MAT_TYPE::MAT_32F_C4, MEM::CPU);
    EXPECT_EQ(convertCoordinateSystem(host, Frame::IMAGE, Frame::LEFT_HANDED_Y_UP_AND_Z_FORWARD, MEM::GPU),
              ERROR_CODE::SUCCESS);
    EXPECT_EQ(load(host, MEM::CPU), pattern(128));
    EXPECT_EQ(cudaGetLastError(), cudaSuccess) << "nothing was launched over a null pointer";
}

}  // namespace
}  // namespace vela::test

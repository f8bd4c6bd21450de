// SPDX-License-Identifier: Apache-2.0
#include "vela_core/log/KLogger.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/vela.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace vela::test {
namespace {

using detail::fromValue;
using detail::toValue;

/// Compares the names of an enumeration with a line of the table: first the name for unknown values, then
/// those of the values from 0 on.
template <class Enum>
void expectNames(std::istream& table, Enum last) {
    std::string wanted;
    std::getline(table, wanted);
    const String none = toString(fromValue<Enum>(-1));
    std::string names = wanted.substr(0, wanted.find('"')) + '"' + toStdString(none) + "\": ";
    for (std::int32_t value = 0; value <= toValue(last); ++value) {
        names += (value == 0 ? "" : ", ") + toStdString(toString(fromValue<Enum>(value)));
    }
    EXPECT_EQ(names, wanted);
    EXPECT_EQ(toString(fromValue<Enum>(toValue(last) + 1)), none) << names;
}

TEST(EnumNames, MatchTheTable) {
    using Magnetometer = SensorsData::MagnetometerData;
    using Temperature = SensorsData::TemperatureData;
    std::ifstream table(VELA_TEST_FOLDER "/types/enum_names.txt");
    const auto expectNamesUpTo = [&](auto... last) { (expectNames(table, last), ...); };
    expectNamesUpTo(MEM::GPU, COPY_TYPE::GPU_CPU, MAT_TYPE::MAT_8S_C4, UNIT::FOOT,
                    COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD, MODEL::KITE_3E, INPUT_TYPE::STREAM,
                    CAMERA_STATE::NOT_AVAILABLE, SENSOR_TYPE::BAROMETER, SENSORS_UNIT::HZ,
                    Magnetometer::HEADING_STATE::MAGNETOMETER_NOT_AVAILABLE,
                    SensorsData::CAMERA_MOTION_STATE::FALLING, Temperature::SENSOR_LOCATION::ONBOARD_SECOND,
                    OBJECT_TRACKING_STATE::TERMINATE, OBJECT_ACTION_STATE::MOVING,
                    OBJECT_FILTERING_MODE::NMS_3D, DETECTION_MODEL::CUSTOM_BOX_OBJECTS, BODY_FORMAT::POSE_34,
                    BODY_PARTS::LEFT_EAR, BODY_PARTS_POSE_34::RIGHT_HEEL, OBJECT_CLASS::SPORT,
                    OBJECT_SUBCLASS::SPORTSBALL, VTK, PGM, LOGGER_NAME::CORE);
    EXPECT_EQ(toString(MEM_MANAGED), "Unknown") << "nor have both sides, 3";
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/Sensors.hpp"

#include "vela_core/types/detail/enum_table.hpp"

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<SENSOR_TYPE> SENSOR_TYPE_NAMES[] = {
    {SENSOR_TYPE::ACCELEROMETER, "Accelerometer"},
    {SENSOR_TYPE::GYROSCOPE, "Gyroscope"},
    {SENSOR_TYPE::MAGNETOMETER, "Magnetometer"},
    {SENSOR_TYPE::BAROMETER, "Barometer"},
};

constexpr EnumName<SENSORS_UNIT> SENSORS_UNIT_NAMES[] = {
    {SENSORS_UNIT::M_S2, "m/s\xC2\xB2"},
    {SENSORS_UNIT::DEG_S, "\xC2\xB0/s"},
    {SENSORS_UNIT::UT, "uT"},
    {SENSORS_UNIT::HPA, "hPa"},
    {SENSORS_UNIT::DEG_C,
     "\xC2\xB0"
     "C"},
    {SENSORS_UNIT::HZ, "Hz"},
};

}  // namespace

String toString(const SENSOR_TYPE& value) {
    return nameIn(SENSOR_TYPE_NAMES, value, NO_NAME);
}

String toString(const SENSORS_UNIT& value) {
    return nameIn(SENSORS_UNIT_NAMES, value, NO_NAME);
}

}  // namespace vela

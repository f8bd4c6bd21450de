// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Kind of a motion or environment sensor.
enum class SENSOR_TYPE : std::int32_t {
    ACCELEROMETER = 0,  ///< linear acceleration
    GYROSCOPE = 1,      ///< angular velocity
    MAGNETOMETER = 2,   ///< magnetic field
    BAROMETER = 3,      ///< air pressure
};

/// Physical unit of a sensor's values.
enum class SENSORS_UNIT : std::int32_t {
    M_S2 = 0,   ///< metres per square second
    DEG_S = 1,  ///< degrees per second
    UT = 2,     ///< microtesla
    HPA = 3,    ///< hectopascal
    DEG_C = 4,  ///< degrees Celsius
    HZ = 5,     ///< hertz
};

/// The display name; the empty text for a value without enumerator.
String toString(const SENSOR_TYPE& value);
/// The display name; the empty text for a value without enumerator.
String toString(const SENSORS_UNIT& value);

}  // namespace vela

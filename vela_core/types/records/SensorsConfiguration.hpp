// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/Sensors.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela VELA_API {

/// Data sheet of one sensor. Each starts as an accelerometer that is not available, whatever sensor it is
/// for: whoever describes a sensor sets `type` and `unit` as well. The units of the two noise figures are
/// this library's convention; it carries the values and does not compute with them.
struct SensorParameters {
    SENSOR_TYPE type = SENSOR_TYPE::ACCELEROMETER;  ///< kind of sensor
    float resolution = 0.0F;                        ///< smallest step between two readings, in `unit`
    float sampling_rate = 0.0F;                     ///< samples per second, in Hz
    Vector2<float> range;        ///< x the smallest, y the largest reading, in `unit`; 0, 0 at first
    float noise_density = 0.0F;  ///< white noise, in `unit` / sqrt(Hz)
    float random_walk = 0.0F;    ///< random walk of the bias, in `unit` / s / sqrt(Hz)
    SENSORS_UNIT unit = SENSORS_UNIT::M_S2;  ///< unit of the readings
    bool available = false;                  ///< whether the camera has the sensor
};

/// The sensors of a camera.
struct SensorsConfiguration {
    SensorParameters accelerometer;  ///< linear acceleration
    SensorParameters gyroscope;      ///< angular velocity; starts with the type and unit of an accelerometer
    SensorParameters magnetometer;   ///< magnetic field; starts as the gyroscope does
    SensorParameters barometer;      ///< air pressure; starts as the gyroscope does

    /// Whether the camera has the sensor; false for a value without enumerator.
    bool isSensorAvailable(const SENSOR_TYPE& type) const;
};

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/Sensors.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela VELA_API {

/// What is known of one sensor. Each starts as an accelerometer that is not available, whatever sensor it is
/// for: whoever describes a sensor sets `type` and `unit` as well.
struct SensorParameters {
    SENSOR_TYPE type = SENSOR_TYPE::ACCELEROMETER;
    float resolution = 0.0F;     ///< least step between two readings, in `unit`
    float sampling_rate = 0.0F;  ///< Hz
    Vector2<float> range;        ///< x the least, y the largest reading, in `unit`; 0, 0 at first
    float noise_density = 0.0F;  ///< of the white noise, in `unit` per square root of a hertz
    float random_walk = 0.0F;    ///< of the bias, in `unit` per second and square root of a hertz
    SENSORS_UNIT unit = SENSORS_UNIT::M_S2;
    bool available = false;  ///< whether the camera has the sensor
};

/// The sensors of a camera.
struct SensorsConfiguration {
    SensorParameters accelerometer;
    SensorParameters gyroscope;  ///< starts with the type and unit of an accelerometer, as the next two do
    SensorParameters magnetometer;
    SensorParameters barometer;

    /// Whether the camera has the sensor; false for a value without enumerator.
    bool isSensorAvailable(const SENSOR_TYPE& type) const;
};

}  // namespace vela

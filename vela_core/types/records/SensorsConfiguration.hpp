#pragma once

#include "vela_core/types/Sensors.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela {

/// What is known of one sensor; values are in `unit`, noise per square root of a hertz.
struct SensorParameters {
    SENSOR_TYPE type = SENSOR_TYPE::ACCELEROMETER;
    float resolution = 0.0F;
    float sampling_rate = 0.0F;  ///< Hz
    Vector2<float> range;        ///< least and largest value
    float noise_density = 0.0F;
    float random_walk = 0.0F;
    SENSORS_UNIT unit = SENSORS_UNIT::M_S2;
    bool available = false;
};

/// The sensors of a camera.
struct SensorsConfiguration {
    SensorParameters accelerometer;
    SensorParameters gyroscope;
    SensorParameters magnetometer;
    SensorParameters barometer;

    /// Whether the camera has the sensor; false for a value without enumerator.
    bool isSensorAvailable(const SENSOR_TYPE& type) const;
};

}  // namespace vela

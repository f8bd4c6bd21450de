// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>
#include <map>

namespace vela {

/// One sample of all motion and environment sensors. Time stamps are nanoseconds. Members "not set by the
/// constructor" hold no value until the producer of the sample gives them one.
struct SensorsData {
    struct BarometerData {
        bool available;  ///< not set by the constructor
        unsigned long long timestamp = 0;
        float pressure;  ///< hPa; not set by the constructor
        float altitude;  ///< metres, relative; not set by the constructor
        float rate;      ///< Hz; not set by the constructor
    };

    struct TemperatureData {
        /// Where a temperature is measured.
        enum class SENSOR_LOCATION : std::int32_t {
            IMU = 0,
            BAROMETER = 1,
            ONBOARD_LEFT = 2,
            ONBOARD_SECOND = 3,
        };

        std::map<SENSOR_LOCATION, float> temperatures;  ///< degrees Celsius, one at most for a location

        /// The temperature of a location; without one `value` becomes NaN and `FAILURE` is returned.
        ERROR_CODE get(SENSOR_LOCATION location, float& value) const;
    };

    struct MagnetometerData {
        /// Quality of the magnetic heading.
        enum class HEADING_STATE : std::int32_t {
            GOOD = 0,
            OK = 1,
            NOT_GOOD = 2,
            MAGNETOMETER_NOT_CALIBRATED = 3,
            MAGNETOMETER_NOT_AVAILABLE = 4,
        };

        bool available;  ///< not set by the constructor
        unsigned long long timestamp = 0;
        Vector3<float> field;         ///< uT, calibrated
        Vector3<float> field_raw;     ///< uT
        float heading;                ///< degrees from north; not set by the constructor
        HEADING_STATE heading_state;  ///< not set by the constructor
        float heading_accuracy;       ///< 0 to 1; not set by the constructor
        float rate;                   ///< Hz; not set by the constructor
    };

    /// Copies keep the labels of the pose and the matrices, although copying one of these alone drops its
    /// label.
    struct IMUData {
        bool available;  ///< not set by the constructor
        unsigned long long timestamp = 0;
        Transform pose;  ///< of the sensor
        Matrix3f pose_covariance;
        Vector3<float> angular_velocity;         ///< degrees per second
        Vector3<float> linear_acceleration;      ///< metres per square second
        Vector3<float> angular_velocity_raw;     ///< without bias correction
        Vector3<float> linear_acceleration_raw;  ///< without bias correction
        Matrix3f angular_velocity_covariance;
        Matrix3f linear_acceleration_covariance;
        float rate;  ///< Hz; not set by the constructor

        IMUData() = default;
        IMUData(const IMUData& other) { *this = other; }
        IMUData& operator=(const IMUData& other);
        ~IMUData() = default;
    };

    enum class CAMERA_MOTION_STATE : std::int32_t {
        STATIC = 0,
        MOVING = 1,
        FALLING = 2,
    };

    /// Leaves what is "not set by the constructor" without a value, `SensorsData{}` as well.
    SensorsData() noexcept {}  // NOLINT(modernize-use-equals-default): a constant needs a constructor of ours

    BarometerData barometer;
    TemperatureData temperature;
    MagnetometerData magnetometer;
    IMUData imu;
    CAMERA_MOTION_STATE motion_state = CAMERA_MOTION_STATE::STATIC;
    int sync_count = 0;  ///< trigger signals since the start
};

/// @{ The display name; "Unknown" for a value without enumerator.
String toString(const SensorsData::MagnetometerData::HEADING_STATE& value);
String toString(const SensorsData::CAMERA_MOTION_STATE& value);
String toString(const SensorsData::TemperatureData::SENSOR_LOCATION& value);
/// @}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>
#include <map>

namespace vela VELA_API {

/// One sample of all motion and environment sensors. Time stamps are nanoseconds. Members "not set by the
/// constructor" hold no value until the producer of the sample gives them one.
struct SensorsData {
    /// Air pressure.
    struct BarometerData {
        bool available;                    ///< whether the sample has one; not set by the constructor
        unsigned long long timestamp = 0;  ///< ns
        float pressure;                    ///< hPa; not set by the constructor
        float altitude;                    ///< metres, relative; not set by the constructor
        float rate;                        ///< Hz; not set by the constructor
    };

    /// Temperatures inside the camera.
    struct TemperatureData {
        /// Where a temperature is measured.
        enum class SENSOR_LOCATION : std::int32_t {
            IMU = 0,             ///< in the motion sensor
            BAROMETER = 1,       ///< in the barometer
            ONBOARD_LEFT = 2,    ///< beside the left image sensor
            ONBOARD_SECOND = 3,  ///< beside the right image sensor
        };

        std::map<SENSOR_LOCATION, float> temperatures;  ///< degrees Celsius, one at most for a location

        /// The temperature of a location; without one `value` becomes NaN and `FAILURE` is returned.
        ERROR_CODE get(SENSOR_LOCATION location, float& value) const;
    };

    struct MagnetometerData {
        /// Quality of the magnetic heading.
        enum class HEADING_STATE : std::int32_t {
            GOOD = 0,                         ///< may be relied on
            OK = 1,                           ///< usable, somewhat disturbed
            NOT_GOOD = 2,                     ///< disturbed
            MAGNETOMETER_NOT_CALIBRATED = 3,  ///< not usable before a calibration
            MAGNETOMETER_NOT_AVAILABLE = 4,   ///< the camera has none
        };

        bool available;                    ///< whether the sample has one; not set by the constructor
        unsigned long long timestamp = 0;  ///< ns
        Vector3<float> field;              ///< uT, calibrated, along the axes of the sensor
        Vector3<float> field_raw;          ///< uT, as measured
        float heading;                     ///< degrees from north; not set by the constructor
        HEADING_STATE heading_state;       ///< not set by the constructor
        float heading_accuracy;            ///< 0 (bad) to 1 (good); not set by the constructor
        float rate;                        ///< Hz; not set by the constructor
    };

    /// Motion: gyroscope and accelerometer. Vectors are along the axes of the sensor and 0 at first;
    /// covariances start as identities, in the squared unit of what they belong to, rows and columns in the
    /// order x, y, z. Copies keep the labels of the pose and the matrices, although copying one of these
    /// alone drops its label.
    struct IMUData {
        bool available;                          ///< whether the sample has one; not set by the constructor
        unsigned long long timestamp = 0;        ///< ns
        Transform pose;                          ///< of the sensor in the world, from fused samples
        Matrix3f pose_covariance;                ///< of the orientation, as turns about x, y and z
        Vector3<float> angular_velocity;         ///< degrees per second
        Vector3<float> linear_acceleration;      ///< metres per square second
        Vector3<float> angular_velocity_raw;     ///< degrees per second, bias not removed
        Vector3<float> linear_acceleration_raw;  ///< metres per square second, bias not removed
        Matrix3f angular_velocity_covariance;
        Matrix3f linear_acceleration_covariance;
        float rate;  ///< Hz; not set by the constructor

        IMUData() = default;
        IMUData(const IMUData& other) { *this = other; }
        IMUData& operator=(const IMUData& other);
        ~IMUData() = default;
    };

    /// What the camera does, judged by its motion sensors.
    enum class CAMERA_MOTION_STATE : std::int32_t {
        STATIC = 0,   ///< rests
        MOVING = 1,   ///< is carried or driven
        FALLING = 2,  ///< falls freely
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

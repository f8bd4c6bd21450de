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

/// One sample of all motion and environment sensors. Time stamps count nanoseconds. Members "not set by the
/// constructor" hold no value until the producer of the sample sets them. Units are this library's
/// convention, the one that `SENSORS_UNIT` names; it carries the values and does not compute with them.
struct SensorsData {
    /// Air pressure.
    struct BarometerData {
        bool available;                    ///< whether the sample has one; not set by the constructor
        unsigned long long timestamp = 0;  ///< ns
        float pressure;                    ///< hPa; not set by the constructor
        float altitude;  ///< metres above a reference chosen by the producer; not set by the constructor
        float rate;      ///< Hz; not set by the constructor
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

        /// Reads the temperature of a location into `value`. Without one, sets it to NaN and returns
        /// `FAILURE`.
        ERROR_CODE get(SENSOR_LOCATION location, float& value) const;
    };

    /// Magnetic field and heading.
    struct MagnetometerData {
        /// Quality of the magnetic heading.
        enum class HEADING_STATE : std::int32_t {
            GOOD = 0,                         ///< reliable
            OK = 1,                           ///< usable, somewhat disturbed
            NOT_GOOD = 2,                     ///< disturbed
            MAGNETOMETER_NOT_CALIBRATED = 3,  ///< not usable before a calibration
            MAGNETOMETER_NOT_AVAILABLE = 4,   ///< the camera has none
        };

        bool available;                    ///< whether the sample has one; not set by the constructor
        unsigned long long timestamp = 0;  ///< ns
        Vector3<float> field;              ///< uT, calibrated, along the axes of the sensor
        Vector3<float> field_raw;          ///< uT, as measured, along the same axes
        float heading;                     ///< degrees, producer's convention; not set by the constructor
        HEADING_STATE heading_state;       ///< not set by the constructor
        float heading_accuracy;            ///< from 0 (worst) to 1 (best); not set by the constructor
        float rate;                        ///< Hz; not set by the constructor
    };

    /// Motion: gyroscope and accelerometer. Vectors have the axes of the sensor and start at 0; covariances
    /// are in the squared unit of their quantity, with rows and columns in the order x, y, z, and start as
    /// identities. Copies keep the labels of the pose and the matrices, although copying one of these alone
    /// drops its label.
    struct IMUData {
        bool available;                    ///< whether the sample has one; not set by the constructor
        unsigned long long timestamp = 0;  ///< ns
        Transform pose;                    ///< of the sensor in the world, in the producer's length unit
        Matrix3f pose_covariance;  ///< of the orientation: rotations about x, y and z, in square radians
        Vector3<float> angular_velocity;          ///< degrees per second
        Vector3<float> linear_acceleration;       ///< metres per square second
        Vector3<float> angular_velocity_raw;      ///< degrees per second, bias not removed
        Vector3<float> linear_acceleration_raw;   ///< metres per square second, bias not removed
        Matrix3f angular_velocity_covariance;     ///< of `angular_velocity`
        Matrix3f linear_acceleration_covariance;  ///< of `linear_acceleration`
        float rate;                               ///< Hz; not set by the constructor

        /// Time stamp 0, identity pose and covariances.
        IMUData() = default;
        /// Copies every member, labels included.
        IMUData(const IMUData& other) { *this = other; }
        /// Copies every member, labels included.
        IMUData& operator=(const IMUData& other);
        ~IMUData() = default;
    };

    /// Motion of the camera, judged by its motion sensors.
    enum class CAMERA_MOTION_STATE : std::int32_t {
        STATIC = 0,   ///< at rest
        MOVING = 1,   ///< is carried or driven
        FALLING = 2,  ///< in free fall
    };

    /// Leaves what is "not set by the constructor" without a value, `SensorsData{}` as well.
    SensorsData() noexcept {}  // NOLINT(modernize-use-equals-default): a constant needs a constructor of ours

    BarometerData barometer;                                         ///< air pressure
    TemperatureData temperature;                                     ///< temperatures; none at first
    MagnetometerData magnetometer;                                   ///< magnetic field and heading
    IMUData imu;                                                     ///< motion
    CAMERA_MOTION_STATE motion_state = CAMERA_MOTION_STATE::STATIC;  ///< what the camera does
    int sync_count = 0;                                              ///< trigger signals since the start
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const SensorsData::MagnetometerData::HEADING_STATE& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const SensorsData::CAMERA_MOTION_STATE& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const SensorsData::TemperatureData::SENSOR_LOCATION& value);

}  // namespace vela

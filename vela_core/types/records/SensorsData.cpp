// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/SensorsData.hpp"

#include "vela_core/types/detail/enum_table.hpp"

#include <cstring>
#include <limits>

namespace vela {
using namespace detail;
namespace {

using HEADING_STATE = SensorsData::MagnetometerData::HEADING_STATE;
using CAMERA_MOTION_STATE = SensorsData::CAMERA_MOTION_STATE;
using SENSOR_LOCATION = SensorsData::TemperatureData::SENSOR_LOCATION;

constexpr EnumName<HEADING_STATE> HEADING_STATE_NAMES[] = {
    {HEADING_STATE::GOOD, "Good"},
    {HEADING_STATE::OK, "OK"},
    {HEADING_STATE::NOT_GOOD, "Not good"},
    {HEADING_STATE::MAGNETOMETER_NOT_CALIBRATED, "Magnetometer not calibrated"},
    {HEADING_STATE::MAGNETOMETER_NOT_AVAILABLE, "Magnetometer not available"},
};

constexpr EnumName<CAMERA_MOTION_STATE> CAMERA_MOTION_STATE_NAMES[] = {
    {CAMERA_MOTION_STATE::STATIC, "Static"},
    {CAMERA_MOTION_STATE::MOVING, "Moving"},
    {CAMERA_MOTION_STATE::FALLING, "Falling"},
};

constexpr EnumName<SENSOR_LOCATION> SENSOR_LOCATION_NAMES[] = {
    {SENSOR_LOCATION::IMU, "IMU"},
    {SENSOR_LOCATION::BAROMETER, "BAROMETER"},
    {SENSOR_LOCATION::ONBOARD_LEFT, "ONBOARD LEFT"},
    {SENSOR_LOCATION::ONBOARD_SECOND, "ONBOARD LEFT"},  // identical to ONBOARD_LEFT on purpose
};

/// Copies numbers and label; the assignment of matrices leaves the label out.
template <class Matrix>
void copyLabelled(Matrix& to, const Matrix& from) {
    to = from;
    to.label = from.label;
}

}  // namespace

SensorsData::IMUData& SensorsData::IMUData::operator=(const IMUData& other) {
    if (this == &other) return *this;
    std::memcpy(&available, &other.available,
                sizeof available);  // reading an uninitialised bool is undefined
    timestamp = other.timestamp;
    copyLabelled(pose, other.pose);
    copyLabelled(pose_covariance, other.pose_covariance);
    angular_velocity = other.angular_velocity;
    linear_acceleration = other.linear_acceleration;
    angular_velocity_raw = other.angular_velocity_raw;
    linear_acceleration_raw = other.linear_acceleration_raw;
    copyLabelled(angular_velocity_covariance, other.angular_velocity_covariance);
    copyLabelled(linear_acceleration_covariance, other.linear_acceleration_covariance);
    rate = other.rate;
    return *this;
}

ERROR_CODE SensorsData::TemperatureData::get(SENSOR_LOCATION location, float& value) const {
    const auto found = temperatures.find(location);
    if (found == temperatures.end()) {
        value = std::numeric_limits<float>::quiet_NaN();
        return ERROR_CODE::FAILURE;
    }
    value = found->second;
    return ERROR_CODE::SUCCESS;
}

String toString(const SensorsData::MagnetometerData::HEADING_STATE& value) {
    return nameIn(HEADING_STATE_NAMES, value);
}

String toString(const SensorsData::CAMERA_MOTION_STATE& value) {
    return nameIn(CAMERA_MOTION_STATE_NAMES, value);
}

String toString(const SensorsData::TemperatureData::SENSOR_LOCATION& value) {
    return nameIn(SENSOR_LOCATION_NAMES, value);
}

}  // namespace vela

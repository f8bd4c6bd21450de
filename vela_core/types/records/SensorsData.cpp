#include "vela_core/types/records/SensorsData.hpp"

#include <cstring>
#include <limits>

namespace vela {
namespace {

/// Copies numbers and label; the assignment of matrices leaves the label out.
template <class Matrix>
void copyLabelled(Matrix& to, const Matrix& from) {
    to = from;
    to.label = from.label;
}

}  // namespace

SensorsData::IMUData& SensorsData::IMUData::operator=(const IMUData& other) {
    if (this == &other) return *this;
    std::memcpy(&available, &other.available, sizeof available);  // a bool that was never set is no bool
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

}  // namespace vela

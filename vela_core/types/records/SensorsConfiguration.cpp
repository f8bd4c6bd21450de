// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/SensorsConfiguration.hpp"

namespace vela {

bool SensorsConfiguration::isSensorAvailable(const SENSOR_TYPE& type) const {
    switch (type) {
        case SENSOR_TYPE::ACCELEROMETER:
            return accelerometer.available;
        case SENSOR_TYPE::GYROSCOPE:
            return gyroscope.available;
        case SENSOR_TYPE::MAGNETOMETER:
            return magnetometer.available;
        case SENSOR_TYPE::BAROMETER:
            return barometer.available;
    }
    return false;
}

}  // namespace vela

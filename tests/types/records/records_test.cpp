// SPDX-License-Identifier: Apache-2.0
#include "support/ScratchFolder.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/vela.hpp"

#include <cmath>
#include <limits>
#include <tuple>

namespace vela::test {
namespace {

using detail::fromValue;

using Location = SensorsData::TemperatureData::SENSOR_LOCATION;

const String NO_DATA(static_cast<const char*>(nullptr));

TEST(SensorsData, OnlyLocationsWithAReadingHaveATemperature) {
    SensorsData::TemperatureData data;
    data.temperatures[Location::BAROMETER] = 21.5F;
    for (std::int32_t location = -1; location <= 4; ++location) {
        const bool known = fromValue<Location>(location) == Location::BAROMETER;
        float value = 7.0F;
        EXPECT_EQ(data.get(fromValue<Location>(location), value),
                  known ? ERROR_CODE::SUCCESS : ERROR_CODE::FAILURE);
        EXPECT_TRUE(known ? value == 21.5F : std::isnan(value)) << location;
    }
    EXPECT_EQ(data.temperatures.size(), 1U) << "asking adds nothing";
    data.temperatures[Location::IMU] = std::numeric_limits<float>::quiet_NaN();
    float value = 7.0F;
    EXPECT_EQ(data.get(Location::IMU, value), ERROR_CODE::SUCCESS) << "NaN is a reading too";
    EXPECT_TRUE(std::isnan(value));
}

/// References to all members of an IMU sample, and to the labels.
template <class Data>
auto membersOf(Data& imu) {
    auto& [available, timestamp, pose, covariance, gyro, accelero, rawGyro, rawAccelero, gyroCovariance,
           acceleroCovariance, rate] = imu;
    return std::tie(available, timestamp, pose, covariance, gyro, accelero, rawGyro, rawAccelero,
                    gyroCovariance, acceleroCovariance, rate, pose.label, covariance.label,
                    gyroCovariance.label, acceleroCovariance.label);
}

TEST(SensorsData, StartsEmptyAndCopiesEverything) {
    const Matrix3f matrix;
    const Vector3<float> zero;
    SensorsData data;
    data.imu.available = false;  // like the rate, not set by the constructor
    data.imu.rate = 0.0F;
    EXPECT_EQ(membersOf(data.imu), std::tuple(false, 0U, Transform(), matrix, zero, zero, zero, zero, matrix,
                                              matrix, 0.0F, "", "", "", ""));
    EXPECT_EQ(data.barometer.timestamp + data.magnetometer.timestamp, 0U);
    EXPECT_TRUE(data.temperature.temperatures.empty() && data.sync_count == 0);
    EXPECT_EQ(data.motion_state, SensorsData::CAMERA_MOTION_STATE::STATIC);

    const auto filled = std::tuple(true, 5U, Transform(matrix * 2.0F, Translation(1, 2, 3)), matrix * 3.0F,
                                   Vector3<float>(1, 2, 3), Vector3<float>(4, 5, 6), Vector3<float>(7, 8, 9),
                                   Vector3<float>(10, 11, 12), matrix * 4.0F, matrix * 5.0F, 400.0F, "pose",
                                   "covariance", "gyroscope", "accelerometer");
    membersOf(data.imu) = filled;
    data.temperature.temperatures = {{Location::IMU, 1.0F}, {Location::ONBOARD_LEFT, 2.0F}};
    const SensorsData empty;
    EXPECT_TRUE(empty.temperature.temperatures.empty());
    data.temperature.temperatures[Location::IMU] = 21.5F;
    const SensorsData copy(data);
    EXPECT_EQ(membersOf(copy.imu), filled);
    EXPECT_EQ(copy.temperature.temperatures, data.temperature.temperatures);
}

TEST(SensorsConfiguration, EachTypeReportsItsOwnSensor) {
    SensorsConfiguration sensors;
    std::int32_t made = 0;
    for (SensorParameters* const sensor :
         {&sensors.accelerometer, &sensors.gyroscope, &sensors.magnetometer, &sensors.barometer}) {
        sensor->available = true;
        ++made;
        for (std::int32_t type = -1; type <= 4; ++type) {
            EXPECT_EQ(sensors.isSensorAvailable(fromValue<SENSOR_TYPE>(type)), type >= 0 && type < made)
                << type;
        }
    }
}

TEST(CalibrationParameters, BaselineIsALength) {
    CalibrationParameters calibration;
    calibration.camera_pair_transform.setTranslation({-120, 0, 0});
    EXPECT_EQ(calibration.getCameraBaseline(), 120.0F);
    // Summed as z^2 + (x^2 + y^2): the small terms lose digits unless they are added first.
    calibration.camera_pair_transform.setTranslation({0.1F, 0.1F, 2.0F});
    EXPECT_EQ(calibration.getCameraBaseline(), static_cast<float>(std::sqrt(4.02)));
}

TEST(InputType, SettersStoreTheirKindAndClearNothing) {
    InputType input;
    const auto members = [&input] {
        const auto& [kind, serial, index, path, address, port] = input;
        return std::tie(kind, serial, index, path, address, port);
    };
    EXPECT_EQ(members(), std::tuple(0U, 0U, 0U, "", "", 0));
    input.setFromCameraID(7);
    input.setFromSerialNumber(777);
    EXPECT_EQ(input.kind, 1U);
    EXPECT_EQ(input.camera_index, 7U);
    input.setFromQVRFile("a.qvr");
    EXPECT_EQ(input.kind, 2U);
    input.setFromStream("10.0.0.1", 30000);
    EXPECT_EQ(input.kind, 3U);
    input.setFromCameraID(2);
    input = InputType(input);
    EXPECT_EQ(members(), std::tuple(0U, 777U, 2U, "a.qvr", "10.0.0.1", 30000));
}

TEST(Properties, PrintEveryField) {
    EXPECT_EQ(toString(DeviceProperties{fromValue<CAMERA_STATE>(2), -7, NO_DATA, MODEL::KITE, 0xFFFFFFFFU}),
              "KITE (-7)  SN4294967295 Unknown");
    EXPECT_EQ(toString(DeviceProperties{}), "KITE (-1)  NOT AVAILABLE");
    EXPECT_EQ(toString(StreamingProperties{"10.0.0.1", 65535, 0xFFFFFFFFU, -1}),
              "IP : 10.0.0.1\nPort : 65535\nSN : 4294967295\nBitrate : -1\n");
    const std::string endless(5000, 'p');
    EXPECT_EQ(toString(DeviceProperties{CAMERA_STATE::AVAILABLE, 1, endless, MODEL::KITE, 0}),
              "KITE (1) " + endless + " AVAILABLE");
    EXPECT_EQ(toString(StreamingProperties{endless, 0, 0, 0}),
              "IP : " + endless + "\nPort : 0\nSN : 0\nBitrate : 0\n");
    EXPECT_EQ(toString(StreamingProperties{NO_DATA, 0, 0, 0}), "IP : \nPort : 0\nSN : 0\nBitrate : 0\n");
    EXPECT_EQ(model2str(MODEL::KITE_3E), "KITE 3e");
}

TEST(Objects, CustomBoxesStartWithAFreshIdentifier) {
    const CustomBoxObjectData box;
    EXPECT_TRUE(box.unique_id != CustomBoxObjectData().unique_id);
    EXPECT_EQ(box.box_corners, std::vector<Vector2<std::uint32_t>>(4));
    EXPECT_EQ(std::tuple(box.class_label, box.score, box.on_ground), std::tuple(-1, 0.0F, true));
}

TEST(Objects, FindsTheFirstWithAnId) {
    Objects objects;
    ObjectData found;
    found.unique_id = "untouched";
    EXPECT_FALSE(objects.getObjectDataFromId(found, 1));
    for (const auto& [id, name] : {std::pair(3, "a"), std::pair(1, "b"), std::pair(1, "c")}) {
        ObjectData object;
        object.id = id;
        object.unique_id = name;
        object.mask.alloc(2, 2, MAT_TYPE::MAT_8U_C1);
        objects.list.push_back(std::move(object));
    }
    EXPECT_FALSE(objects.getObjectDataFromId(found, 2));
    EXPECT_EQ(found.unique_id, "untouched");
    EXPECT_TRUE(objects.getObjectDataFromId(found, 1));
    EXPECT_EQ(found.unique_id, "b");
    EXPECT_TRUE(objects.list[1].mask.memoryOwner) << "masks survive the growth of the list";
    EXPECT_TRUE(!found.mask.memoryOwner && found.mask.ptrCPU == objects.list[1].mask.ptrCPU);
}

}  // namespace
}  // namespace vela::test

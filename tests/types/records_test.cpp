#include "support/fnv.hpp"
#include "vela_core/types/enum_cast.hpp"
#include "vela_core/types/process_values.hpp"
#include "vela_core/types/records/CalibrationParameters.hpp"
#include "vela_core/types/records/InputType.hpp"
#include "vela_core/types/records/Objects.hpp"
#include "vela_core/types/records/SensorsConfiguration.hpp"
#include "vela_core/types/records/SensorsData.hpp"
#include "vela_core/types/records/properties.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>

namespace vela::test {
namespace {

using Location = SensorsData::TemperatureData::SENSOR_LOCATION;

TEST(SensorsData, TemperaturesByLocation) {
    SensorsData::TemperatureData data;
    data.temperatures[Location::IMU] = 21.5F;
    for (std::int32_t location = -1; location <= 4; ++location) {
        float value = 7.0F;
        const bool known = location == 0;
        EXPECT_EQ(data.get(fromValue<Location>(location), value),
                  known ? ERROR_CODE::SUCCESS : ERROR_CODE::FAILURE);
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        EXPECT_EQ(bits, known ? 0x41AC0000U : 0x7FC00000U);
    }
    EXPECT_EQ(data.temperatures.size(), 1U) << "asking adds nothing";
}

TEST(SensorsData, StartsEmptyAndCopiesKeepLabels) {
    SensorsData data{};
    EXPECT_EQ(data.barometer.timestamp + data.magnetometer.timestamp + data.imu.timestamp, 0U);
    EXPECT_TRUE(data.imu.pose == Transform() && data.imu.pose_covariance == Matrix3f());
    EXPECT_TRUE(data.temperature.temperatures.empty() && data.sync_count == 0);
    EXPECT_EQ(toValue(data.motion_state), 0);
    data.temperature.temperatures = {
        {Location::IMU, 1.0F}, {Location::BAROMETER, 2.0F}, {Location::ONBOARD_LEFT, 3.0F}};
    data.imu.pose.setTranslation({1, 2, 3});
    data.imu.pose.label = "pose";
    data.imu.pose_covariance.label = "covariance";
    data.imu.angular_velocity_covariance.label = "gyroscope";
    data.imu.linear_acceleration_covariance.label = "accelerometer";
    data.imu.linear_acceleration = {0, 0, 9.81F};
    data.imu.rate = 400;
    data.sync_count = 3;
    SensorsData assigned{};
    assigned = data;
    for (SensorsData copy : {SensorsData(data), SensorsData(assigned)}) {
        EXPECT_TRUE(copy.imu.pose == data.imu.pose && copy.imu.pose.label == "pose");
        EXPECT_EQ(copy.imu.pose_covariance.label, "covariance");
        EXPECT_EQ(copy.imu.angular_velocity_covariance.label, "gyroscope");
        EXPECT_EQ(copy.imu.linear_acceleration_covariance.label, "accelerometer");
        EXPECT_TRUE(copy.imu.linear_acceleration == data.imu.linear_acceleration && copy.imu.rate == 400);
        EXPECT_EQ(copy.sync_count, 3);
        EXPECT_EQ(copy.temperature.temperatures, data.temperature.temperatures);
        copy.temperature.temperatures.clear();
    }
    EXPECT_EQ(data.temperature.temperatures.size(), 3U);
}

TEST(SensorsConfiguration, AvailabilityByType) {
    for (std::int32_t set = 0; set < 4; ++set) {
        SensorsConfiguration sensors;
        SensorParameters* const all[] = {&sensors.accelerometer, &sensors.gyroscope, &sensors.magnetometer,
                                         &sensors.barometer};
        all[set]->available = true;
        for (std::int32_t type = -1; type <= 4; ++type) {
            EXPECT_EQ(sensors.isSensorAvailable(fromValue<SENSOR_TYPE>(type)), type == set);
        }
    }
}

TEST(CalibrationParameters, BaselineIsALength) {
    CalibrationParameters calibration;
    EXPECT_EQ(calibration.getCameraBaseline(), 0.0F);
    calibration.camera_pair_transform.setTranslation({-120, 0, 0});
    EXPECT_EQ(calibration.getCameraBaseline(), 120.0F);
    // Summed as z^2 + (x^2 + y^2): in float, 1 + 2^-24 twice is lost unless the small ones meet first.
    calibration.camera_pair_transform.setTranslation({std::ldexp(1.0F, -12), std::ldexp(1.0F, -12), 1});
    EXPECT_EQ(calibration.getCameraBaseline(), std::sqrt(1.0F + std::ldexp(1.0F, -23)));
}

TEST(InputType, SettersStoreTheirKindAndClearNothing) {
    InputType input;
    EXPECT_TRUE(input.kind == 0 && input.serial_number == 0 && input.camera_index == 0 && input.port == 0);
    EXPECT_TRUE(input.path == "" && input.address == "");
    input.setFromSerialNumber(777);
    EXPECT_EQ(input.kind, 1U);
    input.setFromQVRFile("a.qvr");
    EXPECT_EQ(input.kind, 2U);
    input.setFromStream("10.0.0.1", 30000);
    EXPECT_EQ(input.kind, 3U);
    input.setFromCameraID(2);
    const InputType copy(input);
    EXPECT_TRUE(copy.kind == 0 && copy.camera_index == 2 && copy.serial_number == 777);
    EXPECT_TRUE(copy.path == "a.qvr" && copy.address == "10.0.0.1" && copy.port == 30000);
}

TEST(Properties, SummariseThemselves) {
    DeviceProperties device{CAMERA_STATE::AVAILABLE, 0, "/dev/video0", MODEL::KITE_3, 12345};
    EXPECT_EQ(toString(device), "KITE 3 (0) /dev/video0 SN12345 AVAILABLE");
    device = {CAMERA_STATE::AVAILABLE, 0, "", MODEL::KITE_3, 0};
    EXPECT_EQ(toString(device), "KITE 3 (0)  AVAILABLE");
    device = {fromValue<CAMERA_STATE>(2), -7, static_cast<const char*>(nullptr), fromValue<MODEL>(-1),
              0xFFFFFFFFU};
    EXPECT_EQ(toString(device), "Unknown (-7)  SN4294967295 Unknown");
    EXPECT_EQ(toString(StreamingProperties{"10.0.0.1", 65535, 0xFFFFFFFFU, -1}),
              "IP : 10.0.0.1\nPort : 65535\nSN : 4294967295\nBitrate : -1\n");
    EXPECT_EQ(toString(StreamingProperties{}), "IP : \nPort : 0\nSN : 0\nBitrate : 0\n");
}

TEST(Uuid, EachDigitIsOneDrawInOrder) {
    std::mt19937_64 replay = uuid::gen;
    std::uniform_int_distribution<> digit(0, 15);
    std::uniform_int_distribution<> variant(8, 11);
    for (int i = 0; i < 100; ++i) {
        std::ostringstream wanted;
        wanted << std::hex;
        const auto digits = [&](int count) {
            while (count-- > 0)
                wanted << digit(replay);
        };
        digits(8);
        wanted << "-";
        digits(4);
        wanted << "-4";
        digits(3);
        wanted << "-" << variant(replay);
        digits(3);
        wanted << "-";
        digits(12);
        const String id = generate_unique_id();
        EXPECT_EQ(id, wanted.str());
        EXPECT_TRUE(std::regex_match(
            id.c_str(), std::regex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}")));
    }
}

TEST(Objects, CustomBoxesStartWithAFreshIdentifier) {
    const CustomBoxObjectData box;
    EXPECT_TRUE(box.unique_id != CustomBoxObjectData().unique_id);
    EXPECT_EQ(box.box_corners, std::vector<Vector2<std::uint32_t>>(4));
    EXPECT_TRUE(box.class_label == -1 && box.score == 0.0F && box.on_ground);
}

TEST(Objects, TheFirstWithAnIdIsFound) {
    Objects objects;
    ObjectData found;
    found.unique_id = "untouched";
    EXPECT_FALSE(objects.getObjectDataFromId(found, 1));
    for (const auto& [id, name] : {std::pair(3, "a"), std::pair(1, "b"), std::pair(1, "c")}) {
        ObjectData object;
        object.id = id;
        object.unique_id = name;
        object.bounding_box_2d.resize(4);
        object.mask.alloc(2, 2, MAT_TYPE::MAT_8U_C1);
        objects.list.push_back(std::move(object));
    }
    EXPECT_FALSE(objects.getObjectDataFromId(found, 2));
    EXPECT_EQ(found.unique_id, "untouched");
    EXPECT_TRUE(objects.getObjectDataFromId(found, 1));
    EXPECT_EQ(found.unique_id, "b");
    EXPECT_EQ(found.bounding_box_2d.size(), 4U);
    EXPECT_TRUE(objects.list[1].mask.memoryOwner) << "masks survive the growth of the list";
    EXPECT_TRUE(!found.mask.memoryOwner && found.mask.ptrCPU == objects.list[1].mask.ptrCPU);
}

template <class Bones>
std::string textOf(const Bones& bones) {
    std::string text;
    for (const auto& [first, second] : bones) {
        text += std::to_string(toValue(first)) + " " + std::to_string(toValue(second)) + ",";
    }
    return text;
}

TEST(ProcessValues, BonesAndExtension) {
    EXPECT_EQ(fnv1a(textOf(BODY_BONES)), 0x751538e8d49b7e45U) << textOf(BODY_BONES);
    EXPECT_EQ(fnv1a(textOf(BODY_BONES_POSE_34)), 0x56c3b247780c4b16U) << textOf(BODY_BONES_POSE_34);
    EXPECT_EQ(INIT_PARAM_EXTENSION, ".yml");
}

}  // namespace
}  // namespace vela::test

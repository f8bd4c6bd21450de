#include "vela_core/types/enum_names.hpp"

#include "vela_core/types/detail/enum_table.hpp"

#include <string>
#include <string_view>

namespace vela {
namespace {

using HEADING_STATE = SensorsData::MagnetometerData::HEADING_STATE;
using CAMERA_MOTION_STATE = SensorsData::CAMERA_MOTION_STATE;
using SENSOR_LOCATION = SensorsData::TemperatureData::SENSOR_LOCATION;

constexpr EnumName<MEM> MEM_NAMES[] = {
    {MEM::CPU, "CPU"},
    {MEM::GPU, "GPU"},
};

constexpr EnumName<COPY_TYPE> COPY_TYPE_NAMES[] = {
    {COPY_TYPE::CPU_CPU, "CPU CPU"},
    {COPY_TYPE::CPU_GPU, "CPU GPU"},
    {COPY_TYPE::GPU_GPU, "GPU GPU"},
    {COPY_TYPE::GPU_CPU, "GPU CPU"},
};

constexpr EnumName<MAT_TYPE> MAT_TYPE_NAMES[] = {
    {MAT_TYPE::MAT_32F_C1, "32F C1"}, {MAT_TYPE::MAT_32F_C2, "32F C2"}, {MAT_TYPE::MAT_32F_C3, "32F C3"},
    {MAT_TYPE::MAT_32F_C4, "32F C4"}, {MAT_TYPE::MAT_8U_C1, "8U C1"},   {MAT_TYPE::MAT_8U_C2, "8U C2"},
    {MAT_TYPE::MAT_8U_C3, "8U C3"},   {MAT_TYPE::MAT_8U_C4, "8U C4"},   {MAT_TYPE::MAT_US16_C1, "US16 C1"},
    {MAT_TYPE::MAT_8S_C4, "8S C4"},
};

constexpr EnumName<UNIT> UNIT_NAMES[] = {
    {UNIT::MILLIMETER, "MILLIMETER"},
    {UNIT::CENTIMETER, "CENTIMETER"},
    {UNIT::METER, "METER"},
    {UNIT::INCH, "INCH"},
    {UNIT::FOOT, "FOOT"},
};

constexpr EnumName<COORDINATE_SYSTEM> COORDINATE_SYSTEM_NAMES[] = {
    {COORDINATE_SYSTEM::IMAGE, "IMAGE"},
    {COORDINATE_SYSTEM::LEFT_HANDED_Y_UP_AND_Z_FORWARD, "Left HANDED Y UP and Z FORWARD"},
    {COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD, "Right HANDED Y UP and Z BACKWARD"},
    {COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_Y_FORWARD, "Right HANDED Z UP and Y FORWARD"},
    {COORDINATE_SYSTEM::LEFT_HANDED_Z_UP_AND_X_FORWARD, "Left HANDED Z UP and X FORWARD"},
    {COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD, "Right HANDED Z UP and X FORWARD"},
};

constexpr EnumName<MODEL> MODEL_NAMES[] = {
    {MODEL::KITE, "KITE"},
    {MODEL::KITE_S, "KITE-S"},
    {MODEL::KITE_3, "KITE 3"},
    {MODEL::KITE_3E, "KITE 3e"},
};

constexpr EnumName<INPUT_TYPE> INPUT_TYPE_NAMES[] = {
    {INPUT_TYPE::USB, "USB input type"},
    {INPUT_TYPE::QVR, "QVR input type"},
    {INPUT_TYPE::STREAM, "STREAM input type"},
};

constexpr EnumName<CAMERA_STATE> CAMERA_STATE_NAMES[] = {
    {CAMERA_STATE::AVAILABLE, "AVAILABLE"},
    {CAMERA_STATE::NOT_AVAILABLE, "NOT AVAILABLE"},
};

constexpr EnumName<SENSOR_TYPE> SENSOR_TYPE_NAMES[] = {
    {SENSOR_TYPE::ACCELEROMETER, "Accelerometer"},
    {SENSOR_TYPE::GYROSCOPE, "Gyroscope"},
    {SENSOR_TYPE::MAGNETOMETER, "Magnetometer"},
    {SENSOR_TYPE::BAROMETER, "Barometer"},
};

constexpr EnumName<SENSORS_UNIT> SENSORS_UNIT_NAMES[] = {
    {SENSORS_UNIT::M_S2, "m/s\xC2\xB2"},
    {SENSORS_UNIT::DEG_S, "\xC2\xB0/s"},
    {SENSORS_UNIT::UT, "uT"},
    {SENSORS_UNIT::HPA, "hPa"},
    {SENSORS_UNIT::DEG_C,
     "\xC2\xB0"
     "C"},
    {SENSORS_UNIT::HZ, "Hz"},
};

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
    {SENSOR_LOCATION::ONBOARD_SECOND, "ONBOARD LEFT"},  // the same, and kept
};

constexpr EnumName<OBJECT_TRACKING_STATE> OBJECT_TRACKING_STATE_NAMES[] = {
    {OBJECT_TRACKING_STATE::OFF, "OFF"},
    {OBJECT_TRACKING_STATE::OK, "OK"},
    {OBJECT_TRACKING_STATE::SEARCHING, "SEARCHING"},
    {OBJECT_TRACKING_STATE::TERMINATE, "TERMINATE"},
};

constexpr EnumName<OBJECT_ACTION_STATE> OBJECT_ACTION_STATE_NAMES[] = {
    {OBJECT_ACTION_STATE::IDLE, "IDLE"},
    {OBJECT_ACTION_STATE::MOVING, "MOVING"},
};

constexpr EnumName<OBJECT_FILTERING_MODE> OBJECT_FILTERING_MODE_NAMES[] = {
    {OBJECT_FILTERING_MODE::NONE, "NONE"},
    {OBJECT_FILTERING_MODE::NMS_3D, "NMS 3D"},
};

constexpr EnumName<DETECTION_MODEL> DETECTION_MODEL_NAMES[] = {
    {DETECTION_MODEL::MULTI_CLASS_BOX_FAST, "MULTI CLASS BOX FAST"},
    {DETECTION_MODEL::MULTI_CLASS_BOX_ACCURATE, "MULTI CLASS BOX ACCURATE"},
    {DETECTION_MODEL::HUMAN_BODY_FAST, "HUMAN BODY FAST"},
    {DETECTION_MODEL::HUMAN_BODY_ACCURATE, "HUMAN BODY ACCURATE"},
    {DETECTION_MODEL::MULTI_CLASS_BOX_MEDIUM, "MULTI CLASS BOX MEDIUM"},
    {DETECTION_MODEL::HUMAN_BODY_MEDIUM, "HUMAN BODY MEDIUM"},
    {DETECTION_MODEL::PERSON_HEAD_BOX_FAST, "PERSON HEAD BOX FAST"},
    {DETECTION_MODEL::PERSON_HEAD_BOX_ACCURATE, "PERSON HEAD BOX ACCURATE"},
    {DETECTION_MODEL::CUSTOM_BOX_OBJECTS, "CUSTOM BOX OBJECTS"},
};

constexpr EnumName<BODY_FORMAT> BODY_FORMAT_NAMES[] = {
    {BODY_FORMAT::POSE_18, "POSE_18"},
    {BODY_FORMAT::POSE_34, "POSE_34"},
};

constexpr EnumName<BODY_PARTS> BODY_PARTS_NAMES[] = {
    {BODY_PARTS::NOSE, "NOSE"},
    {BODY_PARTS::NECK, "NECK"},
    {BODY_PARTS::RIGHT_SHOULDER, "RIGHT SHOULDER"},
    {BODY_PARTS::RIGHT_ELBOW, "RIGHT ELBOW"},
    {BODY_PARTS::RIGHT_WRIST, "RIGHT WRIST"},
    {BODY_PARTS::LEFT_SHOULDER, "LEFT SHOULDER"},
    {BODY_PARTS::LEFT_ELBOW, "LEFT ELBOW"},
    {BODY_PARTS::LEFT_WRIST, "LEFT WRIST"},
    {BODY_PARTS::RIGHT_HIP, "RIGHT HIP"},
    {BODY_PARTS::RIGHT_KNEE, "RIGHT KNEE"},
    {BODY_PARTS::RIGHT_ANKLE, "RIGHT ANKLE"},
    {BODY_PARTS::LEFT_HIP, "LEFT HIP"},
    {BODY_PARTS::LEFT_KNEE, "LEFT KNEE"},
    {BODY_PARTS::LEFT_ANKLE, "LEFT ANKLE"},
    {BODY_PARTS::RIGHT_EYE, "RIGHT EYE"},
    {BODY_PARTS::LEFT_EYE, "LEFT EYE"},
    {BODY_PARTS::RIGHT_EAR, "RIGHT EAR"},
    {BODY_PARTS::LEFT_EAR, "LEFT EAR"},
};

constexpr EnumName<BODY_PARTS_POSE_34> BODY_PARTS_POSE_34_NAMES[] = {
    {BODY_PARTS_POSE_34::PELVIS, "PELVIS"},
    {BODY_PARTS_POSE_34::LOWER_SPINE, "LOWER SPINE"},
    {BODY_PARTS_POSE_34::UPPER_SPINE, "UPPER SPINE"},
    {BODY_PARTS_POSE_34::NECK, "NECK"},
    {BODY_PARTS_POSE_34::LEFT_COLLAR, "LEFT COLLAR"},
    {BODY_PARTS_POSE_34::LEFT_SHOULDER, "LEFT SHOULDER"},
    {BODY_PARTS_POSE_34::LEFT_ELBOW, "LEFT ELBOW"},
    {BODY_PARTS_POSE_34::LEFT_WRIST, "LEFT WRIST"},
    {BODY_PARTS_POSE_34::LEFT_PALM, "LEFT PALM"},
    {BODY_PARTS_POSE_34::LEFT_FINGERTIP, "LEFT FINGERTIP"},
    {BODY_PARTS_POSE_34::LEFT_THUMB, "LEFT THUMB"},
    {BODY_PARTS_POSE_34::RIGHT_COLLAR, "RIGHT COLLAR"},
    {BODY_PARTS_POSE_34::RIGHT_SHOULDER, "RIGHT SHOULDER"},
    {BODY_PARTS_POSE_34::RIGHT_ELBOW, "RIGHT ELBOW"},
    {BODY_PARTS_POSE_34::RIGHT_WRIST, "RIGHT WRIST"},
    {BODY_PARTS_POSE_34::RIGHT_PALM, "RIGHT PALM"},
    {BODY_PARTS_POSE_34::RIGHT_FINGERTIP, "RIGHT FINGERTIP"},
    {BODY_PARTS_POSE_34::RIGHT_THUMB, "RIGHT THUMB"},
    {BODY_PARTS_POSE_34::LEFT_HIP, "LEFT HIP"},
    {BODY_PARTS_POSE_34::LEFT_KNEE, "LEFT KNEE"},
    {BODY_PARTS_POSE_34::LEFT_ANKLE, "LEFT ANKLE"},
    {BODY_PARTS_POSE_34::LEFT_TOE, "LEFT TOE"},
    {BODY_PARTS_POSE_34::RIGHT_HIP, "RIGHT HIP"},
    {BODY_PARTS_POSE_34::RIGHT_KNEE, "RIGHT KNEE"},
    {BODY_PARTS_POSE_34::RIGHT_ANKLE, "RIGHT ANKLE"},
    {BODY_PARTS_POSE_34::RIGHT_TOE, "RIGHT TOE"},
    {BODY_PARTS_POSE_34::HEAD, "HEAD"},
    {BODY_PARTS_POSE_34::NOSE, "NOSE"},
    {BODY_PARTS_POSE_34::LEFT_EYE, "LEFT EYE"},
    {BODY_PARTS_POSE_34::LEFT_EAR, "LEFT EAR"},
    {BODY_PARTS_POSE_34::RIGHT_EYE, "RIGHT EYE"},
    {BODY_PARTS_POSE_34::RIGHT_EAR, "RIGHT EAR"},
    {BODY_PARTS_POSE_34::LEFT_HEEL, "LEFT HEEL"},
    {BODY_PARTS_POSE_34::RIGHT_HEEL, "RIGHT HEEL"},
};

struct UnitWord {
    std::string_view word;
    UNIT unit;
};

constexpr UnitWord UNIT_WORDS[] = {
    {"Centimeter", UNIT::CENTIMETER}, {"Meter", UNIT::METER}, {"Inch", UNIT::INCH}, {"Feet", UNIT::FOOT}};

}  // namespace

String toString(const MEM& value) {
    return nameIn(MEM_NAMES, value);
}

String toString(const COPY_TYPE& value) {
    return nameIn(COPY_TYPE_NAMES, value);
}

String toString(const MAT_TYPE& value) {
    return nameIn(MAT_TYPE_NAMES, value);
}

String toString(const UNIT& value) {
    return nameIn(UNIT_NAMES, value);
}

String toString(const COORDINATE_SYSTEM& value) {
    return nameIn(COORDINATE_SYSTEM_NAMES, value);
}

String toString(const MODEL& value) {
    return nameIn(MODEL_NAMES, value);
}

String toString(const INPUT_TYPE& value) {
    return nameIn(INPUT_TYPE_NAMES, value);
}

String toString(const CAMERA_STATE& value) {
    return nameIn(CAMERA_STATE_NAMES, value);
}

String toString(const SENSOR_TYPE& value) {
    return nameIn(SENSOR_TYPE_NAMES, value, NO_NAME);
}

String toString(const SENSORS_UNIT& value) {
    return nameIn(SENSORS_UNIT_NAMES, value, NO_NAME);
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

String toString(const OBJECT_TRACKING_STATE& value) {
    return nameIn(OBJECT_TRACKING_STATE_NAMES, value);
}

String toString(const OBJECT_ACTION_STATE& value) {
    return nameIn(OBJECT_ACTION_STATE_NAMES, value);
}

String toString(const OBJECT_FILTERING_MODE& value) {
    return nameIn(OBJECT_FILTERING_MODE_NAMES, value);
}

String toString(const DETECTION_MODEL& value) {
    return nameIn(DETECTION_MODEL_NAMES, value);
}

String toString(const BODY_FORMAT& value) {
    return nameIn(BODY_FORMAT_NAMES, value);
}

String toString(const BODY_PARTS& value) {
    return nameIn(BODY_PARTS_NAMES, value);
}

String toString(const BODY_PARTS_POSE_34& value) {
    return nameIn(BODY_PARTS_POSE_34_NAMES, value);
}

String model2str(MODEL model) {
    return toString(model);
}

String unit2str(UNIT unit) {
    return toString(unit);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the public signature takes the text by value
UNIT str2unit(String text) {
    const std::string word(text.get());
    for (const UnitWord& known : UNIT_WORDS) {
        if (known.word == word) return known.unit;
    }
    return UNIT::MILLIMETER;
}

}  // namespace vela

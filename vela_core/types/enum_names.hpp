#pragma once

#include "vela_core/types/Camera.hpp"
#include "vela_core/types/Detection.hpp"
#include "vela_core/types/Frames.hpp"
#include "vela_core/types/Memory.hpp"
#include "vela_core/types/Sensors.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"
#include "vela_core/types/records/SensorsData.hpp"

namespace vela {

// Display names, as users know them, slips and duplicates included. A value without enumerator is "Unknown";
// for SENSOR_TYPE and SENSORS_UNIT it is the empty text.

String toString(const MEM& value);
String toString(const COPY_TYPE& value);
String toString(const MAT_TYPE& value);
String toString(const UNIT& value);
String toString(const COORDINATE_SYSTEM& value);
String toString(const MODEL& value);
String toString(const INPUT_TYPE& value);
String toString(const CAMERA_STATE& value);
String toString(const SENSOR_TYPE& value);
String toString(const SENSORS_UNIT& value);
String toString(const SensorsData::MagnetometerData::HEADING_STATE& value);
String toString(const SensorsData::CAMERA_MOTION_STATE& value);
String toString(const SensorsData::TemperatureData::SENSOR_LOCATION& value);
String toString(const OBJECT_TRACKING_STATE& value);
String toString(const OBJECT_ACTION_STATE& value);
String toString(const OBJECT_FILTERING_MODE& value);
String toString(const DETECTION_MODEL& value);
String toString(const BODY_FORMAT& value);
String toString(const BODY_PARTS& value);
String toString(const BODY_PARTS_POSE_34& value);
String toString(const OBJECT_CLASS& value);
String toString(const OBJECT_SUBCLASS& value);

/// The same text as `toString`.
String model2str(MODEL model);
String unit2str(UNIT unit);

/// The unit of "Centimeter", "Meter", "Inch" or "Feet", exactly so; `MILLIMETER` for every other text, the
/// names that `unit2str` gives among them. A String without character data throws `std::logic_error`.
UNIT str2unit(String text);

}  // namespace vela

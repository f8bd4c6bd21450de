// SPDX-License-Identifier: Apache-2.0
#include "enums.hpp"

namespace vela::python {
namespace {

void bindMem(nb::module_& module) {
    nb::enum_<MEM> type(module, "MEM", nb::is_flag(), nb::is_arithmetic(), "Side or sides of memory.");
    addValues(type);
    type.value("BOTH", MEM_BOTH, "One host and one device buffer, kept in step by explicit copies.");
    type.value("MANAGED", MEM_MANAGED, "One CUDA managed buffer that both sides address.");
    addText<MEM>(module);
}

}  // namespace

void bindEnums(nb::module_& module) {
    bindMem(module);
    bindEnum<ERROR_CODE>(module, "ERROR_CODE", "What went wrong, as vela.Error tells it in `code`.");
    bindEnum<MAT_TYPE>(module, "MAT_TYPE", "Element type and channels of a pixel.");
    bindEnum<COPY_TYPE>(module, "COPY_TYPE",
                        "Direction of a copy: the source's side, then the destination's.");
    bindEnum<UNIT>(module, "UNIT", "Length unit of positions and depths.");
    bindEnum<COORDINATE_SYSTEM>(module, "COORDINATE_SYSTEM",
                                "Axis convention of positions and orientations.");
    bindEnum<MODEL>(module, "MODEL", "Camera model.");
    bindEnum<INPUT_TYPE>(module, "INPUT_TYPE", "Kind of camera input.");
    bindEnum<CAMERA_STATE>(module, "CAMERA_STATE", "Whether a camera can be opened.");
    bindEnum<SENSOR_TYPE>(module, "SENSOR_TYPE", "Kind of a motion or environment sensor.");
    bindEnum<SENSORS_UNIT>(module, "SENSORS_UNIT", "Physical unit of a sensor's values.");
    bindEnum<SensorsData::MagnetometerData::HEADING_STATE>(module, "HEADING_STATE",
                                                           "Quality of the magnetic heading.");
    bindEnum<SensorsData::TemperatureData::SENSOR_LOCATION>(module, "SENSOR_LOCATION",
                                                            "Where a temperature is measured.");
    bindEnum<SensorsData::CAMERA_MOTION_STATE>(module, "CAMERA_MOTION_STATE", "How the camera moves.");
    bindEnum<OBJECT_CLASS>(module, "OBJECT_CLASS", "Coarse class of a detected object.");
    bindEnum<OBJECT_SUBCLASS>(module, "OBJECT_SUBCLASS", "Fine class of a detected object.");
    bindEnum<OBJECT_TRACKING_STATE>(module, "OBJECT_TRACKING_STATE", "State of the tracking of an object.");
    bindEnum<OBJECT_ACTION_STATE>(module, "OBJECT_ACTION_STATE", "Whether a tracked object moves.");
    bindEnum<OBJECT_FILTERING_MODE>(module, "OBJECT_FILTERING_MODE",
                                    "How overlapping detections are filtered.");
    bindEnum<DETECTION_MODEL>(module, "DETECTION_MODEL", "Network that detects objects.");
    bindEnum<BODY_FORMAT>(module, "BODY_FORMAT", "Layout of a skeleton.");
    bindEnum<BODY_PARTS>(module, "BODY_PARTS", "Keypoint of a skeleton of POSE_18.");
    bindEnum<BODY_PARTS_POSE_34>(module, "BODY_PARTS_POSE_34", "Keypoint of a skeleton of POSE_34.");
    module.def(
        "to_verbose", [](ERROR_CODE code) { return nb::str(toStdString(toVerbose(code)).c_str()); }, "code"_a,
        "The sentence for the user that explains a code.");
    module.def(
        "get_object_class", [](OBJECT_SUBCLASS subclass) { return getObjectClass(subclass); }, "subclass"_a,
        "The class that a sub-class belongs to.");
    module.def(
        "get_object_sub_classes",
        [](OBJECT_CLASS objectClass) {
            nb::list result;
            for (const OBJECT_SUBCLASS subclass : getObjectSubClasses(objectClass))
                result.append(subclass);
            return result;
        },
        "object_class"_a,
        nb::sig("def get_object_sub_classes(object_class: OBJECT_CLASS) -> list[OBJECT_SUBCLASS]"),
        "The sub-classes of a class.");
}

}  // namespace vela::python

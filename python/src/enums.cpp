// SPDX-License-Identifier: Apache-2.0
// Every enumeration as an IntEnum. The names of the enumerators come from the compiler, so that no list of
// them can fall behind the headers.
#include "bindings.hpp"

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace vela::python {
namespace {

/// No enumeration here reaches this value.
constexpr int END = 64;

/// The enumerator's name, or nothing for a value without one: the compiler then writes a cast.
template <class Enum, Enum value>
constexpr std::string_view enumeratorName() {
    std::string_view text = __PRETTY_FUNCTION__;
    const std::size_t start = text.find("value = ") + 8;
    text = text.substr(start, text.find_first_of(";]", start) - start);
    if (text.find('(') != std::string_view::npos) return {};
    return text.substr(text.rfind(':') + 1);  // 0 if there is no colon
}

template <class Enum, int... values>
constexpr std::array<std::string_view, sizeof...(values)> enumeratorNames(
    std::integer_sequence<int, values...> /*all*/) {
    return {enumeratorName<Enum, static_cast<Enum>(values)>()...};
}

template <class Enum>
void addValues(nb::enum_<Enum>& type) {
    constexpr auto NAMES = enumeratorNames<Enum>(std::make_integer_sequence<int, END>());
    for (int i = 0; i < END; ++i) {
        const std::string name(NAMES[static_cast<std::size_t>(i)]);
        if (!name.empty()) type.value(name.c_str(), static_cast<Enum>(i));
    }
}

template <class Enum>
void addText(nb::module_& module) {
    module.def(
        "to_string", [](Enum value) { return nb::str(toStdString(toString(value)).c_str()); }, "value"_a,
        "The display name of an enumerator.");
}

template <class Enum>
void bindEnum(nb::module_& module, const char* name, const char* doc) {
    nb::enum_<Enum> type(module, name, nb::is_arithmetic(), doc);
    addValues(type);
    addText<Enum>(module);
}

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
                                    "How overlapping detections are thinned out.");
    bindEnum<DETECTION_MODEL>(module, "DETECTION_MODEL", "Network that detects objects.");
    bindEnum<BODY_FORMAT>(module, "BODY_FORMAT", "Layout of a skeleton.");
    bindEnum<BODY_PARTS>(module, "BODY_PARTS", "Keypoint of a skeleton of POSE_18.");
    bindEnum<BODY_PARTS_POSE_34>(module, "BODY_PARTS_POSE_34", "Keypoint of a skeleton of POSE_34.");
    module.def(
        "to_verbose", [](ERROR_CODE code) { return nb::str(toStdString(toVerbose(code)).c_str()); }, "code"_a,
        "The sentence for the user that goes with a code.");
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

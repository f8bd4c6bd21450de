// SPDX-License-Identifier: Apache-2.0
#include "PyMat.hpp"
#include "casters.hpp"

#include <nanobind/stl/map.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/vector.h>

namespace vela::python {
namespace {

/// A detected object whose mask Python may look at for longer than the object lives.
struct PyObjectData : ObjectData {
    PyMat maskOfPython;
};

/// A writable array over numbers inside `self`, which it keeps alive.
template <class Number, std::size_t count>
nb::object viewOf(Number (&numbers)[count], nb::handle self) {
    return nb::cast(nb::ndarray<nb::numpy, Number>(numbers, {count}, self), nb::rv_policy::reference);
}

void bindCalibration(nb::module_& module) {
    nb::class_<Resolution>(module, "Resolution", "Size of an image in pixels.")
        .def(nb::init<>())
        .def(
            "__init__",
            [](Resolution* self, std::size_t width, std::size_t height) {
                new (self) Resolution{width, height};
            },
            "width"_a, "height"_a)
        .def_rw("width", &Resolution::width)
        .def_rw("height", &Resolution::height);
    nb::class_<CameraParameters>(module, "CameraParameters",
                                 "Intrinsic parameters of one camera of the pair, in pixels.")
        .def(nb::init<>())
        .def_rw("fx", &CameraParameters::fx)
        .def_rw("fy", &CameraParameters::fy)
        .def_rw("cx", &CameraParameters::cx)
        .def_rw("cy", &CameraParameters::cy)
        .def_rw("image_size", &CameraParameters::image_size)
        .def_prop_ro(
            "distortion",
            [](nb::handle self) { return viewOf(nb::cast<CameraParameters&>(self).distortion, self); },
            nb::sig("def distortion(self) -> numpy.typing.NDArray[numpy.float64]"),
            "k1, k2, p1, p2, k3: a writable view.");
    nb::class_<CalibrationParameters>(module, "CalibrationParameters", "Calibration of a stereo pair.")
        .def(nb::init<>())
        .def_rw("left", &CalibrationParameters::left)
        .def_rw("right", &CalibrationParameters::right)
        .def_rw("camera_pair_transform", &CalibrationParameters::camera_pair_transform,
                "The right camera in the left one's frame, in the unit of the calibration.")
        .def("get_camera_baseline", &CalibrationParameters::getCameraBaseline,
             "The distance between the two cameras, never negative.");
}

void bindInput(nb::module_& module) {
    nb::class_<InputType>(module, "InputType", "Where the capture layer takes images from.")
        .def(nb::init<>())
        .def_ro("kind", &InputType::kind,
                "0 camera by index, 1 camera by serial number, 2 QVR file, 3 network stream.")
        .def_ro("serial_number", &InputType::serial_number)
        .def_ro("camera_index", &InputType::camera_index)
        .def_ro("path", &InputType::path)
        .def_ro("address", &InputType::address)
        .def_ro("port", &InputType::port)
        .def("set_from_camera_id", &InputType::setFromCameraID, "id"_a)
        .def("set_from_serial_number", &InputType::setFromSerialNumber, "serial"_a)
        .def("set_from_qvr_file", &InputType::setFromQVRFile, "file"_a)
        .def("set_from_stream", &InputType::setFromStream, "address"_a, "port"_a);
    nb::class_<DeviceProperties>(module, "DeviceProperties", "A camera found on this machine.")
        .def(nb::init<>())
        .def_rw("state", &DeviceProperties::state)
        .def_rw("id", &DeviceProperties::id, "Index on this machine.")
        .def_rw("path", &DeviceProperties::path, "System device, may be empty.")
        .def_rw("model", &DeviceProperties::model)
        .def_rw("serial", &DeviceProperties::serial, "0 is unknown.")
        .def("__str__", [](const DeviceProperties& p) { return toString(p); });
    nb::class_<StreamingProperties>(module, "StreamingProperties", "A camera that streams over the network.")
        .def(nb::init<>())
        .def_rw("ip", &StreamingProperties::ip)
        .def_rw("port", &StreamingProperties::port)
        .def_rw("serial", &StreamingProperties::serial)
        .def_rw("bitrate", &StreamingProperties::bitrate)
        .def("__str__", [](const StreamingProperties& p) { return toString(p); });
}

void bindConfiguration(nb::module_& module) {
    nb::class_<SensorParameters>(module, "SensorParameters",
                                 "Data sheet of one sensor; values are in `unit`.")
        .def(nb::init<>())
        .def_rw("type", &SensorParameters::type)
        .def_rw("resolution", &SensorParameters::resolution)
        .def_rw("sampling_rate", &SensorParameters::sampling_rate, "Hz.")
        .def_rw("range", &SensorParameters::range, "Least and largest value.")
        .def_rw("noise_density", &SensorParameters::noise_density, "Per square root of a hertz.")
        .def_rw("random_walk", &SensorParameters::random_walk)
        .def_rw("unit", &SensorParameters::unit)
        .def_rw("available", &SensorParameters::available);
    nb::class_<SensorsConfiguration>(module, "SensorsConfiguration", "The sensors of a camera.")
        .def(nb::init<>())
        .def_rw("accelerometer", &SensorsConfiguration::accelerometer)
        .def_rw("gyroscope", &SensorsConfiguration::gyroscope)
        .def_rw("magnetometer", &SensorsConfiguration::magnetometer)
        .def_rw("barometer", &SensorsConfiguration::barometer)
        .def("is_sensor_available", &SensorsConfiguration::isSensorAvailable, "type"_a);
}

void bindSamples(nb::module_& module) {
    nb::class_<SensorsData> data(module, "SensorsData",
                                 "One sample of all motion and environment sensors; times in nanoseconds.");
    using Barometer = SensorsData::BarometerData;
    nb::class_<Barometer>(data, "BarometerData")
        .def(nb::init<>())
        .def_rw("available", &Barometer::available)
        .def_rw("timestamp", &Barometer::timestamp)
        .def_rw("pressure", &Barometer::pressure, "hPa.")
        .def_rw("altitude", &Barometer::altitude, "Metres, relative.")
        .def_rw("rate", &Barometer::rate, "Hz.");
    using Temperature = SensorsData::TemperatureData;
    nb::class_<Temperature>(data, "TemperatureData")
        .def(nb::init<>())
        .def_rw("temperatures", &Temperature::temperatures,
                "Degrees Celsius by location: a copy; assign a dict to change it.")
        .def(
            "get",
            [](const Temperature& t, SensorsData::TemperatureData::SENSOR_LOCATION location) {
                float value = 0.0F;
                check(t.get(location, value), "get");
                return value;
            },
            "location"_a, "Degrees Celsius at a location; vela.Error where there is no value.");
    using Magnetometer = SensorsData::MagnetometerData;
    nb::class_<Magnetometer>(data, "MagnetometerData")
        .def(nb::init<>())
        .def_rw("available", &Magnetometer::available)
        .def_rw("timestamp", &Magnetometer::timestamp)
        .def_rw("field", &Magnetometer::field, "uT, calibrated.")
        .def_rw("field_raw", &Magnetometer::field_raw, "uT.")
        .def_rw("heading", &Magnetometer::heading, "Degrees from north.")
        .def_rw("heading_state", &Magnetometer::heading_state)
        .def_rw("heading_accuracy", &Magnetometer::heading_accuracy, "0 to 1.")
        .def_rw("rate", &Magnetometer::rate, "Hz.");
    using Imu = SensorsData::IMUData;
    nb::class_<Imu>(data, "IMUData")
        .def(nb::init<>())
        .def_rw("available", &Imu::available)
        .def_rw("timestamp", &Imu::timestamp)
        .def_rw("pose", &Imu::pose, "Of the sensor.")
        .def_rw("pose_covariance", &Imu::pose_covariance)
        .def_rw("angular_velocity", &Imu::angular_velocity, "Degrees per second.")
        .def_rw("linear_acceleration", &Imu::linear_acceleration, "Metres per square second.")
        .def_rw("angular_velocity_raw", &Imu::angular_velocity_raw, "Without bias correction.")
        .def_rw("linear_acceleration_raw", &Imu::linear_acceleration_raw, "Without bias correction.")
        .def_rw("angular_velocity_covariance", &Imu::angular_velocity_covariance)
        .def_rw("linear_acceleration_covariance", &Imu::linear_acceleration_covariance)
        .def_rw("rate", &Imu::rate, "Hz.");
    // Python sees no member without a value, whereas the constructor leaves some.
    data.def("__init__",
             [](SensorsData* self) {
                 new (self) SensorsData;
                 self->barometer = {};
                 self->magnetometer = {};
                 self->imu = {};
             })
        .def_rw("barometer", &SensorsData::barometer)
        .def_rw("temperature", &SensorsData::temperature)
        .def_rw("magnetometer", &SensorsData::magnetometer)
        .def_rw("imu", &SensorsData::imu)
        .def_rw("motion_state", &SensorsData::motion_state)
        .def_rw("sync_count", &SensorsData::sync_count, "Trigger signals since the start.");
}

void bindDetections(nb::module_& module) {
    nb::class_<CustomBoxObjectData>(module, "CustomBoxObjectData",
                                    "A detection that the user supplies, with a fresh identifier.")
        .def(nb::init<>())
        .def_rw("unique_id", &CustomBoxObjectData::unique_id)
        .def_rw("box_corners", &CustomBoxObjectData::box_corners, "The four corners of the box, in pixels.")
        .def_rw("class_label", &CustomBoxObjectData::class_label)
        .def_rw("score", &CustomBoxObjectData::score)
        .def_rw("on_ground", &CustomBoxObjectData::on_ground);
    nb::class_<PyObjectData>(module, "ObjectData",
                             "A detected object. Positions and sizes are in the unit and frame asked for.\n\n"
                             "Lists are copies: assign a list to change them.")
        .def(nb::init<>())
        .def_rw("id", &PyObjectData::id, "Of the tracking; -1 without.")
        .def_rw("unique_id", &PyObjectData::unique_id)
        .def_rw("label", &PyObjectData::label)
        .def_rw("sublabel", &PyObjectData::sublabel)
        .def_rw("tracking_state", &PyObjectData::tracking_state)
        .def_rw("action_state", &PyObjectData::action_state)
        .def_rw("confidence", &PyObjectData::confidence, "0 to 100.")
        .def_rw("position", &PyObjectData::position, "Of the centre.")
        .def_prop_ro(
            "position_covariance",
            [](nb::handle self) { return viewOf(nb::cast<PyObjectData&>(self).position_covariance, self); },
            nb::sig("def position_covariance(self) -> numpy.typing.NDArray[numpy.float32]"),
            "Upper triangle, row by row: a writable view of six numbers.")
        .def_rw("velocity", &PyObjectData::velocity, "Per second.")
        .def_rw("dimensions", &PyObjectData::dimensions, "Width, height, length.")
        .def_prop_rw(
            "mask", [](const PyObjectData& o) { return o.maskOfPython; },
            [](PyObjectData& o, const PyMat& mask) { o.maskOfPython = mask; },
            "Inside the box, 255 on the object: the same pixels as the Mat that was assigned.")
        .def_rw("bounding_box_2d", &PyObjectData::bounding_box_2d, "Four corners, in pixels.")
        .def_rw("bounding_box", &PyObjectData::bounding_box, "Eight corners.")
        .def_rw("keypoint_2d", &PyObjectData::keypoint_2d, "Of a skeleton, in pixels.")
        .def_rw("keypoint", &PyObjectData::keypoint, "Of a skeleton.");
    module.def("generate_unique_id", &generate_unique_id,
               "A random identifier: RFC 4122, version 4, in lower case.");
    module.attr("BODY_BONES") = nb::tuple(nb::cast(BODY_BONES));
    module.attr("BODY_BONES_POSE_34") = nb::tuple(nb::cast(BODY_BONES_POSE_34));
}

}  // namespace

void bindRecords(nb::module_& module) {
    bindCalibration(module);
    bindInput(module);
    bindConfiguration(module);
    bindSamples(module);
    bindDetections(module);
}

}  // namespace vela::python

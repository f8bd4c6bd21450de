// SPDX-License-Identifier: Apache-2.0
// Builds a few records, as a camera application would, and prints them.
#include <vela_core/vela.hpp>

#include <iostream>

using namespace vela;

int main() {
    const DeviceProperties devices[] = {{CAMERA_STATE::AVAILABLE, 0, "/dev/video0", MODEL::KITE_3, 12345},
                                        {CAMERA_STATE::NOT_AVAILABLE, 1, "", MODEL::KITE_S, 0}};
    for (const DeviceProperties& device : devices) {
        std::cout << toString(device) << "\n";
    }
    std::cout << toString(StreamingProperties{"192.168.1.7", 30000, 777, 8000});

    SensorsData sample{};
    using Location = SensorsData::TemperatureData::SENSOR_LOCATION;
    sample.temperature.temperatures = {{Location::IMU, 31.5F}, {Location::BAROMETER, 29.0F}};
    for (const Location location : {Location::IMU, Location::BAROMETER, Location::ONBOARD_LEFT}) {
        float value = 0.0F;
        const ERROR_CODE status = sample.temperature.get(location, value);
        std::cout << location << ": " << value << " " << SENSORS_UNIT::DEG_C << " (" << status << ")\n";
    }

    CustomBoxObjectData box;  // has a new identifier
    box.class_label = 4;
    box.score = 0.9F;
    std::cout << "box of label " << box.class_label << " with " << box.box_corners.size() << " corners\n";

    Objects objects;
    for (const OBJECT_SUBCLASS subclass : {OBJECT_SUBCLASS::CAR, OBJECT_SUBCLASS::PERSON_HEAD}) {
        ObjectData object;
        object.id = static_cast<int>(objects.list.size());
        object.sublabel = subclass;
        object.label = getObjectClass(subclass);
        objects.list.push_back(object);
    }
    ObjectData found;
    std::cout << std::boolalpha << "object 1: " << objects.getObjectDataFromId(found, 1) << ", "
              << found.sublabel << " is of class " << found.label << "\n";
    std::cout << "object 9: " << objects.getObjectDataFromId(found, 9) << "\n";
    std::cout << "a skeleton has " << BODY_BONES.size() << " bones, the first from " << BODY_BONES[0].first
              << " to " << BODY_BONES[0].second << "\n";
}

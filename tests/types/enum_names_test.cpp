// SPDX-License-Identifier: Apache-2.0
#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "vela_core/log/KLogger.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/vela.hpp"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace vela::test {
namespace {

using detail::fromValue;
using detail::toValue;

/// Compares the names of an enumeration with a line of the table: first the name for unknown values, then
/// those of the values from 0 on.
template <class Enum>
void expectNames(std::istream& table, Enum last) {
    std::string wanted;
    std::getline(table, wanted);
    const String none = toString(fromValue<Enum>(-1));
    std::string names = wanted.substr(0, wanted.find('"')) + '"' + toStdString(none) + "\": ";
    for (std::int32_t value = 0; value <= toValue(last); ++value) {
        names += (value == 0 ? "" : ", ") + toStdString(toString(fromValue<Enum>(value)));
    }
    EXPECT_EQ(names, wanted);
    EXPECT_EQ(toString(fromValue<Enum>(toValue(last) + 1)), none) << names;
}

TEST(EnumNames, AreTheOnesThatUsersKnow) {
    using Magnetometer = SensorsData::MagnetometerData;
    using Temperature = SensorsData::TemperatureData;
    std::ifstream table(VELA_TEST_FOLDER "/types/enum_names.txt");
    const auto expectNamesUpTo = [&](auto... last) { (expectNames(table, last), ...); };
    expectNamesUpTo(MEM::GPU, COPY_TYPE::GPU_CPU, MAT_TYPE::MAT_8S_C4, UNIT::FOOT,
                    COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD, MODEL::KITE_3E, INPUT_TYPE::STREAM,
                    CAMERA_STATE::NOT_AVAILABLE, SENSOR_TYPE::BAROMETER, SENSORS_UNIT::HZ,
                    Magnetometer::HEADING_STATE::MAGNETOMETER_NOT_AVAILABLE,
                    SensorsData::CAMERA_MOTION_STATE::FALLING, Temperature::SENSOR_LOCATION::ONBOARD_SECOND,
                    OBJECT_TRACKING_STATE::TERMINATE, OBJECT_ACTION_STATE::MOVING,
                    OBJECT_FILTERING_MODE::NMS_3D, DETECTION_MODEL::CUSTOM_BOX_OBJECTS, BODY_FORMAT::POSE_34,
                    BODY_PARTS::LEFT_EAR, BODY_PARTS_POSE_34::RIGHT_HEEL, OBJECT_CLASS::SPORT,
                    OBJECT_SUBCLASS::SPORTSBALL, VTK, PGM, LOGGER_NAME::CORE);
}

TEST(EnumNames, CombinedSidesHaveNone) {
    EXPECT_EQ(toString(MEM_BOTH), "Unknown");
    EXPECT_EQ(toString(MEM_MANAGED), "Unknown");
}

TEST(EnumNames, UnitsAreReadFromWordsOfTheirOwn) {
    for (std::int32_t value = -1; value <= 5; ++value) {
        EXPECT_EQ(model2str(fromValue<MODEL>(value)), toString(fromValue<MODEL>(value)));
        EXPECT_EQ(unit2str(fromValue<UNIT>(value)), toString(fromValue<UNIT>(value)));
        EXPECT_EQ(str2unit(unit2str(fromValue<UNIT>(value))), UNIT::MILLIMETER);
    }
    const char* const words[] = {"Millimeter", "Centimeter", "Meter", "Inch", "Feet"};
    for (std::int32_t value = 0; value < 5; ++value) {
        EXPECT_EQ(str2unit(words[value]), fromValue<UNIT>(value));
    }
    for (const char* const word : {"FOOT", "meter", "Meter ", ""}) {
        EXPECT_EQ(str2unit(word), UNIT::MILLIMETER) << word;
    }
    EXPECT_THROW(str2unit(String(static_cast<const char*>(nullptr))), std::logic_error);
}

TEST(ObjectClasses, EachSubclassIsInTheClassThatListsIt) {
    std::ostringstream text;
    for (std::int32_t value = -1; value <= 7; ++value) {
        const auto objectClass = fromValue<OBJECT_CLASS>(value);
        text << objectClass << ":";
        for (const OBJECT_SUBCLASS subclass : getObjectSubClasses(objectClass)) {
            text << " '" << subclass << "'";
            EXPECT_EQ(getObjectClass(subclass), objectClass) << subclass;
        }
        text << "\n";
    }
    EXPECT_EQ(text.str(), contentOf(VELA_TEST_FOLDER "/types/object_classes.txt"));
    for (const std::int32_t value : {24, -1}) {
        OBJECT_CLASS none{};
        EXPECT_EQ(printedBy([&] { none = getObjectClass(fromValue<OBJECT_SUBCLASS>(value)); }),
                  "[KITE SDK][AI][Core] ERR : INVALID SUBLASS\n");
        EXPECT_EQ(toValue(none), 7);
    }
}

TEST(Complaints, AreWrittenAtOnce) {
    const std::pair<void (*)(), const char*> cases[] = {
        {[] { getObjectClass(fromValue<OBJECT_SUBCLASS>(24)); }, "ERR : INVALID SUBLASS\n"},
        {[] { Mat(1, 1, MAT_TYPE::MAT_8U_C1, fromValue<MEM>(5)); }, "ERROR ALLOC MEM TYPE 5\n"},
        {[] {
             Mat mat;
             saveDepthAs(mat, static_cast<DEPTH_FORMAT>(3), "none", 1);
         },
         " Invalid Depth Format\n"}};
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto& [complain, text] : cases) {
        const auto program = [complain = complain] {
            dup2(STDERR_FILENO, STDOUT_FILENO);
            complain();
            std::_Exit(0);  // does not flush buffers
        };
        EXPECT_EXIT(program(), testing::ExitedWithCode(0), text);
    }
}

}  // namespace
}  // namespace vela::test

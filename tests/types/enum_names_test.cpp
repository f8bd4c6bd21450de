#include "vela_core/types/enum_names.hpp"

#include "support/capture.hpp"
#include "support/fnv.hpp"
#include "vela_core/types/enum_cast.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <sstream>
#include <stdexcept>

namespace vela::test {
namespace {

/// "value name" lines from two below the first value to three above the last.
template <class Enum>
std::string names(Enum last) {
    std::ostringstream text;
    for (std::int32_t value = -2; value <= toValue(last) + 3; ++value) {
        text << value << " " << toString(fromValue<Enum>(value)) << "\n";
    }
    using Limits = std::numeric_limits<std::int32_t>;
    EXPECT_EQ(toString(fromValue<Enum>(Limits::max())), toString(fromValue<Enum>(-1)));
    EXPECT_EQ(toString(fromValue<Enum>(Limits::min())), toString(fromValue<Enum>(-1)));
    return text.str();
}

TEST(EnumNames, AreTheOnesThatUsersKnow) {
    const std::string all =
        names(MEM::GPU) + names(COPY_TYPE::GPU_CPU) + names(MAT_TYPE::MAT_8S_C4) + names(UNIT::FOOT) +
        names(COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD) + names(MODEL::KITE_3E) +
        names(INPUT_TYPE::STREAM) + names(CAMERA_STATE::NOT_AVAILABLE) + names(SENSOR_TYPE::BAROMETER) +
        names(SENSORS_UNIT::HZ) +
        names(SensorsData::MagnetometerData::HEADING_STATE::MAGNETOMETER_NOT_AVAILABLE) +
        names(SensorsData::CAMERA_MOTION_STATE::FALLING) +
        names(SensorsData::TemperatureData::SENSOR_LOCATION::ONBOARD_SECOND) +
        names(OBJECT_TRACKING_STATE::TERMINATE) + names(OBJECT_ACTION_STATE::MOVING) +
        names(OBJECT_FILTERING_MODE::NMS_3D) + names(DETECTION_MODEL::CUSTOM_BOX_OBJECTS) +
        names(BODY_FORMAT::POSE_34) + names(OBJECT_CLASS::SPORT) + names(OBJECT_SUBCLASS::SPORTSBALL);
    EXPECT_EQ(fnv1a(all), 0xd100d0c038a262c1U) << all;
}

TEST(EnumNames, SlipsAndExceptionsAreKept) {
    EXPECT_EQ(toString(MEM_BOTH), "Unknown");
    EXPECT_EQ(toString(SensorsData::TemperatureData::SENSOR_LOCATION::ONBOARD_SECOND), "ONBOARD LEFT");
    EXPECT_EQ(toString(fromValue<SENSORS_UNIT>(6)), "");
    EXPECT_EQ(toString(SENSORS_UNIT::M_S2), "\x6D\x2F\x73\xC2\xB2");
    EXPECT_EQ(toString(BODY_PARTS::LEFT_EAR), "LEFT EAR");
    EXPECT_EQ(toString(fromValue<BODY_PARTS_POSE_34>(34)), "Unknown");
    for (std::int32_t value = -1; value <= 5; ++value) {
        EXPECT_EQ(model2str(fromValue<MODEL>(value)), toString(fromValue<MODEL>(value)));
        EXPECT_EQ(unit2str(fromValue<UNIT>(value)), toString(fromValue<UNIT>(value)));
        EXPECT_EQ(str2unit(unit2str(fromValue<UNIT>(value))), UNIT::MILLIMETER) << "these are other words";
    }
}

TEST(EnumNames, UnitsAreReadFromTheirWordsOnly) {
    const std::pair<const char*, UNIT> words[] = {{"Millimeter", UNIT::MILLIMETER},
                                                  {"Centimeter", UNIT::CENTIMETER},
                                                  {"Meter", UNIT::METER},
                                                  {"Inch", UNIT::INCH},
                                                  {"Feet", UNIT::FOOT},
                                                  {"FOOT", UNIT::MILLIMETER},
                                                  {"meter", UNIT::MILLIMETER},
                                                  {"Meter ", UNIT::MILLIMETER},
                                                  {"", UNIT::MILLIMETER}};
    for (const auto& [word, unit] : words) {
        EXPECT_EQ(str2unit(word), unit) << word;
    }
    EXPECT_THROW(str2unit(String(static_cast<const char*>(nullptr))), std::logic_error);
}

TEST(ObjectClasses, BothMappingsAgree) {
    std::set<OBJECT_SUBCLASS> all;
    for (std::int32_t value = 0; value <= 6; ++value) {
        const auto objectClass = fromValue<OBJECT_CLASS>(value);
        const std::vector<OBJECT_SUBCLASS> subclasses = getObjectSubClasses(objectClass);
        EXPECT_TRUE(std::is_sorted(subclasses.begin(), subclasses.end()));
        for (const OBJECT_SUBCLASS subclass : subclasses) {
            EXPECT_EQ(getObjectClass(subclass), objectClass) << subclass;
            EXPECT_TRUE(all.insert(subclass).second);
        }
    }
    EXPECT_EQ(all.size(), 24U);
    EXPECT_EQ(getObjectSubClasses(OBJECT_CLASS::PERSON),
              (std::vector{OBJECT_SUBCLASS::PERSON, OBJECT_SUBCLASS::PERSON_HEAD}));
    EXPECT_EQ(getObjectClass(OBJECT_SUBCLASS::LAPTOP), OBJECT_CLASS::ELECTRONICS);
    EXPECT_EQ(getObjectClass(OBJECT_SUBCLASS::BANANA), OBJECT_CLASS::FRUIT_VEGETABLE);
    EXPECT_EQ(getObjectClass(OBJECT_SUBCLASS::BACKPACK), OBJECT_CLASS::BAG);
}

TEST(ObjectClasses, InvalidValues) {
    for (const std::int32_t value : {24, -1}) {
        EXPECT_EQ(printedBy([=] {
                      const OBJECT_CLASS none = getObjectClass(fromValue<OBJECT_SUBCLASS>(value));
                      EXPECT_EQ(toValue(none), 7);
                      EXPECT_EQ(toString(none), "Unknown");
                  }),
                  "[KITE SDK][AI][Core] ERR : INVALID SUBLASS\n");
    }
    EXPECT_TRUE(getObjectSubClasses(fromValue<OBJECT_CLASS>(7)).empty());
    EXPECT_TRUE(getObjectSubClasses(fromValue<OBJECT_CLASS>(-1)).empty());
}

}  // namespace
}  // namespace vela::test

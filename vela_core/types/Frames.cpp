// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/Frames.hpp"

#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/types/detail/enum_table.hpp"

#include <iterator>
#include <string>
#include <string_view>

namespace vela {
namespace {

constexpr float MILLIMETERS[] = {1.0F, 10.0F, 1000.0F, 25.4F, 304.8F};

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

struct UnitWord {
    std::string_view word;
    UNIT unit;
};

constexpr UnitWord UNIT_WORDS[] = {
    {"Centimeter", UNIT::CENTIMETER}, {"Meter", UNIT::METER}, {"Inch", UNIT::INCH}, {"Feet", UNIT::FOOT}};

}  // namespace

float getScaleMillimeter(UNIT unit) noexcept {
    const auto index = static_cast<std::uint32_t>(toValue(unit));
    return index < std::size(MILLIMETERS) ? MILLIMETERS[index] : 1.0F;
}

String toString(const UNIT& value) {
    return nameIn(UNIT_NAMES, value);
}

String toString(const COORDINATE_SYSTEM& value) {
    return nameIn(COORDINATE_SYSTEM_NAMES, value);
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

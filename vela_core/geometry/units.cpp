// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/units.hpp"

#include "vela_core/geometry/detail/checks.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/types/detail/enum_table.hpp"

#include <string>
#include <string_view>

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<UNIT> UNIT_NAMES[] = {
    {UNIT::MILLIMETER, "MILLIMETER"},
    {UNIT::CENTIMETER, "CENTIMETER"},
    {UNIT::METER, "METER"},
    {UNIT::INCH, "INCH"},
    {UNIT::FOOT, "FOOT"},
};

struct UnitWord {
    std::string_view word;
    UNIT unit;
};

constexpr UnitWord UNIT_WORDS[] = {
    {"Centimeter", UNIT::CENTIMETER}, {"Meter", UNIT::METER}, {"Inch", UNIT::INCH}, {"Feet", UNIT::FOOT}};

// Indexed by UNIT.
constexpr float MILLIMETERS[] = {1.0F, 10.0F, 1000.0F, 25.4F, 304.8F};

}  // namespace

String toString(const UNIT& value) {
    return nameIn(UNIT_NAMES, value);
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

ERROR_CODE detail::checkUnits(UNIT from, UNIT to) {
    return isPast(from, UNIT::FOOT) || isPast(to, UNIT::FOOT) ? ERROR_CODE::INVALID_FUNCTION_PARAMETERS
                                                              : ERROR_CODE::SUCCESS;
}

float getScaleMillimeter(UNIT unit) noexcept {
    const float* const known = rowAt(MILLIMETERS, unit);
    return known == nullptr ? 1.0F : *known;
}

float getUnitScale(UNIT from, UNIT to) {
    return from == to ? 1.0F : getScaleMillimeter(from) / getScaleMillimeter(to);
}

ERROR_CODE convertUnit(Transform& transform, UNIT from, UNIT to) {
    if (from == to) return ERROR_CODE::SUCCESS;
    const ERROR_CODE status = checkUnits(from, to);
    if (status != ERROR_CODE::SUCCESS) return status;
    const float scale = getUnitScale(from, to);
    for (const int i : {3, 7, 11}) {
        transform.m[i] *= scale;
    }
    return ERROR_CODE::SUCCESS;
}

}  // namespace vela

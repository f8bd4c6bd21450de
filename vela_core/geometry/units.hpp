// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Length unit of positions and depths.
enum class UNIT : std::int32_t {
    MILLIMETER = 0,
    CENTIMETER = 1,
    METER = 2,
    INCH = 3,
    FOOT = 4,
};

/// The display name, such as "MILLIMETER"; "Unknown" for a value without enumerator.
String toString(const UNIT& value);
/// The same text as `toString`.
String unit2str(UNIT unit);

/// The unit of "Centimeter", "Meter", "Inch" or "Feet", exactly so; `MILLIMETER` for every other text, the
/// names that `unit2str` gives among them. A String without character data throws `std::logic_error`.
UNIT str2unit(String text);

/// Length of one unit in millimetres: 1, 10, 1000, 25.4 and 304.8; 1 for a value without enumerator.
float getScaleMillimeter(UNIT unit) noexcept;

/// The factor that turns a length in `from` into the length in `to`: the quotient of their lengths in
/// millimetres, rounded once; exactly 1 for equal units.
float getUnitScale(UNIT from, UNIT to);

/// Scales the translation from one unit to another; rotation, row 3 and label stay.
/// `SUCCESS` without arithmetic for equal units; `INVALID_FUNCTION_PARAMETERS`, without a change, for a value
/// above the last. Negative values count as `MILLIMETER`.
ERROR_CODE convertUnit(Transform& transform, UNIT from, UNIT to);

}  // namespace vela

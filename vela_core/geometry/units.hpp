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
    MILLIMETER = 0,  ///< 1 mm
    CENTIMETER = 1,  ///< 10 mm
    METER = 2,       ///< 1000 mm
    INCH = 3,        ///< 25.4 mm
    FOOT = 4,        ///< 304.8 mm
};

/// The display name, such as "MILLIMETER"; "Unknown" for a value without enumerator.
String toString(const UNIT& value);
/// The same text as `toString`.
String unit2str(UNIT unit);

/// The unit named "Centimeter", "Meter", "Inch" or "Feet", exactly so spelt; `MILLIMETER` for every other
/// text, including the names that `unit2str` returns. Throws `std::logic_error` for a String without
/// character data.
UNIT str2unit(String text);

/// Length of one unit in millimetres: 1, 10, 1000, 25.4 and 304.8; 1 for a value without enumerator.
float getScaleMillimeter(UNIT unit) noexcept;

/// The factor that converts a length from unit `from` to unit `to`: the quotient of their lengths in
/// millimetres, rounded once; exactly 1 for equal units.
float getUnitScale(UNIT from, UNIT to);

/// Converts the translation from one unit to another; rotation, row 3 and label stay.
/// Returns `SUCCESS` without arithmetic for equal units, and `INVALID_FUNCTION_PARAMETERS` without a change
/// for a value above the last. Negative values count as `MILLIMETER`.
ERROR_CODE convertUnit(Transform& transform, UNIT from, UNIT to);

}  // namespace vela

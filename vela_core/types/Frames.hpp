// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela {

/// Length unit of positions and depths.
enum class UNIT : std::int32_t {
    MILLIMETER = 0,
    CENTIMETER = 1,
    METER = 2,
    INCH = 3,
    FOOT = 4,
};

/// Axis convention of positions and orientations.
enum class COORDINATE_SYSTEM : std::int32_t {
    IMAGE = 0,  ///< the camera's own frame: X right, Y down, Z forward
    LEFT_HANDED_Y_UP_AND_Z_FORWARD = 1,
    RIGHT_HANDED_Y_UP_AND_Z_BACKWARD = 2,
    RIGHT_HANDED_Z_UP_AND_Y_FORWARD = 3,
    LEFT_HANDED_Z_UP_AND_X_FORWARD = 4,
    RIGHT_HANDED_Z_UP_AND_X_FORWARD = 5,
};

/// Length of one unit in millimetres; 1 for a value without enumerator.
float getScaleMillimeter(UNIT unit) noexcept;

/// @{ The display name; "Unknown" for a value without enumerator.
String toString(const UNIT& value);
String toString(const COORDINATE_SYSTEM& value);
/// @}

/// The same text as `toString`.
String unit2str(UNIT unit);

/// The unit of "Centimeter", "Meter", "Inch" or "Feet", exactly so; `MILLIMETER` for every other text, the
/// names that `unit2str` gives among them. A String without character data throws `std::logic_error`.
UNIT str2unit(String text);

}  // namespace vela

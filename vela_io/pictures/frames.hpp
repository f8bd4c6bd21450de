// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/Failure.hpp"
#include "vela_io/detail/tables.hpp"
#include "vela_io/pictures.hpp"

#include <optional>

namespace vela::io::detail {

/// A direction along a coordinate axis: `sign` times axis 0, 1 or 2.
struct Direction {
    int axis = 0;
    int sign = 1;

    Direction operator-() const { return {axis, -sign}; }
    double along(const float (&point)[3]) const { return sign * static_cast<double>(point[axis]); }
};

/// Where right, up and forward are. Three directions rather than two and a cross product, because some
/// conventions are left-handed.
struct Frame {
    Direction right;
    Direction up;
    Direction forward;
};

/// The directions of an axis convention; throws for an unknown one.
inline Frame frameOf(COORDINATE_SYSTEM axes) {
    constexpr Direction X{0, 1};
    constexpr Direction Y{1, 1};
    constexpr Direction Z{2, 1};
    switch (axes) {
        case COORDINATE_SYSTEM::IMAGE:
            return {X, -Y, Z};
        case COORDINATE_SYSTEM::LEFT_HANDED_Y_UP_AND_Z_FORWARD:
            return {X, Y, Z};
        case COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD:
            return {X, Y, -Z};
        case COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_Y_FORWARD:
            return {X, Z, Y};
        case COORDINATE_SYSTEM::LEFT_HANDED_Z_UP_AND_X_FORWARD:
            return {Y, Z, X};
        case COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD:
            return {-Y, Z, X};
    }
    throw Failure{ERROR_CODE::INVALID_COORDINATE_SYSTEM, "an unknown axis convention"};
}

/// The symbol of a unit in labels; empty if it is not known.
inline const char* labelOf(const std::optional<UNIT>& unit) {
    constexpr const char* LABELS[] = {"mm", "cm", "m", "in", "ft"};
    const char* const* const label = unit ? rowAt(LABELS, *unit) : nullptr;
    return label != nullptr ? *label : "";
}

}  // namespace vela::io::detail

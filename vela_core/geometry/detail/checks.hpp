// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/units.hpp"
#include "vela_core/types/ErrorCode.hpp"

namespace vela::detail {

// Checks of the arguments of conversions. Comparisons are signed and against the last enumerator only:
// negative values pass and count as the first.

/// `INVALID_COORDINATE_SYSTEM` for a value above the last.
ERROR_CODE checkFrames(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to);

/// `INVALID_FUNCTION_PARAMETERS` for a value above the last.
ERROR_CODE checkUnits(UNIT from, UNIT to);

}  // namespace vela::detail

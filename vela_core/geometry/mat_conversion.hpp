// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/units.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/utils/Mat.hpp"

namespace vela VELA_API {

// Both work in place on the side `mem`: `CPU` in the host buffer, done on return; `GPU` by kernels on the
// null stream, without waiting; `MEM_BOTH` on the GPU, then brought to the host by `updateCPUfromGPU`, done
// on return. Any other `mem` does nothing and succeeds. What the CUDA runtime reports does not change the
// result.

/// Scales every value from one length unit to another; for `MAT_32F_C1`, `MAT_32F_C3` and `MAT_32F_C4`
/// images. Of four channels the host scales all four; the GPU leaves the fourth, packed colour, bit for bit.
/// `SUCCESS` without work for equal units; `INVALID_FUNCTION_PARAMETERS`, without a change, for a unit above
/// the last or another pixel type.
ERROR_CODE convertUnit(Mat& mat, UNIT from, UNIT to, MEM mem);

/// Moves every point from one axis convention to another by the matrix formula as it stands, so a NaN in one
/// coordinate reaches the others; for `MAT_32F_C3` and `MAT_32F_C4` images. The fourth channel keeps its
/// bits. `SUCCESS` without work for equal conventions; `INVALID_COORDINATE_SYSTEM` for one above the last,
/// then `INVALID_FUNCTION_PARAMETERS` for another pixel type, both without a change.
ERROR_CODE convertCoordinateSystem(Mat& mat, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to, MEM mem);

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/units.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/utils/Mat.hpp"

namespace vela VELA_API {

/// @name Conversion of whole Mats
/// Both convert in place on the side `mem`: `CPU` in the host buffer, complete on return; `GPU` by kernels on
/// the null stream, without waiting; `MEM_BOTH` on the GPU, followed by `updateCPUfromGPU`, complete on
/// return. Any other `mem` does nothing and succeeds. CUDA errors do not affect the return value.
/// @{

/// Converts every value from one length unit to another; for `MAT_32F_C1`, `MAT_32F_C3` and `MAT_32F_C4`
/// images. The host scales all four channels; the GPU keeps the bits of the fourth, packed colour. Returns
/// `SUCCESS` without work for equal units, and `INVALID_FUNCTION_PARAMETERS` without a change for a unit
/// above the last or another pixel type.
ERROR_CODE convertUnit(Mat& mat, UNIT from, UNIT to, MEM mem);

/// Expresses every point in another axis convention, by the full matrix product, so that a NaN in one
/// coordinate reaches the others; for `MAT_32F_C3` and `MAT_32F_C4` images. The fourth channel keeps its
/// bits. Returns `SUCCESS` without work for equal conventions, and without a change
/// `INVALID_COORDINATE_SYSTEM` for one above the last, or else `INVALID_FUNCTION_PARAMETERS` for another
/// pixel type.
ERROR_CODE convertCoordinateSystem(Mat& mat, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to, MEM mem);
/// @}

}  // namespace vela

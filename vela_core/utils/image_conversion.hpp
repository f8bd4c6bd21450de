// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/utils/Mat.hpp"

namespace vela VELA_API {

/// Turns the device side of a `MAT_8U_C4` image into a `MAT_8S_C4` one by taking 128 from every channel, on
/// `stream` without waiting. A destination of the source's size and of that type with a device side is kept;
/// any other is allocated anew, on the GPU alone, even when it is the source or owns the source's pixels.
/// Launch errors are not reported. `FAILURE`, without a change, when the source is not initialised, has no
/// device side or is of another type.
ERROR_CODE convertImage(Mat& source, Mat& destination, cudaStream_t stream = nullptr);

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/utils/Mat.hpp"

namespace vela VELA_API {

/// Converts the device side of a `MAT_8U_C4` image to `MAT_8S_C4` by subtracting 128 from every channel, on
/// `stream` without waiting. A destination that has the source's size, that type and a device side is kept;
/// any other is allocated anew, on the GPU only, even if it is the source or owns the source's pixels. Launch
/// errors are not reported. Returns `FAILURE` without a change when the source is not initialised, has no
/// device side or has another type.
ERROR_CODE convertImage(Mat& source, Mat& destination, cudaStream_t stream = nullptr);

}  // namespace vela

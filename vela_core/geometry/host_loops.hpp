#pragma once

#include "vela_gpu/kernels/detail/PixelView.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

namespace vela {

// What forEachPixel does for the operations that whole clouds are converted by, at the speed of memory: by
// AVX2 where the processor has it, otherwise by forEachPixel itself. Results are the same to the bit, NaNs
// aside, whose sign and payload no formula settles.

void applyOnHost(const PixelView<float>& view, const ScaleAll& op);
void applyOnHost(const PixelView<Vector3<float>>& view, const ScaleAll& op);
void applyOnHost(const PixelView<Vector4<float>>& view, const ScaleAll& op);
void applyOnHost(const PixelView<Vector3<float>>& view, const ApplyMatrix3& op);
void applyOnHost(const PixelView<Vector4<float>>& view, const ApplyMatrix4& op);

}  // namespace vela

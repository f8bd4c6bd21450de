// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/Resolution.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_gpu/runtime.hpp"

namespace vela VELA_API {

// Launches over device or managed memory. Row steps are counted in elements of the pointer's type. Each
// launch covers `width` times `height` pixels and nothing else, and returns without waiting; a launch that
// fails shows in `cudaGetLastError`. An image without pixels, or a null buffer (a failed allocation),
// launches nothing. Without a stream argument the null stream is used.

/// Every pixel becomes `value`; T is one of the ten pixel types of `Mat::setTo`.
template <class T>
void cu_matSetToGPU(T value, T* data, unsigned int stepElements, unsigned int width, unsigned int height,
                    cudaStream_t stream);

/// Every channel of the source less 128 (0 becomes -128, 255 becomes 127) goes to the destination.
void cu_cvt2Signed(Vector4<unsigned char>* source, Vector4<char>* destination,
                   unsigned int sourceStepElements, unsigned int destinationStepElements,
                   Resolution resolution, cudaStream_t stream);

/// Every pixel times `factor`, all components; T is `float` or `Vector3<float>`.
template <class T>
void cu_applyFactor(T* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height);
template <>
void cu_applyFactor(float* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height);
template <>
void cu_applyFactor(Vector3<float>* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height);

/// x, y and z times `factor`; the fourth component, which carries packed colour, keeps its bits.
void cu_applyFactor4f(Vector4<float>* data, float factor, unsigned int stepElements, unsigned int width,
                      unsigned int height);

/// p = K p; `matrix` is 9 floats in device memory, row-major.
void cu_applyMat3f(Vector3<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height);

/// (x, y, z) = rows 0 to 2 of K times (x, y, z, 1); the fourth component keeps its bits. `matrix` is 16
/// floats in device memory, row-major.
void cu_applyMat4f(Vector4<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height);

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/Resolution.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_gpu/runtime.hpp"

namespace vela VELA_API {

/// @name Kernels
/// They work on device or managed memory. Row steps are counted in elements of the pointer's type. Each
/// launch covers exactly `width` times `height` pixels and returns without waiting; `cudaGetLastError`
/// reports a launch that fails. An image without pixels, or a null buffer (a failed allocation), launches
/// nothing. Functions without a stream argument use the null stream.
/// @{

/// Sets every pixel to `value`; T is one of the ten pixel types of `Mat::setTo`.
template <class T>
void cu_matSetToGPU(T value, T* data, unsigned int stepElements, unsigned int width, unsigned int height,
                    cudaStream_t stream);

/// Subtracts 128 from every channel of the source (0 becomes -128, 255 becomes 127) into the destination.
void cu_cvt2Signed(Vector4<unsigned char>* source, Vector4<char>* destination,
                   unsigned int sourceStepElements, unsigned int destinationStepElements,
                   Resolution resolution, cudaStream_t stream);

/// Multiplies all components of every pixel by `factor`; T is `float` or `Vector3<float>`.
template <class T>
void cu_applyFactor(T* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height);
/// @overload
template <>
void cu_applyFactor(float* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height);
/// @overload
template <>
void cu_applyFactor(Vector3<float>* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height);

/// Multiplies x, y and z by `factor`; the fourth component, which carries packed colour, keeps its bits.
void cu_applyFactor4f(Vector4<float>* data, float factor, unsigned int stepElements, unsigned int width,
                      unsigned int height);

/// Multiplies every point p by a matrix, p = K p; `matrix` is 9 floats in device memory, row-major.
void cu_applyMat3f(Vector3<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height);

/// Sets x, y, z of every pixel to rows 0 to 2 of K times (x, y, z, 1); the fourth component keeps its bits.
/// `matrix` is 16 floats in device memory, row-major.
void cu_applyMat4f(Vector4<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height);
/// @}

}  // namespace vela

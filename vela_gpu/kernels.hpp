#pragma once

#include "vela_core/types/Resolution.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_gpu/runtime.hpp"

namespace vela {

// Launches over device or managed memory. Row steps are counted in elements of the pointer's type. Each
// launch covers `width` times `height` pixels and nothing else, and returns without waiting; a launch that
// fails shows in `cudaGetLastError`. An image without pixels, or a null buffer (a failed allocation),
// launches nothing. Without a stream argument the null stream is used.

/// Every pixel times `factor`, all components; T is `float` or `Vector3<float>`.
template <class T>
void cu_applyFactor(T* data, float factor, unsigned int stepElements, unsigned int width,
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

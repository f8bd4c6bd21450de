// The kernels of kernels.hpp by way of `transformPixels` and `transformPixelsByMatrix`. Each backend defines
// these two in its one launcher source and includes this file at its end; nobody else includes it.

#include "vela_gpu/PixelView.hpp"
#include "vela_gpu/kernels.hpp"
#include "vela_gpu/pixel_ops.hpp"

namespace vela {

template <class T>
void cu_applyFactor(T* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height) {
    transformPixels(elementView(data, stepElements, width, height), ScaleAll{factor});
}

template void cu_applyFactor(float*, float, unsigned int, unsigned int, unsigned int);
template void cu_applyFactor(Vector3<float>*, float, unsigned int, unsigned int, unsigned int);

void cu_applyFactor4f(Vector4<float>* data, float factor, unsigned int stepElements, unsigned int width,
                      unsigned int height) {
    transformPixels(elementView(data, stepElements, width, height), ScalePosition{factor});
}

void cu_applyMat3f(Vector3<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height) {
    transformPixelsByMatrix<ApplyMatrix3>(elementView(data, stepElements, width, height), matrix);
}

void cu_applyMat4f(Vector4<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height) {
    transformPixelsByMatrix<ApplyMatrix4>(elementView(data, stepElements, width, height), matrix);
}

}  // namespace vela

// The kernels of kernels.hpp by way of `fillPixels`, `mapPixels`, `transformPixels` and
// `transformPixelsByMatrix`. Each backend defines these four in its one launcher source and includes this
// file at its end; nobody else does.

#include "vela_gpu/PixelView.hpp"
#include "vela_gpu/kernels.hpp"
#include "vela_gpu/pixel_ops.hpp"

namespace vela {

template <class T>
void cu_matSetToGPU(T value, T* data, unsigned int stepElements, unsigned int width, unsigned int height,
                    cudaStream_t stream) {
    fillPixels(elementView(data, stepElements, width, height), value, stream);
}

template void cu_matSetToGPU(float, float*, unsigned, unsigned, unsigned, cudaStream_t);
template void cu_matSetToGPU(Vector2<float>, Vector2<float>*, unsigned, unsigned, unsigned, cudaStream_t);
template void cu_matSetToGPU(Vector3<float>, Vector3<float>*, unsigned, unsigned, unsigned, cudaStream_t);
template void cu_matSetToGPU(Vector4<float>, Vector4<float>*, unsigned, unsigned, unsigned, cudaStream_t);
template void cu_matSetToGPU(unsigned char, unsigned char*, unsigned, unsigned, unsigned, cudaStream_t);
template void cu_matSetToGPU(Vector2<unsigned char>, Vector2<unsigned char>*, unsigned, unsigned, unsigned,
                             cudaStream_t);
template void cu_matSetToGPU(Vector3<unsigned char>, Vector3<unsigned char>*, unsigned, unsigned, unsigned,
                             cudaStream_t);
template void cu_matSetToGPU(Vector4<unsigned char>, Vector4<unsigned char>*, unsigned, unsigned, unsigned,
                             cudaStream_t);
template void cu_matSetToGPU(Vector4<char>, Vector4<char>*, unsigned, unsigned, unsigned, cudaStream_t);
template void cu_matSetToGPU(unsigned short, unsigned short*, unsigned, unsigned, unsigned, cudaStream_t);

void cu_cvt2Signed(Vector4<unsigned char>* source, Vector4<char>* destination,
                   unsigned int sourceStepElements, unsigned int destinationStepElements,
                   Resolution resolution, cudaStream_t stream) {
    const auto width = static_cast<unsigned int>(resolution.width);
    const auto height = static_cast<unsigned int>(resolution.height);
    mapPixels(elementView(source, sourceStepElements, width, height),
              elementView(destination, destinationStepElements, width, height), ToSigned{}, stream);
}

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

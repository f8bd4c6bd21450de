// The kernels of kernels.hpp by way of two functions that each backend defines in its one launcher source,
// which includes this file at its end; nobody else does:
//
//     launchRuns(walker, view, stream)          walker(run, y) for all runs and rows of the view
//     launchRunsByMatrix<Op>(view, matrix)      the same for MapRun(view, view, Op) of a matrix in device
//     memory

#include "vela_gpu/PixelView.hpp"
#include "vela_gpu/kernels.hpp"
#include "vela_gpu/pixel_ops.hpp"
#include "vela_gpu/pixel_runs.hpp"

namespace vela {

template <class T>
void cu_matSetToGPU(T value, T* data, unsigned int stepElements, unsigned int width, unsigned int height,
                    cudaStream_t stream) {
    const PixelView<T> view = elementView(data, stepElements, width, height);
    if (!view.empty()) launchRuns(FillRun<T>(view, value), view, stream);
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
    const auto from = elementView(source, sourceStepElements, width, height);
    const auto to = elementView(destination, destinationStepElements, width, height);
    if (!from.empty() && !to.empty()) launchRuns(MapRun(from, to, ToSigned{}), from, stream);
}

template <>
void cu_applyFactor(float* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height) {
    const PixelView<float> view = elementView(data, stepElements, width, height);
    if (!view.empty()) launchRuns(MapRun(view, view, ScaleAll{factor}), view, nullptr);
}

template <>
void cu_applyFactor(Vector3<float>* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height) {
    // The components of a row are a row of floats, which makes shorter runs.
    cu_applyFactor(reinterpret_cast<float*>(data), factor, 3 * stepElements, 3 * width, height);
}

void cu_applyFactor4f(Vector4<float>* data, float factor, unsigned int stepElements, unsigned int width,
                      unsigned int height) {
    const auto view = elementView(data, stepElements, width, height);
    if (!view.empty()) launchRuns(MapRun(view, view, ScalePosition{factor}), view, nullptr);
}

void cu_applyMat3f(Vector3<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height) {
    const auto view = elementView(data, stepElements, width, height);
    if (!view.empty() && matrix != nullptr) launchRunsByMatrix<ApplyMatrix3>(view, matrix);
}

void cu_applyMat4f(Vector4<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height) {
    const auto view = elementView(data, stepElements, width, height);
    if (!view.empty() && matrix != nullptr) launchRunsByMatrix<ApplyMatrix4>(view, matrix);
}

}  // namespace vela

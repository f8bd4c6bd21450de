// SPDX-License-Identifier: Apache-2.0
// Implements kernels.hpp on one function, `launchTiles(walker, stream)`, which calls the walker for each of
// its tiles and lanes. Each flavour's launcher source defines it and then includes this file.

#include "vela_gpu/kernels.hpp"
#include "vela_gpu/kernels/detail/PixelView.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"
#include "vela_gpu/kernels/detail/pixel_tiles.hpp"

namespace vela {
using namespace detail;

template <class T>
void cu_matSetToGPU(T value, T* data, unsigned int stepElements, unsigned int width, unsigned int height,
                    cudaStream_t stream) {
    const PixelView<T> rows = elementView(data, stepElements, width, height);
    if (!rows.empty()) launchTiles(FillTiles<T>(rows, value), stream);
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
    const PixelView from = elementView(source, sourceStepElements, width, height);
    const PixelView to = elementView(destination, destinationStepElements, width, height);
    if (!from.empty() && !to.empty()) launchTiles(MapTiles(from, to, ToSigned{}), stream);
}

template <>
void cu_applyFactor(float* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height) {
    const PixelView rows = elementView(data, stepElements, width, height);
    if (!rows.empty()) launchTiles(MapTiles(rows, rows, ScaleAll{factor}), nullptr);
}

template <>
void cu_applyFactor(Vector3<float>* data, float factor, unsigned int stepElements, unsigned int width,
                    unsigned int height) {
    // Treat the row as floats: a 16-byte word holds four of them, but no whole number of 3-float pixels.
    const auto view = elementView(data, stepElements, width, height);
    const PixelView<float> rows{reinterpret_cast<float*>(data), std::size_t{3} * width, height,
                                view.stepBytes};
    if (!rows.empty()) launchTiles(MapTiles(rows, rows, ScaleAll{factor}), nullptr);
}

void cu_applyFactor4f(Vector4<float>* data, float factor, unsigned int stepElements, unsigned int width,
                      unsigned int height) {
    const PixelView rows = elementView(data, stepElements, width, height);
    if (!rows.empty()) launchTiles(MapTiles(rows, rows, ScalePosition{factor}), nullptr);
}

void cu_applyMat3f(Vector3<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height) {
    const PixelView rows = elementView(data, stepElements, width, height);
    if (rows.empty() || matrix == nullptr) return;
    launchTiles(ExchangingMapTiles(rows, rows, MatrixInMemory<ApplyMatrix3>{matrix}), nullptr);
}

void cu_applyMat4f(Vector4<float>* data, float* matrix, unsigned int stepElements, unsigned int width,
                   unsigned int height) {
    const PixelView rows = elementView(data, stepElements, width, height);
    if (rows.empty() || matrix == nullptr) return;
    launchTiles(MapTiles(rows, rows, MatrixInMemory<ApplyMatrix4>{matrix}), nullptr);
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/mat_conversion.hpp"

#include "vela_core/geometry/detail/checks.hpp"
#include "vela_core/geometry/detail/host_loops.hpp"
#include "vela_core/utils/detail/buffers.hpp"
#include "vela_gpu/kernels.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace vela {
using namespace detail;
namespace {

template <class Pixel>
PixelView<Pixel> viewOf(const Mat& mat, unsigned char* buffer, std::size_t stepBytes) {
    return {reinterpret_cast<Pixel*>(buffer), mat.width, mat.height, stepBytes};
}

/// Calls a kernel with the view's pointer, one more argument, row step in pixels, width and height.
template <class Kernel, class Pixel, class Argument>
void callKernel(Kernel kernel, const PixelView<Pixel>& view, Argument argument) {
    kernel(view.data, argument, static_cast<std::uint32_t>(view.stepBytes / sizeof(Pixel)),
           static_cast<std::uint32_t>(view.width), static_cast<std::uint32_t>(view.height));
}

void scaleOnDevice(const PixelView<Vector4<float>>& view, float factor) {
    callKernel(cu_applyFactor4f, view, factor);
}

template <class Pixel>
void scaleOnDevice(const PixelView<Pixel>& view, float factor) {
    callKernel(cu_applyFactor<Pixel>, view, factor);
}

void applyOnDevice(const PixelView<Vector3<float>>& view, float* matrix) {
    callKernel(cu_applyMat3f, view, matrix);
}

void applyOnDevice(const PixelView<Vector4<float>>& view, float* matrix) {
    callKernel(cu_applyMat4f, view, matrix);
}

/// Converts the pixels of the side that `mem` names by `onHost` or `onDevice`.
template <class Pixel, class OnHost, class OnDevice>
void convertPixels(Mat& mat, MEM mem, OnHost onHost, OnDevice onDevice) {
    if (mem == MEM::CPU) onHost(viewOf<Pixel>(mat, mat.ptrCPU, mat.stepBytesCPU));
    if (mem == MEM::GPU || mem == MEM_BOTH) onDevice(viewOf<Pixel>(mat, mat.ptrGPU, mat.stepBytesGPU));
}

template <class Pixel>
ERROR_CODE scaleMat(Mat& mat, float factor, MEM mem) {
    using View = PixelView<Pixel>;
    convertPixels<Pixel>(
        mat, mem, [=](const View& view) { applyOnHost(asFloats(view), ScaleAll{factor}); },
        [=](const View& view) { scaleOnDevice(view, factor); });
    if (mem == MEM_BOTH) mat.updateCPUfromGPU();
    return ERROR_CODE::SUCCESS;
}

/// Device memory that is released at the end of the scope, even if a host allocation throws.
struct DeviceBuffer {
    unsigned char* data = nullptr;

    DeviceBuffer() = default;
    DeviceBuffer(const DeviceBuffer&) = delete;
    DeviceBuffer& operator=(const DeviceBuffer&) = delete;
    ~DeviceBuffer() {
        if (data != nullptr) releaseDeviceBuffer(data);
    }
};

template <class Pixel, class Op, class Matrix>
ERROR_CODE applyMatrix(Mat& mat, const Matrix& matrix, MEM mem) {
    Op op;
    std::copy(std::begin(matrix.m), std::end(matrix.m), op.k);
    DeviceBuffer deviceMatrix;
    const auto onHost = [&](const PixelView<Pixel>& view) { applyOnHost(view, op); };
    const auto onDevice = [&](const PixelView<Pixel>& view) {
        // Failures do not affect the result; without its matrix in device memory the kernel is not launched.
        std::size_t step = 0;
        allocateDeviceBuffer(deviceMatrix.data, step, sizeof op.k, 1, 1);
        if (cudaMemcpy(deviceMatrix.data, op.k, sizeof op.k, cudaMemcpyHostToDevice) != cudaSuccess) return;
        applyOnDevice(view, reinterpret_cast<float*>(deviceMatrix.data));
    };
    convertPixels<Pixel>(mat, mem, onHost, onDevice);
    if (mem == MEM_BOTH) mat.updateCPUfromGPU();
    return ERROR_CODE::SUCCESS;
}

}  // namespace

ERROR_CODE convertUnit(Mat& mat, UNIT from, UNIT to, MEM mem) {
    if (from == to) return ERROR_CODE::SUCCESS;
    const ERROR_CODE status = checkUnits(from, to);
    if (status != ERROR_CODE::SUCCESS) return status;
    const float factor = getUnitScale(from, to);
    switch (mat.dataType) {
        case MAT_TYPE::MAT_32F_C1:
            return scaleMat<float>(mat, factor, mem);
        case MAT_TYPE::MAT_32F_C3:
            return scaleMat<Vector3<float>>(mat, factor, mem);
        case MAT_TYPE::MAT_32F_C4:
            return scaleMat<Vector4<float>>(mat, factor, mem);
        default:
            return ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    }
}

ERROR_CODE convertCoordinateSystem(Mat& mat, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to, MEM mem) {
    if (from == to) return ERROR_CODE::SUCCESS;
    const ERROR_CODE status = checkFrames(from, to);
    if (status != ERROR_CODE::SUCCESS) return status;
    switch (mat.dataType) {
        case MAT_TYPE::MAT_32F_C3:
            return applyMatrix<Vector3<float>, ApplyMatrix3>(
                mat, getCoordinateTransformConversion3f(from, to), mem);
        case MAT_TYPE::MAT_32F_C4:
            return applyMatrix<Vector4<float>, ApplyMatrix4>(
                mat, getCoordinateTransformConversion4f(from, to), mem);
        default:
            return ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    }
}

}  // namespace vela

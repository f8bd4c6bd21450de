#include "vela_core/geometry/mat_conversion.hpp"

#include "vela_core/geometry/conversion.hpp"
#include "vela_core/geometry/host_loops.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/utils/detail/buffers.hpp"
#include "vela_gpu/kernels.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace vela {
namespace {

template <class Pixel>
PixelView<Pixel> viewOf(const Mat& mat, unsigned char* buffer, std::size_t stepBytes) {
    return {reinterpret_cast<Pixel*>(buffer), mat.width, mat.height, stepBytes};
}

/// Calls a kernel that takes a view as pointer, one argument more, row step in pixels, width and height.
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

/// Replaces every pixel by op(pixel) on the host, or lets `launch` do the same on the device.
template <class Pixel, class Op, class Launch>
void convertPixels(Mat& mat, MEM mem, Op op, Launch launch) {
    if (mem == MEM::CPU) applyOnHost(viewOf<Pixel>(mat, mat.ptrCPU, mat.stepBytesCPU), op);
    if (mem == MEM::GPU || mem == MEM_BOTH) launch(viewOf<Pixel>(mat, mat.ptrGPU, mat.stepBytesGPU));
}

template <class Pixel>
ERROR_CODE scaleMat(Mat& mat, float factor, MEM mem) {
    convertPixels<Pixel>(mat, mem, ScaleAll{factor},
                         [=](const PixelView<Pixel>& view) { scaleOnDevice(view, factor); });
    if (mem == MEM_BOTH) mat.updateCPUfromGPU();
    return ERROR_CODE::SUCCESS;
}

template <class Pixel, class Op, class Matrix>
ERROR_CODE applyMatrix(Mat& mat, const Matrix& matrix, MEM mem) {
    Op op;
    std::copy(std::begin(matrix.m), std::end(matrix.m), op.k);
    convertPixels<Pixel>(mat, mem, op, [&](const PixelView<Pixel>& view) {
        // Failures do not change the result; without its matrix in device memory the kernel is not launched.
        unsigned char* deviceMatrix = nullptr;
        std::size_t step = 0;
        allocateDeviceBuffer(deviceMatrix, step, sizeof op.k, 1, 1);
        if (cudaMemcpy(deviceMatrix, op.k, sizeof op.k, cudaMemcpyHostToDevice) == cudaSuccess) {
            applyOnDevice(view, reinterpret_cast<float*>(deviceMatrix));
        }
        if (deviceMatrix != nullptr) releaseDeviceBuffer(deviceMatrix);
    });
    if (mem == MEM_BOTH) mat.updateCPUfromGPU();
    return ERROR_CODE::SUCCESS;
}

}  // namespace

ERROR_CODE convertUnit(Mat& mat, UNIT from, UNIT to, MEM mem) {
    if (from == to) return ERROR_CODE::SUCCESS;
    if (isPast(from, UNIT::FOOT) || isPast(to, UNIT::FOOT)) return ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
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
    constexpr COORDINATE_SYSTEM last = COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
    if (isPast(from, last) || isPast(to, last)) return ERROR_CODE::INVALID_COORDINATE_SYSTEM;
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

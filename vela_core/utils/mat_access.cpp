// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/Vector.hpp"
#include "vela_core/utils/Mat.hpp"
#include "vela_core/utils/detail/buffers.hpp"
#include "vela_core/utils/detail/fill.hpp"
#include "vela_core/utils/detail/mat_sides.hpp"
#include "vela_core/utils/detail/signatures.hpp"
#include "vela_gpu/kernels.hpp"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace vela {
using namespace detail;
namespace {

/// The name of a pixel type in printed signatures.
template <class N>
constexpr const char* PIXEL_NAME = nullptr;
template <>
constexpr const char* PIXEL_NAME<float> = "float";
template <>
constexpr const char* PIXEL_NAME<Vector2<float>> = "vela::Vector2<float>";
template <>
constexpr const char* PIXEL_NAME<Vector3<float>> = "vela::Vector3<float>";
template <>
constexpr const char* PIXEL_NAME<Vector4<float>> = "vela::Vector4<float>";
template <>
constexpr const char* PIXEL_NAME<unsigned char> = "unsigned char";
template <>
constexpr const char* PIXEL_NAME<Vector2<unsigned char>> = "vela::Vector2<unsigned char>";
template <>
constexpr const char* PIXEL_NAME<Vector3<unsigned char>> = "vela::Vector3<unsigned char>";
template <>
constexpr const char* PIXEL_NAME<Vector4<unsigned char>> = "vela::Vector4<unsigned char>";
template <>
constexpr const char* PIXEL_NAME<Vector4<char>> = "vela::Vector4<char>";
template <>
constexpr const char* PIXEL_NAME<unsigned short> = "unsigned short";

/// Reports a failed copy of a pixel without allocating memory for the signature.
template <class N>
void reportFailedPixel(cudaError status, const char* signatureStart) {
    if (status == cudaSuccess) return;
    char text[160];
    std::snprintf(text, sizeof text, "%s%s%s", signatureStart, PIXEL_NAME<N>, signature::WITH_END);
    reportFailure(status, text);
}

template <class N>
bool holdsPixelsLike(const Mat& mat) {
    return mat.isInit && !isPast(mat.dataType, MAT_TYPE::MAT_8S_C4) && mat.pixelBytes == sizeof(N);
}

/// The pixel (x, y) of the host side, rows taken as packed; null without a host buffer.
template <class N>
unsigned char* hostPixel(const Mat& mat, std::size_t x, std::size_t y) {
    return mat.ptrCPU == nullptr ? nullptr : mat.ptrCPU + (x + y * mat.width) * sizeof(N);
}

/// The pixel (x, y) of the device side; null without a device buffer.
template <class N>
unsigned char* devicePixel(const Mat& mat, std::size_t x, std::size_t y) {
    const std::size_t rowPixels = mat.stepBytesGPU / sizeof(N);
    return mat.ptrGPU == nullptr ? nullptr : mat.ptrGPU + (x + rowPixels * y) * sizeof(N);
}

}  // namespace

template <class N, class>
ERROR_CODE Mat::setTo(N value, MEM mem) {
    if (!holdsPixelsLike<N>(*this)) return ERROR_CODE::FAILURE;
    if (mem == MEM::CPU && hasHostSide(memType)) {
        if (width == 0 || height == 0) return ERROR_CODE::SUCCESS;
        if (ptrCPU == nullptr) return ERROR_CODE::FAILURE;
        fillWithPixel(ptrCPU, width * height * sizeof(N), &value, sizeof(N));
        return ERROR_CODE::SUCCESS;
    }
    if (mem == MEM::GPU && hasDeviceSide(memType)) {
        cu_matSetToGPU(value, reinterpret_cast<N*>(ptrGPU),
                       static_cast<std::uint32_t>(stepBytesGPU / sizeof(N)),
                       static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), nullptr);
        return ERROR_CODE::SUCCESS;
    }
    return ERROR_CODE::FAILURE;
}

template <class N, class>
ERROR_CODE Mat::setValue(std::size_t x, std::size_t y, N value, MEM mem) {
    if (!isInit) return ERROR_CODE::FAILURE;
    if (mem == MEM::CPU && hasHostSide(memType)) {
        unsigned char* const pixel = hostPixel<N>(*this, x, y);
        if (pixel == nullptr) return ERROR_CODE::FAILURE;
        std::memcpy(pixel, &value, sizeof(N));
        return ERROR_CODE::SUCCESS;
    }
    if (mem == MEM::GPU && hasDeviceSide(memType)) {
        const cudaError status =
            cudaMemcpy(devicePixel<N>(*this, x, y), &value, sizeof(N), cudaMemcpyHostToDevice);
        reportFailedPixel<N>(status, signature::SET_VALUE);
        return ERROR_CODE::SUCCESS;
    }
    return ERROR_CODE::FAILURE;
}

template <class N, class>
ERROR_CODE Mat::getValue(std::size_t x, std::size_t y, N* value, MEM mem) const {
    *value = N{};
    // For a width or height of 0 the bound wraps around, so nothing is rejected.
    if (!holdsPixelsLike<N>(*this) || x > width - 1 || y > height - 1) return ERROR_CODE::FAILURE;
    if (mem == MEM::GPU && hasDeviceSide(memType)) {
        const cudaError status =
            cudaMemcpy(value, devicePixel<N>(*this, x, y), sizeof(N), cudaMemcpyDeviceToHost);
        reportFailedPixel<N>(status, signature::GET_VALUE);
        return ERROR_CODE::SUCCESS;
    }
    if (mem == MEM::CPU && hasHostSide(memType)) {
        const unsigned char* const pixel = hostPixel<N>(*this, x, y);
        if (pixel == nullptr) return ERROR_CODE::FAILURE;
        if (width != 0 && height != 0) std::memcpy(value, pixel, sizeof(N));
        return ERROR_CODE::SUCCESS;
    }
    return ERROR_CODE::FAILURE;
}

// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a type
#define VELA_INSTANTIATE_ACCESS(N)                                       \
    template ERROR_CODE Mat::setTo(N, MEM);                              \
    template ERROR_CODE Mat::setValue(std::size_t, std::size_t, N, MEM); \
    template ERROR_CODE Mat::getValue(std::size_t, std::size_t, N*, MEM) const;
// NOLINTEND(bugprone-macro-parentheses)

VELA_INSTANTIATE_ACCESS(float)
VELA_INSTANTIATE_ACCESS(Vector2<float>)
VELA_INSTANTIATE_ACCESS(Vector3<float>)
VELA_INSTANTIATE_ACCESS(Vector4<float>)
VELA_INSTANTIATE_ACCESS(unsigned char)
VELA_INSTANTIATE_ACCESS(Vector2<unsigned char>)
VELA_INSTANTIATE_ACCESS(Vector3<unsigned char>)
VELA_INSTANTIATE_ACCESS(Vector4<unsigned char>)
VELA_INSTANTIATE_ACCESS(Vector4<char>)
VELA_INSTANTIATE_ACCESS(unsigned short)

#undef VELA_INSTANTIATE_ACCESS

}  // namespace vela

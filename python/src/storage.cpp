// SPDX-License-Identifier: Apache-2.0
#include "PyMat.hpp"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace vela::python {
namespace {

bool covers(MEM mem, MEM side) {
    return (static_cast<int>(mem) & static_cast<int>(side)) != 0 || mem == MEM_MANAGED;
}

/// Whether device memory can be had. The software device serves tests alone and must be asked for.
bool canAllocateOnDevice() {
#if defined(VELA_GPU_CUDA)
    int count = 0;
    const bool found = cudaGetDeviceCount(&count) == cudaSuccess && count > 0;
    cudaGetLastError();
    return found;
#else
    const char* const asked = std::getenv("VELA_SOFTWARE_DEVICE");
    return asked != nullptr && std::string_view(asked) == "1";
#endif
}

}  // namespace

nb::dlpack::dtype elementOf(MAT_TYPE type) {
    if (type <= MAT_TYPE::MAT_32F_C4) return nb::dtype<float>();
    if (type == MAT_TYPE::MAT_US16_C1) return nb::dtype<std::uint16_t>();
    if (type == MAT_TYPE::MAT_8S_C4) return nb::dtype<std::int8_t>();
    return nb::dtype<std::uint8_t>();
}

bool hasHost(const Mat& mat) {
    return mat.isInit && covers(mat.memType, MEM::CPU);
}

bool hasDevice(const Mat& mat) {
    return mat.isInit && covers(mat.memType, MEM::GPU);
}

void requireHost(const Mat& mat) {
    if (!mat.isInit) throw nb::buffer_error("the Mat is empty");
    if (!hasHost(mat)) throw nb::buffer_error("the Mat has no host side; call update_cpu_from_gpu() first");
}

void requireSides(const Mat& mat, MEM mem, const char* operation) {
    if (mem != MEM::CPU && mem != MEM::GPU && mem != MEM_BOTH) {
        throw nb::value_error("mem must be CPU, GPU or BOTH");
    }
    if (!mat.isInit) raise(ERROR_CODE::INVALID_FUNCTION_CALL, operation, "the Mat is empty");
    if (covers(mem, MEM::CPU) && !hasHost(mat)) {
        raise(ERROR_CODE::INVALID_FUNCTION_CALL, operation, "the Mat has no host side");
    }
    if (covers(mem, MEM::GPU) && !hasDevice(mat)) {
        raise(ERROR_CODE::INVALID_FUNCTION_CALL, operation, "the Mat has no device side");
    }
}

void requireDevice(const char* operation) {
    if (!canAllocateOnDevice()) raise(ERROR_CODE::NO_GPU_DETECTED, operation);
}

PyMat allocated(std::size_t width, std::size_t height, MAT_TYPE type, MEM mem) {
    const int sides = static_cast<int>(mem);
    if (sides < 1 || sides > static_cast<int>(MEM_MANAGED)) {
        throw nb::value_error("mem must be CPU, GPU, BOTH or MANAGED");
    }
    if (mem != MEM::CPU) requireDevice("Mat");
    PyMat m;
    m.mat().alloc(width, height, type, mem);
    if (hasDevice(m.mat()) && m.mat().ptrGPU == nullptr && width != 0 && height != 0) {
        raise(ERROR_CODE::NOT_ENOUGH_GPU_MEMORY, "Mat");
    }
    return m;
}

Layout layoutOf(const Mat& mat) {
    const auto element = static_cast<std::int64_t>(elementBytes(mat.dataType));
    const auto step = static_cast<std::int64_t>(mat.stepBytesCPU);
    const auto pixel = static_cast<std::int64_t>(mat.pixelBytes);
    // Rows that are not whole elements apart cannot be made from Python; arrays could not describe them.
    return {mat.channels == 1 ? std::size_t{2} : std::size_t{3},
            {mat.height, mat.width, mat.channels},
            {step, pixel, element},
            {step / element, pixel / element, 1}};
}

Mat referenceTo(const Mat& mat) {
    if (mat.width != 0 && mat.height != 0) return mat;
    return {mat.width, mat.height, mat.dataType, mat.ptrCPU, mat.stepBytesCPU, mat.ptrGPU, mat.stepBytesGPU};
}

void copyRows(const Mat& from, const Mat& to) {
    const std::size_t rowBytes = from.width * from.pixelBytes;
    if (rowBytes == 0) return;
    for (std::size_t y = 0; y < from.height; ++y) {
        std::memcpy(to.ptrCPU + y * to.stepBytesCPU, from.ptrCPU + y * from.stepBytesCPU, rowBytes);
    }
}

PyMat clone(const PyMat& source) {
    const Mat& mat = source.mat();
    if (!mat.isInit) return {};
    PyMat result = allocated(mat.width, mat.height, mat.dataType, mat.memType);
    result.mat().timestamp = mat.timestamp;
    withoutLock(source, [&](Mat& from) {
        Mat to(result.mat());
        if (hasHost(from)) copyRows(from, to);
        if (hasDevice(from) && from.memType != MEM_MANAGED) from.copyTo(to, COPY_TYPE::GPU_GPU);
    });
    return result;
}

nb::capsule ownerOf(const std::shared_ptr<Storage>& storage) {
    return {new std::shared_ptr<Storage>(storage),
            [](void* held) noexcept { delete static_cast<std::shared_ptr<Storage>*>(held); }};
}

}  // namespace vela::python

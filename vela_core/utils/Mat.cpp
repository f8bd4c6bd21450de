// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/Mat.hpp"

#include "vela_core/log/detail/statements.hpp"
#include "vela_core/utils/detail/buffers.hpp"
#include "vela_core/utils/detail/mat_copy.hpp"
#include "vela_core/utils/detail/mat_sides.hpp"
#include "vela_core/utils/detail/signatures.hpp"

#include <cstdio>
#include <tuple>
#include <utility>

namespace vela {
using namespace detail;
namespace {

/// Whether two Mats have the same pixels in the same buffers.
bool isSameImage(const Mat& a, const Mat& b) {
    const auto layout = [](const Mat& mat) {
        return std::tie(mat.width, mat.height, mat.dataType, mat.memType, mat.ptrCPU, mat.stepBytesCPU,
                        mat.ptrGPU, mat.stepBytesGPU);
    };
    return layout(a) == layout(b);
}

}  // namespace

Mat::Mat(std::size_t width_, std::size_t height_, MAT_TYPE type, MEM mem) {
    alloc(width_, height_, type, mem);
}

Mat::Mat(Resolution resolution, MAT_TYPE type, MEM mem)
    : Mat(resolution.width, resolution.height, type, mem) {}

Mat::Mat(std::size_t width_, std::size_t height_, MAT_TYPE type, unsigned char* ptr, std::size_t step,
         MEM mem) {
    describe(width_, height_, type);
    if (mem == MEM::CPU) {
        ptrCPU = ptr;
        stepBytesCPU = step;
    } else if (mem == MEM::GPU) {
        ptrGPU = ptr;
        stepBytesGPU = step;
        stepBytesCPU = width * pixelBytes;
    }
    isInit = true;
    memType = mem;
}

Mat::Mat(Resolution resolution, MAT_TYPE type, unsigned char* ptr, std::size_t step, MEM mem)
    : Mat(resolution.width, resolution.height, type, ptr, step, mem) {}

Mat::Mat(std::size_t width_, std::size_t height_, MAT_TYPE type, unsigned char* ptrCPU_, std::size_t stepCPU,
         unsigned char* ptrGPU_, std::size_t stepGPU) {
    describe(width_, height_, type);
    ptrCPU = ptrCPU_;
    stepBytesCPU = stepCPU;
    ptrGPU = ptrGPU_;
    stepBytesGPU = stepGPU;
    isInit = true;
    memType = MEM_BOTH;
}

Mat::Mat(Resolution resolution, MAT_TYPE type, unsigned char* ptrCPU_, std::size_t stepCPU,
         unsigned char* ptrGPU_, std::size_t stepGPU)
    : Mat(resolution.width, resolution.height, type, ptrCPU_, stepCPU, ptrGPU_, stepGPU) {}

Mat::Mat(const Mat& source) {
    ref(source);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): m = m empties m, as m.ref(m) does
Mat& Mat::operator=(const Mat& source) {
    ref(source);
    return *this;
}

// NOLINTNEXTLINE(readability-redundant-member-init): "n/a" would take memory
Mat::Mat(Mat&& source) noexcept : name() {
    *this = std::move(source);
}

Mat& Mat::operator=(Mat&& source) noexcept {
    if (source.refersIntoOwner(*this)) return *this;
    if (source.move(*this) != ERROR_CODE::SUCCESS) ref(source);
    name = std::move(source.name);
    return *this;
}

Mat::~Mat() {
    free(MEM_BOTH);
}

void Mat::alloc(std::size_t newWidth, std::size_t newHeight, MAT_TYPE type, MEM mem) {
    free(MEM_BOTH);
    ptrCPU = nullptr;
    ptrGPU = nullptr;
    if (isPast(mem, MEM_MANAGED)) {
        std::printf("ERROR ALLOC MEM TYPE %d\n", toValue(mem));
        std::fflush(stdout);
    }
    // The one step that throws comes while this Mat is empty.
    if (mem == MEM::CPU || mem == MEM_BOTH) {
        ptrCPU = allocateHostBuffer(newWidth, getPixelBytes(type), newHeight);
    }
    describe(newWidth, newHeight, type);
    stepBytesCPU = width * pixelBytes;
    if (mem == MEM_MANAGED) {
        stepBytesGPU = stepBytesCPU;
        reportFailure(allocateManagedBuffer(ptrGPU, width, pixelBytes, height), signature::ALLOC);
        ptrCPU = ptrGPU;
    } else if (hasDeviceSide(mem)) {
        reportFailure(allocateDeviceBuffer(ptrGPU, stepBytesGPU, width, pixelBytes, height),
                      signature::ALLOC);
    }
    // Even after a failed allocation and for a `mem` without a side: existing callers test the pointers.
    isInit = true;
    memoryOwner = true;
    memType = mem;
}

void Mat::alloc(Resolution resolution, MAT_TYPE type, MEM mem) {
    alloc(resolution.width, resolution.height, type, mem);
}

void Mat::free(MEM mem) {
    if (isInit && memoryOwner) {
        if (memType == MEM_MANAGED) {
            releaseManaged();
        } else {
            const MEM held = memType;
            if (coversHostSide(held) && coversHostSide(mem)) releaseHost();
            if (coversDeviceSide(held) && coversDeviceSide(mem)) releaseDevice();
            if (coversBothSides(held) && mem == MEM::CPU) memType = MEM::GPU;
            if (coversBothSides(held) && mem == MEM::GPU) memType = MEM::CPU;
            if (ptrCPU != nullptr || ptrGPU != nullptr) return;
        }
    }
    becomeEmpty();
}

void Mat::releaseManaged() {
    if (ptrGPU != nullptr) reportFailure(releaseDeviceBuffer(ptrGPU), signature::FREE);
    ptrCPU = nullptr;
    ptrGPU = nullptr;
}

void Mat::releaseHost() {
    releaseHostBuffer(ptrCPU);
    ptrCPU = nullptr;
    stepBytesCPU = 0;
}

void Mat::releaseDevice() {
    if (ptrGPU != nullptr && checked(releaseDeviceBuffer(ptrGPU), signature::FREE) != ERROR_CODE::SUCCESS) {
        logError(LogStatement::GPU_FREE_FAILED, name.c_str());
    }
    ptrGPU = nullptr;
    stepBytesGPU = 0;
}

void Mat::becomeEmpty() {
    isInit = false;
    memoryOwner = false;
    width = 0;
    height = 0;
    channels = 0;
    stepBytesGPU = 0;
    stepBytesCPU = 0;
    pixelBytes = 0;
}

void Mat::describe(std::size_t newWidth, std::size_t newHeight, MAT_TYPE type) {
    width = newWidth;
    height = newHeight;
    dataType = type;
    channels = getChannels(type);
    pixelBytes = getPixelBytes(type);
}

void Mat::referTo(const Mat& source) {
    width = source.width;
    height = source.height;
    channels = source.channels;
    stepBytesGPU = source.stepBytesGPU;
    stepBytesCPU = source.stepBytesCPU;
    pixelBytes = source.pixelBytes;
    dataType = source.dataType;
    memType = source.memType;
    ptrCPU = source.ptrCPU;
    ptrGPU = source.ptrGPU;
    timestamp = source.timestamp;
}

void Mat::ref(const Mat& source) {
    if (source.refersIntoOwner(*this)) return;
    free(MEM_BOTH);
    if (source.width * source.height == 0 || !source.isInit) return;
    referTo(source);
    extraFlag = false;
    memoryOwner = false;
    isInit = true;
}

bool Mat::refersIntoOwner(const Mat& owner) const {
    return isInit && !memoryOwner && sharesBuffersOf(*this, owner);
}

ERROR_CODE Mat::clone(const Mat& source) {
    if (!source.isInit) return ERROR_CODE::FAILURE;
    if (this == &source || (source.refersIntoOwner(*this) && isSameImage(source, *this))) {
        timestamp = source.timestamp;
        return ERROR_CODE::SUCCESS;
    }
    if (source.refersIntoOwner(*this)) {
        Mat part;
        part.clone(source);
        part.extraFlag = extraFlag;
        return part.move(*this);
    }
    alloc(throughInt32(source.width), throughInt32(source.height), source.dataType, source.memType);
    timestamp = source.timestamp;
    if (source.memType == MEM::GPU) {
        setFrom(source, COPY_TYPE::GPU_GPU);
    } else {
        setFrom(source, COPY_TYPE::CPU_CPU);
        if (source.memType != MEM::CPU) updateGPUfromCPU();
    }
    return ERROR_CODE::SUCCESS;
}

ERROR_CODE Mat::move(Mat& destination) {
    if (!isInit || !memoryOwner) return ERROR_CODE::FAILURE;
    destination.free(MEM_BOTH);
    destination.referTo(*this);
    destination.extraFlag = extraFlag;
    destination.isInit = true;
    destination.memoryOwner = true;
    isInit = false;
    memoryOwner = false;
    return ERROR_CODE::SUCCESS;
}

void Mat::swap(Mat& a, Mat& b) {
    Mat temporary;
    a.move(temporary);
    b.move(a);
    temporary.move(b);
}

std::size_t Mat::getStepBytes(MEM mem) const {
    if (mem == MEM::CPU) return stepBytesCPU;
    if (mem == MEM::GPU || mem == MEM_MANAGED) return stepBytesGPU;
    return 0;
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/detail/mat_copy.hpp"

#include "vela_core/log/detail/statements.hpp"
#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/utils/detail/buffers.hpp"
#include "vela_core/utils/detail/mat_sides.hpp"
#include "vela_core/utils/detail/signatures.hpp"

#include <functional>

namespace vela {
using namespace detail;
namespace {

struct Direction {
    MEM read;
    MEM written;
    cudaMemcpyKind kind;
};

// Indexed by COPY_TYPE.
constexpr Direction DIRECTIONS[] = {
    {MEM::CPU, MEM::CPU, cudaMemcpyHostToHost},
    {MEM::CPU, MEM::GPU, cudaMemcpyHostToDevice},
    {MEM::GPU, MEM::GPU, cudaMemcpyDeviceToDevice},
    {MEM::GPU, MEM::CPU, cudaMemcpyDeviceToHost},
};

/// Null for a value without enumerator.
const Direction* findDirection(COPY_TYPE type) {
    return rowAt(DIRECTIONS, type);
}

bool hasSide(const Mat& mat, MEM side) {
    return side == MEM::CPU ? hasHostSide(mat.memType) : hasDeviceSide(mat.memType);
}

unsigned char* bufferOf(const Mat& mat, MEM side) {
    return side == MEM::CPU ? mat.ptrCPU : mat.ptrGPU;
}

/// One two-dimensional copy of all rows of the source: complete on return without a stream, queued on
/// `stream` otherwise. Without a direction it reads from a null pointer, which the runtime rejects.
cudaError copyRows(const Mat& source, Mat& destination, const Direction* direction, cudaStream_t stream) {
    const bool known = direction != nullptr;
    const unsigned char* const from = known ? bufferOf(source, direction->read) : nullptr;
    const std::size_t fromStep = known ? source.getStepBytes(direction->read) : 0;
    const MEM written = known ? direction->written : MEM::CPU;
    unsigned char* const to = bufferOf(destination, written);
    const std::size_t toStep = destination.getStepBytes(written);
    const cudaMemcpyKind kind = known ? direction->kind : cudaMemcpyDeviceToHost;
    const std::size_t rowBytes = source.width * source.pixelBytes;
    if (stream == nullptr) return cudaMemcpy2D(to, toStep, from, fromStep, rowBytes, source.height, kind);
    return cudaMemcpy2DAsync(to, toStep, from, fromStep, rowBytes, source.height, kind, stream);
}

/// Whether the destination can be kept: it has the source's size and type and the side to be written, and the
/// source has the side to be read.
bool fits(const Mat& source, const Mat& destination, const Direction& direction) {
    return destination.isInit && destination.width == source.width && destination.height == source.height &&
           destination.dataType == source.dataType && hasSide(source, direction.read) &&
           hasSide(destination, direction.written);
}

void prepareCopyDestination(const Mat& source, Mat& destination, const Direction* direction) {
    if (direction == nullptr && destination.isInit) {
        destination.alloc(source.width, source.height, source.dataType, MEM::CPU);
    } else if (direction == nullptr || !fits(source, destination, *direction)) {
        const MEM written = direction == nullptr ? MEM::CPU : direction->written;
        destination.alloc(throughInt32(source.width), throughInt32(source.height), source.dataType, written);
    }
}

ERROR_CODE copyMat(const Mat& source, Mat& destination, COPY_TYPE type, cudaStream_t stream,
                   const char* signature) {
    const Direction* const direction = findDirection(type);
    if (direction != nullptr && !fits(source, destination, *direction) &&
        sharesBuffersOf(source, destination)) {
        // The destination gets new buffers; its old ones are kept until the source has been read from them.
        Mat earlier;
        destination.move(earlier);
        const Mat& kept = &source == &destination ? earlier : source;
        const ERROR_CODE result = copyMat(kept, destination, type, stream, signature);
        if (stream != nullptr) cudaStreamSynchronize(stream);
        return result;
    }
    prepareCopyDestination(source, destination, direction);
    destination.timestamp = source.timestamp;
    return checked(copyRows(source, destination, direction, stream), signature);
}

ERROR_CODE copySides(Mat& mat, COPY_TYPE type, cudaStream_t stream, const char* signature) {
    return checked(copyRows(mat, mat, findDirection(type), stream), signature);
}

/// Whether an address lies in a buffer of `bytes` bytes; null lies in none.
bool liesIn(const unsigned char* address, const unsigned char* buffer, std::size_t bytes) {
    const std::less<> before;
    return address != nullptr && buffer != nullptr && !before(address, buffer) &&
           before(address, buffer + bytes);
}

}  // namespace

bool detail::sharesBuffersOf(const Mat& mat, const Mat& owner) {
    if (!owner.isInit || !owner.memoryOwner || mat.width * mat.height == 0) return false;
    const auto isOwned = [&](const unsigned char* address) {
        return liesIn(address, owner.ptrCPU, owner.stepBytesCPU * owner.height) ||
               liesIn(address, owner.ptrGPU, owner.stepBytesGPU * owner.height);
    };
    return isOwned(mat.ptrCPU) || isOwned(mat.ptrGPU);
}

ERROR_CODE Mat::copyTo(Mat& destination, COPY_TYPE type, cudaStream_t stream) const {
    return copyMat(*this, destination, type, stream, signature::COPY_TO);
}

ERROR_CODE Mat::setFrom(const Mat& source, COPY_TYPE type, cudaStream_t stream) {
    return copyMat(source, *this, type, stream, signature::SET_FROM);
}

ERROR_CODE Mat::updateCPUfromGPU(cudaStream_t stream) {
    if (memType == MEM_MANAGED) {
        const cudaError status =
            cudaStreamAttachMemAsync(stream, ptrGPU, stepBytesGPU * height, cudaMemAttachHost);
        cudaStreamSynchronize(stream);
        return checked(status, signature::UPDATE_CPU);
    }
    if (memoryOwner) {
        if (memType == MEM::GPU) {
            ptrCPU = allocateHostBuffer(width, pixelBytes, height);
            stepBytesCPU = width * pixelBytes;
            memType = MEM_BOTH;
        }
    } else if (!coversBothSides(memType)) {
        logError(LogStatement::UPDATE_CPU_OF_REFERENCE);
        return ERROR_CODE::FAILURE;
    }
    return copySides(*this, COPY_TYPE::GPU_CPU, stream, signature::UPDATE_CPU);
}

ERROR_CODE Mat::updateGPUfromCPU(cudaStream_t stream, int /*option*/) {
    if (memType == MEM_MANAGED) {
        // Nothing waits here: the buffer now belongs to the stream, whose user synchronises.
        const cudaError status =
            cudaStreamAttachMemAsync(stream, ptrGPU, stepBytesGPU * height, cudaMemAttachSingle);
        return checked(status, signature::UPDATE_GPU);
    }
    if (memoryOwner) {
        if (memType == MEM::CPU) {
            reportFailure(allocateDeviceBuffer(ptrGPU, stepBytesGPU, width, pixelBytes, height),
                          signature::UPDATE_GPU);
            memType = MEM_BOTH;
        }
    } else if (!coversBothSides(memType)) {
        logError(LogStatement::UPDATE_GPU_OF_REFERENCE);
        return ERROR_CODE::FAILURE;
    }
    return copySides(*this, COPY_TYPE::CPU_GPU, stream, signature::UPDATE_GPU);
}

}  // namespace vela

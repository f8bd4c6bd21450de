#include "vela_core/utils/detail/mat_copy.hpp"

#include "vela_core/log/detail/statements.hpp"
#include "vela_core/utils/detail/buffers.hpp"
#include "vela_core/utils/detail/mat_sides.hpp"
#include "vela_core/utils/detail/signatures.hpp"

#include <iterator>

namespace vela {
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
    const auto index = static_cast<std::uint32_t>(toValue(type));
    return index < std::size(DIRECTIONS) ? &DIRECTIONS[index] : nullptr;
}

bool hasSide(const Mat& mat, MEM side) {
    return side == MEM::CPU ? hasHostSide(mat.memType) : hasDeviceSide(mat.memType);
}

unsigned char* bufferOf(const Mat& mat, MEM side) {
    return side == MEM::CPU ? mat.ptrCPU : mat.ptrGPU;
}

ERROR_CODE errorCodeOf(bool success) {
    return success ? ERROR_CODE::SUCCESS : ERROR_CODE::FAILURE;
}

ERROR_CODE copyMat(const Mat& source, Mat& destination, COPY_TYPE type, cudaStream_t stream,
                   const char* signature) {
    prepareCopyDestination(source, destination, type);
    destination.timestamp = source.timestamp;
    return errorCodeOf(succeeded(cpy(source, destination, type, stream), signature));
}

}  // namespace

cudaError cpy(const Mat& source, Mat& destination, COPY_TYPE type, cudaStream_t stream) {
    const Direction* const direction = findDirection(type);
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

void prepareCopyDestination(const Mat& source, Mat& destination, COPY_TYPE type) {
    const Direction* const direction = findDirection(type);
    if (direction == nullptr && destination.isInit) {
        destination.alloc(source.width, source.height, source.dataType, MEM::CPU);
        return;
    }
    const bool fits = destination.isInit && destination.width == source.width &&
                      destination.height == source.height && destination.dataType == source.dataType &&
                      hasSide(source, direction->read) && hasSide(destination, direction->written);
    if (fits) return;
    const MEM written = direction == nullptr ? MEM::CPU : direction->written;
    destination.alloc(throughInt32(source.width), throughInt32(source.height), source.dataType, written);
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
        return errorCodeOf(succeeded(status, signature::UPDATE_CPU));
    }
    if (memoryOwner) {
        if (memType == MEM::GPU) {
            ptrCPU = allocateHostBuffer(width * height * pixelBytes);
            stepBytesCPU = width * pixelBytes;
            memType = MEM_BOTH;
        }
    } else if (!coversBothSides(memType)) {
        logError(LogStatement::UPDATE_CPU_OF_REFERENCE);
        return ERROR_CODE::FAILURE;
    }
    return errorCodeOf(succeeded(cpy(*this, *this, COPY_TYPE::GPU_CPU, stream), signature::UPDATE_CPU));
}

ERROR_CODE Mat::updateGPUfromCPU(cudaStream_t stream, int /*option*/) {
    if (memType == MEM_MANAGED) {
        // Nothing waits here: the buffer now belongs to the stream, whose user synchronises.
        const cudaError status =
            cudaStreamAttachMemAsync(stream, ptrGPU, stepBytesGPU * height, cudaMemAttachSingle);
        return errorCodeOf(succeeded(status, signature::UPDATE_GPU));
    }
    if (memoryOwner) {
        if (memType == MEM::CPU) {
            succeeded(allocateDeviceBuffer(ptrGPU, stepBytesGPU, width, pixelBytes, height),
                      signature::UPDATE_GPU);
            memType = MEM_BOTH;
        }
    } else if (!coversBothSides(memType)) {
        logError(LogStatement::UPDATE_GPU_OF_REFERENCE);
        return ERROR_CODE::FAILURE;
    }
    return errorCodeOf(succeeded(cpy(*this, *this, COPY_TYPE::CPU_GPU, stream), signature::UPDATE_GPU));
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/Memory.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace vela::interop {

/// The binary interface of DLPack 1, spelled out because many systems still have headers of version 0. The
/// layout is that of `dlpack/dlpack.h`: cast pointers between the two.
namespace dl {

/// Version of the interface that a tensor follows.
struct Version {
    std::uint32_t major;  ///< changes with the layout
    std::uint32_t minor;  ///< changes with additions
};
/// Device that holds the memory.
struct Device {
    std::int32_t device_type;  ///< a `DeviceType`
    std::int32_t device_id;    ///< index of the device, from 0
};
/// Type of an element.
struct DataType {
    std::uint8_t code;    ///< a `TypeCode`
    std::uint8_t bits;    ///< bits of a number
    std::uint16_t lanes;  ///< numbers in an element; 1 here
};
/// Memory as an array of `ndim` dimensions.
struct Tensor {
    void* data;                 ///< start of the memory, perhaps a device pointer
    Device device;              ///< where the memory lies
    std::int32_t ndim;          ///< number of dimensions
    DataType dtype;             ///< type of an element
    std::int64_t* shape;        ///< `ndim` sizes
    std::int64_t* strides;      ///< `ndim` steps in elements; null for packed rows
    std::uint64_t byte_offset;  ///< from `data` to the first element
};
/// A tensor with the means to release it.
struct ManagedTensorVersioned {
    Version version;                           ///< of the interface
    void* manager_ctx;                         ///< for the producer's use
    void (*deleter)(ManagedTensorVersioned*);  ///< releases the tensor; may be null
    std::uint64_t flags;                       ///< `READ_ONLY` or 0, among others
    Tensor dl_tensor;                          ///< the array
};

/// The kinds of devices used here.
enum DeviceType : std::int32_t { CPU = 1, CUDA = 2, CUDA_HOST = 3, CUDA_MANAGED = 13 };
/// The kinds of numbers used here.
enum TypeCode : std::uint8_t { INT = 0, UINT = 1, FLOAT = 2 };
constexpr std::uint64_t READ_ONLY = 1;  ///< flag: the consumer must not write

/// Hands a tensor back to its producer.
struct Deleter {
    /// Calls the tensor's deleter, if it has one.
    void operator()(ManagedTensorVersioned* tensor) const {
        if (tensor->deleter != nullptr) tensor->deleter(tensor);
    }
};

}  // namespace dl

/// A tensor and the right to its memory; `release()` hands both to a consumer.
using DlpackTensor = std::unique_ptr<dl::ManagedTensorVersioned, dl::Deleter>;

/// The element type of a pixel type; nothing for a value without enumerator.
inline std::optional<dl::DataType> toDlpackType(MAT_TYPE type) {
    switch (type) {
        case MAT_TYPE::MAT_32F_C1:
        case MAT_TYPE::MAT_32F_C2:
        case MAT_TYPE::MAT_32F_C3:
        case MAT_TYPE::MAT_32F_C4:
            return dl::DataType{dl::FLOAT, 32, 1};
        case MAT_TYPE::MAT_8U_C1:
        case MAT_TYPE::MAT_8U_C2:
        case MAT_TYPE::MAT_8U_C3:
        case MAT_TYPE::MAT_8U_C4:
            return dl::DataType{dl::UINT, 8, 1};
        case MAT_TYPE::MAT_US16_C1:
            return dl::DataType{dl::UINT, 16, 1};
        case MAT_TYPE::MAT_8S_C4:
            return dl::DataType{dl::INT, 8, 1};
    }
    return std::nullopt;
}

/// The pixel type of `channels` elements of a type; nothing for one that no Mat has.
inline std::optional<MAT_TYPE> fromDlpackType(dl::DataType type, std::int64_t channels) {
    for (std::int32_t i = 0; i <= static_cast<std::int32_t>(MAT_TYPE::MAT_8S_C4); ++i) {
        const auto candidate = static_cast<MAT_TYPE>(i);
        const dl::DataType element = *toDlpackType(candidate);
        if (element.code == type.code && element.bits == type.bits && element.lanes == type.lanes &&
            static_cast<std::int64_t>(getChannels(candidate)) == channels) {
            return candidate;
        }
    }
    return std::nullopt;
}

namespace detail {

struct DlpackKeeper {
    dl::ManagedTensorVersioned tensor;
    Mat mat;
    std::int64_t shape[3];
    std::int64_t strides[3];
};

/// Where DLPack says that a side lies; nothing for memory that other libraries cannot address.
inline std::optional<dl::Device> dlpackDevice(const Mat& mat, MEM side) {
    const bool managed = mat.memType == MEM_MANAGED;
    if (side == MEM::CPU && mat.isOnHost() && !managed) return dl::Device{dl::CPU, 0};
#if defined(VELA_GPU_CUDA)
    cudaPointerAttributes attributes{};
    if (mat.isOnDevice() && (side == MEM::GPU || managed) &&
        cudaPointerGetAttributes(&attributes, mat.ptrGPU) == cudaSuccess) {
        return dl::Device{managed ? dl::CUDA_MANAGED : dl::CUDA, attributes.device};
    }
#endif
    return std::nullopt;
}

/// The side of a Mat that can refer to a device's memory.
inline std::optional<MEM> sideOfDlpack(dl::Device device) {
    if (device.device_type == dl::CPU || device.device_type == dl::CUDA_HOST) return MEM::CPU;
#if defined(VELA_GPU_CUDA)
    if (device.device_type == dl::CUDA || device.device_type == dl::CUDA_MANAGED) return MEM::GPU;
#endif
    return std::nullopt;
}

}  // namespace detail

/// A DLPack 1 tensor of shape (height, width), or (height, width, channels) for more than one channel, that
/// takes over the buffers of a Mat, without a copy; whoever holds the tensor last releases them.
///
/// `side` is `CPU` or `GPU`. Null, with the Mat unchanged, when the Mat does not own that side, a row step is
/// not a whole number of elements, or the software device holds the memory, which no other library can
/// address. Nothing is synchronised: work queued on the pixels must be complete, or the consumer must order
/// it.
///
///     DlpackTensor tensor = moveToDlpack(std::move(cloud));
///     consume(reinterpret_cast<DLManagedTensorVersioned*>(tensor.release()));
inline DlpackTensor moveToDlpack(Mat&& mat, MEM side = MEM::CPU) {
    const std::optional<dl::DataType> type = toDlpackType(mat.dataType);
    const std::optional<dl::Device> device = detail::dlpackDevice(mat, side);
    unsigned char* const data = side == MEM::CPU ? mat.ptrCPU : mat.ptrGPU;
    if (!type || !device || !mat.memoryOwner || data == nullptr) return nullptr;
    const std::size_t element = type->bits / 8U;
    const std::size_t step = mat.getStepBytes(side);
    if (step % element != 0) return nullptr;

    auto keeper = std::make_unique<detail::DlpackKeeper>();
    if (mat.move(keeper->mat) != ERROR_CODE::SUCCESS) return nullptr;
    const Mat& kept = keeper->mat;
    const auto channels = static_cast<std::int64_t>(kept.channels);
    keeper->shape[0] = static_cast<std::int64_t>(kept.height);
    keeper->shape[1] = static_cast<std::int64_t>(kept.width);
    keeper->shape[2] = channels;
    keeper->strides[0] = static_cast<std::int64_t>(step / element);
    keeper->strides[1] = channels;
    keeper->strides[2] = 1;
    const auto release = [](dl::ManagedTensorVersioned* tensor) {
        delete static_cast<detail::DlpackKeeper*>(tensor->manager_ctx);
    };
    const int dimensions = channels == 1 ? 2 : 3;
    keeper->tensor = {{1, 0},
                      keeper.get(),
                      release,
                      0,
                      {data, *device, dimensions, *type, keeper->shape, keeper->strides, 0}};
    return DlpackTensor(&keeper.release()->tensor);
}
DlpackTensor moveToDlpack(Mat& mat, MEM side = MEM::CPU) = delete;  // would empty mat: say std::move(mat)

/// A Mat that refers to a tensor's memory, and the tensor that keeps the memory alive. Both are empty if
/// the tensor was refused.
struct DlpackMat {
    DlpackTensor tensor;  ///< keeps the memory alive; null if there is none
    Mat mat;              ///< refers to the tensor's memory
};

/// Takes a tensor over and refers to its memory: no copy. (height, width) becomes one channel; the last of
/// three dimensions counts channels.
///
/// Rows may be any step apart; within a row pixels must lie side by side. Refused, with the tensor handed
/// back to its producer: another major version, read-only memory, element types or channel counts that no Mat
/// has, and memory of another device than the CPU or, with CUDA, an NVIDIA GPU.
///
///     DlpackMat shared = viewOfDlpack(DlpackTensor(reinterpret_cast<dl::ManagedTensorVersioned*>(raw)));
inline DlpackMat viewOfDlpack(DlpackTensor tensor) {
    if (tensor == nullptr || tensor->version.major != 1 || (tensor->flags & dl::READ_ONLY) != 0) return {};
    const dl::Tensor& t = tensor->dl_tensor;
    const std::optional<MEM> side = detail::sideOfDlpack(t.device);
    if (!side || (t.ndim != 2 && t.ndim != 3)) return {};
    const std::int64_t height = t.shape[0];
    const std::int64_t width = t.shape[1];
    const std::int64_t channels = t.ndim == 3 ? t.shape[2] : 1;
    const std::optional<MAT_TYPE> type = fromDlpackType(t.dtype, channels);
    constexpr std::int64_t LIMIT = std::numeric_limits<std::int32_t>::max();
    if (!type || t.data == nullptr || height < 1 || width < 1 || height > LIMIT || width > LIMIT) return {};

    // The stride of a dimension with one element means nothing.
    const std::int64_t row = width * channels;
    std::int64_t step = row;
    if (t.strides != nullptr) {
        if (t.ndim == 3 && channels > 1 && t.strides[2] != 1) return {};
        if (width > 1 && t.strides[1] != channels) return {};
        if (height > 1) step = t.strides[0];
    }
    if (step < row) return {};
    DlpackMat result;
    auto* const data = static_cast<unsigned char*>(t.data) + t.byte_offset;
    result.mat.ref(Mat(static_cast<std::size_t>(width), static_cast<std::size_t>(height), *type, data,
                       static_cast<std::size_t>(step) * (t.dtype.bits / 8U), *side));
    result.tensor = std::move(tensor);
    return result;
}

}  // namespace vela::interop

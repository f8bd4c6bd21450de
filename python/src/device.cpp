// SPDX-License-Identifier: Apache-2.0
// The device side of a Mat, as CuPy and PyTorch take it.
#include "dlpack.hpp"

#include <nanobind/stl/string.h>

#include <algorithm>
#include <memory>
#include <string>

namespace vela::python {
namespace {

/// Pitched or packed device pixels. One object shows one device, so that this is not the Mat itself.
struct DeviceView {
    std::shared_ptr<Storage> storage;
    unsigned char* data;
    std::size_t stepBytes;
    Layout layout;
    MAT_TYPE type;
};

#if defined(VELA_GPU_CUDA)

void requireSuccess(cudaError status, const char* operation) {
    if (status != cudaSuccess) raise(ERROR_CODE::CUDA_ERROR, operation, cudaGetErrorString(status));
}

/// Lets the consumer's stream wait for what runs on the legacy stream, where all work of the library is.
void orderAfterOurWork(nb::handle stream) {
    if (stream.is_none()) return;
    const auto handle = nb::cast<std::intptr_t>(stream);
    if (handle == -1 || handle == 1) return;
    if (handle == 0) throw nb::value_error("stream 0 is ambiguous: 1 is the legacy, 2 the per-thread stream");
    cudaEvent_t done = nullptr;
    requireSuccess(cudaEventCreateWithFlags(&done, cudaEventDisableTiming), "__dlpack__");
    cudaError status = cudaEventRecord(done, cudaStreamLegacy);
    const auto consumer = handle == 2 ? cudaStreamPerThread : reinterpret_cast<cudaStream_t>(handle);
    if (status == cudaSuccess) status = cudaStreamWaitEvent(consumer, done, 0);
    cudaEventDestroy(done);
    requireSuccess(status, "__dlpack__");
}

int deviceOf(const DeviceView& view) {
    cudaPointerAttributes attributes{};
    requireSuccess(cudaPointerGetAttributes(&attributes, view.data), "__dlpack_device__");
    return attributes.device;
}

DeviceView viewOf(const PyMat& m) {
    const Mat& mat = m.mat();
    if (!hasDevice(mat))
        throw nb::buffer_error("the Mat has no device side; call update_gpu_from_cpu() first");
    DeviceView view{m.storage, mat.ptrGPU, mat.stepBytesGPU, layoutOf(mat), mat.dataType};
    view.layout.stepsBytes[0] = static_cast<std::int64_t>(mat.stepBytesGPU);
    view.layout.stepsElements[0] = static_cast<std::int64_t>(mat.stepBytesGPU / elementBytes(mat.dataType));
    return view;
}

#else

// Its memory is not a GPU's: a consumer that took it for that would crash.
constexpr const char* REFUSAL =
    "there is no GPU: this build runs on the software device, whose memory cannot be shared";

void orderAfterOurWork(nb::handle /*stream*/) {
    throw nb::buffer_error(REFUSAL);
}

int deviceOf(const DeviceView& /*view*/) {
    throw nb::buffer_error(REFUSAL);
}

DeviceView viewOf(const PyMat& /*m*/) {
    throw nb::buffer_error(REFUSAL);
}

#endif

nb::object dlpackOf(const DeviceView& view, nb::handle stream, nb::handle maxVersion) {
    orderAfterOurWork(stream);
    ExportedTensor exported{view.storage,
                            view.data,
                            {nb::device::cuda::value, deviceOf(view)},
                            elementOf(view.type),
                            view.layout.dimensions,
                            {},
                            {}};
    for (std::size_t i = 0; i < 3; ++i) {
        exported.shape[i] = static_cast<std::int64_t>(view.layout.shape[i]);
        exported.strides[i] = view.layout.stepsElements[i];
    }
    return dlpackCapsule(exported, maxVersion, false);
}

nb::object tupleOf(const DeviceView& view, const std::int64_t (&values)[3]) {
    const bool flat = view.layout.dimensions == 2;
    return flat ? nb::make_tuple(values[0], values[1]) : nb::make_tuple(values[0], values[1], values[2]);
}

/// Version 3; rows may be apart. Stream 1 is the legacy stream.
nb::dict arrayInterface(const DeviceView& view) {
    const nb::dlpack::dtype element = elementOf(view.type);
    const char kind = element.code == static_cast<std::uint8_t>(nb::dlpack::dtype_code::Float) ? 'f'
                      : element.code == static_cast<std::uint8_t>(nb::dlpack::dtype_code::Int) ? 'i'
                                                                                               : 'u';
    std::int64_t shape[3] = {};
    std::copy_n(view.layout.shape, 3, shape);
    nb::dict result;
    result["version"] = 3;
    result["shape"] = tupleOf(view, shape);
    result["strides"] = tupleOf(view, view.layout.stepsBytes);
    result["typestr"] = std::string(element.bits == 8 ? "|" : "<") + kind + std::to_string(element.bits / 8);
    result["data"] = nb::make_tuple(reinterpret_cast<std::uintptr_t>(view.data), false);
    result["stream"] = 1;
    return result;
}

/// A copy whose rows are not apart: a Mat of one row has no pitch.
DeviceView packed(const DeviceView& view) {
    const std::size_t height = view.layout.shape[0];
    const std::size_t width = view.layout.shape[1];
    const PyMat copy = allocated(width * height, 1, view.type, MEM::GPU);
    const std::size_t rowBytes = width * getPixelBytes(view.type);
    const cudaError status = cudaMemcpy2D(copy.mat().ptrGPU, rowBytes, view.data, view.stepBytes, rowBytes,
                                          height, cudaMemcpyDeviceToDevice);
    if (status != cudaSuccess) raise(ERROR_CODE::CUDA_ERROR, "packed", cudaGetErrorString(status));
    DeviceView result{copy.storage, copy.mat().ptrGPU, rowBytes, view.layout, view.type};
    result.layout.stepsBytes[0] = static_cast<std::int64_t>(rowBytes);
    result.layout.stepsElements[0] = static_cast<std::int64_t>(rowBytes / elementBytes(view.type));
    return result;
}

}  // namespace

void bindDevice(nb::module_& module) {
    nb::class_<DeviceView>(module, "DeviceView", "The device side of a Mat, for CuPy, PyTorch and others.")
        .def(
            "__dlpack__",
            [](const DeviceView& view, nb::handle stream, nb::handle maxVersion, nb::handle /*device*/,
               nb::handle copy) {
                if (!copy.is_none() && nb::cast<bool>(copy))
                    return dlpackOf(packed(view), stream, maxVersion);
                return dlpackOf(view, stream, maxVersion);
            },
            nb::kw_only(), "stream"_a = nb::none(), "max_version"_a = nb::none(), "dl_device"_a = nb::none(),
            "copy"_a = nb::none(),
            nb::sig("def __dlpack__(self, *, stream: int | None = None, max_version: tuple[int, int] | None "
                    "= None, "
                    "dl_device: tuple[int, int] | None = None, copy: bool | None = None) -> typing.Any"),
            "A DLPack capsule; the consumer's stream waits for the library's work.")
        .def(
            "__dlpack_device__",
            [](const DeviceView& view) { return nb::make_tuple(nb::device::cuda::value, deviceOf(view)); },
            nb::sig("def __dlpack_device__(self) -> tuple[int, int]"))
        .def_prop_ro("__cuda_array_interface__", &arrayInterface,
                     nb::sig("def __cuda_array_interface__(self) -> dict[str, typing.Any]"),
                     "Version 3; rows may be padded, see packed().")
        .def("packed", &packed, "A copy without gaps between rows, for consumers that take no other.");
    nb::borrow<nb::class_<PyMat>>(module.attr("Mat"))
        .def_prop_ro("gpu", &viewOf, "The device side. BufferError without one, and on the software device.");
}

}  // namespace vela::python

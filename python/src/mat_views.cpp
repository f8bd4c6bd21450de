// SPDX-License-Identifier: Apache-2.0
// What shows the pixels of a Mat to Python: numpy arrays and the buffer protocol. Each holds the storage.
#include "PyMat.hpp"

#include <nanobind/stl/optional.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <optional>

namespace vela::python {
namespace {

/// A view of some channels of each pixel, as elements of another type if need be.
template <class Element>
nb::object channelsOf(const PyMat& m, std::size_t firstByte, std::size_t channels) {
    const Mat& mat = m.mat();
    const std::size_t shape[3] = {mat.height, mat.width, channels};
    const std::int64_t strides[3] = {static_cast<std::int64_t>(mat.stepBytesCPU / sizeof(Element)),
                                     static_cast<std::int64_t>(mat.pixelBytes / sizeof(Element)), 1};
    return nb::cast(
        nb::ndarray<nb::numpy, Element>(mat.ptrCPU + firstByte, 3, shape, ownerOf(m.storage), strides));
}

nb::object xyz(const PyMat& m) {
    requireHost(m.mat());
    if (m.mat().dataType != MAT_TYPE::MAT_32F_C3 && m.mat().dataType != MAT_TYPE::MAT_32F_C4) {
        throw nb::type_error("only clouds, MAT_32F_C3 and MAT_32F_C4, have points");
    }
    return channelsOf<float>(m, 0, 3);
}

nb::object rgba(const PyMat& m) {
    requireHost(m.mat());
    if (m.mat().dataType != MAT_TYPE::MAT_32F_C4) {
        throw nb::type_error("only clouds of four channels, MAT_32F_C4, have packed colour");
    }
    return channelsOf<std::uint8_t>(m, 3 * sizeof(float), 4);
}

nb::object valid(const PyMat& m) {
    const Mat& mat = m.mat();
    requireHost(mat);
    if (mat.dataType > MAT_TYPE::MAT_32F_C4 || mat.channels == 2) {
        throw nb::type_error(
            "only depth maps and clouds, MAT_32F_C1, MAT_32F_C3 and MAT_32F_C4, have valid pixels");
    }
    auto flags = std::make_unique<bool[]>(mat.width * mat.height);
    withoutLock(m, [&](const Mat& pixels) {
        const std::size_t coordinates = std::min<std::size_t>(pixels.channels, 3);
        bool* flag = flags.get();
        for (std::size_t y = 0; y < pixels.height; ++y) {
            const auto* value = reinterpret_cast<const float*>(pixels.ptrCPU + y * pixels.stepBytesCPU);
            for (std::size_t x = 0; x < pixels.width; ++x, value += pixels.channels) {
                *flag++ = std::all_of(value, value + coordinates, [](float v) { return std::isfinite(v); });
            }
        }
    });
    const std::size_t shape[2] = {mat.height, mat.width};
    nb::capsule owner(flags.get(), [](void* held) noexcept { delete[] static_cast<bool*>(held); });
    return nb::cast(nb::ndarray<nb::numpy, bool>(flags.release(), 2, shape, owner));
}

nb::object toArray(const PyMat& m, nb::handle dtype, std::optional<bool> copy) {
    nb::object array = nb::cast(arrayOf(m));
    if (!dtype.is_none() && !array.attr("dtype").equal(dtype)) {
        if (copy == false) throw nb::value_error("another dtype needs a copy");
        return array.attr("astype")(dtype);
    }
    return copy.value_or(false) ? array.attr("copy")() : array;
}

/// What a buffer's shape and strides point to, with the storage that keeps the pixels alive.
struct HeldBuffer {
    std::shared_ptr<Storage> storage;
    Py_ssize_t shape[3];
    Py_ssize_t strides[3];
};

const char* formatOf(MAT_TYPE type) {
    if (type <= MAT_TYPE::MAT_32F_C4) return "f";
    if (type == MAT_TYPE::MAT_US16_C1) return "H";
    return type == MAT_TYPE::MAT_8S_C4 ? "b" : "B";
}

bool asks(int flags, int what) {
    return (flags & what) == what;
}

void fillBuffer(const PyMat& m, Py_buffer& out, int flags) {
    const Mat& mat = m.mat();
    requireHost(mat);
    const bool packed = rowsPacked(mat) || mat.height <= 1;
    const bool needsPacked = !asks(flags, PyBUF_STRIDES) || asks(flags, PyBUF_C_CONTIGUOUS);
    if (needsPacked && !packed)
        throw nb::buffer_error("rows are apart, and the consumer takes packed ones only");
    if (asks(flags, PyBUF_F_CONTIGUOUS)) throw nb::buffer_error("pixels are not in column order");
    const Layout layout = layoutOf(mat);
    auto held = std::make_unique<HeldBuffer>();
    held->storage = m.storage;
    for (std::size_t i = 0; i < 3; ++i) {
        held->shape[i] = static_cast<Py_ssize_t>(layout.shape[i]);
        held->strides[i] = static_cast<Py_ssize_t>(layout.stepsBytes[i]);
    }
    out.buf = mat.ptrCPU;
    out.len = static_cast<Py_ssize_t>(mat.width * mat.height * mat.pixelBytes);
    out.readonly = 0;
    out.itemsize = static_cast<Py_ssize_t>(elementBytes(mat.dataType));
    // A consumer that does not ask for a shape takes bytes in one dimension.
    out.ndim = asks(flags, PyBUF_ND) ? static_cast<int>(layout.dimensions) : 1;
    out.format = asks(flags, PyBUF_FORMAT) ? const_cast<char*>(formatOf(mat.dataType)) : nullptr;
    out.shape = asks(flags, PyBUF_ND) ? held->shape : nullptr;
    out.strides = asks(flags, PyBUF_STRIDES) ? held->strides : nullptr;
    out.suboffsets = nullptr;
    out.internal = held.release();
}

int getBuffer(PyObject* self, Py_buffer* out, int flags) noexcept {
    out->obj = nullptr;
    try {
        fillBuffer(*nb::inst_ptr<PyMat>(nb::handle(self)), *out, flags);
    } catch (const std::exception& refusal) {
        PyErr_SetString(PyExc_BufferError, refusal.what());
        return -1;
    }
    out->obj = nb::handle(self).inc_ref().ptr();
    return 0;
}

void releaseBuffer(PyObject* /*self*/, Py_buffer* view) noexcept {
    delete static_cast<HeldBuffer*>(view->internal);
}

}  // namespace

nb::ndarray<nb::numpy> arrayOf(const PyMat& m) {
    requireHost(m.mat());
    const Layout layout = layoutOf(m.mat());
    return nb::ndarray<nb::numpy>(m.mat().ptrCPU, layout.dimensions, layout.shape, ownerOf(m.storage),
                                  layout.stepsElements, elementOf(m.mat().dataType));
}

PyType_Slot* bufferSlots() {
    static PyType_Slot slots[] = {{Py_bf_getbuffer, reinterpret_cast<void*>(getBuffer)},
                                  {Py_bf_releasebuffer, reinterpret_cast<void*>(releaseBuffer)},
                                  {0, nullptr}};
    return slots;
}

void defineViews(nb::class_<PyMat>& mat) {
    mat.def("numpy", &arrayOf, nb::sig("def numpy(self) -> NDArray[typing.Any]"),
            "A writable array over the host side, (height, width) or (height, width, channels); no copy.\n\n"
            "It keeps the pixels alive, even if the Mat is freed. BufferError without a host side.")
        .def("__array__", &toArray, "dtype"_a = nb::none(), "copy"_a = nb::none(),
             nb::sig("def __array__(self, dtype: typing.Any = None, copy: bool | None = None) -> "
                     "NDArray[typing.Any]"))
        .def(
            "__dlpack__",
            [](const PyMat& m, nb::handle stream, nb::handle maxVersion, nb::handle device, nb::handle copy) {
                return toDlpack(m, stream, maxVersion, device, copy);
            },
            nb::kw_only(), "stream"_a = nb::none(), "max_version"_a = nb::none(), "dl_device"_a = nb::none(),
            "copy"_a = nb::none(),
            nb::sig(
                "def __dlpack__(self, *, stream: None = None, max_version: tuple[int, int] | None = None, "
                "dl_device: tuple[int, int] | None = None, copy: bool | None = None) -> "
                "typing.Any"),
            "The host side as a DLPack capsule; the device side is that of m.gpu.\n\n"
            "BufferError without a host side or for another device than the host, ValueError for a stream.")
        .def(
            "__dlpack_device__", [](const PyMat&) { return nb::make_tuple(nb::device::cpu::value, 0); },
            nb::sig("def __dlpack_device__(self) -> tuple[int, int]"))
        .def_prop_ro("xyz", &xyz, nb::sig("def xyz(self) -> NDArray[float32]"),
                     "The points of a cloud: a writable float32 view, (height, width, 3).")
        .def_prop_ro(
            "rgba", &rgba, nb::sig("def rgba(self) -> NDArray[uint8]"),
            "The packed colour of a cloud of four channels: a writable uint8 view, (height, width, 4).\n\n"
            "Red, green, blue, alpha. TypeError for other types.")
        .def_prop_ro("valid", &valid, nb::sig("def valid(self) -> NDArray[bool_]"),
                     "Which depths, or which points in all three coordinates, are finite: a new bool array,\n"
                     "(height, width).");
}

}  // namespace vela::python

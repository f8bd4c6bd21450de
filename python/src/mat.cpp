// SPDX-License-Identifier: Apache-2.0
#include "PyMat.hpp"

#include <nanobind/stl/string.h>

#include <memory>
#include <string>

namespace vela::python {
namespace {

/// The name of MEM's value, its two constants included.
const char* nameOf(MEM mem) {
    constexpr const char* NAMES[] = {"", "CPU", "GPU", "BOTH", "MANAGED"};
    return NAMES[static_cast<int>(mem)];
}

std::string matText(const PyMat& m) {
    const Mat& mat = m.mat();
    if (!mat.isInit) return "Mat()";
    std::string text = "Mat(" + std::to_string(mat.width) + ", " + std::to_string(mat.height) + ", " +
                       toStdString(toString(mat.dataType)) + ", " + nameOf(mat.memType);
    const std::string label = toStdString(mat.name);
    if (label != "n/a") text += ", \"" + label + "\"";
    return text + (mat.memoryOwner ? ")" : ", shared)");
}

nb::object shapeOf(const PyMat& m) {
    const Mat& mat = m.mat();
    return mat.channels == 1 ? nb::make_tuple(mat.height, mat.width)
                             : nb::make_tuple(mat.height, mat.width, mat.channels);
}

const char* dtypeName(MAT_TYPE type) {
    if (type <= MAT_TYPE::MAT_32F_C4) return "float32";
    if (type == MAT_TYPE::MAT_US16_C1) return "uint16";
    return type == MAT_TYPE::MAT_8S_C4 ? "int8" : "uint8";
}

nb::object dtypeOf(const PyMat& m) {
    return nb::module_::import_("numpy").attr("dtype")(dtypeName(m.mat().dataType));
}

/// For pickle: how to make the Mat again from its packed pixels, which protocol 5 may send apart.
nb::object reduce(const PyMat& m, int protocol) {
    requireHost(m.mat());
    const PyMat packed = rowsPacked(m.mat()) ? m : clone(m);
    const Mat& mat = packed.mat();
    const nb::object array = nb::cast(arrayOf(packed));
    const nb::object pixels =
        protocol >= 5 ? nb::module_::import_("pickle").attr("PickleBuffer")(array) : array.attr("tobytes")();
    return nb::make_tuple(nb::module_::import_("vela._restore").attr("restore"),
                          nb::make_tuple(shapeOf(packed), dtypeName(mat.dataType), m.mat().timestamp,
                                         toStdString(m.mat().name), pixels));
}

}  // namespace

void bindMat(nb::module_& module) {
    nb::class_<PyMat> mat(
        module, "Mat", nb::type_slots(bufferSlots()), nb::is_weak_referenceable(),
        "A picture, depth map or point cloud: rows of pixels of one type, one to four channels.\n\n"
        "Arrays made from a Mat keep its pixels alive, even if the Mat is freed.");
    defineCreation(mat);
    mat.def_prop_ro(
           "width", [](const PyMat& m) { return m.mat().width; }, "Pixels of a row.")
        .def_prop_ro(
            "height", [](const PyMat& m) { return m.mat().height; }, "Rows.")
        .def_prop_ro(
            "channels", [](const PyMat& m) { return m.mat().channels; }, "Values of a pixel.")
        .def_prop_ro(
            "type", [](const PyMat& m) { return m.mat().dataType; }, "Element type and channels.")
        .def_prop_ro(
            "mem", [](const PyMat& m) { return m.mat().memType; }, "Where the pixels are.")
        .def_prop_ro(
            "step", [](const PyMat& m) { return m.mat().stepBytesCPU; }, "Bytes from row to row on the host.")
        .def_prop_ro(
            "owns", [](const PyMat& m) { return m.mat().memoryOwner; },
            "False for a Mat that shares an array's memory, and for an empty one.")
        .def_prop_ro("shape", &shapeOf, nb::sig("def shape(self) -> tuple[int, ...]"),
                     "(height, width) or (height, width, channels), as of numpy().")
        .def_prop_ro("dtype", &dtypeOf, nb::sig("def dtype(self) -> numpy.dtype[typing.Any]"),
                     "The element type, as of numpy().")
        .def_prop_rw(
            "timestamp", [](const PyMat& m) { return m.mat().timestamp; },
            [](PyMat& m, unsigned long long time) { m.mat().timestamp = time; },
            "Capture time in nanoseconds.")
        .def_prop_rw(
            "name", [](const PyMat& m) { return toStdString(m.mat().name); },
            [](PyMat& m, const std::string& name) { m.mat().name = name; }, "A label for messages.")
        .def(
            "__bool__", [](const PyMat& m) { return m.mat().isInit; }, "False for an empty Mat.")
        .def("__repr__", &matText)
        .def(
            "__enter__", [](nb::handle self) { return nb::borrow(self); },
            nb::sig("def __enter__(self) -> Mat"))
        .def(
            "__exit__", [](PyMat& m, const nb::args&) { m.storage = std::make_shared<Storage>(); },
            nb::sig("def __exit__(self, *args: object) -> None"))
        .def("__copy__", [](const PyMat& m) { return m; })
        .def(
            "__deepcopy__", [](const PyMat& m, nb::handle) { return clone(m); },
            nb::sig("def __deepcopy__(self, memo: typing.Any) -> Mat"))
        .def("__reduce_ex__", &reduce,
             nb::sig("def __reduce_ex__(self, protocol: typing.SupportsIndex) -> tuple[typing.Any, ...]"));
    defineViews(mat);
    defineOperations(mat);
}

}  // namespace vela::python

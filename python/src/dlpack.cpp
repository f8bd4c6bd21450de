// SPDX-License-Identifier: Apache-2.0
// DLPack 1.x, made here: nanobind's export drops `stream` and refuses `copy`.
#include "dlpack.hpp"

#include <memory>
#include <utility>

namespace vela::python {
namespace {

constexpr std::uint64_t IS_COPIED = 2;

/// The ABI of DLPack 1.x.
struct VersionedTensor {
    std::uint32_t major;
    std::uint32_t minor;
    void* context;
    void (*deleter)(VersionedTensor*);
    std::uint64_t flags;
    nb::dlpack::dltensor tensor;
};

/// The ABI before 1.0.
struct UnversionedTensor {
    nb::dlpack::dltensor tensor;
    void* context;
    void (*deleter)(UnversionedTensor*);
};

template <class Managed>
constexpr const char* NAME = "dltensor";
template <>
constexpr const char* NAME<VersionedTensor> = "dltensor_versioned";

/// A tensor with what it points to.
template <class Managed>
struct Export {
    Managed managed{};
    ExportedTensor exported;

    static void destroy(Managed* managed) { delete static_cast<Export*>(managed->context); }

    /// Of a capsule that nobody took the tensor out of; a consumer renames the capsule.
    static void discard(PyObject* capsule) {
        if (PyCapsule_IsValid(capsule, NAME<Managed>) == 0) return;
        destroy(static_cast<Managed*>(PyCapsule_GetPointer(capsule, NAME<Managed>)));
    }
};

template <class Managed>
std::unique_ptr<Export<Managed>> exportOf(const ExportedTensor& exported) {
    auto result = std::make_unique<Export<Managed>>();
    result->exported = exported;
    nb::dlpack::dltensor& tensor = result->managed.tensor;
    tensor.data = exported.data;
    tensor.device = exported.device;
    tensor.ndim = static_cast<std::int32_t>(exported.dimensions);
    tensor.dtype = exported.element;
    tensor.shape = result->exported.shape;
    tensor.strides = result->exported.strides;
    result->managed.context = result.get();
    result->managed.deleter = &Export<Managed>::destroy;
    return result;
}

template <class Managed>
nb::object capsuleOf(std::unique_ptr<Export<Managed>> made) {
    PyObject* const capsule = PyCapsule_New(&made->managed, NAME<Managed>, &Export<Managed>::discard);
    if (capsule == nullptr) throw nb::python_error();
    static_cast<void>(made.release());  // the capsule owns it
    return nb::steal(capsule);
}

}  // namespace

nb::object dlpackCapsule(const ExportedTensor& exported, nb::handle maxVersion, bool copied) {
    const bool versioned = !maxVersion.is_none() && nb::cast<int>(maxVersion[0]) >= 1;
    if (!versioned) return capsuleOf(exportOf<UnversionedTensor>(exported));
    auto made = exportOf<VersionedTensor>(exported);
    made->managed.major = 1;
    made->managed.minor = 0;
    made->managed.flags = copied ? IS_COPIED : 0;
    return capsuleOf(std::move(made));
}

nb::object toDlpack(const PyMat& m, nb::handle stream, nb::handle maxVersion, nb::handle device,
                    nb::handle copy) {
    if (!stream.is_none()) throw nb::value_error("host memory takes no stream");
    if (!device.is_none() && !device.equal(nb::make_tuple(nb::device::cpu::value, 0))) {
        throw nb::buffer_error("__dlpack__ gives the host side; the device side is that of .gpu");
    }
    requireHost(m.mat());
    const bool copied = !copy.is_none() && nb::cast<bool>(copy);
    const PyMat source = copied ? clone(m) : m;
    const Layout layout = layoutOf(source.mat());
    ExportedTensor exported{source.storage,
                            source.mat().ptrCPU,
                            {nb::device::cpu::value, 0},
                            elementOf(source.mat().dataType),
                            layout.dimensions,
                            {},
                            {}};
    for (std::size_t i = 0; i < 3; ++i) {
        exported.shape[i] = static_cast<std::int64_t>(layout.shape[i]);
        exported.strides[i] = layout.stepsElements[i];
    }
    return dlpackCapsule(exported, maxVersion, copied);
}

}  // namespace vela::python

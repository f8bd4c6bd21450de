// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bindings.hpp"

#include <nanobind/ndarray.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vela::python {

/// Pixels that Python can reach. Whatever shows them (an array, a memoryview, a DLPack capsule, another Mat)
/// holds the storage, not the Mat; and what replaces a Mat's pixels makes a new storage. So no Python program
/// can touch memory that was freed. A storage may be destroyed on any thread: `nb::ndarray` takes the
/// interpreter's lock for itself, which a plain `nb::object` would not.
struct Storage {
    Mat mat;
    nb::ndarray<> source;  ///< the array whose memory `mat` refers to, if it refers to any
};

/// What Python calls a Mat.
struct PyMat {
    std::shared_ptr<Storage> storage = std::make_shared<Storage>();

    const Mat& mat() const { return storage->mat; }
    Mat& mat() { return storage->mat; }
};

/// An owning Mat with uninitialised pixels. Raises `vela.Error` where a device side is asked for and there is
/// no device to have it.
PyMat allocated(std::size_t width, std::size_t height, MAT_TYPE type, MEM mem);

/// The element type of a pixel's channels.
nb::dlpack::dtype elementOf(MAT_TYPE type);
inline std::size_t elementBytes(MAT_TYPE type) {
    return elementOf(type).bits / 8U;
}

/// Which sides a Mat has; an empty one has none.
bool hasHost(const Mat& mat);
bool hasDevice(const Mat& mat);

/// Raises BufferError unless the Mat has a host side: every view of pixels begins here.
void requireHost(const Mat& mat);
/// Raises `vela.Error` unless the Mat has what `mem`, one of CPU, GPU and BOTH, names.
void requireSides(const Mat& mat, MEM mem, const char* operation);
/// Raises `vela.Error` unless there is a device to allocate on.
void requireDevice(const char* operation);

/// Shape (height, width[, channels]) and distances of the host side, as arrays describe themselves.
struct Layout {
    std::size_t dimensions;
    std::size_t shape[3];
    std::int64_t stepsBytes[3];
    std::int64_t stepsElements[3];
};
Layout layoutOf(const Mat& mat);
inline bool rowsPacked(const Mat& mat) {
    return mat.stepBytesCPU == mat.width * mat.pixelBytes;
}

/// Copies host rows into host rows of the same size. The library's own copies go through the CUDA runtime,
/// which cannot even copy from host to host where there is no driver.
void copyRows(const Mat& from, const Mat& to);

/// A deep copy on the same sides, with the time stamp and without the name.
PyMat clone(const PyMat& source);

/// A Mat over the same buffers. Unlike `ref` it describes Mats without pixels too.
Mat referenceTo(const Mat& mat);

/// Calls `operation` with a Mat that refers to the pixels, without the interpreter's lock. The storage is
/// held before the lock is given up: another thread may free the Mat meanwhile.
template <class Operation>
auto withoutLock(const PyMat& m, Operation operation) {
    const std::shared_ptr<Storage> held = m.storage;
    Mat pixels = referenceTo(held->mat);
    forgetMessage();
    const nb::gil_scoped_release released;
    return operation(pixels);
}

/// What keeps a storage alive from inside an array.
nb::capsule ownerOf(const std::shared_ptr<Storage>& storage);

/// A numpy array over the host side.
nb::ndarray<nb::numpy> arrayOf(const PyMat& m);

// Parts of the class, each in a source of its own.
void defineCreation(nb::class_<PyMat>& mat);
void defineViews(nb::class_<PyMat>& mat);
void defineOperations(nb::class_<PyMat>& mat);
PyType_Slot* bufferSlots();

/// `__dlpack__` of the host side, by the array API standard.
nb::object toDlpack(const PyMat& m, nb::handle stream, nb::handle maxVersion, nb::handle device,
                    nb::handle copy);

}  // namespace vela::python

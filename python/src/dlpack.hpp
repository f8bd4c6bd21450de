// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "PyMat.hpp"

#include <memory>

namespace vela::python {

/// Pixels as a DLPack tensor describes them; strides count elements.
struct ExportedTensor {
    std::shared_ptr<Storage> storage;
    void* data = nullptr;
    nb::dlpack::device device;
    nb::dlpack::dtype element;
    std::size_t dimensions = 0;
    std::int64_t shape[3] = {};
    std::int64_t strides[3] = {};
};

/// A capsule that holds the storage until its consumer, on whatever thread, is done: of the versioned kind if
/// `maxVersion` is a tuple that begins with 1 or more, else of the older one.
nb::object dlpackCapsule(const ExportedTensor& exported, nb::handle maxVersion, bool copied);

}  // namespace vela::python

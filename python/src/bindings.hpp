// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vela_core/vela.hpp>

#include <nanobind/nanobind.h>

#include <string>

namespace vela::python {

namespace nb = nanobind;
using namespace nb::literals;

// Each adds one part of the package to the module.
void bindEnums(nb::module_& module);
void bindMat(nb::module_& module);
void bindDevice(nb::module_& module);
void bindGeometry(nb::module_& module);
void bindRecords(nb::module_& module);
void bindIo(nb::module_& module);
void bindPictures(nb::module_& module);
void bindTool(nb::module_& module);

/// Raises `vela.Error` with this code; the text is `operation`, a colon, and what the library said on this
/// thread since `forgetMessage`, or else the code's sentence.
[[noreturn]] void raise(ERROR_CODE code, const std::string& operation);
/// The same with a text of our own instead of the code's sentence.
[[noreturn]] void raise(ERROR_CODE code, const std::string& operation, const std::string& text);

void forgetMessage() noexcept;

inline void check(ERROR_CODE code, const char* operation) {
    if (code != ERROR_CODE::SUCCESS) raise(code, operation);
}

}  // namespace vela::python

// SPDX-License-Identifier: Apache-2.0
#include "bindings.hpp"

#include <nanobind/stl/string.h>
#include <vela_core/log/LogHook.hpp>

#include <string>
#include <utility>

namespace vela::python {
namespace {

/// What the library said last on this thread. With a hook it starts no logger thread, which a process that
/// forks, or has a logger of the same kind, could not bear.
thread_local std::string lastMessage;

void keepMessage(const char* text) {
    lastMessage = text;
}

}  // namespace

void forgetMessage() noexcept {
    lastMessage.clear();
}

void raise(ERROR_CODE code, const std::string& operation) {
    const std::string said = std::exchange(lastMessage, {});
    raise(code, operation, said.empty() ? toStdString(toVerbose(code)) : said);
}

void raise(ERROR_CODE code, const std::string& operation, const std::string& text) {
    const nb::object type = nb::module_::import_("vela._errors").attr("Error");
    const nb::object error = type(operation + ": " + text, code);
    PyErr_SetObject(type.ptr(), error.ptr());
    throw nb::python_error();
}

namespace {

bool hasGpu() {
#if defined(VELA_GPU_CUDA)
    int count = 0;
    const bool found = cudaGetDeviceCount(&count) == cudaSuccess && count > 0;
    cudaGetLastError();
    return found;
#else
    return false;
#endif
}

}  // namespace

}  // namespace vela::python

NB_MODULE(_core, module) {
    using namespace vela::python;
    vela::setLogHook(keepMessage);
    module.attr("version") = VELA_VERSION;
#if defined(VELA_GPU_CUDA)
    module.attr("backend") = "cuda";
#else
    module.attr("backend") = "software";
#endif
    module.def("has_gpu", &hasGpu,
               "Whether Mats can have a device side; False in builds for the software device.");
    bindEnums(module);
    bindMat(module);
    bindDevice(module);
    bindGeometry(module);
    bindRecords(module);
    bindIo(module);
    bindPictures(module);
    bindTool(module);
}

// SPDX-License-Identifier: Apache-2.0
#include "io_calls.hpp"

#include <string>
#include <string_view>

namespace vela::python {

String pathOf(nb::handle path) {
    const nb::object encoded = nb::module_::import_("os").attr("fsencode")(path);
    return nb::cast<nb::bytes>(encoded).c_str();
}

io::Progress PyProgress::function() {
    if (function_.is_none()) return {};
    return [this](std::size_t done, std::size_t total) { return call(done, total); };
}

void PyProgress::rethrow() const {
    if (raised_) std::rethrow_exception(raised_);
}

bool PyProgress::call(std::size_t done, std::size_t total) {
    const nb::gil_scoped_acquire locked;
    try {
        return !function_(done, total).is(nb::handle(Py_False));
    } catch (...) {
        raised_ = std::current_exception();
        return false;
    }
}

namespace {

[[noreturn]] void raiseOsError(const io::Result& result, const String& path) {
    std::string_view text = result.text.c_str();
    const std::string prefix = toStdString(path) + ": ";
    if (text.substr(0, prefix.size()) == prefix) text.remove_prefix(prefix.size());
    const nb::object name = nb::module_::import_("os").attr("fsdecode")(nb::bytes(path.c_str()));
    const nb::handle type(PyExc_OSError);
    const nb::object error = type(result.systemError, nb::str(text.data(), text.size()), name);
    // OSError picks a subclass by the number: raise that one.
    PyErr_SetObject(error.type().ptr(), error.ptr());
    throw nb::python_error();
}

}  // namespace

void require(const io::Result& result, const String& path, const char* operation) {
    if (result.ok()) return;
    if (result.systemError != 0) raiseOsError(result, path);
    raise(result.code, operation, toStdString(result.text));
}

}  // namespace vela::python

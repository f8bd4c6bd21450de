// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bindings.hpp"

#include <cstddef>
#include <string>
#include <utility>

// How the library's small values look in Python: texts as str, vectors as tuples.

NAMESPACE_BEGIN(NB_NAMESPACE)
NAMESPACE_BEGIN(detail)

template <>
struct type_caster<vela::String> {
    NB_TYPE_CASTER(vela::String, const_name("str"))

    bool from_python(handle source, uint8_t /*flags*/, cleanup_list* /*cleanup*/) noexcept {
        const char* const text = PyUnicode_AsUTF8AndSize(source.ptr(), nullptr);
        if (text == nullptr) {
            PyErr_Clear();
            return false;
        }
        value = vela::String(text);
        return true;
    }

    static handle from_cpp(const vela::String& text, rv_policy /*policy*/,
                           cleanup_list* /*cleanup*/) noexcept {
        // Texts come from files and devices too: what is not UTF-8 is replaced.
        const std::string characters = vela::toStdString(text);
        return PyUnicode_DecodeUTF8(characters.data(), static_cast<Py_ssize_t>(characters.size()), "replace");
    }
};

/// "float, float, float".
template <class Caster, std::size_t... indices>
constexpr auto repeated_name(std::index_sequence<indices...> /*all*/) {
    return concat((static_cast<void>(indices), Caster::Name)...);
}

/// Vector is one of the library's, `count` is how many components it has. Any sequence of that length is
/// taken.
template <class Vector, class Component, std::size_t count>
struct vector_caster {
    using Caster = make_caster<Component>;
    // Between the signs stands what arguments are called, then what results are called.
    NB_TYPE_CASTER(Vector, const_name("@collections.abc.Sequence[") + Caster::Name + const_name("]@tuple[") +
                               repeated_name<Caster>(std::make_index_sequence<count>()) + const_name("]@"))

    bool from_python(handle source, uint8_t flags, cleanup_list* cleanup) noexcept {
        if (PySequence_Check(source.ptr()) == 0 ||
            PySequence_Size(source.ptr()) != static_cast<Py_ssize_t>(count)) {
            PyErr_Clear();
            return false;
        }
        for (std::size_t i = 0; i < count; ++i) {
            const object item = steal(PySequence_GetItem(source.ptr(), static_cast<Py_ssize_t>(i)));
            Caster component;
            if (!item.is_valid() || !component.from_python(item, flags, cleanup)) {
                PyErr_Clear();
                return false;
            }
            value[i] = component.value;
        }
        return true;
    }

    static handle from_cpp(const Vector& vector, rv_policy policy, cleanup_list* cleanup) noexcept {
        PyObject* const result = PyTuple_New(static_cast<Py_ssize_t>(count));
        for (std::size_t i = 0; result != nullptr && i < count; ++i) {
            const handle item = Caster::from_cpp(vector[i], policy, cleanup);
            PyTuple_SetItem(result, static_cast<Py_ssize_t>(i), item.ptr());
        }
        return result;
    }
};

template <class T>
struct type_caster<vela::Vector2<T>> : vector_caster<vela::Vector2<T>, T, 2> {};
template <class T>
struct type_caster<vela::Vector3<T>> : vector_caster<vela::Vector3<T>, T, 3> {};
template <class T>
struct type_caster<vela::Vector4<T>> : vector_caster<vela::Vector4<T>, T, 4> {};

NAMESPACE_END(detail)
NAMESPACE_END(NB_NAMESPACE)

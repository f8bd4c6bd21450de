// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bindings.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace vela::python {

// Every enumeration becomes an IntEnum. The names of its enumerators come from the compiler, so that no list
// of them can fall behind the headers.

/// No enumeration here reaches this value.
inline constexpr int END = 64;

/// The enumerator's name, or nothing for a value without one: the compiler then writes a cast.
template <class Enum, Enum value>
constexpr std::string_view enumeratorName() {
    std::string_view text = __PRETTY_FUNCTION__;
    const std::size_t start = text.find("value = ") + 8;
    text = text.substr(start, text.find_first_of(";]", start) - start);
    if (text.find('(') != std::string_view::npos) return {};
    return text.substr(text.rfind(':') + 1);  // 0 if there is no colon
}

template <class Enum, int... values>
constexpr std::array<std::string_view, sizeof...(values)> enumeratorNames(
    std::integer_sequence<int, values...> /*all*/) {
    return {enumeratorName<Enum, static_cast<Enum>(values)>()...};
}

template <class Enum>
void addValues(nb::enum_<Enum>& type) {
    constexpr auto NAMES = enumeratorNames<Enum>(std::make_integer_sequence<int, END>());
    for (int i = 0; i < END; ++i) {
        const std::string name(NAMES[static_cast<std::size_t>(i)]);
        if (!name.empty()) type.value(name.c_str(), static_cast<Enum>(i));
    }
}

template <class Enum>
void addText(nb::module_& module) {
    module.def(
        "to_string", [](Enum value) { return nb::str(toStdString(toString(value)).c_str()); }, "value"_a,
        "The display name of an enumerator.");
}

template <class Enum>
void bindEnum(nb::module_& module, const char* name, const char* doc) {
    nb::enum_<Enum> type(module, name, nb::is_arithmetic(), doc);
    addValues(type);
    addText<Enum>(module);
}

}  // namespace vela::python

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/String.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

#include <cstddef>
#include <cstdint>

namespace vela::detail {

/// A row of a table of display names; rows with more members work as well.
template <class Enum>
struct EnumName {
    Enum value;
    const char* name;
};

/// The name of values without enumerator. A constant, so that it can be read during static initialisation and
/// exit.
inline constexpr const char* UNKNOWN_NAME = "Unknown";
/// The same for the few enumerations that do not say "Unknown".
inline constexpr const char* NO_NAME = "";

/// The row of a value, or null for a value that is not in the table.
template <class Row, std::size_t count, class Enum>
constexpr const Row* findIn(const Row (&table)[count], Enum value) {
    for (const Row& row : table) {
        if (row.value == value) return &row;
    }
    return nullptr;
}

/// The row of a value in a table that has one row for each value from 0 up, or null beyond either end.
template <class Row, std::size_t count, class Enum>
constexpr const Row* rowAt(const Row (&table)[count], Enum value) noexcept {
    const auto index = static_cast<std::uint32_t>(toValue(value));
    return index < count ? &table[index] : nullptr;
}

/// The name of a value, or `unknown` for a value that is not in the table.
template <class Row, std::size_t count, class Enum>
String nameIn(const Row (&table)[count], Enum value, const char* unknown = UNKNOWN_NAME) {
    const Row* const row = findIn(table, value);
    return row == nullptr ? unknown : row->name;
}

}  // namespace vela::detail

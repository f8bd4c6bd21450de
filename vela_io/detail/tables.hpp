// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace vela::io::detail {

/// The row of a value in a table with one row for each value from 0 up; null for values beyond it.
template <class Row, std::size_t count, class Enum>
constexpr const Row* rowAt(const Row (&table)[count], Enum value) {
    const auto index = static_cast<std::uint32_t>(value);
    return index < count ? &table[index] : nullptr;
}

}  // namespace vela::io::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <type_traits>

namespace vela::detail {

/// The number of an enumerator. All enumerations of the library are signed 32-bit.
template <class Enum>
constexpr std::int32_t toValue(Enum enumerator) noexcept {
    static_assert(std::is_same_v<std::underlying_type_t<Enum>, std::int32_t>);
    return static_cast<std::int32_t>(enumerator);
}

/// The enumeration value with the given number; the number need not belong to an enumerator.
template <class Enum>
constexpr Enum fromValue(std::int32_t value) noexcept {
    static_assert(std::is_same_v<std::underlying_type_t<Enum>, std::int32_t>);
    return static_cast<Enum>(value);
}

/// Whether a value is above another. Range checks use it with the last enumerator, so negative values pass.
template <class Enum>
constexpr bool isPast(Enum value, Enum other) noexcept {
    return toValue(value) > toValue(other);
}

}  // namespace vela::detail

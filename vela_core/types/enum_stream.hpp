// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/String.hpp"

#include <iosfwd>
#include <type_traits>

namespace vela {

/// Writes the display name of any enumeration that has a `toString`.
template <class Enum>
auto operator<<(std::ostream& stream, Enum value)
    -> std::enable_if_t<std::is_enum_v<Enum>, decltype((toString(value), stream))> {
    return stream << toString(value);
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <string>

namespace vela::detail {

/// The text that `std::printf` makes of the same arguments.
[[gnu::format(printf, 1, 2)]] VELA_API std::string formatText(const char* format, ...);

/// How objects name themselves in their descriptions: the label, or without one the object's address in
/// upper-case hexadecimal digits, at least two of them.
std::string labelOrAddress(const String& label, const void* object);

}  // namespace vela::detail

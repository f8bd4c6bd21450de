// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <string>

namespace vela::detail {

/// The text that `std::printf` would write.
[[gnu::format(printf, 1, 2)]] VELA_API std::string formatText(const char* format, ...);

/// The name of an object in its description: the label, or without one the object's address in upper-case
/// hexadecimal, at least two digits.
std::string labelOrAddress(const String& label, const void* object);

}  // namespace vela::detail

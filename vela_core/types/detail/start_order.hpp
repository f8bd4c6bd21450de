// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vela::detail {

// Priorities of the library's dynamic initialisation (`gnu::init_priority`; lower comes first, programs may
// use 101 and above). Objects without a priority come later, so a program's own globals find these values
// initialised, with the static library too.
inline constexpr int START_BONES = 101;
inline constexpr int START_PARAMETER_FILES = 102;
inline constexpr int START_IDENTIFIERS = 103;
inline constexpr int START_LOG = 104;

}  // namespace vela::detail

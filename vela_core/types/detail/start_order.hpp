// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vela::detail {

// Priorities of the library's own dynamic initialisation (`gnu::init_priority`; lower goes first, 101 is the
// first that programs may use). Objects without a priority come later, so that a program's own globals find
// these values built, also with the static library.
inline constexpr int START_BONES = 101;
inline constexpr int START_PARAMETER_FILES = 102;
inline constexpr int START_IDENTIFIERS = 103;
inline constexpr int START_LOG = 104;

}  // namespace vela::detail

// SPDX-License-Identifier: Apache-2.0
// Compiled once per CALL by tests that expect the compiler to stop with the library's own message.
#include "vela_core/utils/Mat.hpp"

#include <cstdint>

[[maybe_unused]] static void call(vela::Mat& mat) {
    [[maybe_unused]] std::uint32_t word = 0;
    CALL;
}

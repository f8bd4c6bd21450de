// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/utils/Mat.hpp"

#include <cstddef>
#include <cstdint>

namespace vela::detail {

/// Whether pixels of `mat` lie in a buffer that `owner` owns.
bool sharesBuffersOf(const Mat& mat, const Mat& owner);

/// Truncates a size to 32 bits, sign-extended, as copies have always done.
constexpr std::size_t throughInt32(std::size_t size) {
    return static_cast<std::size_t>(static_cast<std::int32_t>(size));
}

}  // namespace vela::detail

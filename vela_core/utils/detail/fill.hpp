// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace vela::detail {

/// Fills `bytes` bytes, a whole number of pixels, with copies of a pixel of `pixelBytes` bytes: 1, 2, 3, 4,
/// 8, 12 or 16. Runs at store bandwidth for all of these sizes.
void fillWithPixel(void* buffer, std::size_t bytes, const void* pixel, std::size_t pixelBytes);

}  // namespace vela::detail

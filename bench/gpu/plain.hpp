// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace vela::bench {

/// An image in device memory, with a step in pixels.
template <class Pixel>
struct Image {
    Pixel* data;
    unsigned step;
    unsigned width;
    unsigned height;
};

/// Sets every pixel to one value.
template <class Pixel>
struct Fill {
    Pixel value;
};

/// The obvious kernel: a grid-stride loop with one thread per pixel. Timed beside the library's tiles, it
/// shows on hardware what those are worth. Instantiated in plain.cu.
template <class From, class To, class Op>
void launchPlainly(const Image<From>& from, const Image<To>& to, const Op& op);

}  // namespace vela::bench

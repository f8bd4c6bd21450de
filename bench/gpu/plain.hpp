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

/// The kernel that anybody would write first: a grid-stride loop over pixels, one thread each. It stands
/// beside the tiles of the library, so that a run on hardware tells what those are worth. Instantiated in
/// plain.cu.
template <class From, class To, class Op>
void launchPlainly(const Image<From>& from, const Image<To>& to, const Op& op);

}  // namespace vela::bench

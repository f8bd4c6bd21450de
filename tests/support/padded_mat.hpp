// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/PixelTraits.hpp"
#include "vela_core/utils/Mat.hpp"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vela::test {

/// Pixels, initially zero, from which Mats with padded rows are made.
template <class Pixel>
class PaddedMat {
public:
    PaddedMat(std::size_t width, std::size_t height) : width_(width), pixels_(width * height) {}

    Mat part(std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
        return {width,
                height,
                PixelTraits<Pixel>::type,
                reinterpret_cast<unsigned char*>(&at(x, y)),
                width_ * sizeof(Pixel),
                MEM::CPU};
    }
    Pixel& at(std::size_t x, std::size_t y) { return pixels_[y * width_ + x]; }
    template <class Predicate>
    std::size_t count(Predicate predicate) const {
        return static_cast<std::size_t>(std::count_if(pixels_.begin(), pixels_.end(), predicate));
    }

private:
    std::size_t width_;
    std::vector<Pixel> pixels_;
};

}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cases.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace vela::bench {

/// Images in device memory, with finite floats of ordinary size in every word.
class Images {
public:
    /// At least two images, and enough that a round over all exceeds the caches several times; fewer rows
    /// than requested where device memory is too small.
    Images(const Case& kernel, std::size_t width, std::size_t height);

    /// Operation number n's image, other image for kernels that do not work in place, and target of a copy.
    const Mat& image(unsigned n) const { return images_[n % images_.size()]; }
    const Mat& other(unsigned n) const { return others_.empty() ? image(n) : others_[n % others_.size()]; }
    const Mat& copyTarget(unsigned n) const { return images_[(n + images_.size() / 2) % images_.size()]; }
    std::size_t height() const { return height_; }

private:
    std::vector<Mat> images_;
    std::vector<Mat> others_;
    std::size_t height_;
};

/// Runs a kernel once over image n and compares whole rows at both ends and in the middle with the host's
/// element function; returns the first difference, or nothing if they agree.
std::string findDifference(const Case& kernel, const Case::Launch& launch, const Images& images, unsigned n);

}  // namespace vela::bench

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/utils/Mat.hpp"

#include <functional>
#include <string>
#include <vector>

namespace vela::bench {

/// A kernel to check and to time, over images in device memory.
struct Case {
    std::string name;
    MAT_TYPE type;
    bool reads;  ///< a fill only writes
    /// Runs the kernel over an image and, if it does not work in place, into another. When timing, with
    /// arguments that keep values from growing or vanishing however often it is repeated.
    using Launch = std::function<void(const Mat& image, const Mat& other, bool timing)>;
    Launch launch;
    Launch plain;  ///< the same by a plain kernel, see plain.hpp
    bool inPlace;
    /// Applies the host's element function to a pixel; `after` may be `before`.
    std::function<void(const void* before, void* after)> element;

    double bytesPerPixel() const { return static_cast<double>(pixelBytes() * (reads ? 2 : 1)); }
    std::size_t pixelBytes() const { return Mat(1, 1, type).pixelBytes; }
};

/// All kernels of the library. They read matrices from `deviceMatrices`, see `uploadMatrices`.
std::vector<Case> allCases(float* deviceMatrices);

/// The matrices that the cases use, in device memory that the program keeps.
float* uploadMatrices();

/// Microseconds for the whole call and for its kernel alone.
struct WholeCall {
    std::string name;
    MAT_TYPE type;
    std::function<void(Mat&)> call;
    std::string kernel;  ///< name of the case
};

std::vector<WholeCall> wholeCalls();

}  // namespace vela::bench

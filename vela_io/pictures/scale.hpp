// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/pictures/Canvas.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace vela::io::detail {

/// Values from `low` to `high`.
struct Range {
    double low = 0;
    double high = 1;

    double size() const { return high - low; }
    /// 0 at `low`, 1 at `high`, clamped.
    double share(double value) const;
};

/// The range that leaves out `tail` (0 to 0.5) of the values at either end; 0 to 1 for no values. Equal ends
/// are moved apart. Reorders the values.
Range rangeWithoutTails(std::vector<float>& values, double tail);

/// Round numbers within a range, at most about `count` of them, with the decimals that tell them apart.
struct Ticks {
    std::vector<double> values;
    double step = 1;
    int decimals = 0;

    Ticks(const Range& range, int count);
    /// As text with a point, whatever the locale.
    std::string text(double value) const;
};

/// The colour of a share of a range: from warm and light (near, 0) to cold and dark (far, 1).
Color colorOf(double share);

}  // namespace vela::io::detail

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstddef>
#include <string>

namespace vela::bench {

/// How far floats may differ: by this amount, or by this share of the expected value.
struct Tolerance {
    double absolute = 0;
    double relative = 0;
};

/// Names the first value that is not as expected; empty if all are. NaN equals NaN.
inline std::string differences(const float* actual, const float* expected, std::size_t count,
                               Tolerance tolerance = {}) {
    for (std::size_t i = 0; i < count; ++i) {
        const double a = static_cast<double>(actual[i]);
        const double e = static_cast<double>(expected[i]);
        if (a == e || (std::isnan(a) && std::isnan(e))) continue;
        if (std::fabs(a - e) <= tolerance.absolute + tolerance.relative * std::fabs(e)) continue;
        return "value " + std::to_string(i) + " is " + std::to_string(a) + " instead of " + std::to_string(e);
    }
    return {};
}

}  // namespace vela::bench

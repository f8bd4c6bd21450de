// SPDX-License-Identifier: Apache-2.0
#include "vela_io/pictures/scale.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace vela::io::detail {

double Range::share(double value) const {
    return std::clamp((value - low) / size(), 0.0, 1.0);
}

Range rangeWithoutTails(std::vector<float>& values, double tail) {
    if (values.empty()) return {};
    const auto at = [&values](double quantile) -> double {
        const auto place = static_cast<std::ptrdiff_t>(quantile * static_cast<double>(values.size() - 1));
        std::nth_element(values.begin(), values.begin() + place, values.end());
        return values[static_cast<std::size_t>(place)];
    };
    Range range{at(tail), at(1 - tail)};
    if (!(range.size() > 0)) {
        const double margin = std::max(std::abs(range.low) * 1e-3, 1e-30);
        range = {range.low - margin, range.high + margin};
    }
    return range;
}

Ticks::Ticks(const Range& range, int count) {
    const double least = range.size() / std::max(count, 1);
    const double power = std::pow(10, std::floor(std::log10(least)));
    step = 10 * power;
    for (const double factor : {1, 2, 5}) {
        if (factor * power >= least) {
            step = factor * power;
            break;
        }
    }
    decimals = std::clamp(static_cast<int>(-std::floor(std::log10(step) + 1e-9)), 0, 9);
    constexpr double SLACK = 1e-9;
    for (double i = std::ceil(range.low / step - SLACK); i * step <= range.high + SLACK * step; ++i) {
        values.push_back(i == 0 ? 0 : i * step);  // no -0
    }
}

std::string Ticks::text(double value) const {
    char text[64];
    const bool plain = std::abs(value) < 1e9 && step >= 1e-9;
    const auto end =
        plain ? std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed, decimals)
              : std::to_chars(std::begin(text), std::end(text), value, std::chars_format::scientific, 3);
    return {text, end.ptr};
}

Color colorOf(double share) {
    constexpr Color STOPS[] = {{255, 240, 160}, {253, 174, 72}, {226, 84, 60},
                               {158, 42, 110},  {84, 40, 142},  {30, 28, 88}};
    const double place = share * static_cast<double>(std::size(STOPS) - 1);
    const auto i = std::min(static_cast<std::size_t>(place), std::size(STOPS) - 2);
    const double rest = place - static_cast<double>(i);
    const auto mix = [rest](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(std::lround(a + (b - a) * rest));
    };
    const Color& a = STOPS[i];
    const Color& b = STOPS[i + 1];
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

}  // namespace vela::io::detail

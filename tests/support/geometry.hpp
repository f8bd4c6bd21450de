// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/geometry/Transform.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace vela::test {

using Numbers = std::vector<float>;

/// The floats of a matrix, vector or quaternion, and their number.
template <class T>
std::pair<float*, std::size_t> floatsOf(T& value) {
    if constexpr (std::is_base_of_v<Matrix3f, T> || std::is_base_of_v<Matrix4f, T>) {
        return {value.m, std::size(value.m)};
    } else {
        return {reinterpret_cast<float*>(&value), sizeof value / sizeof(float)};
    }
}

/// The elements of a value; a number or enumerator is its own element.
template <class T>
Numbers numbersOf(T value) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        return {static_cast<float>(value)};
    } else {
        const auto [floats, count] = floatsOf(value);
        return Numbers(floats, floats + count);
    }
}

/// The bits of numbers. All NaNs get the same bits, except for every `colorEach`th element, which is a
/// colour.
inline std::vector<std::uint32_t> bitsOf(Numbers numbers, std::size_t colorEach = SIZE_MAX) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (std::isnan(numbers[i]) && i % colorEach != colorEach - 1) numbers[i] = NAN;
    }
    std::vector<std::uint32_t> bits(numbers.size());
    std::memcpy(bits.data(), numbers.data(), numbers.size() * sizeof(float));
    return bits;
}

/// The root of a rounding error where 0 is exact keeps only half of a float's digits.
constexpr float ROOT_TOLERANCE = 1e-3F;

/// Expects equality up to the rounding of a few dozen float operations on numbers as large as the largest
/// expected one. NaN equals only NaN, and an infinity only itself.
inline void expectNear(const Numbers& seen, const Numbers& wanted, float tolerance = 2e-6F) {
    float largest = 0;
    for (const float x : wanted) {
        if (std::isfinite(x)) largest = std::max(largest, std::abs(x));
    }
    const auto near = [=](float x, float y) {
        return x == y || std::abs(x - y) <= tolerance * largest || (std::isnan(x) && std::isnan(y));
    };
    EXPECT_TRUE(std::equal(seen.begin(), seen.end(), wanted.begin(), wanted.end(), near))
        << testing::PrintToString(seen) << " instead of " << testing::PrintToString(wanted);
}
template <class Seen, class Wanted = Seen>
void expectNear(const Seen& seen, const Wanted& wanted, float tolerance = 2e-6F) {
    expectNear(numbersOf(seen), numbersOf(wanted), tolerance);
}

}  // namespace vela::test

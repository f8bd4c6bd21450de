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

/// The floats that a matrix, vector or quaternion is, and how many they are.
template <class T>
std::pair<float*, std::size_t> floatsOf(T& value) {
    if constexpr (std::is_base_of_v<Matrix3f, T> || std::is_base_of_v<Matrix4f, T>) {
        return {value.m, std::size(value.m)};
    } else {
        return {reinterpret_cast<float*>(&value), sizeof value / sizeof(float)};
    }
}

/// The numbers of a value; numbers and enumeration values are such themselves.
template <class T>
Numbers numbersOf(T value) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        return {static_cast<float>(value)};
    } else {
        const auto [floats, count] = floatsOf(value);
        return Numbers(floats, floats + count);
    }
}

/// Bits of numbers, those of all NaNs the same but of each `colorEach`th number, which is no number but a
/// colour.
inline std::vector<std::uint32_t> bitsOf(Numbers numbers, std::size_t colorEach = SIZE_MAX) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (std::isnan(numbers[i]) && i % colorEach != colorEach - 1) numbers[i] = NAN;
    }
    std::vector<std::uint32_t> bits(numbers.size());
    std::memcpy(bits.data(), numbers.data(), numbers.size() * sizeof(float));
    return bits;
}

/// Equal up to the rounding of some dozen float operations on numbers as large as the largest that is wanted.
/// NaN is near NaN alone, and an infinity near itself alone.
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

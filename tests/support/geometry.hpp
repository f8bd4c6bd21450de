#pragma once

#include "support/ScratchFolder.hpp"
#include "vela_core/geometry/Transform.hpp"

#include <algorithm>
#include <cmath>
#include <tuple>
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

/// The value that the next numbers are.
template <class T>
T take(const float*& next) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        return static_cast<T>(*next++);
    } else {
        T value;
        const auto [floats, count] = floatsOf(value);
        std::copy_n(next, count, floats);
        next += count;
        return value;
    }
}

/// Equal up to the rounding of some dozen float operations; NaN is near NaN alone.
inline void expectNear(const Numbers& seen, const Numbers& wanted, float tolerance = 1e-5F) {
    const auto near = [=](float x, float y) {
        return std::abs(x - y) <= tolerance * (1 + std::abs(y)) || (std::isnan(x) && std::isnan(y));
    };
    EXPECT_TRUE(std::equal(seen.begin(), seen.end(), wanted.begin(), wanted.end(), near))
        << testing::PrintToString(seen) << " instead of " << testing::PrintToString(wanted);
}
template <class Seen, class Wanted = Seen>
void expectNear(const Seen& seen, const Wanted& wanted, float tolerance = 1e-5F) {
    expectNear(numbersOf(seen), numbersOf(wanted), tolerance);
}

inline Numbers parsed(const std::string& text) {
    std::istringstream words(text);
    Numbers numbers;
    for (std::string word; words >> word;) {
        numbers.push_back(std::stof(word));
    }
    return numbers;
}

/// Compares a function with the examples of it in a file of tests/geometry, "name: arguments = result".
template <class Result, class... Arguments>
void expectExamples(const std::string& file, const std::string& name, Result (*function)(Arguments...)) {
    std::istringstream lines(contentOf(VELA_TEST_FOLDER "/geometry/" + file));
    int examples = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(name + ":", 0) != 0) continue;
        SCOPED_TRACE(line);
        const std::size_t colon = name.size();
        const std::size_t equals = line.find('=');
        const Numbers arguments = parsed(line.substr(colon + 1, equals - colon - 1));
        const float* next = arguments.data();
        const std::tuple<std::decay_t<Arguments>...> values{take<std::decay_t<Arguments>>(next)...};
        EXPECT_EQ(next, arguments.data() + arguments.size());
        expectNear(numbersOf(std::apply(function, values)), parsed(line.substr(equals + 1)));
        ++examples;
    }
    EXPECT_GT(examples, 0) << name;
}
template <class Lambda>
void expectExamples(const std::string& file, const std::string& name, Lambda lambda) {
    expectExamples(file, name, +lambda);
}

}  // namespace vela::test

#pragma once

#include "vela_core/geometry/Transform.hpp"

#include <gtest/gtest.h>

#include <random>

namespace vela::test {

/// Numbers that depend on the seed alone, whatever the standard library.
class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}
    float operator()(float low, float high) {
        return low + (high - low) * static_cast<float>(engine_()) / static_cast<float>(std::mt19937::max());
    }

private:
    std::mt19937 engine_;
};

inline Orientation randomOrientation(unsigned seed) {
    Random next(seed);
    Orientation q(Vector4<float>(next(-1, 1), next(-1, 1), next(-1, 1), next(-1, 1)));
    q.normalise();
    return q;
}

inline Transform randomTransform(unsigned seed) {
    Random next(seed + 1000);
    return {randomOrientation(seed), Translation(next(-9, 9), next(-9, 9), next(-9, 9))};
}

/// Element-wise nearness; a NaN is near nothing.
template <class Seen, class Wanted>
void expectNear(const Seen& seen, const Wanted& wanted, float tolerance) {
    for (std::size_t i = 0; i < std::size(seen.m); ++i) {
        EXPECT_TRUE(std::abs(seen.m[i] - wanted.m[i]) <= tolerance)
            << "element " << i << ": " << seen.m[i] << " instead of " << wanted.m[i];
    }
}

}  // namespace vela::test

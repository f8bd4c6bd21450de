// SPDX-License-Identifier: Apache-2.0
#include "support/traffic.hpp"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vela::bench {
namespace {

void multiplyPlainly(float* values, std::size_t count, float factor) {
    for (std::size_t i = 0; i < count; ++i) {
        values[i] *= factor;
    }
}

#if defined(__x86_64__)
template <bool prefetch>
__attribute__((target("avx2"))) void multiplyByAvx2(float* values, std::size_t count, float factor) {
    constexpr std::size_t REGISTER = 8;
    const __m256 factors = _mm256_set1_ps(factor);
    constexpr std::size_t AHEAD = 256;  // floats; as far as memory is behind
    std::size_t i = 0;
    for (; i + 4 * REGISTER <= count; i += 4 * REGISTER) {
        if constexpr (prefetch) {
            _mm_prefetch(reinterpret_cast<const char*>(values + i + AHEAD), _MM_HINT_T0);
            _mm_prefetch(reinterpret_cast<const char*>(values + i + AHEAD + 2 * REGISTER), _MM_HINT_T0);
        }
        for (std::size_t part = 0; part < 4; ++part) {
            float* const place = values + i + part * REGISTER;
            _mm256_storeu_ps(place, _mm256_mul_ps(_mm256_loadu_ps(place), factors));
        }
    }
    multiplyPlainly(values + i, count - i, factor);
}
#endif

template <bool prefetch>
void multiplyAll(float* values, std::size_t count, float factor) {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2") != 0) {
        multiplyByAvx2<prefetch>(values, count, factor);
        return;
    }
#endif
    multiplyPlainly(values, count, factor);
}

}  // namespace

void addTrafficLimits(Comparison& comparison, const std::function<void(MultiplyAll)>& work,
                      const Check& check) {
    comparison.limit(
        "loads and stores", [work] { work(multiplyAll<false>); }, check);
    comparison.limit(
        "loads and stores, prefetching", [work] { work(multiplyAll<true>); }, check);
}

}  // namespace vela::bench

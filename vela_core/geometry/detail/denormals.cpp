// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/detail/denormals.hpp"

#if defined(__x86_64__)

#include "vela_core/geometry/detail/avx2_rows.hpp"
#include "vela_core/geometry/detail/host_loops.hpp"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

#define VELA_AVX2 __attribute__((target("avx2")))

namespace vela::detail {
namespace {

constexpr std::size_t LANES = 8;
/// Vectors that are tested together.
constexpr std::size_t GROUP = 4;

// Lanes whose operand or product may be denormal are scaled by 2^149 first, which turns denormals into whole
// numbers and keeps normal numbers normal, then multiplied exactly in double, and rounded once.
constexpr int TINY_EXPONENT = 149;
constexpr int MANTISSA_BITS = 23;
/// Below this, the bits of a float are its value times 2^149: denormals and the smallest normal binade.
constexpr int NUMBERS_END = 2 << MANTISSA_BITS;

VELA_AVX2 inline __m256i magnitudeBits(__m256 values) {
    return _mm256_and_si256(_mm256_castps_si256(values), _mm256_set1_epi32(0x7FFFFFFF));
}

/// Bits below which a float's product with the factor, or the float itself, may be denormal.
int slowBitsEnd(float factor) {
    return std::max(2, 1 - std::ilogb(factor)) << MANTISSA_BITS;
}

/// Bits of four products times 2^-149.
VELA_AVX2 inline __m128i roundedBits(__m256d products) {
    const __m128i denormal = _mm256_cvtpd_epi32(products);
    const __m128i normal = _mm_sub_epi32(_mm_castps_si128(_mm256_cvtpd_ps(products)),
                                         _mm_set1_epi32(TINY_EXPONENT << MANTISSA_BITS));
    const __m256d isDenormal = _mm256_cmp_pd(products, _mm256_set1_pd(NUMBERS_END), _CMP_LT_OQ);
    const __m256 halves = _mm256_castpd_ps(isDenormal);
    const __m128 select = _mm_shuffle_ps(_mm256_castps256_ps128(halves), _mm256_extractf128_ps(halves, 1),
                                         _MM_SHUFFLE(2, 0, 2, 0));
    return _mm_blendv_epi8(normal, denormal, _mm_castps_si128(select));
}

/// values * factor, avoiding slow multiplication in the given lanes; the factor is positive and normal.
VELA_AVX2 __attribute__((noinline)) __m256 scaleSlowLanes(__m256 values, __m256i slow, float factor) {
    const __m256i bits = _mm256_and_si256(magnitudeBits(values), slow);
    const __m256i raised = _mm256_add_epi32(bits, _mm256_set1_epi32(TINY_EXPONENT << MANTISSA_BITS));
    const __m256i isNumber = _mm256_cmpgt_epi32(_mm256_set1_epi32(NUMBERS_END), bits);
    const __m256 large = _mm256_blendv_ps(_mm256_castsi256_ps(raised), _mm256_cvtepi32_ps(bits),
                                          _mm256_castsi256_ps(isNumber));
    const __m256d wideFactor = _mm256_set1_pd(static_cast<double>(factor));
    const __m128i low =
        roundedBits(_mm256_mul_pd(_mm256_cvtps_pd(_mm256_castps256_ps128(large)), wideFactor));
    const __m128i high =
        roundedBits(_mm256_mul_pd(_mm256_cvtps_pd(_mm256_extractf128_ps(large, 1)), wideFactor));
    const __m256 signs = _mm256_and_ps(values, _mm256_set1_ps(-0.0F));
    const __m256 scaled = _mm256_or_ps(_mm256_castsi256_ps(_mm256_set_m128i(high, low)), signs);
    const __m256 fast = _mm256_andnot_ps(_mm256_castsi256_ps(slow), values);
    return _mm256_blendv_ps(_mm256_mul_ps(fast, _mm256_set1_ps(factor)), scaled, _mm256_castsi256_ps(slow));
}

/// Orders numbers by magnitude, except that 0 - 1 wraps to the largest value, because zeros are fast.
VELA_AVX2 inline __m256i sizeOf(__m256 values) {
    return _mm256_sub_epi32(magnitudeBits(values), _mm256_set1_epi32(1));
}

VELA_AVX2 inline __m256i isUpTo(__m256i last, __m256i sizes) {
    return _mm256_cmpeq_epi32(_mm256_min_epu32(sizes, last), sizes);
}

using Clock = std::chrono::steady_clock;

template <class Work>
Clock::duration shortestTime(Work work) {
    Clock::duration shortest = Clock::duration::max();
    for (int i = 0; i < 4; ++i) {
        const Clock::time_point start = Clock::now();
        work();
        shortest = std::min(shortest, Clock::now() - start);
    }
    return shortest;
}

/// Times both loops on a few points with colours of alpha 0.
bool winsAgainstPlainLoop() {
    if (!canScaleAroundDenormals()) return false;
    constexpr float COLOR = 9.2e-39F;
    std::array<Vector4<float>, 64> points;
    points.fill({1, 2, 3, COLOR});
    const auto values = asFloats(PixelView<Vector4<float>>{points.data(), points.size(), 1, sizeof points});
    const volatile float one = 1;  // keeps the values, and keeps the compiler from omitting the products
    const Clock::duration plain =
        shortestTime([&] { applyToRowByAvx2(values.data, values.width, ScaleAll{one}); });
    return shortestTime([&] { scaleAroundDenormals(values.data, values.width, one); }) < plain;
}

}  // namespace

bool hasDefaultFloatModes() {
    constexpr unsigned STATUS_FLAGS = 0x3F;
    constexpr unsigned DEFAULT_MODES = 0x1F80;  // all exceptions masked, rounding to nearest, denormals kept
    return (_mm_getcsr() & ~STATUS_FLAGS) == DEFAULT_MODES;
}

bool denormalsAreSlow() {
    static const bool slow = winsAgainstPlainLoop();
    return slow && hasDefaultFloatModes();
}

bool canScaleAroundDenormals() {
    return hasAvx2();
}

VELA_AVX2 std::size_t scaleAroundDenormals(float* values, std::size_t count, float factor) {
    const __m256 factors = _mm256_set1_ps(factor);
    const __m256i lastSlow = _mm256_set1_epi32(slowBitsEnd(factor) - 2);
    std::size_t i = 0;
    for (; i + GROUP * LANES <= count; i += GROUP * LANES) {
        __m256 v[GROUP];
        __m256i smallest = _mm256_set1_epi32(-1);
        for (std::size_t j = 0; j < GROUP; ++j) {
            v[j] = _mm256_loadu_ps(values + i + j * LANES);
            smallest = _mm256_min_epu32(smallest, sizeOf(v[j]));
        }
        const __m256i anySlow = isUpTo(lastSlow, smallest);
        const bool fast = _mm256_testz_si256(anySlow, anySlow) != 0;
        for (std::size_t j = 0; j < GROUP; ++j) {
            _mm256_storeu_ps(values + i + j * LANES,
                             fast ? _mm256_mul_ps(v[j], factors)
                                  : scaleSlowLanes(v[j], isUpTo(lastSlow, sizeOf(v[j])), factor));
        }
    }
    return i;
}

}  // namespace vela::detail

#else

namespace vela::detail {

bool hasDefaultFloatModes() {
    return true;
}

bool denormalsAreSlow() {
    return false;
}

bool canScaleAroundDenormals() {
    return false;
}

std::size_t scaleAroundDenormals(float* /*values*/, std::size_t /*count*/, float /*factor*/) {
    return 0;
}

}  // namespace vela::detail

#endif

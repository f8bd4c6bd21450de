#include "vela_core/geometry/avx2_rows.hpp"

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <cmath>

// Only the functions marked so are compiled for AVX2: the rest of the library runs on every processor.
#define VELA_AVX2 __attribute__((target("avx2")))

namespace vela {
namespace {

constexpr std::size_t LANES = 8;

/// Floats ahead of the current ones that are asked for: arithmetic then overlaps with waiting for memory.
constexpr std::size_t AHEAD = 512;

// Multiplying is slow, over a hundred cycles, where an operand or the result is denormal; colour with alpha 0
// is such an operand. These lanes are scaled by 2^149 first, which makes whole numbers of denormals and keeps
// normal ones normal, then multiplied exactly in double, and rounded once.
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

/// Bits of 2^-149 times four products.
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

/// values * factor where the given lanes would be slow; the factor is positive and normal.
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

VELA_AVX2 std::size_t scaleFloats(float* values, std::size_t count, float factor) {
    const __m256 factors = _mm256_set1_ps(factor);
    const __m256i one = _mm256_set1_epi32(1);
    const __m256i lastSlow = _mm256_set1_epi32(slowBitsEnd(factor) - 2);
    std::size_t i = 0;
    for (; i + LANES <= count; i += LANES) {
        _mm_prefetch(values + i + AHEAD, _MM_HINT_T0);
        const __m256 v = _mm256_loadu_ps(values + i);
        // Zero less one is the largest number, so that one comparison leaves out zeros, which are fast.
        const __m256i number = _mm256_sub_epi32(magnitudeBits(v), one);
        const __m256i slow = _mm256_cmpeq_epi32(_mm256_min_epu32(number, lastSlow), number);
        const bool fast = _mm256_testz_si256(slow, slow) != 0;
        _mm256_storeu_ps(values + i, fast ? _mm256_mul_ps(v, factors) : scaleSlowLanes(v, slow, factor));
    }
    return i;
}

/// Column `column` of the first three rows of a 4x4 matrix, twice: for the two pixels of a vector.
VELA_AVX2 inline __m256 columnTwice(const float (&k)[16], int column) {
    const __m128 values = _mm_setr_ps(k[column], k[4 + column], k[8 + column], 0.0F);
    return _mm256_set_m128(values, values);
}

struct Columns {
    __m256 x, y, z, one;
};

/// Two points: ((kx * x + ky * y) + kz * z) + k1 in each of the first three lanes of both halves.
VELA_AVX2 inline __m256 moveTwoPoints(__m256 points, const Columns& k) {
    const __m256 x = _mm256_permute_ps(points, _MM_SHUFFLE(0, 0, 0, 0));
    const __m256 y = _mm256_permute_ps(points, _MM_SHUFFLE(1, 1, 1, 1));
    const __m256 z = _mm256_permute_ps(points, _MM_SHUFFLE(2, 2, 2, 2));
    const __m256 xy = _mm256_add_ps(_mm256_mul_ps(k.x, x), _mm256_mul_ps(k.y, y));
    const __m256 moved = _mm256_add_ps(_mm256_add_ps(xy, _mm256_mul_ps(k.z, z)), k.one);
    constexpr int COLOR_LANES = 0b10001000;
    return _mm256_blend_ps(moved, points, COLOR_LANES);
}

/// Four floats from `p` and four from 12 floats further on: the same part of four points and of the next
/// four.
VELA_AVX2 inline __m256 loadHalves(const float* p) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p)), _mm_loadu_ps(p + 12), 1);
}

VELA_AVX2 inline void storeHalves(float* p, __m256 values) {
    _mm_storeu_ps(p, _mm256_castps256_ps128(values));
    _mm_storeu_ps(p + 12, _mm256_extractf128_ps(values, 1));
}

/// (k[0] * x + k[1] * y) + k[2] * z for eight points.
VELA_AVX2 inline __m256 rowTimesPoints(const __m256* k, __m256 x, __m256 y, __m256 z) {
    return _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(k[0], x), _mm256_mul_ps(k[1], y)),
                         _mm256_mul_ps(k[2], z));
}

/// Eight points of three floats. Each half of a register holds four of them; the comments show a half.
VELA_AVX2 inline void moveEightPoints(float* p, const __m256* k) {
    const __m256 a = loadHalves(p);                                      // x0 y0 z0 x1
    const __m256 b = loadHalves(p + 4);                                  // y1 z1 x2 y2
    const __m256 c = loadHalves(p + 8);                                  // z2 x3 y3 z3
    const __m256 bc = _mm256_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));  // x2 y2 x3 y3
    const __m256 ab = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));  // y0 z0 y1 z1
    const __m256 x = _mm256_shuffle_ps(a, bc, _MM_SHUFFLE(2, 0, 3, 0));
    const __m256 y = _mm256_shuffle_ps(ab, bc, _MM_SHUFFLE(3, 1, 2, 0));
    const __m256 z = _mm256_shuffle_ps(ab, c, _MM_SHUFFLE(3, 0, 3, 1));

    const __m256 u = rowTimesPoints(k, x, y, z);
    const __m256 v = rowTimesPoints(k + 3, x, y, z);
    const __m256 w = rowTimesPoints(k + 6, x, y, z);

    const __m256 uv = _mm256_shuffle_ps(u, v, _MM_SHUFFLE(2, 0, 2, 0));      // u0 u2 v0 v2
    const __m256 vw = _mm256_shuffle_ps(v, w, _MM_SHUFFLE(3, 1, 3, 1));      // v1 v3 w1 w3
    const __m256 wu = _mm256_shuffle_ps(w, u, _MM_SHUFFLE(3, 1, 2, 0));      // w0 w2 u1 u3
    storeHalves(p, _mm256_shuffle_ps(uv, wu, _MM_SHUFFLE(2, 0, 2, 0)));      // u0 v0 w0 u1
    storeHalves(p + 4, _mm256_shuffle_ps(vw, uv, _MM_SHUFFLE(3, 1, 2, 0)));  // v1 w1 u2 v2
    storeHalves(p + 8, _mm256_shuffle_ps(wu, vw, _MM_SHUFFLE(3, 1, 3, 1)));  // w2 u3 v3 w3
}

}  // namespace

bool hasAvx2() {
    return __builtin_cpu_supports("avx2") != 0;
}

std::size_t applyToRowByAvx2(float* row, std::size_t width, const ScaleAll& op) {
    return scaleFloats(row, width, op.factor);
}

// Whole pixels fill whole vectors: the rest of less than a pixel would else be scaled twice.
std::size_t applyToRowByAvx2(Vector3<float>* row, std::size_t width, const ScaleAll& op) {
    return scaleFloats(reinterpret_cast<float*>(row), width / LANES * LANES * 3, op.factor) / 3;
}

std::size_t applyToRowByAvx2(Vector4<float>* row, std::size_t width, const ScaleAll& op) {
    return scaleFloats(reinterpret_cast<float*>(row), width * 4, op.factor) / 4;
}

VELA_AVX2 std::size_t applyToRowByAvx2(Vector3<float>* row, std::size_t width, const ApplyMatrix3& op) {
    __m256 k[9];
    for (int i = 0; i < 9; ++i) {
        k[i] = _mm256_set1_ps(op.k[i]);
    }
    float* const p = reinterpret_cast<float*>(row);
    std::size_t i = 0;
    for (; i + LANES <= width; i += LANES) {
        _mm_prefetch(p + 3 * i + AHEAD, _MM_HINT_T0);
        _mm_prefetch(p + 3 * i + AHEAD + 16, _MM_HINT_T0);
        moveEightPoints(p + 3 * i, k);
    }
    return i;
}

VELA_AVX2 std::size_t applyToRowByAvx2(Vector4<float>* row, std::size_t width, const ApplyMatrix4& op) {
    const Columns k = {columnTwice(op.k, 0), columnTwice(op.k, 1), columnTwice(op.k, 2),
                       columnTwice(op.k, 3)};
    float* const p = reinterpret_cast<float*>(row);
    std::size_t i = 0;
    for (; i + 4 <= width; i += 4) {
        _mm_prefetch(p + 4 * i + AHEAD, _MM_HINT_T0);
        const __m256 first = moveTwoPoints(_mm256_loadu_ps(p + 4 * i), k);
        const __m256 second = moveTwoPoints(_mm256_loadu_ps(p + 4 * i + LANES), k);
        _mm256_storeu_ps(p + 4 * i, first);
        _mm256_storeu_ps(p + 4 * i + LANES, second);
    }
    return i;
}

}  // namespace vela

#endif

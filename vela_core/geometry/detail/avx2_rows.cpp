// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/detail/avx2_rows.hpp"

#if defined(__x86_64__)

#include <immintrin.h>

// Only functions with this mark are compiled for AVX2; the rest of the library runs on every processor.
#define VELA_AVX2 __attribute__((target("avx2")))

namespace vela::detail {
namespace {

constexpr std::size_t LANES = 8;

/// Distance of prefetches in floats, so that arithmetic overlaps with memory latency.
constexpr std::size_t AHEAD = 512;

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

VELA_AVX2 std::size_t applyToRowByAvx2(float* row, std::size_t width, const ScaleAll& op) {
    const __m256 factors = _mm256_set1_ps(op.factor);
    std::size_t i = 0;
    for (; i + 4 * LANES <= width; i += 4 * LANES) {
        for (std::size_t j = i; j < i + 4 * LANES; j += LANES) {
            _mm256_storeu_ps(row + j, _mm256_mul_ps(_mm256_loadu_ps(row + j), factors));
        }
    }
    return i;
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

}  // namespace vela::detail

#endif

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Matrix4f.hpp"

#include "vela_core/log/detail/statements.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vela {
using namespace detail;
namespace {

/// Four floats, added and multiplied together.
using FourFloats = float __attribute__((vector_size(16)));

struct Adjugate {
    FourFloats rows[4];
};

/// The transposed matrix of cofactors. Each is the sum of the six signed products of its 3 x 3 minor, from
/// left to right and without 2 x 2 minors: the rounding of the sum decides whether a singular matrix is
/// reported.
Adjugate adjugateOf(const float (&c)[16]) {
    // Lane i computes the cofactors of row i from the three other rows, here column by column. Each product
    // has one factor from the first of them, which carries the signs of the cofactors of columns 0 and 2.
    FourFloats first[4];
    FourFloats second[4];
    FourFloats third[4];
    for (int j = 0; j < 4; ++j) {
        first[j] = FourFloats{c[4 + j], -c[j], c[j], -c[j]};
        second[j] = FourFloats{c[8 + j], c[8 + j], c[4 + j], c[4 + j]};
        third[j] = FourFloats{c[12 + j], c[12 + j], c[12 + j], c[8 + j]};
    }
    struct Products {
        FourFloats p[6];
    };
    const auto products = [&](int j, int k, int l) -> Products {
        return {{first[j] * second[k] * third[l], first[j] * second[l] * third[k],
                 second[j] * first[k] * third[l], second[j] * first[l] * third[k],
                 third[j] * first[k] * second[l], third[j] * first[l] * second[k]}};
    };
    const auto even = [](const Products& t) { return t.p[0] - t.p[1] - t.p[2] + t.p[3] + t.p[4] - t.p[5]; };
    const auto odd = [](const Products& t) { return t.p[1] - t.p[0] + t.p[2] - t.p[3] - t.p[4] + t.p[5]; };
    return {
        {even(products(1, 2, 3)), odd(products(0, 2, 3)), even(products(0, 1, 3)), odd(products(0, 1, 2))}};
}

ERROR_CODE invalidParameters(LogStatement statement) {
    logError(statement);
    return ERROR_CODE::FAILURE;
}

bool isIndexBelow(int index, unsigned int count) {
    return static_cast<unsigned int>(index) < count;
}

}  // namespace

Matrix4f Matrix4f::operator*(const Vector4<float>& v) const {
    float result[16];
    for (int i = 0; i < 4; ++i) {
        const float* const row = m + 4 * i;
        std::fill_n(result + 4 * i, 4, row[0] * v.x + row[1] * v.y + row[2] * v.z + row[3] * v.w);
    }
    return Matrix4f(result);
}

ERROR_CODE Matrix4f::inverse() {
    Adjugate a = adjugateOf(m);
    const float gate = m[1] * m[1] + m[0] * a.rows[0][0] + m[2] * m[2] + m[3] * m[3];
    if (gate == 0.0F) {
        for (int i = 0; i < 4; ++i) {
            m[4 * i] = a.rows[i][0];
        }
        return ERROR_CODE::FAILURE;
    }
    const float divisor = a.rows[3][3];
    a.rows[3][2] = m[14];  // 0 for a rigid transform, like the adjugate's element
    for (FourFloats& row : a.rows) {
        row /= divisor;
    }
    std::memcpy(m, a.rows, sizeof m);
    return ERROR_CODE::SUCCESS;
}

Matrix4f Matrix4f::inverse(const Matrix4f& matrix) {
    Matrix4f result(matrix);
    result.inverse();
    return result;
}

ERROR_CODE Matrix4f::setSubMatrix3f(Matrix3f sub, int row, int col) {
    if (!isIndexBelow(row, 2) || !isIndexBelow(col, 2))
        return invalidParameters(LogStatement::SET_SUB_MATRIX3F);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            (*this)(row + i, col + j) = sub(i, j);
        }
    }
    return ERROR_CODE::SUCCESS;
}

ERROR_CODE Matrix4f::setSubVector3f(Vector3<float> v, int col) {
    if (!isIndexBelow(col, 4)) return invalidParameters(LogStatement::SET_SUB_VECTOR3F);
    for (int row = 0; row < 3; ++row) {
        (*this)(row, col) = v[static_cast<std::size_t>(row)];
    }
    return ERROR_CODE::SUCCESS;
}

ERROR_CODE Matrix4f::setSubVector4f(Vector4<float> v, int col) {
    if (!isIndexBelow(col, 4)) return invalidParameters(LogStatement::SET_SUB_VECTOR4F);
    for (int row = 0; row < 4; ++row) {
        (*this)(row, col) = v[static_cast<std::size_t>(row)];
    }
    return ERROR_CODE::SUCCESS;
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Matrix3f.hpp"

namespace vela {

void Matrix3f::inverse() {
    const Matrix3f copy(*this);
    const float* const c = copy.m;
    const float determinant = c[0] * (c[4] * c[8] - c[5] * c[7]) + c[1] * (c[5] * c[6] - c[3] * c[8]) +
                              c[2] * (c[3] * c[7] - c[4] * c[6]);
    m[0] = (c[4] * c[8] - c[5] * c[7]) / determinant;
    m[1] = (c[7] * c[2] - c[8] * c[1]) / determinant;
    m[2] = (c[5] * c[1] - c[4] * c[2]) / determinant;
    m[3] = (c[5] * c[6] - c[8] * c[3]) / determinant;
    m[4] = (c[8] * c[0] - c[2] * c[6]) / determinant;
    m[5] = (c[2] * c[3] - c[5] * c[0]) / determinant;
    m[6] = (c[7] * c[3] - c[4] * c[6]) / determinant;
    m[7] = (c[1] * c[6] - c[7] * c[0]) / determinant;
    m[8] = (c[4] * c[0] - c[1] * c[3]) / determinant;
}

Matrix3f Matrix3f::inverse(const Matrix3f& matrix) {
    Matrix3f result(matrix);
    result.inverse();
    return result;
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/SquareMatrix.hpp"

namespace vela VELA_API {

/// 3 x 3 matrix of floats; the identity by default.
class Matrix3f : public SquareMatrix<Matrix3f, 3> {
public:
    using SquareMatrix::SquareMatrix;

    /// Inverts in place: the adjugate (transposed cofactors) divided by the determinant. A singular matrix
    /// becomes infinities and NaNs; nothing is reported.
    void inverse();
    /// Inverse of a copy.
    static Matrix3f inverse(const Matrix3f& matrix);
};

}  // namespace vela

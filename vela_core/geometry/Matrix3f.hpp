#pragma once

#include "vela_core/geometry/SquareMatrix.hpp"

namespace vela {

/// 3 x 3 matrix of floats; the identity by default.
class Matrix3f : public SquareMatrix<Matrix3f, 3> {
public:
    using SquareMatrix::SquareMatrix;

    /// Inverts in place by the adjugate over the determinant. Of a singular matrix it makes infinities and
    /// NaNs.
    void inverse();
    static Matrix3f inverse(const Matrix3f& matrix);
};

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/SquareMatrix.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela VELA_API {

/// 4 x 4 matrix of floats; the identity by default. A rigid transform holds its rotation in the upper-left 3
/// x 3 block, its translation in column 3 of rows 0 to 2, and (0, 0, 0, 1) in row 3.
class Matrix4f : public SquareMatrix<Matrix4f, 4> {
public:
    using SquareMatrix::SquareMatrix;
    using SquareMatrix::operator*;

    /// Row i of the result holds the dot product of row i with v, in all four columns: take any column.
    Matrix4f operator*(const Vector4<float>& v) const;

    /// Inverts in place a matrix whose last row is (0, 0, 0, 1): the adjugate A (transposed cofactors, each
    /// the sum of its six signed products from left to right) divided by A15, the determinant of the
    /// upper-left 3 x 3 block. Element 14 is the old one divided by A15. With another last row the result is
    /// not the inverse. Returns `FAILURE` when the sum c1*c1 + c0*A0 + c2*c2 + c3*c3 is 0, c being the first
    /// row; elements 0, 4, 8 and 12 are then replaced by those of A, the others keep their values. The sum is
    /// the determinant only if c1 = c2 = c3 = 0; other singular matrices rarely make the sum vanish: they
    /// give `SUCCESS` with infinities and NaNs.
    ERROR_CODE inverse();
    /// Inverse of a copy; its status is ignored.
    static Matrix4f inverse(const Matrix4f& matrix);

    /// @name Blocks
    /// With an index out of range they log an error, change nothing and return `FAILURE`.
    /// @{

    /// Writes a 3 x 3 block at rows row to row + 2 and columns col to col + 2; row and col are 0 or 1.
    ERROR_CODE setSubMatrix3f(Matrix3f sub, int row, int col);
    /// Writes v into rows 0 to 2 of column col, 0 to 3.
    ERROR_CODE setSubVector3f(Vector3<float> v, int col);
    /// Writes v into column col, 0 to 3.
    ERROR_CODE setSubVector4f(Vector4<float> v, int col);
    /// @}
};

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/geometry.hpp"

#include <Eigen/Core>

namespace vela::test {

/// The numbers, row by row, of what results are compared with: matrices and vectors in double precision.
template <class Derived>
Numbers numbersOfEigen(const Eigen::DenseBase<Derived>& wide) {
    const Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> rows =
        wide.derived().template cast<float>();
    return Numbers(rows.data(), rows.data() + rows.size());
}

}  // namespace vela::test

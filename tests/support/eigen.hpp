// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/geometry.hpp"

#include <Eigen/Core>

namespace vela::test {

/// The elements, row by row, of an expected matrix or vector in double precision.
template <class Derived>
Numbers numbersOfEigen(const Eigen::DenseBase<Derived>& wide) {
    const Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> rows =
        wide.derived().template cast<float>();
    return Numbers(rows.data(), rows.data() + rows.size());
}

}  // namespace vela::test

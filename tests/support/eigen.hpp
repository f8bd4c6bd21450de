// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/geometry.hpp"

#include <Eigen/Geometry>

namespace vela::test {

/// The elements, row by row, of an expected matrix or vector in double precision.
template <class Derived>
Numbers numbersOfEigen(const Eigen::DenseBase<Derived>& wide) {
    const Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> rows =
        wide.derived().template cast<float>();
    return Numbers(rows.data(), rows.data() + rows.size());
}

inline Eigen::Quaterniond wide(const Orientation& q) {
    return Eigen::Quaterniond(Eigen::Vector4f(q.ox, q.oy, q.oz, q.ow).cast<double>());
}
inline Eigen::Vector3d wide(const Translation& t) {
    return Eigen::Vector3f(t.tx, t.ty, t.tz).cast<double>();
}

/// Axes of several lengths.
inline const Translation AXES[] = {{1, 0, 0},  {0, -2, 0},   {0, 0, 0.1F},
                                   {1, -2, 2}, {4, 1, 0.5F}, {-0.3F, 2, 0.9F}};

}  // namespace vela::test

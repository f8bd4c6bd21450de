// SPDX-License-Identifier: Apache-2.0
#pragma once

// Needs Eigen 3.4 in the program that includes it; link vela::eigen. The library's matrices and pixels are
// mapped and never cast: Eigen's own fixed-size types require a larger alignment.

#include "vela_core/geometry/Transform.hpp"
#include "vela_core/utils/Mat.hpp"

#include <Eigen/Geometry>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vela::interop {

/// A square matrix of ours as a writable Eigen expression.
template <int N>
using EigenMap = Eigen::Map<Eigen::Matrix<float, N, N, Eigen::RowMajor>>;
/// A square matrix of ours as a constant Eigen expression.
template <int N>
using ConstEigenMap = Eigen::Map<const Eigen::Matrix<float, N, N, Eigen::RowMajor>>;

/// The numbers of a matrix, rotation or transform as an Eigen expression: no copy, row-major, writable unless
/// the matrix is const. The matrix must outlive the map; a temporary is refused at compile time.
///
///     map(rotation) *= Eigen::AngleAxisf(0.1F, Eigen::Vector3f::UnitZ()).matrix();
inline EigenMap<4> map(Matrix4f& matrix) {
    return EigenMap<4>(matrix.m);
}
/// @overload
inline ConstEigenMap<4> map(const Matrix4f& matrix) {
    return ConstEigenMap<4>(matrix.m);
}
/// @overload
inline EigenMap<3> map(Matrix3f& matrix) {
    return EigenMap<3>(matrix.m);
}
/// @overload
inline ConstEigenMap<3> map(const Matrix3f& matrix) {
    return ConstEigenMap<3>(matrix.m);
}
void map(const Matrix4f&& temporary) = delete;
void map(const Matrix3f&& temporary) = delete;

// Copies between values of the same meaning. Eigen's constructor of a quaternion takes w first, its storage
// and ours hold x, y, z, w. A `Rotation` is exchanged by `map`.

/// The same quaternion; it is not normalised.
inline Eigen::Quaternionf toEigen(const Orientation& q) {
    return {q.ow, q.ox, q.oy, q.oz};
}
/// The same quaternion; it is not normalised.
inline Orientation fromEigen(const Eigen::Quaternionf& q) {
    return {Vector4<float>(q.x(), q.y(), q.z(), q.w())};
}
/// The same vector.
inline Eigen::Vector3f toEigen(const Translation& t) {
    return {t.tx, t.ty, t.tz};
}
/// The same vector.
inline Translation fromEigen(const Eigen::Vector3f& v) {
    return {v.x(), v.y(), v.z()};
}
void toEigen(const Matrix3f& rotation) = delete;

/// Rotation block and translation; the last row of the result is (0, 0, 0, 1), whatever it is in `t`.
///
///     const Eigen::Vector3f moved = toEigen(pose) * Eigen::Vector3f(1, 0, 0);
inline Eigen::Isometry3f toEigen(const Transform& t) {
    Eigen::Isometry3f result = Eigen::Isometry3f::Identity();
    result.affine() = map(t).topRows<3>();
    return result;
}
/// Rotation block and translation; row 3 is (0, 0, 0, 1).
inline Transform fromEigen(const Eigen::Isometry3f& t) {
    Transform result;
    map(result).topRows<3>() = t.affine();
    return result;
}

namespace detail {
template <class M>
using FloatOf = std::conditional_t<std::is_const_v<M>, const float, float>;

/// The host side as floats; null where there is none or it is not aligned for them.
template <class M>
FloatOf<M>* hostFloats(M& mat) {
    const bool aligned = reinterpret_cast<std::uintptr_t>(mat.ptrCPU) % alignof(float) == 0 &&
                         mat.stepBytesCPU % sizeof(float) == 0;
    return mat.isOnHost() && aligned ? reinterpret_cast<FloatOf<M>*>(mat.ptrCPU) : nullptr;
}
}  // namespace detail

/// Points as columns: 3 x (width * height).
template <class M>
using PointsMap =
    Eigen::Map<std::conditional_t<std::is_const_v<M>, const Eigen::Matrix<float, 3, Eigen::Dynamic>,
                                  Eigen::Matrix<float, 3, Eigen::Dynamic>>,
               Eigen::Unaligned, Eigen::OuterStride<>>;

/// The points of a packed cloud, `MAT_32F_C3` or `MAT_32F_C4`, row by row: no copy; the fourth float, the
/// packed colour, is skipped. Without columns for another type, no host buffer, or rows that are not
/// packed. The cloud must outlive the map; a temporary is refused at compile time.
///
///     mapPoints(cloud) = (toEigen(pose) * mapPoints(cloud)).eval();
template <class M, class = std::enable_if_t<std::is_same_v<std::remove_const_t<M>, Mat>>>
PointsMap<M> mapPoints(M& cloud) {
    const bool isCloud = cloud.dataType == MAT_TYPE::MAT_32F_C3 || cloud.dataType == MAT_TYPE::MAT_32F_C4;
    const bool packed = cloud.height <= 1 || cloud.stepBytesCPU == cloud.width * cloud.pixelBytes;
    auto* const data = isCloud && packed ? detail::hostFloats(cloud) : nullptr;
    return {data, 3, data == nullptr ? 0 : static_cast<Eigen::Index>(cloud.width * cloud.height),
            Eigen::OuterStride<>(data == nullptr ? 3 : static_cast<Eigen::Index>(cloud.channels))};
}
template <class M, class = std::enable_if_t<std::is_same_v<M, Mat>>>
void mapPoints(const M&& temporary) = delete;

/// A one-channel float image: height x width, row-major.
template <class M>
using ImageMap =
    Eigen::Map<std::conditional_t<std::is_const_v<M>,
                                  const Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>,
                                  Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>,
               Eigen::Unaligned, Eigen::OuterStride<>>;

/// A depth map or other `MAT_32F_C1` image: no copy, with the image's row step. Of size 0 x 0 for another
/// type or no host buffer. The image must outlive the map; a temporary is refused at compile time.
///
///     const float nearest = mapImage(depth).minCoeff();
template <class M, class = std::enable_if_t<std::is_same_v<std::remove_const_t<M>, Mat>>>
ImageMap<M> mapImage(M& image) {
    auto* const data = image.dataType == MAT_TYPE::MAT_32F_C1 ? detail::hostFloats(image) : nullptr;
    if (data == nullptr) return {nullptr, 0, 0, Eigen::OuterStride<>(0)};
    return {data, static_cast<Eigen::Index>(image.height), static_cast<Eigen::Index>(image.width),
            Eigen::OuterStride<>(static_cast<Eigen::Index>(image.stepBytesCPU / sizeof(float)))};
}
template <class M, class = std::enable_if_t<std::is_same_v<M, Mat>>>
void mapImage(const M&& temporary) = delete;

}  // namespace vela::interop

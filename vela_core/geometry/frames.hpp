// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Axis convention of positions and orientations.
enum class COORDINATE_SYSTEM : std::int32_t {
    IMAGE = 0,                             ///< the camera's own frame: X right, Y down, Z forward
    LEFT_HANDED_Y_UP_AND_Z_FORWARD = 1,    ///< X right, Y up, Z forward
    RIGHT_HANDED_Y_UP_AND_Z_BACKWARD = 2,  ///< X right, Y up, Z backward
    RIGHT_HANDED_Z_UP_AND_Y_FORWARD = 3,   ///< X right, Y forward, Z up
    LEFT_HANDED_Z_UP_AND_X_FORWARD = 4,    ///< X forward, Y right, Z up
    RIGHT_HANDED_Z_UP_AND_X_FORWARD = 5,   ///< X forward, Y left, Z up
};

/// The display name, such as "Right HANDED Y UP and Z BACKWARD"; "Unknown" for a value without enumerator.
String toString(const COORDINATE_SYSTEM& value);

/// The matrix that maps coordinates in convention `from` to `to`: F(to)^-1 F(from), where F(c) maps
/// coordinates in c to `IMAGE` coordinates. A signed permutation of axes without translation. Values without
/// enumerator count as `IMAGE`.
Matrix4f getCoordinateTransformConversion4f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to);

/// The upper-left 3 x 3 block of `getCoordinateTransformConversion4f`.
Matrix3f getCoordinateTransformConversion3f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to);

/// Expresses a transform, rotation and translation, in another axis convention: K t K^-1 with the matrix K of
/// `getCoordinateTransformConversion4f`. The label stays.
/// Returns `SUCCESS` without arithmetic for equal conventions, and `INVALID_COORDINATE_SYSTEM` without a
/// change for a value above the last. Negative values count as `IMAGE`.
ERROR_CODE convertCoordinateSystem(Transform& transform, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to);

}  // namespace vela

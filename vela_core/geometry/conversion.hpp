#pragma once

#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/Frames.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela {

/// The matrix that maps a point expressed in convention `from` into `to`; its translation is 0. Values
/// without enumerator count as `IMAGE`.
Matrix4f getCoordinateTransformConversion4f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to);

/// The upper-left 3 x 3 block of `getCoordinateTransformConversion4f`.
Matrix3f getCoordinateTransformConversion3f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to);

/// The factor that turns a length in `from` into the length in `to`; exactly 1 for equal units.
float getUnitScale(UNIT from, UNIT to);

/// Moves a transform, rotation and translation, into another axis convention: K t K^-1.
/// `INVALID_COORDINATE_SYSTEM`, without a change, for a value above the last; negative values count as
/// `IMAGE`.
ERROR_CODE convertCoordinateSystem(Transform& transform, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to);

/// Scales the translation from one unit to another.
/// `INVALID_FUNCTION_PARAMETERS`, without a change, for a value above the last.
ERROR_CODE convertUnit(Transform& transform, UNIT from, UNIT to);

/// Turns the rotation of a transform in convention `system` about the vertical so that it faces the `IMAGE`
/// frame's Z axis: pitch and roll stay, the translation too. The heading is that of the forward axis, or of
/// the up or down axis when forward is closer to the vertical than asin(0.8). Doing it twice changes nothing
/// more. `INVALID_COORDINATE_SYSTEM`, without a change, for a value above the last.
ERROR_CODE removeYaw(Transform& transform, COORDINATE_SYSTEM system);

/// The rotation that carries the unit vector `reference` onto the direction of the measured `gravity`:
/// I - [v] + [v]^2 (1 - c) / |v|^2 with v = u x reference, c = u . reference and u = gravity / |gravity|.
/// Parallel and opposite directions fill it with NaN or infinity.
Rotation computeRotationMatrixFromGravity(Vector3<float> gravity, Vector3<float> reference);

}  // namespace vela

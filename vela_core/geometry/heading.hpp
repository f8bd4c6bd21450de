// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/geometry/frames.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/Vector.hpp"

namespace vela VELA_API {

/// Removes the yaw of a transform in convention `system`: turns its rotation about the vertical so that it
/// faces the `IMAGE` frame's Z axis. Pitch and roll stay. The heading is the horizontal part of the forward
/// axis, or of the up or down axis where the vertical component of the forward axis exceeds 0.8 (53.13
/// degrees). A second call changes nothing. The rest of the transform keeps its bits and does not affect the
/// rotation. Returns `INVALID_COORDINATE_SYSTEM` without a change for a value above the last.
ERROR_CODE removeYaw(Transform& transform, COORDINATE_SYSTEM system);

/// The rotation that maps the unit vector `reference` to the direction of the measured `gravity`:
/// I - [v] + [v]^2 (1 - c) / |v|^2 with v = u x reference, c = u . reference, u = gravity / |gravity|, and
/// the skew matrix [v] of the cross product (Rodrigues' formula for the angle between both, transposed).
/// `gravity` may have any length; `reference` is not normalised. Parallel and opposite directions fill the
/// matrix with NaN or infinity.
Rotation computeRotationMatrixFromGravity(Vector3<float> gravity, Vector3<float> reference);

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/BodyParts.hpp"

#include <utility>
#include <vector>

namespace vela VELA_API {

/// The bones of a `POSE_18` skeleton: 19 pairs of keypoints, in an order that drawing code relies on.
/// Built before a program's own globals and destroyed after them.
extern const std::vector<std::pair<BODY_PARTS, BODY_PARTS>> BODY_BONES;

/// The bones of a `POSE_34` skeleton: 35 pairs of keypoints, in an order that drawing code relies on.
/// Built before a program's own globals and destroyed after them.
extern const std::vector<std::pair<BODY_PARTS_POSE_34, BODY_PARTS_POSE_34>> BODY_BONES_POSE_34;

}  // namespace vela

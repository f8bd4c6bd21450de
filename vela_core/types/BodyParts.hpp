// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Layout of a skeleton.
enum class BODY_FORMAT : std::int32_t {
    POSE_18 = 0,  ///< 18 keypoints, `BODY_PARTS`
    POSE_34 = 1,  ///< 34 keypoints, `BODY_PARTS_POSE_34`
};

/// Keypoint of a `POSE_18` skeleton; left and right are the person's own.
enum class BODY_PARTS : std::int32_t {
    NOSE = 0,
    NECK = 1,
    RIGHT_SHOULDER = 2,
    RIGHT_ELBOW = 3,
    RIGHT_WRIST = 4,
    LEFT_SHOULDER = 5,
    LEFT_ELBOW = 6,
    LEFT_WRIST = 7,
    RIGHT_HIP = 8,
    RIGHT_KNEE = 9,
    RIGHT_ANKLE = 10,
    LEFT_HIP = 11,
    LEFT_KNEE = 12,
    LEFT_ANKLE = 13,
    RIGHT_EYE = 14,
    LEFT_EYE = 15,
    RIGHT_EAR = 16,
    LEFT_EAR = 17,
};

/// Keypoint of a `POSE_34` skeleton; left and right are the person's own.
enum class BODY_PARTS_POSE_34 : std::int32_t {
    PELVIS = 0,
    LOWER_SPINE = 1,
    UPPER_SPINE = 2,
    NECK = 3,
    LEFT_COLLAR = 4,
    LEFT_SHOULDER = 5,
    LEFT_ELBOW = 6,
    LEFT_WRIST = 7,
    LEFT_PALM = 8,
    LEFT_FINGERTIP = 9,
    LEFT_THUMB = 10,
    RIGHT_COLLAR = 11,
    RIGHT_SHOULDER = 12,
    RIGHT_ELBOW = 13,
    RIGHT_WRIST = 14,
    RIGHT_PALM = 15,
    RIGHT_FINGERTIP = 16,
    RIGHT_THUMB = 17,
    LEFT_HIP = 18,
    LEFT_KNEE = 19,
    LEFT_ANKLE = 20,
    LEFT_TOE = 21,
    RIGHT_HIP = 22,
    RIGHT_KNEE = 23,
    RIGHT_ANKLE = 24,
    RIGHT_TOE = 25,
    HEAD = 26,
    NOSE = 27,
    LEFT_EYE = 28,
    LEFT_EAR = 29,
    RIGHT_EYE = 30,
    RIGHT_EAR = 31,
    LEFT_HEEL = 32,
    RIGHT_HEEL = 33,
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const BODY_FORMAT& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const BODY_PARTS& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const BODY_PARTS_POSE_34& value);

}  // namespace vela

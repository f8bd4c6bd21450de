// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Tracking state of an object.
enum class OBJECT_TRACKING_STATE : std::int32_t {
    OFF = 0,        ///< not tracked
    OK = 1,         ///< seen in this frame
    SEARCHING = 2,  ///< not seen in this frame; its position is predicted
    TERMINATE = 3,  ///< given up; this is the last frame with it
};

/// Whether a tracked object moves.
enum class OBJECT_ACTION_STATE : std::int32_t {
    IDLE = 0,    ///< at rest
    MOVING = 1,  ///< moving
};

/// How overlapping detections are filtered.
enum class OBJECT_FILTERING_MODE : std::int32_t {
    NONE = 0,    ///< all are kept
    NMS_3D = 1,  ///< non-maximum suppression: of those that overlap in space, the most confident
};

/// Network that detects objects; the numbers are in no order of speed or accuracy.
enum class DETECTION_MODEL : std::int32_t {
    MULTI_CLASS_BOX_FAST = 0,
    MULTI_CLASS_BOX_ACCURATE = 1,
    HUMAN_BODY_FAST = 2,
    HUMAN_BODY_ACCURATE = 3,
    MULTI_CLASS_BOX_MEDIUM = 4,
    HUMAN_BODY_MEDIUM = 5,
    PERSON_HEAD_BOX_FAST = 6,
    PERSON_HEAD_BOX_ACCURATE = 7,
    CUSTOM_BOX_OBJECTS = 8,  ///< none: the user supplies `CustomBoxObjectData`
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const OBJECT_TRACKING_STATE& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const OBJECT_ACTION_STATE& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const OBJECT_FILTERING_MODE& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const DETECTION_MODEL& value);

}  // namespace vela

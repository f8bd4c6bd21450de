// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// State of the tracking of an object.
enum class OBJECT_TRACKING_STATE : std::int32_t {
    OFF = 0,        ///< not tracked
    OK = 1,         ///< seen in this frame
    SEARCHING = 2,  ///< not seen in this frame; its place is predicted
    TERMINATE = 3,  ///< given up; this is the last frame with it
};

/// Whether a tracked object moves.
enum class OBJECT_ACTION_STATE : std::int32_t {
    IDLE = 0,    ///< stands still
    MOVING = 1,  ///< moves in the world
};

/// How overlapping detections are thinned out.
enum class OBJECT_FILTERING_MODE : std::int32_t {
    NONE = 0,
    NMS_3D = 1,  ///< the best of those that overlap in space
};

/// Network that detects objects; the numbers follow no order of speed or accuracy.
enum class DETECTION_MODEL : std::int32_t {
    MULTI_CLASS_BOX_FAST = 0,
    MULTI_CLASS_BOX_ACCURATE = 1,
    HUMAN_BODY_FAST = 2,
    HUMAN_BODY_ACCURATE = 3,
    MULTI_CLASS_BOX_MEDIUM = 4,
    HUMAN_BODY_MEDIUM = 5,
    PERSON_HEAD_BOX_FAST = 6,
    PERSON_HEAD_BOX_ACCURATE = 7,
    CUSTOM_BOX_OBJECTS = 8,
};

/// @{ The display name; "Unknown" for a value without enumerator.
String toString(const OBJECT_TRACKING_STATE& value);
String toString(const OBJECT_ACTION_STATE& value);
String toString(const OBJECT_FILTERING_MODE& value);
String toString(const DETECTION_MODEL& value);
/// @}

}  // namespace vela

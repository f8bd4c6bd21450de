// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/Detection.hpp"
#include "vela_core/types/ObjectClass.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstdint>
#include <vector>

namespace vela VELA_API {

/// A detection that the user supplies; each one made gets a fresh identifier.
struct CustomBoxObjectData {
    String unique_id;
    std::vector<Vector2<std::uint32_t>>
        box_corners;        ///< four, in pixels, clockwise from the top left; all (0, 0) at first
    int class_label = -1;   ///< the user's own
    float score = 0.0F;     ///< the user's own detector's, 0 to 1
    bool on_ground = true;  ///< whether the object moves on the ground only

    /// Draws its identifier from `uuid::gen`: calls from several threads must be serialised by the caller.
    CustomBoxObjectData();
};

/// A detected object. Lengths are in the unit, and axes those of the frame, that the application asked for.
/// Vectors are empty, numbers 0 at first, unless said otherwise.
struct ObjectData {
    int id = -1;       ///< of the tracking; the same object keeps it from frame to frame
    String unique_id;  ///< the same as long as the object is tracked; empty at first
    OBJECT_CLASS label = OBJECT_CLASS::PERSON;
    OBJECT_SUBCLASS sublabel = OBJECT_SUBCLASS::PERSON;
    OBJECT_TRACKING_STATE tracking_state = OBJECT_TRACKING_STATE::OFF;
    OBJECT_ACTION_STATE action_state = OBJECT_ACTION_STATE::IDLE;
    float confidence = 0.0F;            ///< 0 to 100
    Vector3<float> position;            ///< of the centre
    float position_covariance[6] = {};  ///< xx, xy, xz, yy, yz, zz in squared length units
    Vector3<float> velocity;            ///< of the centre, in length units per second
    Vector3<float> dimensions;          ///< width, height, length
    Mat mask;                           ///< inside the 2-D box, 255 on the object; copies refer to its pixels
    std::vector<Vector2<std::uint32_t>>
        bounding_box_2d;                       ///< four corners, in pixels, clockwise from the top left
    std::vector<Vector3<float>> bounding_box;  ///< eight corners, the four of the upper face first
    std::vector<Vector2<float>> keypoint_2d;   ///< of a skeleton, in pixels, in the order of its format
    std::vector<Vector3<float>> keypoint;      ///< of a skeleton, in the order of its format
};

/// The objects of one frame.
struct Objects {
    std::vector<ObjectData> list;  ///< in the order of detection

    /// Copies the first object with the given id into `object`, whose mask then refers to that object's
    /// pixels. False, without a change, when there is none.
    bool getObjectDataFromId(ObjectData& object, int id) const;
};

}  // namespace vela

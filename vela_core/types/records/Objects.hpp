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

/// A detection that the user supplies. The library carries these values and checks none of them.
struct CustomBoxObjectData {
    String unique_id;  ///< fresh for each object made by the constructor; copies keep it
    /// Four corners in pixels (column, row), clockwise from the top left, an order that is this library's
    /// convention; all (0, 0) at first.
    std::vector<Vector2<std::uint32_t>> box_corners;
    int class_label = -1;   ///< label chosen by the user
    float score = 0.0F;     ///< confidence of the user's detector, 0 to 1
    bool on_ground = true;  ///< whether the object moves on the ground only

    /// Draws the identifier from `uuid::gen`: callers on several threads must serialise these calls.
    CustomBoxObjectData();
};

/// A detected object. The detector fills it; the library carries it and neither checks nor converts it.
/// Lengths are in the unit, and coordinates in the axis convention, that the application asked the detector
/// for. The orders given here are this library's conventions. Vectors are empty and numbers 0 at first,
/// unless said otherwise.
struct ObjectData {
    int id = -1;       ///< tracking number; the same object keeps it from frame to frame
    String unique_id;  ///< identifier, kept as long as the object is tracked; empty at first
    OBJECT_CLASS label = OBJECT_CLASS::PERSON;                          ///< coarse class
    OBJECT_SUBCLASS sublabel = OBJECT_SUBCLASS::PERSON;                 ///< fine class
    OBJECT_TRACKING_STATE tracking_state = OBJECT_TRACKING_STATE::OFF;  ///< whether it was seen in this frame
    OBJECT_ACTION_STATE action_state = OBJECT_ACTION_STATE::IDLE;       ///< whether it moves
    float confidence = 0.0F;                                            ///< 0 (none) to 100 (certain)
    Vector3<float> position;                                            ///< centre of the object
    float position_covariance[6] = {};  ///< of `position`: xx, xy, xz, yy, yz, zz in squared length units
    Vector3<float> velocity;            ///< of the centre, in length units per second
    Vector3<float> dimensions;          ///< width, height, length
    /// `MAT_8U_C1` image of the 2-D box, 255 on the object; copies of the record refer to the same pixels.
    Mat mask;
    /// Four corners in pixels (column, row), clockwise from the top left.
    std::vector<Vector2<std::uint32_t>> bounding_box_2d;
    /// Eight corners: the four of the upper face, then those below them in the same order.
    std::vector<Vector3<float>> bounding_box;
    std::vector<Vector2<float>>
        keypoint_2d;  ///< keypoints in pixels (column, row), in the order of the body format
    std::vector<Vector3<float>> keypoint;  ///< keypoints in space, in the order of the body format
};

/// The objects of one frame.
struct Objects {
    std::vector<ObjectData> list;  ///< in the order of detection

    /// Copies the first object with the given id into `object`, whose mask then refers to that object's
    /// pixels. Returns false and changes nothing when there is none.
    bool getObjectDataFromId(ObjectData& object, int id) const;
};

}  // namespace vela

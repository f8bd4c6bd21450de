#pragma once

#include <cstdint>
#include <vector>

namespace vela {

/// Coarse class of a detected object.
enum class OBJECT_CLASS : std::int32_t {
    PERSON = 0,
    VEHICLE = 1,
    BAG = 2,
    ANIMAL = 3,
    ELECTRONICS = 4,
    FRUIT_VEGETABLE = 5,
    SPORT = 6,
};

/// Fine class of a detected object.
enum class OBJECT_SUBCLASS : std::int32_t {
    PERSON = 0,
    BICYCLE = 1,
    CAR = 2,
    MOTORBIKE = 3,
    BUS = 4,
    TRUCK = 5,
    BOAT = 6,
    BACKPACK = 7,
    HANDBAG = 8,
    SUITCASE = 9,
    BIRD = 10,
    CAT = 11,
    DOG = 12,
    HORSE = 13,
    SHEEP = 14,
    COW = 15,
    CELLPHONE = 16,
    LAPTOP = 17,
    BANANA = 18,
    APPLE = 19,
    ORANGE = 20,
    CARROT = 21,
    PERSON_HEAD = 22,
    SPORTSBALL = 23,
};

/// State of the tracking of an object.
enum class OBJECT_TRACKING_STATE : std::int32_t {
    OFF = 0,
    OK = 1,
    SEARCHING = 2,
    TERMINATE = 3,
};

/// Whether a tracked object moves.
enum class OBJECT_ACTION_STATE : std::int32_t {
    IDLE = 0,
    MOVING = 1,
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

/// Layout of a skeleton.
enum class BODY_FORMAT : std::int32_t {
    POSE_18 = 0,  ///< keypoints are `BODY_PARTS`
    POSE_34 = 1,  ///< keypoints are `BODY_PARTS_POSE_34`
};

/// Keypoint of a skeleton of `POSE_18`; sides are the person's own.
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

/// Keypoint of a skeleton of `POSE_34`; sides are the person's own.
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

/// The class that a sub-class belongs to. For a value without enumerator it says so on standard output and
/// returns 7, a class without enumerator.
OBJECT_CLASS getObjectClass(OBJECT_SUBCLASS subclass);

/// The sub-classes of a class, in the order of their values; none for a value without enumerator.
std::vector<OBJECT_SUBCLASS> getObjectSubClasses(OBJECT_CLASS objectClass);

}  // namespace vela

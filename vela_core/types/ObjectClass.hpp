// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>
#include <vector>

namespace vela VELA_API {

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

/// The display name; "Unknown" for a value without enumerator.
String toString(const OBJECT_CLASS& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const OBJECT_SUBCLASS& value);

/// The class of a sub-class. For a value without enumerator, prints a line on standard output and returns 7,
/// a class without enumerator.
OBJECT_CLASS getObjectClass(OBJECT_SUBCLASS subclass);

/// The sub-classes of a class, in the order of their values; none for a value without enumerator.
std::vector<OBJECT_SUBCLASS> getObjectSubClasses(OBJECT_CLASS objectClass);

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/ObjectClass.hpp"
#include "vela_core/types/detail/enum_table.hpp"

#include <cstdio>

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<OBJECT_CLASS> CLASSES[] = {
    {OBJECT_CLASS::PERSON, "Person"},
    {OBJECT_CLASS::VEHICLE, "Vehicle"},
    {OBJECT_CLASS::BAG, "Bag"},
    {OBJECT_CLASS::ANIMAL, "Animal"},
    {OBJECT_CLASS::ELECTRONICS, "Electronics"},
    {OBJECT_CLASS::FRUIT_VEGETABLE, "Fruit-Vegetable"},
    {OBJECT_CLASS::SPORT, "Sport"},
};

constexpr auto INVALID_CLASS = fromValue<OBJECT_CLASS>(7);

struct SubClass {
    OBJECT_SUBCLASS value;
    const char* name;
    OBJECT_CLASS objectClass;
};

// In the order of the values, which is also the order in which the sub-classes of a class are listed.
constexpr SubClass SUBCLASSES[] = {
    {OBJECT_SUBCLASS::PERSON, "Person", OBJECT_CLASS::PERSON},
    {OBJECT_SUBCLASS::BICYCLE, "Bicycle", OBJECT_CLASS::VEHICLE},
    {OBJECT_SUBCLASS::CAR, "Car", OBJECT_CLASS::VEHICLE},
    {OBJECT_SUBCLASS::MOTORBIKE, "Motorbike", OBJECT_CLASS::VEHICLE},
    {OBJECT_SUBCLASS::BUS, "Bus", OBJECT_CLASS::VEHICLE},
    {OBJECT_SUBCLASS::TRUCK, "Truck", OBJECT_CLASS::VEHICLE},
    {OBJECT_SUBCLASS::BOAT, "Boat", OBJECT_CLASS::VEHICLE},
    {OBJECT_SUBCLASS::BACKPACK, "Backpack", OBJECT_CLASS::BAG},
    {OBJECT_SUBCLASS::HANDBAG, "Handbag", OBJECT_CLASS::BAG},
    {OBJECT_SUBCLASS::SUITCASE, "Suitcase", OBJECT_CLASS::BAG},
    {OBJECT_SUBCLASS::BIRD, "Bird", OBJECT_CLASS::ANIMAL},
    {OBJECT_SUBCLASS::CAT, "Cat", OBJECT_CLASS::ANIMAL},
    {OBJECT_SUBCLASS::DOG, "Dog", OBJECT_CLASS::ANIMAL},
    {OBJECT_SUBCLASS::HORSE, "Horse", OBJECT_CLASS::ANIMAL},
    {OBJECT_SUBCLASS::SHEEP, "Sheep", OBJECT_CLASS::ANIMAL},
    {OBJECT_SUBCLASS::COW, "Cow", OBJECT_CLASS::ANIMAL},
    {OBJECT_SUBCLASS::CELLPHONE, "CellPhone", OBJECT_CLASS::ELECTRONICS},
    {OBJECT_SUBCLASS::LAPTOP, "Laptop", OBJECT_CLASS::ELECTRONICS},
    {OBJECT_SUBCLASS::BANANA, "Banana", OBJECT_CLASS::FRUIT_VEGETABLE},
    {OBJECT_SUBCLASS::APPLE, "Apple", OBJECT_CLASS::FRUIT_VEGETABLE},
    {OBJECT_SUBCLASS::ORANGE, "Orange", OBJECT_CLASS::FRUIT_VEGETABLE},
    {OBJECT_SUBCLASS::CARROT, "Carrot", OBJECT_CLASS::FRUIT_VEGETABLE},
    {OBJECT_SUBCLASS::PERSON_HEAD, "Person head", OBJECT_CLASS::PERSON},
    {OBJECT_SUBCLASS::SPORTSBALL, "SportsBall", OBJECT_CLASS::SPORT},
};

}  // namespace

String toString(const OBJECT_CLASS& value) {
    return nameIn(CLASSES, value);
}

String toString(const OBJECT_SUBCLASS& value) {
    return nameIn(SUBCLASSES, value);
}

OBJECT_CLASS getObjectClass(OBJECT_SUBCLASS subclass) {
    const SubClass* const found = findIn(SUBCLASSES, subclass);
    if (found != nullptr) return found->objectClass;
    std::printf("[KITE SDK][AI][Core] ERR : INVALID SUBLASS\n");
    std::fflush(stdout);
    return INVALID_CLASS;
}

std::vector<OBJECT_SUBCLASS> getObjectSubClasses(OBJECT_CLASS objectClass) {
    std::vector<OBJECT_SUBCLASS> subclasses;
    for (const SubClass& subclass : SUBCLASSES) {
        if (subclass.objectClass == objectClass) subclasses.push_back(subclass.value);
    }
    return subclasses;
}

}  // namespace vela

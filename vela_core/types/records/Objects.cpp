// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/Objects.hpp"

#include "vela_core/types/records/uuid.hpp"

#include <algorithm>

namespace vela {

CustomBoxObjectData::CustomBoxObjectData() : unique_id(generate_unique_id()), box_corners(4) {}

bool Objects::getObjectDataFromId(ObjectData& object, int id) const {
    const auto found =
        std::find_if(list.begin(), list.end(), [=](const ObjectData& entry) { return entry.id == id; });
    if (found == list.end()) return false;
    object = *found;
    return true;
}

}  // namespace vela

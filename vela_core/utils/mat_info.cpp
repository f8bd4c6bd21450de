// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/types/detail/pixel_types.hpp"
#include "vela_core/types/detail/text_format.hpp"
#include "vela_core/utils/Mat.hpp"

#include <string>

namespace vela {
using namespace detail;
namespace {

/// The type of one channel, followed by a blank; nothing for an unknown pixel type.
std::string elementOf(MAT_TYPE type) {
    const PixelType* const known = rowAt(PIXEL_TYPES, type);
    return known == nullptr ? "" : std::string(known->element) + " ";
}

const char* sidesOf(MEM mem) {
    if (mem == MEM::CPU) return "CPU";
    if (mem == MEM::GPU) return "GPU";
    return mem == MEM_BOTH ? "both CPU and GPU" : "";
}

}  // namespace

String Mat::getInfos() const {
    const std::string label = labelOrAddress(name, this);
    if (!isInit) return label + " vela::Mat not initialised";
    return label +
           formatText(
               " Ts %llu vela::Mat of size [%zu,%zu], with %zu channels of type %sallocated on %s%s.\n",
               timestamp, width, height, channels, elementOf(dataType).c_str(), sidesOf(memType),
               memoryOwner ? " (memory owned)" : " (reference only)");
}

}  // namespace vela

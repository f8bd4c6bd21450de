// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/Memory.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

namespace vela::detail {

// The sides of memory that a MEM value names.

inline bool hasHostSide(MEM mem) {
    return mem == MEM::CPU || mem == MEM_BOTH || mem == MEM_MANAGED;
}

inline bool hasDeviceSide(MEM mem) {
    return mem == MEM::GPU || mem == MEM_BOTH || mem == MEM_MANAGED;
}

// `Mat::free` treats every value above `GPU`, named or not, as both sides.

inline bool coversBothSides(MEM mem) {
    return isPast(mem, MEM::GPU);
}

inline bool coversHostSide(MEM mem) {
    return mem == MEM::CPU || coversBothSides(mem);
}

inline bool coversDeviceSide(MEM mem) {
    return isPast(mem, MEM::CPU);
}

}  // namespace vela::detail

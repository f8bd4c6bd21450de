// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/Memory.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

namespace vela::detail {

// Which sides of memory a MEM value names.

inline bool hasHostSide(MEM mem) {
    return mem == MEM::CPU || mem == MEM_BOTH || mem == MEM_MANAGED;
}

inline bool hasDeviceSide(MEM mem) {
    return mem == MEM::GPU || mem == MEM_BOTH || mem == MEM_MANAGED;
}

// Releasing memory takes every value above `GPU` for both sides, whether it has a name or not.

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

// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/PixelType.hpp"

#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/types/detail/pixel_types.hpp"

namespace vela {
using namespace detail;

String toString(const MAT_TYPE& value) {
    return nameIn(PIXEL_TYPES, value);
}

std::size_t getChannels(MAT_TYPE type) noexcept {
    const PixelType* const known = rowAt(PIXEL_TYPES, type);
    return known == nullptr ? 0 : known->channels;
}

std::size_t getPixelBytes(MAT_TYPE type) noexcept {
    const PixelType* const known = rowAt(PIXEL_TYPES, type);
    return known == nullptr ? 0 : known->bytes;
}

}  // namespace vela

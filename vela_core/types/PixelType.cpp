// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/PixelType.hpp"

#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/types/detail/pixel_types.hpp"

namespace vela {

String toString(const MAT_TYPE& value) {
    return nameIn(detail::PIXEL_TYPES, value);
}

std::size_t getChannels(MAT_TYPE type) noexcept {
    const detail::PixelType* const known = rowAt(detail::PIXEL_TYPES, type);
    return known == nullptr ? 0 : known->channels;
}

std::size_t getPixelBytes(MAT_TYPE type) noexcept {
    const detail::PixelType* const known = rowAt(detail::PIXEL_TYPES, type);
    return known == nullptr ? 0 : known->bytes;
}

}  // namespace vela

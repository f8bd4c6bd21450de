#include "vela_core/types/Memory.hpp"

#include "vela_core/types/detail/enum_cast.hpp"

#include <iterator>

namespace vela {
namespace {

constexpr std::int32_t CHANNELS[] = {1, 2, 3, 4, 1, 2, 3, 4, 1, 4};

}  // namespace

std::size_t getChannels(MAT_TYPE type) noexcept {
    const auto index = static_cast<std::uint32_t>(toValue(type));
    return index < std::size(CHANNELS) ? static_cast<std::size_t>(CHANNELS[index]) : 0;
}

std::size_t getPixelBytes(MAT_TYPE type) noexcept {
    const std::size_t channels = getChannels(type);
    if (type <= MAT_TYPE::MAT_32F_C4) return channels * sizeof(float);
    if (type == MAT_TYPE::MAT_US16_C1) return channels * sizeof(std::uint16_t);
    return channels;
}

}  // namespace vela

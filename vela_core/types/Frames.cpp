#include "vela_core/types/Frames.hpp"

#include "vela_core/types/detail/enum_cast.hpp"

#include <iterator>

namespace vela {
namespace {

constexpr float MILLIMETERS[] = {1.0F, 10.0F, 1000.0F, 25.4F, 304.8F};

}  // namespace

float getScaleMillimeter(UNIT unit) noexcept {
    const auto index = static_cast<std::uint32_t>(toValue(unit));
    return index < std::size(MILLIMETERS) ? MILLIMETERS[index] : 1.0F;
}

}  // namespace vela

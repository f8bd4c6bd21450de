// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Translation.hpp"

#include "vela_core/geometry/Orientation.hpp"

#include <cmath>
#include <ostream>

namespace vela {

void Translation::normalize() {
    const float norm = std::sqrt(tx * tx + ty * ty + tz * tz);
    if (norm > 0.0F) *this = {tx / norm, ty / norm, tz / norm};
}

Translation Translation::normalize(const Translation& translation) {
    Translation result(translation);
    result.normalize();
    return result;
}

Translation Translation::operator*(const Orientation& q) const {
    const float x = q.ox;
    const float y = q.oy;
    const float z = q.oz;
    const float w = q.ow;
    return {tx * (w * w + x * x - y * y - z * z) + 2 * ty * (x * y - w * z) + 2 * tz * (x * z + w * y),
            ty * (w * w - x * x + y * y - z * z) + 2 * tx * (x * y + w * z) + 2 * tz * (y * z - w * x),
            tz * (w * w - x * x - y * y + z * z) + 2 * tx * (x * z - w * y) + 2 * ty * (y * z + w * x)};
}

std::ostream& operator<<(std::ostream& stream, const Translation& t) {
    return stream << '(' << t.tx << ", " << t.ty << ", " << t.tz << ')';
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/number_text.hpp"
#include "vela_io/formats/cloud_formats.hpp"

namespace vela::io::detail {

char* writeThree(char* out, float x, float y, float z, char separator) {
    out = writeShortest(out, x);
    *out++ = separator;
    out = writeShortest(out, y);
    *out++ = separator;
    return writeShortest(out, z);
}

char* writePointText(char* out, const Point& point, const Normal& normal, const CloudHeader& header) {
    out = writeThree(out, point.x, point.y, point.z, header.separator);
    const std::size_t channels = header.color ? (header.alpha ? 4 : 3) : 0;
    for (std::size_t i = 0; i < channels; ++i) {
        *out++ = header.separator;
        out = writeWhole(out, point.color[i]);
    }
    if (header.normals) {
        *out++ = header.separator;
        out = writeThree(out, normal.x, normal.y, normal.z, header.separator);
    }
    *out++ = '\n';
    return out;
}

}  // namespace vela::io::detail

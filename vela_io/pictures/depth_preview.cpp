// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/mats.hpp"
#include "vela_io/pictures/drawing.hpp"
#include "vela_io/pictures/frames.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace vela::io::detail {
namespace {

/// The depth at a pixel; NaN where there is none.
float depthAt(const Mat& depth, std::size_t x, std::size_t y) {
    float value = 0;
    if (depth.dataType == MAT_TYPE::MAT_US16_C1) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, rowOf(depth, y) + 2 * x, sizeof sample);
        value = sample;
    } else {
        std::memcpy(&value, rowOf(depth, y) + 4 * x, sizeof value);
    }
    return std::isfinite(value) && value > 0 ? value : std::numeric_limits<float>::quiet_NaN();
}

/// How many pixels of the picture show one of the depth map, or the other way round; one of the two is 1.
struct Zoom {
    std::size_t repeat = 1;
    std::size_t skip = 1;

    Zoom(const Mat& depth, std::size_t roomWidth, std::size_t roomHeight) {
        skip =
            std::max((depth.width + roomWidth - 1) / roomWidth, (depth.height + roomHeight - 1) / roomHeight);
        if (skip <= 1) repeat = std::min(roomWidth / depth.width, roomHeight / depth.height);
        skip = std::max<std::size_t>(skip, 1);
    }
    std::size_t shown(std::size_t size) const { return (size + skip - 1) / skip * repeat; }
};

Color hatch(std::size_t x, std::size_t y) {
    return (x + y) % 8 < 2 ? Color{150, 152, 156} : Color{205, 207, 208};
}

}  // namespace

Canvas drawDepth(const Mat& depth, const PreviewOptions& options, Result& result) {
    std::vector<float> values;
    values.reserve(depth.width * depth.height);
    for (std::size_t y = 0; y < depth.height; ++y) {
        for (std::size_t x = 0; x < depth.width; ++x) {
            const float value = depthAt(depth, x, y);
            if (!std::isnan(value)) values.push_back(value);
        }
    }
    result.points = depth.width * depth.height;
    result.dropped = result.points - values.size();
    const Range range = colorRange(values, options);

    constexpr std::size_t FRAME = 2 * MARGIN;
    const Zoom zoom(depth, options.width - BAR_WIDTH - FRAME, options.height - 2 * LINE_HEIGHT - FRAME);
    const std::size_t width = zoom.shown(depth.width);
    const std::size_t height = zoom.shown(depth.height);
    constexpr std::size_t LEAST_WIDTH = 280;   // for the text below
    constexpr std::size_t LEAST_HEIGHT = 120;  // for the bar
    Canvas canvas(std::max(width, LEAST_WIDTH) + BAR_WIDTH + FRAME,
                  std::max(height, LEAST_HEIGHT) + 2 * LINE_HEIGHT + FRAME, PAPER);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const float value = depthAt(depth, x / zoom.repeat * zoom.skip, y / zoom.repeat * zoom.skip);
            canvas.set(MARGIN + static_cast<int>(x), MARGIN + static_cast<int>(y),
                       std::isnan(value) ? hatch(x, y) : colorOf(range.share(value)));
        }
    }
    const std::string unit = labelOf(options.unit);
    drawColorBar(canvas, canvas.width() - BAR_WIDTH - MARGIN / 2, MARGIN,
                 std::max(static_cast<int>(height), static_cast<int>(LEAST_HEIGHT)), range,
                 unit.empty() ? "depth" : "depth " + unit);
    const int below = canvas.height() - MARGIN - 2 * LINE_HEIGHT + 8;
    canvas.text(MARGIN, below, std::to_string(depth.width) + " x " + std::to_string(depth.height), INK,
                TEXT_SCALE);
    canvas.text(MARGIN, below + LINE_HEIGHT, grouped(result.dropped) + " without depth", INK, TEXT_SCALE);
    result.written = result.points - result.dropped;
    return canvas;
}

}  // namespace vela::io::detail

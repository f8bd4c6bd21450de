// SPDX-License-Identifier: Apache-2.0
#include "vela_io/pictures/CloudPoints.hpp"
#include "vela_io/pictures/drawing.hpp"
#include "vela_io/pictures/frames.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace vela::io::detail {

PointSample sampleOf(const Mat& cloud) {
    constexpr std::size_t ENOUGH = 100'000;
    const std::size_t every = cloud.width * cloud.height / ENOUGH + 1;
    PointSample sample;
    forEachFinitePoint(cloud, [&](const CloudPoint& point) {
        if (sample.finite++ % every != 0) return;
        for (std::size_t axis = 0; axis < 3; ++axis)
            sample.axes[axis].push_back(point.xyz[axis]);
    });
    return sample;
}

namespace {

/// What points to the right and up in a panel, and away from the viewer.
struct Projection {
    const char* title;
    Direction right;
    Direction up;
    Direction away;
};

Projection projectionOf(CLOUD_VIEW view, const Frame& frame) {
    switch (view) {
        case CLOUD_VIEW::FRONT:
            return {"front", frame.right, frame.up, frame.forward};
        case CLOUD_VIEW::TOP:
            return {"top", frame.right, frame.forward, -frame.up};
        case CLOUD_VIEW::LEFT:
            return {"left", -frame.forward, frame.up, frame.right};
        case CLOUD_VIEW::RIGHT:
            return {"right", frame.forward, frame.up, -frame.right};
        case CLOUD_VIEW::BACK:
            return {"back", -frame.right, frame.up, -frame.forward};
    }
    throw Failure{ERROR_CODE::INVALID_FUNCTION_PARAMETERS, "an unknown view"};
}

/// The part of a picture that one view is drawn in.
struct Panel {
    int x, y, width, height;
};

/// How coordinates become pixels: the same scale on both axes, the shown ranges in the middle.
class Placement {
public:
    Placement(const Panel& panel, const Projection& projection, const Range (&ranges)[3])
        : panel_(panel), projection_(projection) {
        const Range& right = ranges[projection.right.axis];
        const Range& up = ranges[projection.up.axis];
        constexpr double SHOWN = 0.92;  // of the panel, the rest is margin
        pixels_ = SHOWN * std::min(panel.width / right.size(), panel.height / up.size());
        centreRight_ = projection.right.sign * (right.low + right.high) / 2;
        centreUp_ = projection.up.sign * (up.low + up.high) / 2;
    }

    double column(double along) const {
        return panel_.x + panel_.width / 2.0 + (along - centreRight_) * pixels_;
    }
    double row(double along) const { return panel_.y + panel_.height / 2.0 - (along - centreUp_) * pixels_; }

    /// What of the coordinates of an axis can be seen.
    Range seenAlong(bool vertical) const {
        const double half = (vertical ? panel_.height : panel_.width) / (2 * pixels_);
        const Direction direction = vertical ? projection_.up : projection_.right;
        const double centre = direction.sign * (vertical ? centreUp_ : centreRight_);
        return {centre - half, centre + half};
    }

private:
    Panel panel_;
    Projection projection_;
    double pixels_;
    double centreRight_;
    double centreUp_;
};

std::string axisLabel(const Direction& direction, const std::string& unit) {
    const std::string name(1, static_cast<char>('X' + direction.axis));
    return unit.empty() ? name : name + " " + unit;
}

void drawAxes(Canvas& canvas, const Panel& panel, const Projection& projection, const Placement& placement,
              const std::string& unit) {
    const Ticks columns(placement.seenAlong(false), std::max(panel.width / 80, 3));
    for (const double value : columns.values) {
        const auto x = static_cast<int>(placement.column(projection.right.sign * value));
        canvas.fill(x, panel.y, 1, panel.height, GRID);
        canvas.fill(x, panel.y + panel.height, 1, 5, INK);
        const std::string text = columns.text(value);
        canvas.text(x - Canvas::widthOf(text, TEXT_SCALE) / 2, panel.y + panel.height + 8, text, INK,
                    TEXT_SCALE);
    }
    const Ticks rows(placement.seenAlong(true), std::max(panel.height / 70, 2));
    for (const double value : rows.values) {
        const auto y = static_cast<int>(placement.row(projection.up.sign * value));
        canvas.fill(panel.x, y, panel.width, 1, GRID);
        canvas.fill(panel.x - 5, y, 5, 1, INK);
        const std::string text = rows.text(value);
        canvas.text(panel.x - 8 - Canvas::widthOf(text, TEXT_SCALE), y - 7, text, INK, TEXT_SCALE);
    }
    const std::string right = axisLabel(projection.right, unit);
    canvas.text(panel.x + panel.width - Canvas::widthOf(right, TEXT_SCALE),
                panel.y + panel.height + 8 + LINE_HEIGHT, right, INK, TEXT_SCALE);
    canvas.text(panel.x - 8 - Canvas::widthOf(axisLabel(projection.up, unit), TEXT_SCALE),
                panel.y - LINE_HEIGHT, axisLabel(projection.up, unit), INK, TEXT_SCALE);
    canvas.text(panel.x + 8, panel.y - LINE_HEIGHT, projection.title, INK, TEXT_SCALE);
}

/// The nearest point at each pixel of a panel.
class DepthBuffer {
public:
    explicit DepthBuffer(const Panel& panel)
        : panel_(panel),
          away_(static_cast<std::size_t>(panel.width) * static_cast<std::size_t>(panel.height),
                std::numeric_limits<double>::infinity()) {}

    /// Whether a point that far away at (x, y) of the picture lies in the panel, before all others there.
    bool wins(int x, int y, double away) {
        if (!contains(x, y)) return false;
        double& nearest =
            away_[static_cast<std::size_t>(y - panel_.y) * static_cast<std::size_t>(panel_.width) +
                  static_cast<std::size_t>(x - panel_.x)];
        if (!(away < nearest)) return false;
        nearest = away;
        return true;
    }
    bool contains(int x, int y) const {
        return x >= panel_.x && y >= panel_.y && x < panel_.x + panel_.width && y < panel_.y + panel_.height;
    }

private:
    Panel panel_;
    std::vector<double> away_;
};

/// Whether a number fits where pixels are counted.
bool isPixel(double value) {
    return value > -1e6 && value < 1e6;
}

}  // namespace

Canvas drawCloud(const Mat& cloud, const PreviewOptions& options, Result& result) {
    if (options.views.empty() || options.views.size() > 4) refuse("one to four views can be drawn");
    const Frame frame = frameOf(options.axes);
    const COLOR_BY mode =
        options.color.value_or(cloud.dataType == MAT_TYPE::MAT_32F_C4 ? COLOR_BY::RGB : COLOR_BY::DEPTH);
    const Direction shaded = mode == COLOR_BY::HEIGHT ? frame.up : frame.forward;

    PointSample sample = sampleOf(cloud);
    Range ranges[3];
    for (std::size_t axis = 0; axis < 3; ++axis)
        ranges[axis] = rangeWithoutTails(sample.axes[axis], 0.005);
    std::vector<float>& shades = sample.axes[shaded.axis];
    for (float& value : shades)
        value *= static_cast<float>(shaded.sign);
    const Range colors = colorRange(shades, options);
    result.points = cloud.width * cloud.height;
    result.dropped = result.points - sample.finite;

    Canvas canvas(options.width, options.height, PAPER);
    const std::string unit = labelOf(options.unit);
    constexpr int LEFT = 96;  // for the labels of the vertical axis
    const int bar = mode == COLOR_BY::RGB ? 0 : BAR_WIDTH;
    const int count = static_cast<int>(options.views.size());
    const int each = (canvas.width() - bar - MARGIN) / count;
    const int top = MARGIN + 2 * LINE_HEIGHT;
    const int height = canvas.height() - top - MARGIN - 2 * LINE_HEIGHT - 8;
    if (each - LEFT - MARGIN < 40) refuse("the picture is too narrow for so many views");

    std::vector<bool> seen(sample.finite);
    for (int i = 0; i < count; ++i) {
        const Panel panel{i * each + LEFT, top, each - LEFT - MARGIN, height};
        const Projection projection = projectionOf(options.views[static_cast<std::size_t>(i)], frame);
        const Placement placement(panel, projection, ranges);
        drawAxes(canvas, panel, projection, placement, unit);
        DepthBuffer buffer(panel);
        // Few points are drawn larger, so that they can be seen.
        const auto room = static_cast<double>(panel.width) * panel.height;
        const int size =
            std::clamp(static_cast<int>(std::sqrt(room / static_cast<double>(sample.finite + 1)) / 2), 1, 4);
        std::size_t index = 0;
        forEachFinitePoint(cloud, [&](const CloudPoint& point) {
            const std::size_t current = index++;
            const double column = placement.column(projection.right.along(point.xyz));
            const double row = placement.row(projection.up.along(point.xyz));
            if (!isPixel(column) || !isPixel(row)) return;
            const Color color =
                mode == COLOR_BY::RGB ? point.color : colorOf(colors.share(shaded.along(point.xyz)));
            const double away = projection.away.along(point.xyz);
            const int x = static_cast<int>(std::floor(column)) - size / 2;
            const int y = static_cast<int>(std::floor(row)) - size / 2;
            for (int pixel = 0; pixel < size * size; ++pixel) {
                if (!buffer.contains(x + pixel % size, y + pixel / size)) continue;
                seen[current] = true;
                if (buffer.wins(x + pixel % size, y + pixel / size, away)) {
                    canvas.set(x + pixel % size, y + pixel / size, color);
                }
            }
        });
        canvas.frame(panel.x - 1, panel.y - 1, panel.width + 2, panel.height + 2, INK);
    }
    result.written = static_cast<std::size_t>(std::count(seen.begin(), seen.end(), true));

    std::string title = grouped(sample.finite) + " points";
    if (result.dropped > 0) title += ", " + grouped(result.dropped) + " invalid";
    if (result.written < sample.finite) title += ", " + grouped(sample.finite - result.written) + " outside";
    canvas.text(MARGIN, MARGIN, title, INK, TEXT_SCALE);
    if (bar > 0) {
        const std::string label = mode == COLOR_BY::HEIGHT ? "height" : "depth";
        drawColorBar(canvas, canvas.width() - BAR_WIDTH, top - LINE_HEIGHT, height + LINE_HEIGHT, colors,
                     unit.empty() ? label : label + " " + unit);
    }
    return canvas;
}

}  // namespace vela::io::detail

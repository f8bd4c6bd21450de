// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/pictures.hpp"
#include "vela_io/pictures/Canvas.hpp"
#include "vela_io/pictures/scale.hpp"

#include <optional>
#include <string>
#include <vector>

namespace vela::io::detail {

constexpr Color PAPER{250, 250, 248};
constexpr Color INK{40, 42, 48};
constexpr Color GRID{222, 222, 218};
constexpr int TEXT_SCALE = 2;
constexpr int LINE_HEIGHT = Canvas::CELL_HEIGHT * TEXT_SCALE;
constexpr int MARGIN = 12;
/// Of the colour bar with its labels.
constexpr int BAR_WIDTH = 130;

/// Draws a vertical bar of colours with ticks, near end at the bottom, in BAR_WIDTH x `height` pixels.
void drawColorBar(Canvas& canvas, int x, int y, int height, const Range& range, const std::string& label);

/// The range of the colours: from the options, otherwise the values without 2 % at either end.
Range colorRange(std::vector<float>& values, const PreviewOptions& options);

/// "12,345".
std::string grouped(std::size_t number);

Canvas drawDepth(const Mat& depth, const PreviewOptions& options, Result& result);
Canvas drawCloud(const Mat& cloud, const PreviewOptions& options, Result& result);

}  // namespace vela::io::detail

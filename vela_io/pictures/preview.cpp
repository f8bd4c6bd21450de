// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/Failure.hpp"
#include "vela_io/detail/OutputFile.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/pictures/drawing.hpp"
#include "vela_io/pictures/frames.hpp"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace vela::io {
namespace detail {

void drawColorBar(Canvas& canvas, int x, int y, int height, const Range& range, const std::string& label) {
    constexpr int BAR = 18;
    const int top = y + LINE_HEIGHT;
    const int length = height - LINE_HEIGHT;
    const auto rowOf = [&](double value) {
        return top + static_cast<int>(std::lround((length - 1) * (1 - range.share(value))));
    };
    canvas.text(x, y, label, INK, TEXT_SCALE);
    for (int row = 0; row < length; ++row) {
        canvas.fill(x, top + row, BAR, 1, colorOf(1 - static_cast<double>(row) / (length - 1)));
    }
    canvas.frame(x, top, BAR, length, INK);
    const Ticks ticks(range, std::clamp(length / (2 * LINE_HEIGHT), 1, 10));
    for (const double value : ticks.values) {
        const int row = rowOf(value);
        canvas.fill(x + BAR, row, 6, 1, INK);
        const int text = std::clamp(row - 7, top, top + length - 14);
        canvas.text(x + BAR + 10, text, ticks.text(value), INK, TEXT_SCALE);
    }
}

Range colorRange(std::vector<float>& values, const PreviewOptions& options) {
    Range range = rangeWithoutTails(values, 0.02);
    if (options.nearest) range.low = *options.nearest;
    if (options.farthest) range.high = *options.farthest;
    if (!(range.size() > 0) || !std::isfinite(range.size()))
        refuse("the nearest value must be below the farthest");
    return range;
}

std::string grouped(std::size_t number) {
    std::string text = std::to_string(number);
    for (auto i = static_cast<std::ptrdiff_t>(text.size()) - 3; i > 0; i -= 3) {
        text.insert(static_cast<std::size_t>(i), 1, ',');
    }
    return text;
}

}  // namespace detail

using namespace detail;  // NOLINT(google-build-using-namespace): the library's own other half

Result preview(const Mat& mat, const String& path, const PreviewOptions& options) {
    return guarded(path, [&](Result& result) {
        requireHostSide(mat, "the picture");
        constexpr std::size_t LARGEST = 16384;
        if (options.width < 320 || options.height < 200 || options.width > LARGEST ||
            options.height > LARGEST) {
            refuse("the size of a picture runs from 320 x 200 to 16384 x 16384");
        }
        const bool isDepth = mat.dataType == MAT_TYPE::MAT_32F_C1 || mat.dataType == MAT_TYPE::MAT_US16_C1;
        const bool isCloud = mat.dataType == MAT_TYPE::MAT_32F_C3 || mat.dataType == MAT_TYPE::MAT_32F_C4;
        if (!isDepth && !isCloud) refuse("only depth maps and clouds can be drawn");
        if (mat.width == 0 || mat.height == 0) refuse("nothing to draw");
        const std::vector<unsigned char> png =
            (isDepth ? drawDepth(mat, options, result) : drawCloud(mat, options, result)).png();
        OutputFile file(path, {false, &options.progress});
        file.expect(png.size());
        file.append(png.data(), png.size());
        result.bytes = file.finish();
    });
}

}  // namespace vela::io

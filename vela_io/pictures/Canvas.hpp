// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vela::io::detail {

struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

/// A picture of 24-bit colour that is drawn on; what lies outside is not drawn.
class Canvas {
public:
    /// Size of a character cell at scale 1, the gap to the next one included.
    static constexpr int CELL_WIDTH = 6;
    static constexpr int CELL_HEIGHT = 9;

    Canvas(std::size_t width, std::size_t height, Color background);

    int width() const { return width_; }
    int height() const { return height_; }

    void set(int x, int y, Color color);
    void fill(int x, int y, int width, int height, Color color);
    void frame(int x, int y, int width, int height, Color color);
    /// Text in capitals with its top left corner at (x, y); characters without a shape become blanks.
    void text(int x, int y, std::string_view text, Color color, int scale = 1);
    static int widthOf(std::string_view text, int scale = 1) {
        return static_cast<int>(text.size()) * CELL_WIDTH * scale;
    }

    /// The picture as the bytes of a PNG file.
    std::vector<unsigned char> png() const;

private:
    int width_;
    int height_;
    std::vector<Color> pixels_;
};

}  // namespace vela::io::detail

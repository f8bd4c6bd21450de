// SPDX-License-Identifier: Apache-2.0
#include "vela_io/pictures/Canvas.hpp"

#include "vela_io/detail/Failure.hpp"
#include "vela_io/pictures/font.hpp"

#include <png.h>

#include <algorithm>

namespace vela::io::detail {

static_assert(sizeof(Color) == 3, "libpng takes the pixels as they are");

Canvas::Canvas(std::size_t width, std::size_t height, Color background)
    : width_(static_cast<int>(width)),
      height_(static_cast<int>(height)),
      pixels_(width * height, background) {}

void Canvas::set(int x, int y, Color color) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
    pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)] =
        color;
}

void Canvas::fill(int x, int y, int width, int height, Color color) {
    for (int row = y; row < y + height; ++row) {
        for (int column = x; column < x + width; ++column)
            set(column, row, color);
    }
}

void Canvas::frame(int x, int y, int width, int height, Color color) {
    fill(x, y, width, 1, color);
    fill(x, y + height - 1, width, 1, color);
    fill(x, y, 1, height, color);
    fill(x + width - 1, y, 1, height, color);
}

void Canvas::text(int x, int y, std::string_view text, Color color, int scale) {
    for (const char c : text) {
        const Glyph& glyph = glyphOf(c);
        for (int row = 0; row < GLYPH_HEIGHT; ++row) {
            for (int column = 0; column < GLYPH_WIDTH; ++column) {
                if (glyph[static_cast<std::size_t>(row)] >> column & 1U) {
                    fill(x + column * scale, y + row * scale, scale, scale, color);
                }
            }
        }
        x += CELL_WIDTH * scale;
    }
}

std::vector<unsigned char> Canvas::png() const {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width_);
    image.height = static_cast<png_uint_32>(height_);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::vector<unsigned char> file(size);
    if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels_.data(), 0, nullptr) == 0) {
        throw Failure{ERROR_CODE::FAILURE, std::string("libpng: ") + image.message};
    }
    file.resize(size);
    return file;
}

}  // namespace vela::io::detail

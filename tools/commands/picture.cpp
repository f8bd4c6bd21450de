// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/picture.hpp"

#include "tools/commands/commands.hpp"

#include <png.h>

namespace vela::tools {

namespace {

/// libpng's simplified reader, freed at the end.
struct Reader {
    png_image image{};
    std::string path;

    explicit Reader(const std::string& file) : path(file) {
        image.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_file(&image, path.c_str()) == 0) fail();
    }
    ~Reader() { png_image_free(&image); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    [[noreturn]] void fail() const {
        throw Trouble(path + ": not a PNG picture that can be read: " + image.message);
    }
};

std::string sizeText(std::size_t width, std::size_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

}  // namespace

Picture readPicture(const std::string& path, const Mat& depth) {
    Reader reader(path);
    if (reader.image.width != depth.width || reader.image.height != depth.height) {
        throw Trouble(path + ": " + sizeText(reader.image.width, reader.image.height) +
                      " pixels, but the depth map has " + sizeText(depth.width, depth.height));
    }
    reader.image.format = PNG_FORMAT_RGB;
    reader.image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    Picture picture;
    picture.width = depth.width;
    picture.rgb.resize(PNG_IMAGE_SIZE(reader.image));
    const png_color black{0, 0, 0};
    if (png_image_finish_read(&reader.image, &black, picture.rgb.data(), 0, nullptr) == 0) reader.fail();
    return picture;
}

}  // namespace vela::tools

// SPDX-License-Identifier: Apache-2.0
// Portable float maps of one channel. The sign of the third line tells the byte order; nothing tells the
// order of the rows, the bottom one first unless a program has a habit of its own.
#include "vela_io/detail/TextReader.hpp"
#include "vela_io/formats/depth_formats.hpp"

#include <algorithm>
#include <memory>
#include <string>

namespace vela::io::detail {
namespace {

std::size_t placeOf(std::size_t row, const DepthHeader& header) {
    return header.rows == ROW_ORDER::TOP_FIRST ? row : header.height - 1 - row;
}

}  // namespace

void readPfm(InputFile& file, DepthSink& sink) {
    TextReader text(file);
    text.start();
    const std::string magic(text.nextWord());
    if (magic == "PF") failFormat("a picture of three channels is not a depth map");
    if (magic != "Pf") failFormat("not a PFM file");
    DepthHeader header;
    header.sampleBits = 32;
    header.rows = sink.options().rows;
    header.width = text.nextWhole();
    header.height = text.nextWhole();
    const double scale = text.nextDouble();
    if (!(scale != 0)) text.fail("the scale is 0");
    header.encoding = scale < 0 ? ENCODING::BINARY : ENCODING::BINARY_BIG_ENDIAN;
    text.finish();
    file.skip(1);  // one blank or line end
    if (header.width > 0 && header.height > file.left() / sizeof(float) / header.width) {
        failFormat("the file is too short for its " + std::to_string(header.width) + " x " +
                   std::to_string(header.height) + " pixels");
    }
    if (!sink.begin(header)) return;
    const std::size_t rowBytes = header.width * sizeof(float);
    for (std::size_t row = 0; row < header.height; ++row) {
        auto* const out =
            reinterpret_cast<unsigned char*>(sink.floats() + placeOf(row, header) * header.width);
        file.read(out, rowBytes);
        for (std::size_t x = 0; scale > 0 && x < header.width; ++x) {
            std::reverse(out + x * sizeof(float), out + (x + 1) * sizeof(float));
        }
    }
    sink.takeFloats();
}

void writePfm(OutputFile& file, const DepthHeader& header, DepthSource& source) {
    const std::size_t rowBytes = header.width * sizeof(float);
    file.expect(rowBytes * header.height);
    file.append("Pf\n" + std::to_string(header.width) + " " + std::to_string(header.height) + "\n-1.0\n");
    const std::unique_ptr<float[]> row(new float[header.width]);
    for (std::size_t y = 0; y < header.height; ++y) {
        source.floats(placeOf(y, header), row.get());
        file.append(row.get(), rowBytes);
    }
}

}  // namespace vela::io::detail

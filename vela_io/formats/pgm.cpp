// SPDX-License-Identifier: Apache-2.0
// Portable grey maps, plain (P2) and binary (P5), samples big-endian where they have two bytes.
#include "vela_io/detail/TextReader.hpp"
#include "vela_io/detail/comments.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/formats/depth_formats.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace vela::io::detail {
namespace {

/// The header's numbers, with comments between them.
class HeaderParser {
public:
    explicit HeaderParser(TextReader& text) : text_(text) {}

    std::size_t number() {
        for (;;) {
            if (!text_.next()) text_.fail("the header has no end");
            if (*text_.place() != '#') break;
            text_.finish();
            std::string_view line;
            text_.line(line);
            comments_.take(line.substr(1));
            text_.start();
        }
        return text_.nextWhole();
    }
    const Comments& comments() const { return comments_; }

private:
    TextReader& text_;
    Comments comments_;
};

void readText(TextReader& text, std::size_t count, std::size_t largest, std::uint16_t* out) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t sample = text.nextWhole();
        if (sample > largest) text.fail("a sample above the largest");
        out[i] = static_cast<std::uint16_t>(sample);
    }
}

void readBinary(InputFile& file, std::size_t count, std::size_t sampleBytes, std::uint16_t* out) {
    constexpr std::size_t PART = 16384;
    unsigned char bytes[2 * PART];
    while (count > 0) {
        const std::size_t part = std::min(count, PART);
        file.read(bytes, part * sampleBytes);
        for (std::size_t i = 0; i < part; ++i) {
            const int sample = sampleBytes == 1 ? bytes[i] : bytes[2 * i] * 256 + bytes[2 * i + 1];
            out[i] = static_cast<std::uint16_t>(sample);
        }
        out += part;
        count -= part;
    }
}

}  // namespace

void readPgm(InputFile& file, DepthSink& sink) {
    TextReader text(file);
    char magic[2];
    file.read(magic, sizeof magic);
    const bool plain = magic[1] == '2';
    if (magic[0] != 'P' || (!plain && magic[1] != '5')) failFormat("not a PGM file");
    text.start();
    HeaderParser parser(text);
    DepthHeader header;
    header.encoding = plain ? ENCODING::ASCII : ENCODING::BINARY;
    header.width = parser.number();
    header.height = parser.number();
    const std::size_t largest = parser.number();
    if (largest == 0 || largest > LARGEST_SAMPLE) text.fail("an impossible largest sample");
    header.sampleBits = largest < 256 ? 8 : 16;
    parser.comments().describe(header);
    const std::size_t sampleBytes = largest < 256 ? 1 : 2;
    text.finish();
    if (!plain) file.skip(1);  // one blank or line end
    const std::size_t most = plain ? (file.left() + 1) / 2 : file.left() / sampleBytes;
    if (header.width > 0 && header.height > most / header.width) {
        failFormat("the file is too short for its " + std::to_string(header.width) + " x " +
                   std::to_string(header.height) + " pixels");
    }
    if (!sink.begin(header)) return;
    if (plain) {
        text.start();
        readText(text, sink.pixels(), largest, sink.samples());
    } else {
        readBinary(file, sink.pixels(), sampleBytes, sink.samples());
    }
    sink.takeSamples();
}

void writePgm(OutputFile& file, const DepthHeader& header, DepthSource& source) {
    const bool plain = header.encoding == ENCODING::ASCII;
    if (!plain) file.expect(header.width * header.height * sizeof(std::uint16_t));
    std::string text = plain ? "P2\n" : "P5\n";
    for (const std::string& comment : commentsOf(header)) {
        text += "# " + comment + "\n";
    }
    file.append(text + std::to_string(header.width) + " " + std::to_string(header.height) + "\n65535\n");
    constexpr std::size_t SAMPLES_A_LINE = 11;  // lines of plain files have 70 characters at most
    std::vector<std::uint16_t> row(header.width);
    for (std::size_t y = 0; y < header.height; ++y) {
        source.samples(y, row.data());
        for (std::size_t x = 0; x < header.width; ++x) {
            char* out = file.reserve();
            if (plain) {
                out = writeWhole(out, row[x]);
                *out++ = x + 1 == header.width || x % SAMPLES_A_LINE == SAMPLES_A_LINE - 1 ? '\n' : ' ';
            } else {
                *out++ = static_cast<char>(row[x] >> 8);
                *out++ = static_cast<char>(row[x] & 0xff);
            }
            file.commit(out);
        }
    }
}

}  // namespace vela::io::detail

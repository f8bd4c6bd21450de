// SPDX-License-Identifier: Apache-2.0
// Point cloud data, version .7.
#include "vela_io/detail/comments.hpp"
#include "vela_io/detail/lzf.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/detail/records.hpp"
#include "vela_io/detail/words.hpp"
#include "vela_io/formats/cloud_formats.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vela::io::detail {
namespace {

struct TypeLetter {
    char letter;
    std::size_t bytes;
    SCALAR type;
};

constexpr TypeLetter TYPES[] = {
    {'I', 1, SCALAR::INT8},    {'U', 1, SCALAR::UINT8},   {'I', 2, SCALAR::INT16}, {'U', 2, SCALAR::UINT16},
    {'I', 4, SCALAR::INT32},   {'U', 4, SCALAR::UINT32},  {'I', 8, SCALAR::INT64}, {'U', 8, SCALAR::UINT64},
    {'F', 4, SCALAR::FLOAT32}, {'F', 8, SCALAR::FLOAT64},
};

constexpr std::size_t MOST_FIELDS = 1000;

class HeaderParser {
public:
    explicit HeaderParser(TextReader& reader) : reader_(reader) {}

    /// Up to the line DATA, which is the last.
    void parse() {
        std::string_view line;
        while (reader_.line(line)) {
            std::string_view rest = line;
            const std::string_view key = takeWord(rest);
            if (key.empty()) continue;
            if (key[0] == '#') {
                comments_.take(line.substr(line.find('#') + 1));
                continue;
            }
            if (key == "DATA") return takeData(rest);
            takeLine(key, rest);
        }
        reader_.fail("the header has no 'DATA'");
    }

    CloudHeader header() const {
        CloudHeader header;
        header.encoding = encoding_;
        header.unit = comments_.unit;
        header.axes = comments_.axes;
        const std::size_t width = width_.value_or(points_.value_or(0));
        const std::size_t height = height_.value_or(1);
        if (width > LARGEST_SIDE || height > LARGEST_SIDE) failFormat("an impossible size");
        header.count = width * height;
        if (points_ && *points_ != header.count) failFormat("POINTS is not WIDTH times HEIGHT");
        header.width = width;
        header.height = height;
        layout_.describe(header);
        return header;
    }
    const RecordLayout& layout() const { return layout_; }
    bool isMoved() const { return moved_; }

private:
    void takeLine(std::string_view key, std::string_view rest) {
        if (key == "FIELDS" || key == "COLUMNS") {
            takeWords(rest, names_);
        } else if (key == "SIZE") {
            takeWords(rest, sizes_);
        } else if (key == "TYPE") {
            takeWords(rest, types_);
        } else if (key == "COUNT") {
            takeWords(rest, counts_);
        } else if (key == "WIDTH") {
            width_ = wholeOf(rest);
        } else if (key == "HEIGHT") {
            height_ = wholeOf(rest);
        } else if (key == "POINTS") {
            points_ = wholeOf(rest);
        } else if (key == "VIEWPOINT") {
            takeViewpoint(rest);
        } else if (key != "VERSION") {
            reader_.fail("an unknown word in the header");
        }
    }

    void takeWords(std::string_view rest, std::vector<std::string>& words) const {
        words.clear();
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
            if (words.size() == MOST_FIELDS) reader_.fail("too many fields");
            words.emplace_back(word);
        }
    }

    std::size_t wholeOf(std::string_view rest) const {
        const auto value = parseWhole(takeWord(rest));
        if (!value) reader_.fail("a whole number is expected");
        return *value;
    }

    void takeViewpoint(std::string_view rest) {
        for (const char* const still : {"0", "0", "0", "1", "0", "0", "0"}) {
            const std::string_view word = takeWord(rest);
            double value = 0;
            readDouble(word.data(), word.data() + word.size(), value);
            moved_ = moved_ || value != (*still == '1' ? 1.0 : 0.0);
        }
    }

    void takeData(std::string_view rest) {
        const std::string_view word = takeWord(rest);
        if (word == "ascii") {
            encoding_ = ENCODING::ASCII;
        } else if (word == "binary") {
            encoding_ = ENCODING::BINARY;
        } else if (word == "binary_compressed") {
            encoding_ = ENCODING::BINARY_COMPRESSED;
        } else {
            reader_.fail("an unknown encoding");
        }
        buildLayout();
    }

    void buildLayout() {
        constexpr std::size_t MOST_NUMBERS = 100000;
        if (sizes_.size() != names_.size() || types_.size() != names_.size() ||
            (!counts_.empty() && counts_.size() != names_.size())) {
            reader_.fail("FIELDS, SIZE, TYPE and COUNT differ in length");
        }
        for (std::size_t i = 0; i < names_.size(); ++i) {
            const auto count = counts_.empty() ? 1 : parseWhole(counts_[i]).value_or(MOST_NUMBERS);
            if (layout_.valuesPerRecord() + count > MOST_NUMBERS) reader_.fail("a field of too many numbers");
            const auto bytes = parseWhole(sizes_[i]);
            const auto* const known =
                std::find_if(std::begin(TYPES), std::end(TYPES), [&](const TypeLetter& type) {
                    return types_[i].size() == 1 && type.letter == types_[i][0] && bytes == type.bytes;
                });
            if (known == std::end(TYPES)) reader_.fail("a field of an unknown TYPE and SIZE");
            layout_.add(names_[i], known->type, count);
        }
    }

    TextReader& reader_;
    Comments comments_;
    std::vector<std::string> names_;
    std::vector<std::string> sizes_;
    std::vector<std::string> types_;
    std::vector<std::string> counts_;
    std::optional<std::size_t> width_;
    std::optional<std::size_t> height_;
    std::optional<std::size_t> points_;
    ENCODING encoding_ = ENCODING::ASCII;
    RecordLayout layout_;
    bool moved_ = false;
};

void checkCount(const CloudHeader& header, const RecordLayout& layout, std::size_t bytesLeft) {
    std::size_t smallest = layout.recordBytes();
    if (header.encoding == ENCODING::ASCII) {
        smallest = 2 * layout.valuesPerRecord();
        ++bytesLeft;
    }
    if (header.encoding == ENCODING::BINARY_COMPRESSED) bytesLeft = largestExpansion(bytesLeft);
    if (header.count > bytesLeft / smallest) {
        failFormat("the file is too short for its " + std::to_string(header.count) + " points");
    }
}

/// Two lengths, then all numbers of the first field, of the second and so on, packed together.
void readCompressed(InputFile& file, const CloudHeader& header, const RecordLayout& layout, PointSink& sink) {
    std::uint32_t lengths[2];
    file.read(lengths, sizeof lengths);
    const std::size_t wanted = header.count * layout.recordBytes();
    if (lengths[0] > file.left()) failFormat("the file ends too early");
    if (lengths[1] != wanted || wanted > largestExpansion(lengths[0])) {
        failFormat("the packed points have another length than the header says");
    }
    std::unique_ptr<char[]> unpacked(new char[wanted]);
    {
        std::unique_ptr<char[]> packed(new char[lengths[0]]);
        file.read(packed.get(), lengths[0]);
        if (!expandLzf(packed.get(), lengths[0], unpacked.get(), wanted))
            failFormat("the packed points are damaged");
    }
    for (std::size_t done = 0; done < header.count; done += PointBlock::CAPACITY) {
        PointBlock& block = sink.block();
        block.clear(std::min(PointBlock::CAPACITY, header.count - done));
        for (const Field& field : layout.fields()) {
            const std::size_t stride = bytesOf(field.type) * field.count;
            const char* const column = unpacked.get() + field.offset * header.count;
            decodeField(column + done * stride, stride, field, false, block);
        }
        sink.add();
    }
}

// Writing

constexpr const char* ENCODING_WORDS[] = {"ascii", "binary", "", "binary_compressed"};

struct WrittenFields {
    const char* names;
    const char* sizes;
    const char* types;
    const char* counts;
};
constexpr WrittenFields COORDINATES = {" x y z", " 4 4 4", " F F F", " 1 1 1"};
constexpr WrittenFields COLOR = {" rgb", " 4", " U", " 1"};
constexpr WrittenFields COLOR_AND_ALPHA = {" rgba", " 4", " U", " 1"};
constexpr WrittenFields NORMALS = {" normal_x normal_y normal_z", " 4 4 4", " F F F", " 1 1 1"};

std::string headerText(const CloudHeader& header) {
    std::string names = "FIELDS";
    std::string sizes = "SIZE";
    std::string types = "TYPE";
    std::string counts = "COUNT";
    const auto add = [&](const WrittenFields& fields) {
        names += fields.names;
        sizes += fields.sizes;
        types += fields.types;
        counts += fields.counts;
    };
    add(COORDINATES);
    if (header.color) add(header.alpha ? COLOR_AND_ALPHA : COLOR);
    if (header.normals) add(NORMALS);
    std::string text = "# .PCD v0.7 - Point Cloud Data file format\n";
    CloudHeader stated = header;
    stated.height = 1;  // the grid stands in the header itself
    for (const std::string& comment : commentsOf(stated)) {
        text += "# " + comment + "\n";
    }
    return text + "VERSION 0.7\n" + names + "\n" + sizes + "\n" + types + "\n" + counts + "\nWIDTH " +
           std::to_string(header.width) + "\nHEIGHT " + std::to_string(header.height) +
           "\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS " + std::to_string(header.count) + "\nDATA " +
           ENCODING_WORDS[static_cast<std::size_t>(header.encoding)] + "\n";
}

std::uint32_t packed(const Point& point, bool alpha) {
    return std::uint32_t{point.color[0]} << 16 | std::uint32_t{point.color[1]} << 8 | point.color[2] |
           (alpha ? std::uint32_t{point.color[3]} << 24 : 0U);
}

char* writeText(char* out, const Point& point, const Normal& normal, const CloudHeader& header) {
    out = writeThree(out, point.x, point.y, point.z, ' ');
    if (header.color) {
        *out++ = ' ';
        out = writeWhole(out, packed(point, header.alpha));
    }
    if (header.normals) {
        *out++ = ' ';
        out = writeThree(out, normal.x, normal.y, normal.z, ' ');
    }
    *out++ = '\n';
    return out;
}

static_assert(PointBlock::CAPACITY * (sizeof(Point) + sizeof(Normal)) <= OutputFile::LARGEST_RESERVE);

char* writeBinary(char* out, const Point& point, const Normal& normal, const CloudHeader& header) {
    std::memcpy(out, &point, 12);
    out += 12;
    if (header.color) {
        const std::uint32_t color = packed(point, header.alpha);
        std::memcpy(out, &color, 4);
        out += 4;
    }
    if (header.normals) {
        std::memcpy(out, &normal, 12);
        out += 12;
    }
    return out;
}

void writeCompressed(OutputFile& file, const CloudHeader& header, PointSource& source) {
    constexpr std::size_t WORD = 4;  // all our fields have one
    const std::size_t columns = 3U + (header.color ? 1U : 0U) + (header.normals ? 3U : 0U);
    const std::size_t bytes = header.count * columns * WORD;
    if (bytes > UINT32_MAX) refuse("too many points for a compressed PCD file: 4 GB");
    std::string unpacked(bytes, '\0');
    PointBlock block;
    for (std::size_t done = 0; source.next(block); done += block.count) {
        for (std::size_t i = 0; i < block.count; ++i) {
            char record[7 * WORD];
            writeBinary(record, block.points[i], block.normals[i], header);
            for (std::size_t column = 0; column < columns; ++column) {
                std::memcpy(&unpacked[(column * header.count + done + i) * WORD], record + column * WORD,
                            WORD);
            }
        }
    }
    const std::string packedBytes = compressLzf(unpacked.data(), unpacked.size());
    if (packedBytes.size() > UINT32_MAX) refuse("too many points for a compressed PCD file: 4 GB");
    const std::uint32_t lengths[] = {static_cast<std::uint32_t>(packedBytes.size()),
                                     static_cast<std::uint32_t>(bytes)};
    file.append(lengths, sizeof lengths);
    file.append(packedBytes);
}

}  // namespace

void readPcd(InputFile& file, PointSink& sink) {
    TextReader text(file);
    HeaderParser parser(text);
    parser.parse();
    const CloudHeader header = parser.header();
    const RecordLayout& layout = parser.layout();
    checkCount(header, layout, file.left());
    if (parser.isMoved()) sink.note("VIEWPOINT ignored");
    if (!sink.begin(header)) return;
    if (header.encoding == ENCODING::BINARY_COMPRESSED) {
        readCompressed(file, header, layout, sink);
    } else if (header.encoding == ENCODING::BINARY) {
        layout.readBinary(file, header.count, false, sink);
    } else {
        text.start();
        layout.readText(text, header.count, sink);
    }
}

void writePcd(OutputFile& file, const CloudHeader& header, PointSource& source) {
    file.append(headerText(header));
    if (header.encoding == ENCODING::BINARY_COMPRESSED) return writeCompressed(file, header, source);
    PointBlock block;
    while (source.next(block)) {
        if (header.encoding == ENCODING::ASCII) {
            for (std::size_t i = 0; i < block.count; ++i) {
                file.commit(writeText(file.reserve(), block.points[i], block.normals[i], header));
            }
            continue;
        }
        char* out = file.reserve();
        for (std::size_t i = 0; i < block.count; ++i) {
            out = writeBinary(out, block.points[i], block.normals[i], header);
        }
        file.commit(out);
    }
}

}  // namespace vela::io::detail

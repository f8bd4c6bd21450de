// SPDX-License-Identifier: Apache-2.0
// Polygon file format, version 1.0.
#include "vela_io/detail/comments.hpp"
#include "vela_io/detail/number_text.hpp"
#include "vela_io/detail/records.hpp"
#include "vela_io/detail/words.hpp"
#include "vela_io/formats/cloud_formats.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vela::io::detail {
namespace {

struct TypeName {
    std::string_view name;
    SCALAR type;
};

constexpr TypeName TYPES[] = {
    {"char", SCALAR::INT8},       {"int8", SCALAR::INT8},      {"uchar", SCALAR::UINT8},
    {"uint8", SCALAR::UINT8},     {"short", SCALAR::INT16},    {"int16", SCALAR::INT16},
    {"ushort", SCALAR::UINT16},   {"uint16", SCALAR::UINT16},  {"int", SCALAR::INT32},
    {"int32", SCALAR::INT32},     {"uint", SCALAR::UINT32},    {"uint32", SCALAR::UINT32},
    {"int64", SCALAR::INT64},     {"uint64", SCALAR::UINT64},  {"float", SCALAR::FLOAT32},
    {"float32", SCALAR::FLOAT32}, {"double", SCALAR::FLOAT64}, {"float64", SCALAR::FLOAT64},
};

// Indexed by ENCODING.
constexpr const char* ENCODING_WORDS[] = {"ascii", "binary_little_endian", "binary_big_endian"};

/// A property that is a list in the file: `count` numbers of one type behind the count itself.
struct List {
    std::size_t position;  ///< of the property among all of its element
    SCALAR countType;
    SCALAR itemType;
};

struct Element {
    std::string name;
    std::size_t count = 0;
    RecordLayout layout;  ///< without the lists
    std::vector<List> lists;
    std::size_t properties = 0;
};

struct PlyHeader {
    ENCODING encoding = ENCODING::ASCII;
    std::vector<Element> elements;
    Comments comments;
};

class HeaderParser {
public:
    explicit HeaderParser(TextReader& reader) : reader_(reader) {}

    PlyHeader parse() {
        std::string_view line;
        if (!reader_.line(line) || takeWord(line) != "ply") reader_.fail("not a PLY file");
        for (;;) {
            if (!reader_.line(line)) reader_.fail("the header has no end");
            const std::string_view word = takeWord(line);
            if (word == "end_header") break;
            takeLine(word, line);
        }
        if (!hasFormat_) reader_.fail("the header has no 'format'");
        return std::move(header_);
    }

private:
    void takeLine(std::string_view word, std::string_view rest) {
        if (word.empty()) return;
        if (word == "comment" || word == "obj_info") {
            header_.comments.take(rest);
        } else if (word == "format") {
            takeFormat(rest);
        } else if (word == "element") {
            takeElement(rest);
        } else if (word == "property") {
            takeProperty(rest);
        } else {
            reader_.fail("an unknown word in the header");
        }
    }

    void takeFormat(std::string_view rest) {
        const std::string_view word = takeWord(rest);
        for (std::size_t i = 0; i < std::size(ENCODING_WORDS); ++i) {
            if (word != ENCODING_WORDS[i]) continue;
            header_.encoding = static_cast<ENCODING>(i);
            hasFormat_ = true;
            return;
        }
        reader_.fail("an unknown format");
    }

    void takeElement(std::string_view rest) {
        constexpr std::size_t MOST_ELEMENTS = 1000;
        if (header_.elements.size() == MOST_ELEMENTS) reader_.fail("too many elements");
        Element element;
        element.name = takeWord(rest);
        const auto count = parseWhole(takeWord(rest));
        if (element.name.empty() || !count) reader_.fail("an element without name and count");
        element.count = *count;
        header_.elements.push_back(std::move(element));
    }

    SCALAR typeOf(std::string_view word) const {
        const auto* const known = std::find_if(std::begin(TYPES), std::end(TYPES),
                                               [&](const TypeName& type) { return type.name == word; });
        if (known == std::end(TYPES)) reader_.fail("an unknown type of property");
        return known->type;
    }

    void takeProperty(std::string_view rest) {
        constexpr std::size_t MOST_PROPERTIES = 1000;
        if (header_.elements.empty()) reader_.fail("a property before the first element");
        Element& element = header_.elements.back();
        if (element.properties == MOST_PROPERTIES) reader_.fail("too many properties");
        const std::string_view word = takeWord(rest);
        if (word == "list") {
            const SCALAR countType = typeOf(takeWord(rest));
            const SCALAR itemType = typeOf(takeWord(rest));
            if (countType >= SCALAR::INT64)
                reader_.fail("the count of a list is not an integer of 8 to 32 bits");
            element.lists.push_back({element.properties, countType, itemType});
        } else {
            const SCALAR type = typeOf(word);
            element.layout.add(takeWord(rest), type);
        }
        ++element.properties;
    }

    TextReader& reader_;
    PlyHeader header_;
    bool hasFormat_ = false;
};

/// The elements of a file from the end of the header to the vertices.
class BodyReader {
public:
    BodyReader(InputFile& file, TextReader& text, ENCODING encoding)
        : file_(file), text_(text), encoding_(encoding) {
        if (encoding_ == ENCODING::ASCII) text_.start();
    }

    void skip(const Element& element) {
        if (encoding_ != ENCODING::ASCII && element.lists.empty()) {
            return file_.skip(element.count * element.layout.recordBytes());
        }
        for (std::size_t i = 0; i < element.count; ++i) {
            walk(element, [this](const Field& field) { skipField(field); });
        }
    }

    void readPoints(const Element& element, PointSink& sink) {
        if (element.lists.empty()) {
            if (encoding_ == ENCODING::ASCII) return element.layout.readText(text_, element.count, sink);
            return element.layout.readBinary(file_, element.count, encoding_ == ENCODING::BINARY_BIG_ENDIAN,
                                             sink);
        }
        PointBlock one;
        for (std::size_t i = 0; i < element.count; ++i) {
            PointBlock& block = sink.block();
            one.clear(1);
            walk(element, [&](const Field& field) { readField(field, one); });
            block.points[block.count] = one.points[0];
            block.normals[block.count++] = one.normals[0];
            if (block.count == PointBlock::CAPACITY) sink.add();
        }
        sink.add();
    }

private:
    bool bigEndian() const { return encoding_ == ENCODING::BINARY_BIG_ENDIAN; }

    /// Calls `take` for each field of one record and skips its lists, in the order of the file.
    template <class Take>
    void walk(const Element& element, Take take) {
        auto list = element.lists.begin();
        auto field = element.layout.fields().begin();
        for (std::size_t i = 0; i < element.properties; ++i) {
            if (list != element.lists.end() && list->position == i) {
                skipList(*list++);
            } else {
                take(*field++);
            }
        }
    }

    void skipList(const List& list) {
        if (encoding_ == ENCODING::ASCII) {
            for (std::uint32_t n = text_.nextWhole(); n > 0; --n) {
                text_.skipToken();
            }
            return;
        }
        // Decoded as the x of a point, a float, which is exact to 2^24; longer lists are refused.
        PointBlock one;
        one.count = 1;
        readBytes({ROLE::X, list.countType, 0, 1}, one);
        const float count = one.points[0].x;
        if (!(count >= 0 && count <= 16777216.0F)) failFormat("a list of an impossible length");
        file_.skip(static_cast<std::size_t>(count) * bytesOf(list.itemType));
    }

    void skipField(const Field& field) {
        if (encoding_ == ENCODING::ASCII) return text_.skipToken();
        file_.skip(bytesOf(field.type));
    }

    void readField(const Field& field, PointBlock& one) {
        if (encoding_ == ENCODING::ASCII) return readTextField(text_, field, one.points[0], one.normals[0]);
        readBytes(field, one);
    }

    void readBytes(const Field& field, PointBlock& one) {
        char bytes[8];
        file_.read(bytes, bytesOf(field.type));
        decodeField(bytes, 0, field, bigEndian(), one);
    }

    InputFile& file_;
    TextReader& text_;
    ENCODING encoding_;
};

/// Refuses counts that the rest of the file cannot hold.
void checkCount(const Element& element, ENCODING encoding, std::size_t bytesLeft) {
    std::size_t smallest = 0;
    if (encoding == ENCODING::ASCII) {
        smallest = 2 * element.properties;  // a digit and a blank each
        ++bytesLeft;                        // the last one may have none behind it
    } else {
        smallest = element.layout.recordBytes();
        for (const List& list : element.lists) {
            smallest += bytesOf(list.countType);
        }
    }
    if (smallest == 0 && element.count > 0) failFormat("element '" + element.name + "' has no properties");
    if (smallest > 0 && element.count > bytesLeft / smallest) {
        failFormat("the file is too short for its " + std::to_string(element.count) + " of element '" +
                   element.name + "'");
    }
}

// Writing

std::string headerText(const CloudHeader& header) {
    std::string text = "ply\nformat ";
    text += ENCODING_WORDS[static_cast<std::size_t>(header.encoding)];
    text += " 1.0\n";
    for (const std::string& comment : commentsOf(header)) {
        text += "comment " + comment + "\n";
    }
    text += "element vertex " + std::to_string(header.count) + "\n";
    text += "property float x\nproperty float y\nproperty float z\n";
    if (header.color) text += "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    if (header.alpha) text += "property uchar alpha\n";
    if (header.normals) text += "property float nx\nproperty float ny\nproperty float nz\n";
    return text + "end_header\n";
}

template <bool swapped>
char* storeFloats(char* out, const float (&values)[3]) {
    std::uint32_t bits[3];
    std::memcpy(bits, values, sizeof bits);
    for (std::uint32_t& word : bits) {
        if (swapped) word = __builtin_bswap32(word);
    }
    std::memcpy(out, bits, sizeof bits);
    return out + sizeof bits;
}

template <bool swapped>
char* writeBinary(char* out, const PointBlock& block, const CloudHeader& header) {
    static_assert(PointBlock::CAPACITY * (sizeof(Point) + sizeof(Normal)) <= OutputFile::LARGEST_RESERVE);
    const std::size_t colorBytes = header.color ? (header.alpha ? 4 : 3) : 0;
    for (std::size_t i = 0; i < block.count; ++i) {
        const Point& point = block.points[i];
        std::memcpy(out, &point, sizeof point);  // one store; the next record overwrites the excess
        if (swapped) storeFloats<swapped>(out, {point.x, point.y, point.z});
        out += 12 + colorBytes;
        if (!header.normals) continue;
        const Normal& normal = block.normals[i];
        out = storeFloats<swapped>(out, {normal.x, normal.y, normal.z});
    }
    return out;
}

}  // namespace

void readPly(InputFile& file, PointSink& sink) {
    TextReader text(file);
    const PlyHeader ply = HeaderParser(text).parse();
    const auto vertices = std::find_if(ply.elements.begin(), ply.elements.end(),
                                       [](const Element& element) { return element.name == "vertex"; });
    if (vertices == ply.elements.end()) failFormat("the file has no element 'vertex'");
    for (auto element = ply.elements.begin(); element <= vertices; ++element) {
        checkCount(*element, ply.encoding, file.left());
    }
    CloudHeader header;
    header.encoding = ply.encoding;
    header.count = vertices->count;
    vertices->layout.describe(header);
    ply.comments.describe(header);
    for (const Element& element : ply.elements) {
        if (&element == &*vertices || element.count == 0) continue;
        sink.note(std::to_string(element.count) + " of element '" + element.name + "' ignored");
    }
    if (!sink.begin(header)) return;
    BodyReader body(file, text, ply.encoding);
    for (auto element = ply.elements.begin(); element != vertices; ++element) {
        body.skip(*element);
    }
    body.readPoints(*vertices, sink);
}

void writePly(OutputFile& file, const CloudHeader& header, PointSource& source) {
    const std::size_t recordBytes =
        12U + (header.color ? 3U : 0U) + (header.alpha ? 1U : 0U) + (header.normals ? 12U : 0U);
    const std::string text = headerText(header);
    if (header.encoding != ENCODING::ASCII) file.expect(text.size() + header.count * recordBytes);
    file.append(text);
    PointBlock block;
    while (source.next(block)) {
        if (header.encoding == ENCODING::ASCII) {
            for (std::size_t i = 0; i < block.count; ++i) {
                file.commit(writePointText(file.reserve(), block.points[i], block.normals[i], header));
            }
        } else if (header.encoding == ENCODING::BINARY) {
            file.commit(writeBinary<false>(file.reserve(), block, header));
        } else {
            file.commit(writeBinary<true>(file.reserve(), block, header));
        }
    }
}

}  // namespace vela::io::detail

// SPDX-License-Identifier: Apache-2.0
// VTK's legacy format: polydata is written, and the points of other data sets are read as well.
#include "vela_io/detail/mats.hpp"
#include "vela_io/detail/records.hpp"
#include "vela_io/detail/statements.hpp"
#include "vela_io/formats/cloud_formats.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vela::io::detail {
namespace {

struct TypeName {
    std::string_view name;
    SCALAR type;
};

constexpr TypeName TYPES[] = {
    {"float", SCALAR::FLOAT32},         {"double", SCALAR::FLOAT64},
    {"unsigned_char", SCALAR::UINT8},   {"char", SCALAR::INT8},
    {"unsigned_short", SCALAR::UINT16}, {"short", SCALAR::INT16},
    {"unsigned_int", SCALAR::UINT32},   {"int", SCALAR::INT32},
    {"unsigned_long", SCALAR::UINT64},  {"long", SCALAR::INT64},
    {"vtktypeint64", SCALAR::INT64},    {"vtktypeuint64", SCALAR::UINT64},
    {"vtkIdType", SCALAR::INT32},       {"vtktypeint32", SCALAR::INT32},
};

/// Numbers of a file that belong to the points.
struct Section {
    std::size_t position = 0;  ///< of the first number
    SCALAR type = SCALAR::FLOAT32;
    std::size_t components = 0;  ///< for each point; 0 is no section
};

/// Finds the sections of a file without reading their numbers.
class Survey {
public:
    Survey(InputFile& file, TextReader& text) : file_(file), text_(text) {
        takeHeader();
        text_.start();
        while (text_.next() && takeSection(text_.nextWord())) {
        }
        if (points_.components == 0) failFormat("the file has no POINTS");
    }

    CloudHeader header() const {
        CloudHeader header;
        header.encoding = binary_ ? ENCODING::BINARY : ENCODING::ASCII;
        header.count = count_;
        header.color = colors_.components > 0;
        header.alpha = colors_.components == 4;
        header.normals = normals_.components > 0;
        statements_.describe(header);
        return header;
    }
    const Section& points() const { return points_; }
    const Section& colors() const { return colors_; }
    const Section& normals() const { return normals_; }
    const std::vector<std::string>& notes() const { return notes_; }

private:
    void takeHeader() {
        std::string_view line;
        if (!text_.line(line) || line.substr(0, 5) != "# vtk") text_.fail("not a VTK file");
        if (!text_.line(line)) text_.fail("the header has no end");
        statements_.take(line);
        if (!text_.line(line)) text_.fail("the header has no end");
        const std::string_view encoding = takeWord(line);
        binary_ = equalIgnoringCase(encoding, "BINARY");
        if (!binary_ && !equalIgnoringCase(encoding, "ASCII")) text_.fail("neither ASCII nor BINARY");
    }

    /// False where the rest of the file is not understood.
    bool takeSection(std::string_view given) {
        const std::string word(given);
        if (word == "DATASET") return takeDataset();
        if (word == "POINTS") return takePoints();
        if (word == "DIMENSIONS") return takeDimensions();
        if (word == "METADATA") return skipMetadata();
        for (const char* const cells : {"VERTICES", "LINES", "POLYGONS", "TRIANGLE_STRIPS", "CELLS"}) {
            if (word == cells) return skipCells(word);
        }
        if (word == "CELL_TYPES") return skipNumbers(SCALAR::INT32, nextSize());
        if (word == "POINT_DATA" || word == "CELL_DATA") {
            ofPoints_ = word == "POINT_DATA";
            tuples_ = nextSize();
            if (ofPoints_ && tuples_ != count_) text_.fail("POINT_DATA of another number than the points");
            return true;
        }
        if (word == "FIELD") return takeFields();
        return takeAttribute(word);
    }

    bool takeAttribute(const std::string& word) {
        if (word == "SCALARS") {
            nextName();
            const SCALAR type = nextType();
            std::size_t components = 1;
            std::string next(text_.nextWord());
            if (const auto given = parseWhole(next)) {
                components = *given;
                next = text_.nextWord();
            }
            if (next == "LOOKUP_TABLE") nextName();
            return takeNumbers(type == SCALAR::UINT8 && components >= 3 ? &colors_ : nullptr, type,
                               components);
        }
        if (word == "COLOR_SCALARS") {
            nextName();
            const std::size_t components = nextSize();
            return takeNumbers(components >= 3 ? &colors_ : nullptr, byteOrShare(), components);
        }
        if (word == "LOOKUP_TABLE") {
            nextName();
            return skipNumbers(byteOrShare(), 4 * nextSize());
        }
        if (word == "NORMALS" || word == "VECTORS" || word == "TENSORS") {
            nextName();
            return takeNumbers(word == "NORMALS" ? &normals_ : nullptr, nextType(),
                               word == "TENSORS" ? 9 : 3);
        }
        if (word == "TEXTURE_COORDINATES") {
            nextName();
            const std::size_t components = nextSize();
            return takeNumbers(nullptr, nextType(), components);
        }
        notes_.push_back("what begins with '" + word.substr(0, 40) + "' ignored");
        return false;
    }

    bool takeDataset() {
        const std::string_view kind = text_.nextWord();
        if (kind != "POLYDATA" && kind != "UNSTRUCTURED_GRID" && kind != "STRUCTURED_GRID") {
            text_.fail("a data set without a list of points");
        }
        return true;
    }

    bool takeDimensions() {
        std::size_t sides[3];
        for (std::size_t& side : sides) {
            side = nextSize();
        }
        if (sides[2] != 1) return true;
        statements_.gridWidth = sides[0];
        statements_.gridHeight = sides[1];
        return true;
    }

    bool takePoints() {
        count_ = tuples_ = nextSize();
        ofPoints_ = true;
        return takeNumbers(&points_, nextType(), 3);
    }

    bool skipCells(const std::string& word) {
        const std::size_t first = nextSize();
        const std::size_t second = nextSize();
        if (word != "VERTICES" && first > 0)
            notes_.push_back(std::to_string(first) + " " + word + " ignored");
        // Newer files have two arrays of their own types. What follows the line may be numbers in binary.
        if (binary_) endLine();
        if (binary_ ? !startsWith("OFFSETS") : !text_.next() || *text_.place() != 'O') {
            return skipNumbers(SCALAR::INT32, second, true);
        }
        nextName();
        skipNumbers(nextType(), first);
        nextName();
        return skipNumbers(nextType(), second);
    }

    bool startsWith(std::string_view word) {
        text_.finish();
        file_.fill(word.size());
        const std::string_view rest(file_.begin(), static_cast<std::size_t>(file_.end() - file_.begin()));
        text_.start();
        return rest.substr(0, word.size()) == word;
    }

    bool takeFields() {
        nextName();
        const std::size_t arrays = nextSize();
        for (std::size_t i = 0; i < arrays; ++i) {
            const std::string name(text_.nextWord());
            if (name == "METADATA") {
                skipMetadata();
                --i;
                continue;
            }
            const std::size_t components = nextSize();
            const std::size_t tuples = nextSize();
            const SCALAR type = nextType();
            const bool ours = ofPoints_ && tuples == count_;
            Section* section = nullptr;
            if (type == SCALAR::UINT8 && (components == 3 || components == 4)) section = &colors_;
            if (equalIgnoringCase(name, "normals") && components == 3) section = &normals_;
            if (!ours || section == nullptr || section->components > 0) {
                skipNumbers(type, product(components, tuples));
            } else {
                takeNumbers(section, type, components);
            }
        }
        return true;
    }

    bool skipMetadata() {
        text_.finish();
        std::string_view line;
        text_.line(line);  // the rest of the line
        while (text_.line(line) && !line.empty()) {
        }
        text_.start();
        return true;
    }

    bool takeNumbers(Section* section, SCALAR type, std::size_t components) {
        const std::size_t all = product(components, tuples_);
        if (binary_) endLine();
        if (section != nullptr && ofPoints_ && section->components == 0) {
            text_.finish();
            *section = {file_.position(), type, components};
            text_.start();
        }
        return skipNumbers(type, all, true);
    }

    bool skipNumbers(SCALAR type, std::size_t count, bool lineEnded = false) {
        text_.finish();
        const std::size_t most = (file_.left() + 1) / (binary_ ? bytesOf(type) : 2);
        text_.start();
        if (count > most) text_.fail("the file is too short for its numbers");
        if (binary_) {
            if (!lineEnded) endLine();
            text_.finish();
            file_.skip(count * bytesOf(type));
            text_.start();
            return true;
        }
        if (count == 0) return true;
        for (; count > 1; --count) {
            text_.skipToken();
        }
        text_.nextFloat();  // the next word may stand right behind the last number
        return true;
    }

    /// To the byte behind the line.
    void endLine() {
        text_.finish();
        file_.fill(TextReader::LONGEST_TOKEN);
        const char* const end = std::find(file_.begin(), file_.end(), '\n');
        if (end == file_.end()) text_.fail("the line has no end");
        file_.take(end + 1);
        text_.start();
    }

    static std::size_t product(std::size_t components, std::size_t tuples) {
        constexpr std::size_t MOST_COMPONENTS = 100000;
        if (components > MOST_COMPONENTS) failFormat("too many components");
        return components * tuples;
    }

    std::size_t nextSize() {
        const auto value = parseWhole(text_.nextWord());
        if (!value || *value > LARGEST_SIDE) text_.fail("a count is expected");
        return *value;
    }
    void nextName() { text_.nextWord(); }

    SCALAR nextType() {
        const std::string_view word = text_.nextWord();
        for (const TypeName& known : TYPES) {
            if (equalIgnoringCase(known.name, word)) return known.type;
        }
        text_.fail("an unknown type of numbers");
    }

    /// Colours are bytes in binary files and numbers from 0 to 1 in text.
    SCALAR byteOrShare() const { return binary_ ? SCALAR::UINT8 : SCALAR::FLOAT32; }

    InputFile& file_;
    TextReader& text_;
    bool binary_ = false;
    bool ofPoints_ = true;
    std::size_t count_ = 0;
    std::size_t tuples_ = 0;
    Section points_;
    Section colors_;
    Section normals_;
    Statements statements_;
    std::vector<std::string> notes_;
};

/// Reads one section along with the others, block by block.
class SectionReader {
public:
    SectionReader(const InputFile& file, const Section& section, bool binary,
                  std::initializer_list<ROLE> roles)
        : file_(file, section.position), text_(file_), binary_(binary) {
        for (std::size_t i = 0; i < section.components; ++i) {
            layout_.add(i < roles.size() ? roles.begin()[i] : ROLE::SKIPPED, section.type);
        }
        if (!binary_) text_.start();
    }

    void read(PointBlock& block) {
        if (binary_) {
            // As many at once as the block of the file holds.
            const std::size_t bytes = block.count * layout_.recordBytes();
            if (bytes > InputFile::BLOCK || !file_.fill(bytes)) failFormat("the file ends too early");
            layout_.decode(file_.begin(), true, block);
            file_.take(file_.begin() + bytes);
            return;
        }
        for (std::size_t i = 0; i < block.count; ++i) {
            for (const Field& field : layout_.fields()) {
                readTextField(text_, field, block.points[i], block.normals[i]);
            }
        }
    }

private:
    InputFile file_;
    TextReader text_;
    bool binary_;
    RecordLayout layout_;
};

// Writing

class Writer {
public:
    Writer(OutputFile& file, const CloudHeader& header, PointSource& source)
        : file_(file), header_(header), source_(source), binary_(header.encoding == ENCODING::BINARY) {}

    void write() {
        std::string title;
        for (const std::string& statement : statementsOf(header_)) {
            title += (title.empty() ? "" : " ") + statement;
        }
        const std::string count = std::to_string(header_.count);
        file_.append("# vtk DataFile Version 3.0\n" + (title.empty() ? "point cloud" : title) + "\n" +
                     (binary_ ? "BINARY" : "ASCII") + "\nDATASET POLYDATA\nPOINTS " + count + " float\n");
        each([this](char* out, const Point& point, const Normal&) {
            return numbers(out, point.x, point.y, point.z);
        });
        file_.append("VERTICES " + count + " " + std::to_string(2 * header_.count) + "\n");
        std::uint32_t index = 0;
        each([&](char* out, const Point&, const Normal&) { return vertex(out, index++); });
        if (header_.color || header_.normals) file_.append("POINT_DATA " + count + "\n");
        if (header_.color) {
            file_.append("COLOR_SCALARS rgb 3\n");
            each([this](char* out, const Point& point, const Normal&) { return color(out, point); });
        }
        if (header_.normals) {
            file_.append("NORMALS normals float\n");
            each([this](char* out, const Point&, const Normal& normal) {
                return numbers(out, normal.x, normal.y, normal.z);
            });
        }
    }

private:
    template <class Put>
    void each(Put put) {
        PointBlock block;
        for (source_.rewind(); source_.next(block);) {
            for (std::size_t i = 0; i < block.count; ++i) {
                file_.commit(put(file_.reserve(), block.points[i], block.normals[i]));
            }
        }
        if (binary_) file_.append("\n");
    }

    char* numbers(char* out, float x, float y, float z) const {
        if (binary_) {
            for (const float value : {x, y, z}) {
                std::uint32_t bits = 0;
                std::memcpy(&bits, &value, sizeof bits);
                out = bigEndian(out, bits);
            }
            return out;
        }
        out = writeThree(out, x, y, z, ' ');
        *out++ = '\n';
        return out;
    }

    static char* bigEndian(char* out, std::uint32_t bits) {
        bits = __builtin_bswap32(bits);
        std::memcpy(out, &bits, sizeof bits);
        return out + sizeof bits;
    }

    char* vertex(char* out, std::uint32_t index) const {
        if (binary_) return bigEndian(bigEndian(out, 1), index);
        *out++ = '1';
        *out++ = ' ';
        out = writeWhole(out, index);
        *out++ = '\n';
        return out;
    }

    char* color(char* out, const Point& point) const {
        if (binary_) {
            std::memcpy(out, point.color.data(), 3);
            return out + 3;
        }
        const auto share = [&](std::size_t i) { return static_cast<float>(point.color[i]) / 255; };
        out = writeThree(out, share(0), share(1), share(2), ' ');
        *out++ = '\n';
        return out;
    }

    OutputFile& file_;
    const CloudHeader& header_;
    PointSource& source_;
    bool binary_;
};

}  // namespace

void readVtk(InputFile& file, PointSink& sink) {
    TextReader text(file);
    const Survey survey(file, text);
    const CloudHeader header = survey.header();
    for (const std::string& note : survey.notes()) {
        sink.note(note);
    }
    if (!sink.begin(header)) return;
    const bool binary = header.encoding == ENCODING::BINARY;
    SectionReader points(file, survey.points(), binary, {ROLE::X, ROLE::Y, ROLE::Z});
    std::optional<SectionReader> colors;
    std::optional<SectionReader> normals;
    if (header.color)
        colors.emplace(file, survey.colors(), binary,
                       std::initializer_list<ROLE>{ROLE::RED, ROLE::GREEN, ROLE::BLUE, ROLE::ALPHA});
    if (header.normals)
        normals.emplace(file, survey.normals(), binary,
                        std::initializer_list<ROLE>{ROLE::NORMAL_X, ROLE::NORMAL_Y, ROLE::NORMAL_Z});
    for (std::size_t done = 0; done < header.count; done += PointBlock::CAPACITY) {
        PointBlock& block = sink.block();
        block.clear(std::min(PointBlock::CAPACITY, header.count - done));
        points.read(block);
        if (colors) colors->read(block);
        if (normals) normals->read(block);
        sink.add();
    }
}

void writeVtk(OutputFile& file, const CloudHeader& header, PointSource& source) {
    if (header.count > LARGEST_SIDE) refuse("too many points for a VTK file");
    Writer(file, header, source).write();
}

}  // namespace vela::io::detail

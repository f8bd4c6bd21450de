// SPDX-License-Identifier: Apache-2.0
#include "vela_io/formats/vtk_survey.hpp"

#include "vela_io/detail/comments.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/detail/words.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

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

class Surveyor {
public:
    explicit Surveyor(InputFile& file) : file_(file), text_(file) {
        takeHeader();
        text_.start();
        while (text_.next() && takeSection(text_.nextWord())) {
        }
        if (points_.components == 0) failFormat("the file has no POINTS");
    }

    VtkSurvey result() && {
        VtkSurvey survey{{}, points_, colors_, normals_, std::move(notes_)};
        survey.header.encoding = binary_ ? ENCODING::BINARY : ENCODING::ASCII;
        survey.header.count = count_;
        survey.header.color = colors_.components > 0;
        survey.header.alpha = colors_.components == 4;
        survey.header.normals = normals_.components > 0;
        comments_.describe(survey.header);
        return survey;
    }

private:
    void takeHeader() {
        std::string_view line;
        if (!text_.line(line) || line.substr(0, 5) != "# vtk") text_.fail("not a VTK file");
        if (!text_.line(line)) text_.fail("the header has no end");
        comments_.take(line);
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
        comments_.gridWidth = sides[0];
        comments_.gridHeight = sides[1];
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
            VtkSection* section = nullptr;
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

    bool takeNumbers(VtkSection* section, SCALAR type, std::size_t components) {
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
    TextReader text_;
    bool binary_ = false;
    bool ofPoints_ = true;
    std::size_t count_ = 0;
    std::size_t tuples_ = 0;
    VtkSection points_;
    VtkSection colors_;
    VtkSection normals_;
    Comments comments_;
    std::vector<std::string> notes_;
};

}  // namespace

VtkSurvey surveyVtk(InputFile& file) {
    return Surveyor(file).result();
}

}  // namespace vela::io::detail

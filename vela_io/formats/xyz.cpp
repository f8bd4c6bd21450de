// SPDX-License-Identifier: Apache-2.0
// Text of one point per line, the numbers separated by blanks, tabs, commas or semicolons. There is no header
// that all agree upon: a line of names, with or without a comment sign, says what the columns are; without
// one they are judged by their first numbers.
#include "vela_io/detail/comments.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/detail/records.hpp"
#include "vela_io/detail/words.hpp"
#include "vela_io/formats/cloud_formats.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vela::io::detail {
namespace {

constexpr std::size_t MOST_COLUMNS = 64;
constexpr std::size_t LINES_JUDGED = 100;

constexpr bool isSeparator(char c) {
    return c == ' ' || c == '\t' || c == ',' || c == ';';
}

/// The columns of a line.
class Columns {
public:
    explicit Columns(std::string_view line) {
        const char* p = line.data();
        const char* const end = p + line.size();
        for (;;) {
            p = std::find_if_not(p, end, isSeparator);
            if (p == end) return;
            if (count_ == MOST_COLUMNS) failFormat("a line of too many columns");
            const char* const stop = std::find_if(p, end, isSeparator);
            words_[count_++] = {p, static_cast<std::size_t>(stop - p)};
            p = stop;
        }
    }
    std::size_t count() const { return count_; }
    std::string_view operator[](std::size_t i) const { return words_[i]; }

private:
    std::array<std::string_view, MOST_COLUMNS> words_;
    std::size_t count_ = 0;
};

bool isNumber(std::string_view word) {
    double value = 0;
    return readDouble(word.data(), word.data() + word.size(), value) == word.data() + word.size();
}

/// What lines in front of the points say.
class Preamble {
public:
    /// Takes a line that is no point; false if it is one.
    bool take(std::string_view line) {
        const std::size_t start = line.find_first_not_of(" \t\xEF\xBB\xBF");  // also past a byte order mark
        if (start == std::string_view::npos) return true;
        line.remove_prefix(start);
        const bool comment = line[0] == '#' || line.substr(0, 2) == "//" || line[0] == '%';
        if (comment) line.remove_prefix(std::min(line.find_first_not_of("#/%"), line.size()));
        if (comment) comments_.take(line);
        const Columns columns(line);
        if (!comment && columns.count() > 0 && isNumber(columns[0])) {
            // A line with one whole number in front of all others is the count of points.
            return columns.count() == 1 && parseWhole(columns[0]);
        }
        takeNames(columns, comment);
        return true;
    }
    void countPoint() { ++points_; }
    std::size_t points() const { return points_; }
    const Comments& comments() const { return comments_; }
    const std::vector<ROLE>& roles() const { return roles_; }

private:
    void takeNames(const Columns& columns, bool comment) {
        std::vector<ROLE> roles;
        for (std::size_t i = 0; i < columns.count(); ++i) {
            roles.push_back(roleOf(columns[i]));
        }
        const auto has = [&](ROLE role) {
            return std::find(roles.begin(), roles.end(), role) != roles.end();
        };
        if (has(ROLE::X) && has(ROLE::Y) && has(ROLE::Z)) {
            roles_ = std::move(roles);
        } else if (!comment) {
            failFormat("neither a point nor names of columns");
        }
    }

    Comments comments_;
    std::vector<ROLE> roles_;
    std::size_t points_ = 0;
};

/// Tells from their first lines what columns hold.
class Judge {
public:
    void see(const Columns& columns) {
        if (lines_ == LINES_JUDGED) return;
        count_ = lines_++ == 0 ? columns.count() : std::min(count_, columns.count());
        for (std::size_t i = 0; i < columns.count(); ++i) {
            double value = 0;
            readDouble(columns[i].data(), columns[i].data() + columns[i].size(), value);
            bytes_[i] = bytes_[i] && value <= 255 && parseWhole(columns[i]);
            shares_[i] = shares_[i] && value >= 0 && value <= 1;
        }
    }

    /// `roles` as names said, or empty: then x, y, z and colours in the last three of six or, behind an
    /// intensity, of seven columns; or a normal in six.
    RecordLayout layout(std::vector<ROLE> roles) const {
        if (roles.empty()) roles = guess();
        RecordLayout layout;
        for (std::size_t i = 0; i < roles.size(); ++i) {
            const bool color = roles[i] >= ROLE::RED && roles[i] <= ROLE::ALPHA;
            const bool shares = shares_[i] && !bytes_[i];
            layout.add(roles[i], color && !shares ? SCALAR::UINT8 : SCALAR::FLOAT32);
        }
        return layout;
    }

private:
    std::vector<ROLE> guess() const {
        std::vector<ROLE> roles{ROLE::X, ROLE::Y, ROLE::Z};
        if (count_ != 6 && count_ != 7) return roles;
        const std::size_t first = count_ - 3;
        const bool bytes = bytes_[first] && bytes_[first + 1] && bytes_[first + 2];
        const bool shares = shares_[first] && shares_[first + 1] && shares_[first + 2];
        roles.resize(first, ROLE::SKIPPED);
        if (bytes || shares) {
            roles.insert(roles.end(), {ROLE::RED, ROLE::GREEN, ROLE::BLUE});
        } else if (count_ == 6) {
            roles.insert(roles.end(), {ROLE::NORMAL_X, ROLE::NORMAL_Y, ROLE::NORMAL_Z});
        }
        return roles;
    }

    std::size_t lines_ = 0;
    std::size_t count_ = 0;
    std::vector<bool> bytes_ = std::vector<bool>(MOST_COLUMNS, true);
    std::vector<bool> shares_ = std::vector<bool>(MOST_COLUMNS, true);
};

constexpr bool isComment(std::string_view line) {
    return line.empty() || line[0] == '#' || line[0] == '/' || line[0] == '%';
}

std::string_view withoutLeadingBlanks(std::string_view line) {
    while (!line.empty() && (line[0] == ' ' || line[0] == '\t')) {
        line.remove_prefix(1);
    }
    return line;
}

/// All that the lines say before the points are read in a second pass.
struct Survey {
    Preamble preamble;
    Judge judge;
    char separator = ' ';

    explicit Survey(TextReader& text) {
        std::string_view line;
        while (text.line(line)) {
            if (preamble.points() == 0 && preamble.take(line)) continue;
            line = withoutLeadingBlanks(line);
            if (isComment(line)) continue;
            if (preamble.points() == 0) {
                const std::size_t found = line.find_first_of(",;");
                if (found != std::string_view::npos) separator = line[found];
            }
            if (preamble.points() < LINES_JUDGED) judge.see(Columns(line));
            preamble.countPoint();
        }
    }
};

/// The numbers of one line. `line.end()` may be read: a line end or the zero behind the block.
void readPoint(std::string_view line, const RecordLayout& layout, Point& point, Normal& normal,
               const TextReader& text) {
    const char* p = line.data();
    const char* const end = p + line.size();
    for (const Field& field : layout.fields()) {
        while (p < end && isSeparator(*p)) {
            ++p;
        }
        if (p == end) text.fail("a number is missing");
        float value = 0;
        p = field.role == ROLE::SKIPPED ? std::find_if(p, end, isSeparator) : readFloat(p, end, value);
        if (p == nullptr || (p < end && !isSeparator(*p))) text.fail("a number is expected");
        assignText(field, value, point, normal);
    }
}

}  // namespace

void readXyz(InputFile& file, PointSink& sink) {
    TextReader first(file);
    Survey survey(first);
    if (survey.preamble.points() == 0 && survey.preamble.roles().empty()) {
        failFormat(file.size() == 0 ? "the file is empty" : "there are no points");
    }
    const RecordLayout layout = survey.judge.layout(survey.preamble.roles());
    CloudHeader header;
    header.count = survey.preamble.points();
    header.separator = survey.separator;
    layout.describe(header);
    survey.preamble.comments().describe(header);
    if (!sink.begin(header)) return;

    file.rewind();
    TextReader text(file);
    Preamble preamble;
    PointBlock& block = sink.block();
    std::string_view line;
    bool begun = false;
    while (text.line(line)) {
        if (!begun && preamble.take(line)) continue;
        begun = true;
        line = withoutLeadingBlanks(line);
        if (isComment(line)) continue;
        Point point;
        point.color[3] = 255;
        readPoint(line, layout, point, block.normals[block.count], text);
        block.points[block.count++] = point;
        if (block.count == PointBlock::CAPACITY) sink.add();
    }
    sink.add();
}

void writeXyz(OutputFile& file, const CloudHeader& header, PointSource& source) {
    const std::vector<std::string> comments = commentsOf(header);
    for (const std::string& comment : comments) {
        file.append("# " + comment + "\n");
    }
    // Every program reads bare numbers. Columns are named only if there are comments anyway, or if normals
    // could be taken for colours.
    if (!comments.empty() || header.normals) {
        file.append("# x y z");
        if (header.color) file.append(" red green blue");
        if (header.normals) file.append(" nx ny nz");
        file.append("\n");
    }
    PointBlock block;
    while (source.next(block)) {
        for (std::size_t i = 0; i < block.count; ++i) {
            file.commit(writePointText(file.reserve(), block.points[i], block.normals[i], header));
        }
    }
}

}  // namespace vela::io::detail

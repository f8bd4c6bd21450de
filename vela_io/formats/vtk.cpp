// SPDX-License-Identifier: Apache-2.0
// VTK's legacy format: polydata is written, and the points of other data sets are read as well.
#include "vela_io/detail/comments.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/detail/records.hpp"
#include "vela_io/formats/cloud_formats.hpp"
#include "vela_io/formats/vtk_survey.hpp"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>

namespace vela::io::detail {
namespace {

/// Reads one section along with the others, block by block.
class SectionReader {
public:
    SectionReader(const InputFile& file, const VtkSection& section, bool binary,
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
        for (const std::string& comment : commentsOf(header_)) {
            title += (title.empty() ? "" : " ") + comment;
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
    const VtkSurvey survey = surveyVtk(file);
    const CloudHeader& header = survey.header;
    for (const std::string& note : survey.notes) {
        sink.note(note);
    }
    if (!sink.begin(header)) return;
    const bool binary = header.encoding == ENCODING::BINARY;
    SectionReader points(file, survey.points, binary, {ROLE::X, ROLE::Y, ROLE::Z});
    std::optional<SectionReader> colors;
    std::optional<SectionReader> normals;
    if (header.color) {
        // The fourth of more than four components is not alpha.
        using Roles = std::initializer_list<ROLE>;
        colors.emplace(file, survey.colors, binary,
                       header.alpha ? Roles{ROLE::RED, ROLE::GREEN, ROLE::BLUE, ROLE::ALPHA}
                                    : Roles{ROLE::RED, ROLE::GREEN, ROLE::BLUE});
    }
    if (header.normals)
        normals.emplace(file, survey.normals, binary,
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

// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/file_kinds.hpp"
#include "vela_io/detail/tables.hpp"
#include "vela_io/detail/words.hpp"
#include "vela_io/formats/cloud_formats.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

namespace vela::io {
namespace detail {
namespace {

struct Format {
    CLOUD_FILE format;
    void (*read)(InputFile&, PointSink&);
    void (*write)(OutputFile&, const CloudHeader&, PointSource&);
    unsigned encodings;  ///< a bit for each ENCODING
    bool alpha;
};

constexpr unsigned bit(ENCODING encoding) {
    return 1U << static_cast<unsigned>(encoding);
}

constexpr unsigned TEXT = bit(ENCODING::ASCII);
constexpr unsigned TEXT_AND_BINARY = TEXT | bit(ENCODING::BINARY);

// Indexed by CLOUD_FILE.
constexpr Format FORMATS[] = {
    {CLOUD_FILE::XYZ, readXyz, writeXyz, TEXT, false},
    {CLOUD_FILE::PCD, readPcd, writePcd, TEXT_AND_BINARY | bit(ENCODING::BINARY_COMPRESSED), true},
    {CLOUD_FILE::PLY, readPly, writePly, TEXT_AND_BINARY | bit(ENCODING::BINARY_BIG_ENDIAN), true},
    {CLOUD_FILE::VTK, readVtk, writeVtk, TEXT_AND_BINARY, false},
};

constexpr Extension<CLOUD_FILE> EXTENSIONS[] = {{".ply", CLOUD_FILE::PLY}, {".pcd", CLOUD_FILE::PCD},
                                                {".vtk", CLOUD_FILE::VTK}, {".xyz", CLOUD_FILE::XYZ},
                                                {".txt", CLOUD_FILE::XYZ}, {".csv", CLOUD_FILE::XYZ},
                                                {".asc", CLOUD_FILE::XYZ}, {".pts", CLOUD_FILE::XYZ}};

const Format& formatOf(CLOUD_FILE format) {
    const Format* const known = rowAt(FORMATS, format);
    if (known == nullptr) refuse("an unknown cloud format");
    return *known;
}

ENCODING encodingOf(const Format& format, const std::optional<ENCODING>& wanted) {
    if (!wanted) return (format.encodings & bit(ENCODING::BINARY)) != 0 ? ENCODING::BINARY : ENCODING::ASCII;
    const bool known = *wanted >= ENCODING::ASCII && *wanted <= ENCODING::BINARY_COMPRESSED;
    if (!known || (format.encodings & bit(*wanted)) == 0) {
        refuse(toStdString(toString(format.format)) + " files have no encoding " +
               toStdString(toString(*wanted)));
    }
    return *wanted;
}

void writeCloudFile(const Mat& cloud, const String& path, const CloudOptions& options, Result& result) {
    const std::optional<CLOUD_FILE> known =
        options.format ? options.format : formatByExtension(EXTENSIONS, path);
    if (!known) refuse("the extension names no cloud format: .ply, .pcd, .vtk, .xyz, .txt, .csv, .asc, .pts");
    const Format& format = formatOf(*known);
    if (options.separator != ' ' && options.separator != ',' && options.separator != ';') {
        refuse("a separator is a blank, ',' or ';'");
    }
    CloudHeader header;
    header.encoding = encodingOf(format, options.encoding);
    PointSource source(cloud, options);
    header.count = header.width = source.count();
    if (options.keepGrid) {
        header.width = cloud.width;
        header.height = cloud.height;
    }
    header.color = options.color && cloud.dataType == MAT_TYPE::MAT_32F_C4;
    header.alpha = header.color && options.alpha && format.alpha;
    header.normals = options.normals != nullptr;
    header.unit = options.targetUnit ? options.targetUnit : options.unit;
    header.axes = options.targetAxes ? options.targetAxes : options.axes;
    if (*known == CLOUD_FILE::XYZ) header.separator = options.separator;
    result.points = cloud.width * cloud.height;
    OutputFile file(path, {options.sync, &options.progress});
    format.write(file, header, source);
    result.bytes = file.finish();
    result.written = source.count();
    result.dropped = source.dropped();
}

/// By the first bytes; nothing for text that may be points or anything else.
std::optional<CLOUD_FILE> formatByContent(std::string_view start) {
    std::string_view rest = start;
    const std::string_view word = takeWord(rest);
    if (word == "ply") return CLOUD_FILE::PLY;
    if (word == "#" && takeWord(rest) == "vtk") return CLOUD_FILE::VTK;
    if (word == "VERSION" || word == "FIELDS" || start.find("\nVERSION") != std::string_view::npos ||
        start.find("\nFIELDS") != std::string_view::npos) {
        return CLOUD_FILE::PCD;
    }
    return {};
}

CLOUD_FILE recognise(InputFile& file, const String& path) {
    const std::string_view start = file.start();
    if (const auto known = formatByContent(start)) return *known;
    if (start.find('\0') != std::string_view::npos) failFormat("not a cloud file of a known format");
    const auto byExtension = formatByExtension(EXTENSIONS, path);
    if (byExtension && *byExtension != CLOUD_FILE::XYZ) failFormat("not a file of its extension's format");
    return CLOUD_FILE::XYZ;
}

void readCloudFile(const String& path, const CloudReadOptions& options, CloudInfo* info, Mat* cloud,
                   Result& result) {
    InputFile file(path, &options.progress);
    const CLOUD_FILE known = options.format ? *options.format : recognise(file, path);
    const Format& format = formatOf(known);
    PointSink sink(options, cloud == nullptr);
    format.read(file, sink);
    if (cloud != nullptr) {
        sink.finish(*cloud);
        result.written = sink.header().count;
    }
    result.points = sink.header().count;
    result.bytes = file.size();
    if (!sink.notes().empty()) result.text = nameOf(path) + ": " + sink.notes();
    if (info == nullptr) return;
    sink.describe(*info);
    info->format = known;
}

}  // namespace

bool isCloud(std::string_view start, const String& path) {
    const bool text = start.find('\0') == std::string_view::npos;
    return formatByContent(start) || (text && formatByExtension(EXTENSIONS, path) == CLOUD_FILE::XYZ);
}

}  // namespace detail

Result writeCloud(const Mat& cloud, const String& path, const CloudOptions& options) {
    return detail::guarded(path,
                           [&](Result& result) { detail::writeCloudFile(cloud, path, options, result); });
}

Result readCloud(const String& path, Mat& cloud, CloudInfo* info) {
    return readCloud(path, cloud, CloudReadOptions(), info);
}

Result readCloud(const String& path, Mat& cloud, const CloudReadOptions& options, CloudInfo* info) {
    return detail::guarded(
        path, [&](Result& result) { detail::readCloudFile(path, options, info, &cloud, result); });
}

Result inspectCloud(const String& path, CloudInfo& info) {
    return detail::guarded(path, [&](Result& result) {
        detail::readCloudFile(path, CloudReadOptions(), &info, nullptr, result);
    });
}

}  // namespace vela::io

// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/file_kinds.hpp"
#include "vela_io/detail/tables.hpp"
#include "vela_io/formats/depth_formats.hpp"
#include "vela_io/formats/npy.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace vela::io {
namespace detail {
namespace {

constexpr Extension<DEPTH_FILE> EXTENSIONS[] = {{".png", DEPTH_FILE::PNG},
                                                {".pfm", DEPTH_FILE::PFM},
                                                {".pgm", DEPTH_FILE::PGM},
                                                {".npy", DEPTH_FILE::NPY}};

constexpr std::string_view PNG_SIGNATURE("\x89PNG\r\n\x1a\n", 8);

struct Format {
    DEPTH_FILE format;
    void (*read)(InputFile&, DepthSink&);
    bool samples;  ///< integers, not floats
};

// Indexed by DEPTH_FILE.
constexpr Format FORMATS[] = {{DEPTH_FILE::PNG, readPng, true},
                              {DEPTH_FILE::PFM, readPfm, false},
                              {DEPTH_FILE::PGM, readPgm, true},
                              {DEPTH_FILE::NPY, readNpyDepth, false}};

const Format& formatOf(DEPTH_FILE format) {
    const Format* const known = rowAt(FORMATS, format);
    if (known == nullptr) refuse("an unknown depth format");
    return *known;
}

std::optional<DEPTH_FILE> formatByContent(std::string_view start) {
    if (start.substr(0, PNG_SIGNATURE.size()) == PNG_SIGNATURE) return DEPTH_FILE::PNG;
    if (isNpy(start.data(), start.size())) return DEPTH_FILE::NPY;
    const std::string_view magic = start.substr(0, 2);
    if (magic == "P2" || magic == "P5") return DEPTH_FILE::PGM;
    if (magic == "Pf" || magic == "PF") return DEPTH_FILE::PFM;
    return {};
}

void checkOptions(const Format& format, const DepthOptions& options) {
    const std::string name = toStdString(toString(format.format)) + " files have ";
    const bool plain = options.encoding == ENCODING::ASCII;
    if (options.encoding && *options.encoding != ENCODING::BINARY &&
        !(plain && format.format == DEPTH_FILE::PGM)) {
        refuse(name + "no encoding " + toStdString(toString(*options.encoding)));
    }
    if (!format.samples && options.scale && *options.scale != 1) refuse(name + "no scale");
    if (options.compression < -1 || options.compression > 9) refuse("the compression must be -1 or 0 to 9");
    if (options.rows != ROW_ORDER::TOP_FIRST && options.rows != ROW_ORDER::BOTTOM_FIRST) {
        refuse("an unknown order of rows");
    }
}

void writeFormat(OutputFile& file, DEPTH_FILE format, const DepthHeader& header, DepthSource& source,
                 int compression) {
    switch (format) {
        case DEPTH_FILE::PNG:
            return writePng(file, header, source, compression);
        case DEPTH_FILE::PFM:
            return writePfm(file, header, source);
        case DEPTH_FILE::PGM:
            return writePgm(file, header, source);
        case DEPTH_FILE::NPY:
            return writeNpyDepth(file, header, source);
    }
}

void writeDepthFile(const Mat& depth, const String& path, const DepthOptions& options, Result& result) {
    const auto known = options.format ? options.format : formatByExtension(EXTENSIONS, path);
    if (!known) refuse("the extension names no depth format: .png, .pfm, .pgm, .npy");
    const Format& format = formatOf(*known);
    checkOptions(format, options);
    DepthSource source(depth, options);
    result.points = depth.width * depth.height;
    DepthHeader header;
    header.width = depth.width;
    header.height = depth.height;
    header.rows = options.rows;
    header.unit = options.targetUnit ? options.targetUnit : options.unit;
    header.encoding = options.encoding.value_or(ENCODING::BINARY);
    if (format.samples) {
        try {
            source.checkSamples();
        } catch (const Failure&) {
            result.clipped = source.clipped();
            throw;
        }
        header.scale = source.scale();
        header.invalid = source.invalidSample();
    }
    OutputFile file(path, {options.sync, &options.progress});
    writeFormat(file, *known, header, source, options.compression);
    result.bytes = file.finish();
    result.written = result.points;
    result.dropped = source.dropped();
    result.clipped = source.clipped();
}

void readDepthFile(const String& path, const DepthReadOptions& options, DepthInfo* info, Mat* depth,
                   Result& result) {
    InputFile file(path, &options.progress);
    const auto known = formatByContent(file.start());
    if (!known) failFormat("not a depth file of a known format");
    DepthSink sink(options, depth == nullptr);
    formatOf(*known).read(file, sink);
    result.points = sink.pixels();
    result.bytes = file.size();
    if (depth != nullptr) {
        sink.finish(*depth);
        result.written = result.points;
        result.dropped = result.points - sink.withDepth();
    }
    if (info == nullptr) return;
    sink.describe(*info);
    info->format = *known;
}

}  // namespace

bool isDepth(std::string_view start) {
    constexpr std::size_t COLOR_TYPE = 25;  // in the first chunk of a PNG file; 0 is grey
    const auto format = formatByContent(start);
    if (format == DEPTH_FILE::PNG) return start.size() > COLOR_TYPE && start[COLOR_TYPE] == 0;
    return format == DEPTH_FILE::PGM || (format == DEPTH_FILE::PFM && start[1] == 'f');
}

}  // namespace detail

Result writeDepth(const Mat& depth, const String& path, const DepthOptions& options) {
    return detail::guarded(path,
                           [&](Result& result) { detail::writeDepthFile(depth, path, options, result); });
}

Result readDepth(const String& path, Mat& depth, DepthInfo* info) {
    return readDepth(path, depth, DepthReadOptions(), info);
}

Result readDepth(const String& path, Mat& depth, const DepthReadOptions& options, DepthInfo* info) {
    return detail::guarded(
        path, [&](Result& result) { detail::readDepthFile(path, options, info, &depth, result); });
}

Result inspectDepth(const String& path, DepthInfo& info) {
    return detail::guarded(path, [&](Result& result) {
        detail::readDepthFile(path, DepthReadOptions(), &info, nullptr, result);
    });
}

FILE_KIND kindOf(const String& path) {
    FILE_KIND kind = FILE_KIND::UNKNOWN;
    std::error_code ignored;
    // Looking into a pipe would take from it.
    if (!std::filesystem::is_regular_file(toStdString(path), ignored)) return kind;
    detail::guarded(path, [&](Result& /*result*/) {
        detail::InputFile file(path);
        const std::string_view start = file.start();
        if (detail::isCloud(start, path)) kind = FILE_KIND::CLOUD;
        if (detail::isDepth(start)) kind = FILE_KIND::DEPTH;
        if (detail::isNpy(start.data(), start.size())) kind = FILE_KIND::ARRAY;
    });
    return kind;
}

}  // namespace vela::io

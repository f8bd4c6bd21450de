// SPDX-License-Identifier: Apache-2.0
// Depth maps and pictures as files.
#include "support/Session.hpp"
#include "support/files.hpp"
#include "support/scene.hpp"
#include "support/values.hpp"

#include <vela_core/vela.hpp>

#include <png.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::COLUMNS;
using bench::Comparison;
using bench::HD;
using bench::INVALID_SHARE;
using bench::ROWS;
using bench::Session;

std::string difference(const std::string& path, const std::string& expected) {
    return bench::contentOf(path) == expected ? "" : "the file has other bytes";
}

/// The floats after the three lines of a PFM file's header.
std::vector<float> floatsOfPfm(const std::string& path) {
    const std::string content = bench::contentOf(path);
    std::size_t at = 0;
    for (int line = 0; line < 3; ++line) {
        at = content.find('\n', at) + 1;
    }
    std::vector<float> values((content.size() - at) / sizeof(float));
    std::memcpy(values.data(), content.data() + at, values.size() * sizeof(float));
    return values;
}

void savePfm(Session& session, const std::string& folder) {
    std::vector<float> values = bench::makeDepth(HD, INVALID_SHARE);
    Mat depth(HD, MAT_TYPE::MAT_32F_C1, reinterpret_cast<unsigned char*>(values.data()),
              HD.width * sizeof(float), MEM::CPU);
    // Invalid depths are written as 0, so OpenCV gets zeros.
    std::vector<float> valid = values;
    for (float& value : valid) {
        if (std::isnan(value)) value = 0;
    }
    const cv::Mat matrix(ROWS, COLUMNS, CV_32FC1, valid.data());
    const std::string path = folder + "/depth.pfm";
    saveDepthAs(depth, PFM, path.c_str(), 1);
    const std::string bytes = bench::contentOf(path);

    Comparison comparison("depth PFM");
    comparison
        .ours([&] { saveDepthAs(depth, PFM, path.c_str(), 1); },
              [&] {
                  const std::vector<float> written = floatsOfPfm(path);
                  if (written.size() != valid.size()) return std::string("the file has another size");
                  return bench::differences(written.data(), valid.data(), valid.size());
              })
        .peer(
            "OpenCV", [&] { cv::imwrite(path, matrix); },
            [&] {
                // Its rows run from the bottom to the top.
                const std::vector<float> written = floatsOfPfm(path);
                if (written.size() != valid.size()) return std::string("the file has another size");
                std::string complaint;
                for (std::size_t y = 0; y < HD.height && complaint.empty(); ++y) {
                    complaint = bench::differences(&written[(HD.height - 1 - y) * HD.width],
                                                   &valid[y * HD.width], HD.width);
                }
                return complaint;
            })
        .limit(
            "write", [&] { bench::writeRaw(path, bytes); }, [&] { return difference(path, bytes); });
    session.run(comparison);
}

/// A 16-bit PNG without compression.
void writeByLibpng(const std::string& path, const cv::Mat& samples) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(writer);
    png_init_io(writer, file.get());
    png_set_compression_level(writer, 0);
    png_set_filter(writer, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_IHDR(writer, info, static_cast<png_uint_32>(samples.cols), static_cast<png_uint_32>(samples.rows),
                 16, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(writer, info);
    png_set_swap(writer);
    for (int y = 0; y < samples.rows; ++y) {
        png_write_row(writer, samples.ptr(y));
    }
    png_write_end(writer, info);
    png_destroy_write_struct(&writer, &info);
}

/// An ASCII PGM as OpenCV lays it out: each sample at least six characters wide, one row per line.
void writeByToChars(const std::string& path, const cv::Mat& samples) {
    constexpr std::ptrdiff_t WIDTH = 6;
    std::string text =
        "P2\n" + std::to_string(samples.cols) + ' ' + std::to_string(samples.rows) + "\n65535\n";
    char digits[WIDTH];
    for (int y = 0; y < samples.rows; ++y) {
        for (int x = 0; x < samples.cols; ++x) {
            const char* const end =
                std::to_chars(digits, digits + WIDTH, samples.at<std::uint16_t>(y, x)).ptr;
            text.append(static_cast<std::size_t>(WIDTH - (end - digits)), ' ');
            text.append(digits, static_cast<std::size_t>(end - digits));
        }
        text += '\n';
    }
    bench::writeRaw(path, text);
}

/// The encoder is OpenCV's; this measures what we add around it.
void saveEncodedDepth(Session& session, const std::string& folder, DEPTH_FORMAT format,
                      const std::string& name, const std::vector<int>& parameters) {
    constexpr float FACTOR = 4;
    std::vector<float> values = bench::makeDepth(HD, INVALID_SHARE);
    Mat depth(HD, MAT_TYPE::MAT_32F_C1, reinterpret_cast<unsigned char*>(values.data()),
              HD.width * sizeof(float), MEM::CPU);
    cv::Mat samples;
    cv::Mat(ROWS, COLUMNS, CV_32FC1, values.data()).convertTo(samples, CV_16UC1, FACTOR);
    const std::string path = folder + "/depth." + name;
    cv::imwrite(path, samples, parameters);
    const std::string expected = bench::contentOf(path);

    Comparison comparison("depth " + name);
    comparison.check([&] { return difference(path, expected); })
        .ours([&] { saveDepthAs(depth, format, path.c_str(), FACTOR); })
        .peer("cv::imwrite", [&] { cv::imwrite(path, samples, parameters); })
        .limit("write", [&] { bench::writeRaw(path, expected); });
    if (format == PNG) {
        comparison.peer(
            "libpng", [&] { writeByLibpng(path, samples); },
            [&] {
                return cv::countNonZero(cv::imread(path, cv::IMREAD_UNCHANGED) != samples) == 0 ? ""
                                                                                                : "differs";
            });
    } else {
        comparison.peer("to_chars", [&] { writeByToChars(path, samples); });
    }
    session.run(comparison);
}

void writePicture(Session& session, const std::string& folder, MAT_TYPE type, int cvType,
                  const std::string& extension, const std::vector<int>& parameters) {
    Mat picture(HD, type);
    std::vector<std::uint8_t> samples = bench::makePicture(HD, static_cast<int>(picture.pixelBytes));
    std::memcpy(picture.ptrCPU, samples.data(), samples.size());
    const cv::Mat matrix(ROWS, COLUMNS, cvType, samples.data());
    const std::string path = folder + "/picture." + extension;
    cv::imwrite(path, matrix, parameters);
    const std::string expected = bench::contentOf(path);

    Comparison comparison("picture " + extension + ' ' + cv::typeToString(cvType));
    comparison.check([&] { return difference(path, expected); })
        .ours([&] { picture.write(path.c_str()); })
        .peer("cv::imwrite", [&] { cv::imwrite(path, matrix, parameters); })
        .limit("write", [&] { bench::writeRaw(path, expected); });
    session.run(comparison);

    Mat ours;
    cv::Mat theirs;
    const auto differsFrom = [&](const unsigned char* pixels) {
        const cv::Mat decoded = cv::imread(path, cv::IMREAD_UNCHANGED);
        return std::memcmp(pixels, decoded.data, decoded.total() * decoded.elemSize()) == 0 ? "" : "differs";
    };
    Comparison reading("read " + extension + ' ' + cv::typeToString(cvType));
    reading.ours([&] { ours.read(path.c_str()); }, [&] { return differsFrom(ours.ptrCPU); })
        .peer(
            "cv::imread", [&] { theirs = cv::imread(path, cv::IMREAD_UNCHANGED); },
            [&] { return differsFrom(theirs.data); });
    session.run(reading);
}

void runAll(Session& session) {
    cv::setNumThreads(1);
    const bench::ScratchFolder scratch(bench::memoryFolder());
    const std::string folder = scratch / ".";
    savePfm(session, folder);
    saveEncodedDepth(session, folder, PNG, "png", {cv::IMWRITE_PNG_COMPRESSION, 0});
    saveEncodedDepth(session, folder, PGM, "pgm", {cv::IMWRITE_PXM_BINARY, 0});
    const std::vector<int> usualPng = {cv::IMWRITE_PNG_COMPRESSION, 3};
    writePicture(session, folder, MAT_TYPE::MAT_8U_C1, CV_8UC1, "png", usualPng);
    writePicture(session, folder, MAT_TYPE::MAT_8U_C3, CV_8UC3, "png", usualPng);
    writePicture(session, folder, MAT_TYPE::MAT_8U_C4, CV_8UC4, "png", usualPng);
    writePicture(session, folder, MAT_TYPE::MAT_US16_C1, CV_16UC1, "png", usualPng);
    writePicture(session, folder, MAT_TYPE::MAT_8U_C3, CV_8UC3, "jpg", {cv::IMWRITE_JPEG_QUALITY, 95});
    writePicture(session, folder, MAT_TYPE::MAT_8U_C4, CV_8UC4, "bmp", {});
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {15, 0.01}, runAll);
}

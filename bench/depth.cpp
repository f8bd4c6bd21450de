// Depth maps and pictures as files.
#include "support/Session.hpp"
#include "support/files.hpp"
#include "support/scene.hpp"
#include "support/values.hpp"

#include <vela_core/vela.hpp>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <cstring>
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
    // Invalid depths are written as 0; OpenCV gets them so.
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

/// The encoder is OpenCV's: what we add around it is measured.
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
        .peerAndLimit("cv::imwrite", [&] { cv::imwrite(path, samples, parameters); });
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
        .peerAndLimit("cv::imwrite", [&] { cv::imwrite(path, matrix, parameters); });
    session.run(comparison);
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

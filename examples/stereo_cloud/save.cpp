// SPDX-License-Identifier: Apache-2.0
#include "save.hpp"

#include "Options.hpp"

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vector>

namespace stereo {
namespace {

using Point = vela::Vector4<float>;

struct CloudFile {
    POINT_CLOUD_FORMAT format;
    const char* name;
    std::size_t headerLines;
    std::size_t linesPerPoint;
    /// The expected end of a file with this number of points, the last of which is this.
    std::string (*end)(const Point& point, std::size_t points);
};

std::string xyzEnd(const Point& p, std::size_t /*points*/) {
    return textOf("\n%f %f %f", double{p.x}, double{p.y}, double{p.z});
}

std::string plyEnd(const Point& p, std::size_t points) {
    std::uint8_t rgba[4];
    std::memcpy(rgba, &p.w, sizeof rgba);
    return xyzEnd(p, points) + textOf(" %d %d %d", rgba[0], rgba[1], rgba[2]);
}

std::string pcdEnd(const Point& p, std::size_t points) {
    std::uint8_t rgba[4];
    std::memcpy(rgba, &p.w, sizeof rgba);
    std::uint32_t bits = 0;  // 0x00RRGGBB
    for (int i = 0; i < 3; ++i) {
        bits = bits << 8 | std::min<std::uint8_t>(rgba[i], 254);
    }
    float packed = 0.0F;
    std::memcpy(&packed, &bits, sizeof packed);
    return xyzEnd(p, points) + textOf(" %e", double{packed});
}

std::string vtkEnd(const Point& /*point*/, std::size_t points) {
    return textOf("\n1 %zu\n", points - 1);
}

constexpr CloudFile CLOUD_FILES[] = {{PLY, "cloud.ply", 10, 1, plyEnd},
                                     {PCD, "cloud.pcd", 10, 1, pcdEnd},
                                     {VTK, "cloud.vtk", 5, 2, vtkEnd},
                                     {XYZ, "cloud.xyz", 2, 1, xyzEnd}};

[[noreturn]] void failToWrite(const std::string& path) {
    throw UserError("cannot write all of " + path + "; is the disk full?");
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

const Point& lastPoint(const vela::Mat& cloud) {
    const auto* const first = cloud.getPtr<Point>();
    const auto* point = first + cloud.width * cloud.height - 1;
    while (point != first && std::isnan(point->x))
        --point;
    return *point;
}

bool samePixels(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

}  // namespace

std::string saveCloud(vela::Mat& cloud, POINT_CLOUD_FORMAT format, const Output& output, std::size_t points) {
    const CloudFile& kind = *std::find_if(std::begin(CLOUD_FILES), std::end(CLOUD_FILES),
                                          [=](const CloudFile& file) { return file.format == format; });
    const std::string path = output.path(kind.name);
    if (!savePointCloudAs(cloud, format, path.c_str(), true)) failToWrite(path);
    const std::string text = contentOf(path);
    // The last point has no line end; in a VTK file the list of vertices begins behind it.
    const std::size_t lines = kind.headerLines + kind.linesPerPoint * points + kind.linesPerPoint - 2;
    const auto written = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    if (written != lines || !endsWith(text, kind.end(lastPoint(cloud), points))) failToWrite(path);
    return textOf("%s, %zu points, %.1f MB", kind.name, points, static_cast<double>(text.size()) / 1e6);
}

void saveDepth(vela::Mat& depth, DEPTH_FORMAT format, const Output& output) {
    const std::string path = output.path(format == PNG   ? "depth.png"
                                         : format == PGM ? "depth.pgm"
                                                         : "depth.pfm");
    if (!saveDepthAs(depth, format, path, 1.0F)) failToWrite(path);
    const cv::Mat pixels(static_cast<int>(depth.height), static_cast<int>(depth.width), CV_32FC1,
                         depth.ptrCPU);
    if (format == PFM) {
        const auto header = std::string_view("Pf\n\n-1.000000\n").size() +
                            textOf("%zu %zu", depth.width, depth.height).size();
        if (std::filesystem::file_size(path) != header + pixels.total() * sizeof(float)) failToWrite(path);
        return;
    }
    cv::Mat wanted;
    pixels.convertTo(wanted, CV_16U);
    if (!samePixels(cv::imread(path, cv::IMREAD_UNCHANGED), wanted)) failToWrite(path);
}

}  // namespace stereo

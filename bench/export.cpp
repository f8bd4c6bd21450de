// SPDX-License-Identifier: Apache-2.0
// Point clouds as text files, on one thread.
#include "support/Session.hpp"
#include "support/files.hpp"
#include "support/scene.hpp"
#include "support/values.hpp"

#include <vela_core/vela.hpp>

#include <pcl/conversions.h>
#include <pcl/io/pcd_io.h>
#include <pcl/io/ply_io.h>
#include <pcl/io/vtk_io.h>
#include <pcl/point_types.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::HD;
using bench::INVALID_SHARE;
using bench::Session;

/// A valid point; peers get only these and need not skip invalid ones.
struct Point {
    float x;
    float y;
    float z;
    std::uint32_t color;

    int channel(int i) const { return static_cast<int>(color >> 8 * i & 0xFF); }
    /// The float that carries the colour in PCD files.
    float packed() const {
        const auto limited = [this](int i) { return static_cast<std::uint32_t>(std::min(channel(i), 254)); };
        const std::uint32_t bits = limited(0) << 16 | limited(1) << 8 | limited(2);
        float result = 0;
        std::memcpy(&result, &bits, sizeof result);
        return result;
    }
};

/// The files of a format, as all contenders except PCL write them.
struct Format {
    const char* name;
    const char* extension;
    const char* headerEnd;  // the last line before the points
    POINT_CLOUD_FORMAT format;
    enum class Color { NONE, PACKED, SEPARATE } color;
};
constexpr Format FORMATS[] = {
    {"XYZ", ".xyz", "# Number of points ", XYZ, Format::Color::NONE},
    {"PLY with colour", ".ply", "end_header", PLY, Format::Color::SEPARATE},
    {"VTK", ".vtk", "POINTS ", VTK, Format::Color::NONE},
    {"PCD with colour", ".pcd", "DATA ascii", PCD, Format::Color::PACKED},
};

/// The beginning of a file, through the line that starts with this.
std::string headerOf(const std::string& content, const char* lastLine) {
    const std::size_t line = content.find(lastLine);
    return line == std::string::npos ? std::string() : content.substr(0, content.find('\n', line) + 1);
}

void writeByPrintf(const std::string& path, const std::string& header, const Format& format,
                   const std::vector<Point>& points) {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (file == nullptr) return;
    std::fputs(header.c_str(), file);
    const char* lineEnd = "";
    for (const Point& p : points) {
        std::fprintf(file, "%s%f %f %f", lineEnd, static_cast<double>(p.x), static_cast<double>(p.y),
                     static_cast<double>(p.z));
        if (format.color == Format::Color::PACKED) std::fprintf(file, " %e", static_cast<double>(p.packed()));
        if (format.color == Format::Color::SEPARATE) {
            std::fprintf(file, " %d %d %d", p.channel(0), p.channel(1), p.channel(2));
        }
        lineEnd = "\n";
    }
    if (format.format == VTK) {
        std::fprintf(file, "VERTICES %zu %zu\n", points.size(), 2 * points.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
            std::fprintf(file, "1 %zu\n", i);
        }
    }
    std::fclose(file);
}

/// A file written by std::to_chars through our own buffer.
class CharsFile {
public:
    explicit CharsFile(const std::string& path) : file_(path, std::ios::binary), buffer_(SIZE) {}
    ~CharsFile() { flush(); }
    CharsFile(const CharsFile&) = delete;
    CharsFile& operator=(const CharsFile&) = delete;

    void text(const std::string& text) {
        flush();
        file_ << text;
    }
    void character(char c) { *end_++ = c; }
    template <class... Format>
    void number(Format... valueAndFormat) {
        end_ = std::to_chars(end_, buffer_.data() + SIZE, valueAndFormat...).ptr;
    }
    void endOfPoint() {
        if (end_ > buffer_.data() + SIZE - LONGEST_LINE) flush();
    }

private:
    static constexpr std::size_t SIZE = std::size_t{256} << 10;
    static constexpr std::size_t LONGEST_LINE = 512;

    void flush() {
        file_.write(buffer_.data(), end_ - buffer_.data());
        end_ = buffer_.data();
    }

    std::ofstream file_;
    std::vector<char> buffer_;
    char* end_ = buffer_.data();
};

void writeByToChars(const std::string& path, const std::string& header, const Format& format,
                    const std::vector<Point>& points) {
    constexpr int DIGITS = 6;
    CharsFile file(path);
    file.text(header);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point& p = points[i];
        if (i > 0) file.character('\n');
        file.number(p.x, std::chars_format::fixed, DIGITS);
        for (const float value : {p.y, p.z}) {
            file.character(' ');
            file.number(value, std::chars_format::fixed, DIGITS);
        }
        if (format.color == Format::Color::PACKED) {
            file.character(' ');
            file.number(p.packed(), std::chars_format::scientific, DIGITS);
        }
        for (int channel = 0; format.color == Format::Color::SEPARATE && channel < 3; ++channel) {
            file.character(' ');
            file.number(p.channel(channel));
        }
        file.endOfPoint();
    }
    if (format.format != VTK) return;
    file.text("VERTICES " + std::to_string(points.size()) + ' ' + std::to_string(2 * points.size()) + '\n');
    for (std::size_t i = 0; i < points.size(); ++i) {
        file.character('1');
        file.character(' ');
        file.number(i);
        file.character('\n');
        file.endOfPoint();
    }
}

/// The cloud in the types of all contenders.
struct Scene {
    Scene() : values(bench::makeCloud(HD, INVALID_SHARE, bench::Lane::OPAQUE)) {
        for (std::size_t i = 0; i < values.size(); i += 4) {
            Point point;
            std::memcpy(&point, &values[i], sizeof point);
            if (std::isnan(point.x)) continue;
            points.push_back(point);
            plain.emplace_back(point.x, point.y, point.z);
            colored.emplace_back(point.x, point.y, point.z, static_cast<std::uint8_t>(point.channel(0)),
                                 static_cast<std::uint8_t>(point.channel(1)),
                                 static_cast<std::uint8_t>(point.channel(2)));
        }
        pcl::toPCLPointCloud2(plain, blob);
    }

    /// Checks that a file of PCL has the given points, to PCL's eight digits.
    std::string checkValues(const std::string& path, const char* headerEnd) const {
        const std::string content = bench::contentOf(path);
        const char* at = content.c_str() + headerOf(content, headerEnd).size();
        for (const Point& point : points) {
            const float expected[] = {point.x, point.y, point.z};
            float written[3] = {};
            for (float& value : written) {
                char* end = nullptr;
                value = std::strtof(at, &end);
                at = end;
            }
            std::string complaint = bench::differences(written, expected, 3, {1e-6, 1e-7});
            if (!complaint.empty()) return complaint;
            at = std::strchr(at, '\n');
            if (at == nullptr) return "the file is too short";
        }
        return {};
    }

    std::vector<float> values;
    std::vector<Point> points;
    pcl::PointCloud<pcl::PointXYZ> plain;
    pcl::PointCloud<pcl::PointXYZRGB> colored;
    pcl::PCLPointCloud2 blob;
};

void addPcl(Comparison& comparison, const Format& format, const Scene& scene, const std::string& path) {
    const bench::Check check = [&scene, &path, &format] {
        // PCL has no plain XYZ: its closest is PCD without colour.
        return scene.checkValues(path, format.format == XYZ ? "DATA ascii" : format.headerEnd);
    };
    switch (format.format) {
        case XYZ:
            comparison.peer(
                "PCL (PCD)", [&] { pcl::PCDWriter().writeASCII(path, scene.plain); }, check);
            break;
        case PCD:
            comparison.peer(
                "PCL", [&] { pcl::PCDWriter().writeASCII(path, scene.colored); }, check);
            break;
        case PLY:
            comparison.peer(
                "PCL", [&] { pcl::io::savePLYFileASCII(path, scene.colored); }, check);
            break;
        case VTK:
            comparison.peer(
                "PCL", [&] { pcl::io::saveVTKFile(path, scene.blob, 8); }, check);
            break;
    }
}

void exportCloud(Session& session, const Format& format, Scene& scene, const std::string& parent,
                 bool onDisk) {
    const bench::ScratchFolder folder(parent);
    const std::string path = folder / "cloud" + format.extension;
    Mat cloud(HD, MAT_TYPE::MAT_32F_C4, reinterpret_cast<unsigned char*>(scene.values.data()),
              HD.width * sizeof(Point), MEM::CPU);
    const auto ours = [&] { savePointCloudAs(cloud, format.format, (folder / "cloud").c_str(), true); };
    ours();
    const std::string header = headerOf(bench::contentOf(path), format.headerEnd);
    writeByPrintf(path, header, format, scene.points);
    const std::string expected = bench::contentOf(path);

    Comparison comparison(std::string(format.name) + (onDisk ? " on disk" : ""));
    if (onDisk) comparison.byWallClock();
    comparison.before([&] { std::remove(path.c_str()); })
        .check([&] { return bench::contentOf(path) == expected ? "" : "the file has other bytes"; })
        .ours(ours)
        .limit("write", [&] { bench::writeRaw(path, expected); });
    if (!onDisk) {
        comparison.peer("printf", [&] { writeByPrintf(path, header, format, scene.points); })
            .peer("to_chars", [&] { writeByToChars(path, header, format, scene.points); });
    }
    addPcl(comparison, format, scene, path);
    session.run(comparison);
    if (onDisk || format.format != XYZ) return;

    // The runs above replace an existing file; these make a new one each time.
    const auto remove = [&] { std::remove(path.c_str()); };
    Comparison fresh(std::string(format.name) + ", new file");
    const bench::Check whole = [&] { return std::string(); };
    fresh.addSettled("ours", ours, remove, whole)
        .addSettled(
            "limit:write", [&] { bench::writeRaw(path, expected); }, remove, whole);
    session.run(fresh);
}

void runAll(Session& session) {
    Scene scene;
    for (const Format& format : FORMATS) {
        exportCloud(session, format, scene, bench::memoryFolder(), false);
    }
    exportCloud(session, FORMATS[std::size(FORMATS) - 1], scene, VELA_BENCH_DISK_FOLDER, true);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {9, 0.02}, runAll);
}

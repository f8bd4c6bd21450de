// SPDX-License-Identifier: Apache-2.0
// Checked files of clouds and depth maps, on one thread, in a folder in memory.
#include "support/Session.hpp"
#include "support/children.hpp"
#include "support/files.hpp"
#include "support/scene.hpp"

#include <vela_core/vela.hpp>
#include <vela_io/io.hpp>

#include <fcntl.h>
#include <pcl/io/pcd_io.h>
#include <pcl/io/ply_io.h>
#include <pcl/point_types.h>
#include <unistd.h>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::HD;
using bench::Session;

struct Format {
    const char* name;
    const char* file;
    io::ENCODING encoding;
};
constexpr Format FORMATS[] = {{"binary PLY", "cloud.ply", io::ENCODING::BINARY},
                              {"binary PCD", "cloud.pcd", io::ENCODING::BINARY},
                              {"compressed PCD", "cloud.pcd", io::ENCODING::BINARY_COMPRESSED},
                              {"text PLY", "cloud.ply", io::ENCODING::ASCII},
                              {"text PCD", "cloud.pcd", io::ENCODING::ASCII},
                              {"text XYZ", "cloud.xyz", io::ENCODING::ASCII},
                              {"binary VTK", "cloud.vtk", io::ENCODING::BINARY}};

bool isPly(const Format& format) {
    return std::strstr(format.file, "ply") != nullptr;
}

/// The same cloud as a Mat and as PCL has it.
struct Scene {
    Scene() : values(bench::makeCloud(HD, bench::INVALID_SHARE, bench::Lane::OPAQUE)) {
        cloud = Mat(HD, MAT_TYPE::MAT_32F_C4, reinterpret_cast<unsigned char*>(values.data()), HD.width * 16,
                    MEM::CPU);
        for (std::size_t i = 0; i < values.size(); i += 4) {
            if (std::isnan(values[i])) continue;
            std::uint8_t color[4];
            std::memcpy(color, &values[i + 3], sizeof color);
            colored.emplace_back(values[i], values[i + 1], values[i + 2], color[0], color[1], color[2]);
        }
    }

    std::vector<float> values;
    Mat cloud;
    pcl::PointCloud<pcl::PointXYZRGB> colored;
};

void writeByPcl(const Format& format, const std::string& path,
                const pcl::PointCloud<pcl::PointXYZRGB>& cloud) {
    const bool binary = format.encoding != io::ENCODING::ASCII;
    if (isPly(format)) {
        pcl::PLYWriter().write(path, cloud, binary);
    } else if (format.encoding == io::ENCODING::BINARY_COMPRESSED) {
        pcl::PCDWriter().writeBinaryCompressed(path, cloud);
    } else {
        pcl::PCDWriter().write(path, cloud, binary);
    }
}

void readByPcl(const Format& format, const std::string& path, pcl::PointCloud<pcl::PointXYZRGB>& cloud) {
    if (isPly(format)) {
        pcl::PLYReader().read(path, cloud);
    } else {
        pcl::PCDReader().read(path, cloud);
    }
}

/// Reads a whole file by `read`, into new memory each time.
void readRaw(const std::string& path, std::size_t bytes) {
    const std::unique_ptr<char[]> memory(new char[bytes]);
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (std::size_t done = 0; done < bytes;) {
        const ssize_t got = read(file, memory.get() + done, bytes - done);
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    close(file);
    benchmark::DoNotOptimize(memory[bytes / 2]);
}

/// Compares point by point, to the last bit and colour.
std::string differences(const Mat& cloud, const pcl::PointCloud<pcl::PointXYZRGB>& wanted, bool exact) {
    if (cloud.width * cloud.height != wanted.size()) return "another number of points";
    const float* p = cloud.getPtr<float>();
    for (const pcl::PointXYZRGB& point : wanted) {
        const float xyz[] = {point.x, point.y, point.z};
        for (int k = 0; k < 3; ++k) {
            if (exact ? p[k] != xyz[k] : std::fabs(p[k] - xyz[k]) > 1e-6F * std::fabs(xyz[k]) + 1e-3F)
                return "another point";
        }
        std::uint8_t color[4];
        std::memcpy(color, p + 3, sizeof color);
        if (color[0] != point.r || color[1] != point.g || color[2] != point.b) return "another colour";
        p += 4;
    }
    return {};
}

std::string differencesOfFile(const std::string& path, const Scene& scene, bool exact) {
    Mat cloud;
    const io::Result result = io::readCloud(path, cloud);
    return result.ok() ? differences(cloud, scene.colored, exact) : toStdString(result.text);
}

void compareClouds(Session& session, const Format& format, const Scene& scene) {
    const bench::ScratchFolder folder(bench::memoryFolder());
    const std::string path = folder / format.file;
    const bool pclHasIt =
        std::strstr(format.file, "xyz") == nullptr && std::strstr(format.file, "vtk") == nullptr;
    const bool text = format.encoding == io::ENCODING::ASCII;
    io::CloudOptions options;
    options.encoding = format.encoding;
    io::writeCloud(scene.cloud, path, options);
    const std::string content = bench::contentOf(path);

    Comparison writing("write " + std::string(format.name));
    const std::string raw = folder / "raw";
    writing.check([&] { return differencesOfFile(path, scene, true); })
        .ours([&] { io::writeCloud(scene.cloud, path, options); })
        .limit(
            "write", [&] { bench::writeRaw(raw, content); }, bench::nothingToCheck);
    if (pclHasIt) {
        writing.peer(
            "PCL", [&] { writeByPcl(format, path, scene.colored); },
            [&] { return differencesOfFile(path, scene, !text); });
    }
    session.run(writing);

    io::writeCloud(scene.cloud, path, options);
    Comparison reading("read " + std::string(format.name));
    Mat back;
    pcl::PointCloud<pcl::PointXYZRGB> pclBack;
    reading.check([&] { return differences(back, scene.colored, true); })
        .ours([&] {
            back.free();
            io::readCloud(path, back);
        })
        .limit(
            "read", [&] { readRaw(path, content.size()); }, bench::nothingToCheck);
    if (pclHasIt) {
        reading.peer(
            "PCL", [&] { readByPcl(format, path, pclBack); },
            [&] {
                for (std::size_t i = 0; i < scene.colored.size(); ++i) {
                    const auto& a = scene.colored[i];
                    if (i >= pclBack.size()) return "PCL reads fewer points";
                    const auto& b = pclBack[i];
                    if (a.x != b.x || a.z != b.z || a.r != b.r || a.g != b.g || a.b != b.b)
                        return "PCL reads another point";
                }
                return "";
            });
    }
    session.run(reading);
}

/// Another project's Python library, in one separate process for all repetitions. It times its calls inside
/// that process, so that the interpreter's start does not count.
class PythonPeer {
public:
    explicit PythonPeer(const std::string& name) : name_(name) {
        if (access(VELA_BENCH_READERS, X_OK) != 0) {
            absent_ = "no build/readers, which scripts/setup --with readers makes";
            return;
        }
        process_ = std::make_unique<bench::Dialogue>(
            std::vector<std::string>{VELA_BENCH_READERS, VELA_BENCH_SCRIPTS "/readers.py", name});
        if (process_->listen() != "ready") absent_ = "not in build/readers";
    }

    /// Adds the library as a reader or writer, or states in the table why it cannot run.
    void join(Comparison& comparison, const std::string& verb, const std::string& path,
              const bench::Check& check) {
        if (!absent_.empty()) {
            comparison.absent(name_, absent_);
            return;
        }
        comparison.addSelfTimed(
            "peer:" + name_, [this, verb, path] { return std::stod(ask(verb, path)); }, check);
    }

    /// The cloud that was read last, as pixels of a MAT_32F_C4, or the cloud to be written.
    void save(const std::string& path) { ask("save", path); }
    void take(const std::string& path) {
        if (absent_.empty()) ask("take", path);
    }

private:
    std::string ask(const std::string& verb, const std::string& path) {
        std::string answer = process_->ask(verb + ' ' + path);
        if (answer.rfind("failed", 0) == 0) throw std::runtime_error(answer);
        return answer;
    }

    std::string name_;
    std::string absent_;
    std::unique_ptr<bench::Dialogue> process_;
};

/// Binary PLY again by wall clock, the only clock that other processes can be compared by.
void comparePython(Session& session, const Scene& scene) {
    const Format& format = FORMATS[0];
    const bench::ScratchFolder folder(bench::memoryFolder());
    const std::string path = folder / format.file;
    const std::string pixels = folder / "pixels";
    const auto nothing = [] {};
    io::writeCloud(scene.cloud, path);
    PythonPeer peers[] = {PythonPeer("Open3D"), PythonPeer("plyfile")};

    Comparison reading("read binary PLY, wall clock");
    Mat back;
    pcl::PointCloud<pcl::PointXYZRGB> pclBack;
    const auto read = [&] {
        back.free();
        io::readCloud(path, back);
    };
    reading.addSettled("ours", read, nothing, [&] { return differences(back, scene.colored, true); })
        .addSettled(
            "peer:PCL", [&] { readByPcl(format, path, pclBack); }, nothing,
            [&] { return pclBack.size() == scene.colored.size() ? "" : "another number of points"; });
    for (PythonPeer& peer : peers) {
        peer.join(reading, "read", path, [&] {
            peer.save(pixels);
            std::string bytes = bench::contentOf(pixels);
            const std::size_t width = bytes.size() / 16;
            const Mat found({width, 1}, MAT_TYPE::MAT_32F_C4, reinterpret_cast<unsigned char*>(bytes.data()),
                            width * 16, MEM::CPU);
            return differences(found, scene.colored, true);
        });
    }
    session.run(reading);

    Comparison writing("write binary PLY, wall clock");
    const auto check = [&] { return differencesOfFile(path, scene, true); };
    writing.check(check)
        .addSettled(
            "ours", [&] { io::writeCloud(scene.cloud, path); }, nothing)
        .addSettled(
            "peer:PCL", [&] { writeByPcl(format, path, scene.colored); }, nothing);
    Mat dense;
    io::readCloud(path, dense);
    bench::writeRaw(pixels, {reinterpret_cast<const char*>(dense.getPtr<float>()), dense.width * 16});
    for (PythonPeer& peer : peers) {
        peer.take(pixels);
        peer.join(writing, "write", path, check);
    }
    session.run(writing);
}

void compareDepth(Session& session) {
    const bench::ScratchFolder folder(bench::memoryFolder());
    const std::string path = folder / "depth.png";
    std::vector<float> depths = bench::makeDepth(HD, bench::INVALID_SHARE);
    const Mat depth(HD, MAT_TYPE::MAT_32F_C1, reinterpret_cast<unsigned char*>(depths.data()), HD.width * 4,
                    MEM::CPU);
    cv::Mat view(bench::ROWS, bench::COLUMNS, CV_32F, depths.data());
    cv::Mat noNan = view.clone();
    cv::patchNaNs(noNan, 0);
    for (const int level : {-1, 1, 6}) {
        io::DepthOptions options;
        options.compression = level;
        options.allowClipping = true;
        std::vector<int> parameters;
        if (level >= 0) parameters = {cv::IMWRITE_PNG_COMPRESSION, level};
        const auto byOpenCv = [&] {
            cv::Mat samples;
            noNan.convertTo(samples, CV_16U);
            cv::imwrite(path, samples, parameters);
        };
        byOpenCv();
        const std::size_t theirs = bench::contentOf(path).size();
        io::writeDepth(depth, path, options);
        const std::size_t bytes = bench::contentOf(path).size();
        Comparison comparison("write depth PNG, level " +
                              (level < 0 ? std::string("default") : std::to_string(level)) + ", size " +
                              std::to_string(bytes * 100 / theirs) + " % of OpenCV's");
        comparison
            .check(
                [&] { return cv::imread(path, cv::IMREAD_UNCHANGED).type() == CV_16U ? "" : "not 16 bits"; })
            .ours([&] { io::writeDepth(depth, path, options); })
            .peer("OpenCV", byOpenCv);
        session.run(comparison);
    }
    Comparison reading("read depth PNG");
    Mat back;
    reading.ours([&] { io::readDepth(path, back); }).peer("OpenCV", [&] {
        cv::Mat samples = cv::imread(path, cv::IMREAD_UNCHANGED);
        cv::Mat floats;
        samples.convertTo(floats, CV_32F);
    });
    session.run(reading);
}

void runAll(Session& session) {
    const Scene scene;
    for (const Format& format : FORMATS) {
        compareClouds(session, format, scene);
    }
    comparePython(session, scene);
    compareDepth(session);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {7, 0.02}, runAll);
}

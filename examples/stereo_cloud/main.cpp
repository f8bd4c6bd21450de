// From a rectified stereo pair to a point cloud in four file formats: the capture side makes the cloud, and
// an application asks for it in metres and in a right-handed frame and saves it.
#include "Options.hpp"
#include "Output.hpp"
#include "preview.hpp"
#include "stereo.hpp"

#include <vela_core/vela.hpp>

#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

using namespace stereo;

/// Runs one step and prints a line with what it did and how long it took.
template <class Work>
void step(const char* name, Work work) {
    const auto start = std::chrono::steady_clock::now();
    const std::string text = work();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::printf("%-9s %8.1f ms  %s\n", name, time.count(), text.c_str());
    std::fflush(stdout);
}

template <class... Arguments>
std::string textOf(const char* format, Arguments... arguments) {
    char text[400];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

/// The Mat's own description and how its rows lie.
std::string describe(const vela::Mat& mat) {
    std::string text = mat.getInfos().c_str();
    text.pop_back();  // its line end
    if (mat.ptrCPU != nullptr) text += textOf(" Host rows of %zu bytes.", mat.stepBytesCPU);
    if (mat.ptrGPU != nullptr) text += textOf(" GPU rows of %zu bytes.", mat.stepBytesGPU);
    return text;
}

void require(vela::ERROR_CODE code, const char* what) {
    if (code != vela::ERROR_CODE::SUCCESS) {
        throw UserError(std::string(what) + " failed: " + vela::toVerbose(code).c_str());
    }
}

void saveCloud(vela::Mat& cloud, const Output& output, std::size_t points) {
    struct Format {
        POINT_CLOUD_FORMAT format;
        const char* name;
        std::size_t headerLines;
        std::size_t linesPerPoint;
    };
    const Format formats[] = {{PLY, "cloud.ply", 10, 1},
                              {PCD, "cloud.pcd", 10, 1},
                              {VTK, "cloud.vtk", 5, 2},
                              {XYZ, "cloud.xyz", 2, 1}};
    for (const Format& format : formats) {
        step("save", [&] {
            const std::string path = output.path(format.name);
            if (!savePointCloudAs(cloud, format.format, path.c_str(), true))
                throw UserError("cannot write " + path);
            // The last point has no line end; in a VTK file the list of vertices begins behind it.
            const std::size_t lines =
                format.headerLines + format.linesPerPoint * points + format.linesPerPoint - 2;
            if (points > 0 && countLines(path) != lines) throw UserError("no room for " + path);
            return textOf("%s, %zu points, %.1f MB", format.name, points,
                          static_cast<double>(std::filesystem::file_size(path)) / 1e6);
        });
    }
}

void saveDepth(vela::Mat& depth, const Output& output) {
    const auto save = [&](DEPTH_FORMAT format, const char* name, std::size_t bytesPerPixel) {
        const std::string path = output.path(name);
        if (!saveDepthAs(depth, format, path, 1.0F)) throw UserError("cannot write " + path);
        const std::size_t least = depth.width * depth.height * bytesPerPixel;
        if (std::filesystem::file_size(path) < least) throw UserError("no room for " + path);
    };
    step("depth", [&] {
        save(PNG, "depth.png", 2);
        save(PGM, "depth.pgm", 2);  // a digit and a blank
        return "depth.png and depth.pgm in millimetres: " + describe(depth);
    });
    step("depth", [&] {
        require(convertUnit(depth, vela::UNIT::MILLIMETER, vela::UNIT::METER, vela::MEM::CPU),
                "converting the unit");
        save(PFM, "depth.pfm", 4);
        return std::string("depth.pfm in metres");
    });
}

/// Writes the left picture and reads it back.
void savePicture(cv::Mat& left, const Output& output) {
    const std::string path = output.path("left.png");
    vela::Mat picture(static_cast<std::size_t>(left.cols), static_cast<std::size_t>(left.rows),
                      vela::MAT_TYPE::MAT_8U_C3, left.data, left.step, vela::MEM::CPU);
    picture.name = "left";
    step("write", [&] {
        require(picture.write(path), "writing the picture");
        return "left.png: " + describe(picture);
    });
    step("read", [&] {
        vela::Mat back;
        back.name = "left.png";
        require(back.read(path), "reading the picture back");
        if (std::memcmp(back.ptrCPU, picture.ptrCPU, back.stepBytesCPU * back.height) != 0) {
            throw UserError(path + " does not hold the picture");
        }
        return "the same picture: " + describe(back);
    });
}

void run(const Options& options) {
    using vela::COORDINATE_SYSTEM;
    using vela::MEM;
    using vela::UNIT;
    Pair pair;
    step("read", [&] {
        pair = readPair(options);
        return textOf("stereo pair of %d x %d pixels", pair.left.cols, pair.left.rows);
    });
    Output output(options.out);
    cv::Mat disparity;
    step("match", [&] {
        disparity = matchPair(pair);
        return std::string("disparity by semi-global matching");
    });
    Quality quality;
    step("measure", [&] {
        quality = measure(options, disparity, pair.truth);
        std::string text =
            textOf("%zu of %zu pixels, %.1f %%, have depth", quality.withDepth, disparity.total(),
                   100.0 * static_cast<double>(quality.withDepth) / static_cast<double>(disparity.total()));
        if (std::isnan(quality.medianRelativeError)) return text;
        return text + textOf(", median relative depth error %.2f %%", 100.0 * quality.medianRelativeError);
    });
    vela::Mat cloud;
    step("capture", [&] {
        cloud = makeCloud(options, pair.left, disparity);
        cloud.name = "cloud";
        return "in millimetres: " + describe(cloud);
    });
    step("unit", [&] {
        require(convertUnit(cloud, UNIT::MILLIMETER, UNIT::METER, MEM::GPU), "converting the unit");
        return std::string("millimetres to metres on the GPU side");
    });
    step("frame", [&] {
        require(convertCoordinateSystem(cloud, COORDINATE_SYSTEM::IMAGE,
                                        COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD, vela::MEM_BOTH),
                "converting the axes");
        return std::string("right-handed, Y up and Z backward, then brought to the host side");
    });
    saveCloud(cloud, output, quality.withDepth);
    vela::Mat depth = makeDepth(options, disparity);
    depth.name = "depth";
    saveDepth(depth, output);
    savePicture(pair.left, output);
    step("preview", [&] {
        const std::string path = output.path("preview.png");
        if (!cv::imwrite(path, drawPreview(pair.left, cloud))) throw UserError("cannot write " + path);
        return std::string("preview.png: picture, depth, cloud from its right side");
    });
    output.publish();
    std::printf("results are in %s\n", options.out.c_str());
}

}  // namespace

int main(int count, char** arguments) {
    cv::utils::logging::setLogLevel(
        cv::utils::logging::LOG_LEVEL_SILENT);  // failures are told here, in one line
    try {
        run(parseOptions(count, arguments));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "stereo_cloud: %s\n", error.what());
        return 1;
    }
}

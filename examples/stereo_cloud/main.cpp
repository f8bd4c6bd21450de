// SPDX-License-Identifier: Apache-2.0
// From a rectified stereo pair to a point cloud in four file formats: the capture side makes the cloud, and
// an application asks for it in metres and in a right-handed frame and saves it.
#include "Options.hpp"
#include "Output.hpp"
#include "checked_files.hpp"
#include "save.hpp"
#include "stereo.hpp"

#include <vela_core/vela.hpp>

#include <signal.h>
#include <opencv2/core/utils/logger.hpp>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <ratio>
#include <string>

namespace {

using namespace stereo;

/// Below this share of pixels with depth the pair is probably wrong: swapped pictures give a sixth.
constexpr double HARDLY_ANY = 0.25;

/// Runs one step and prints a line with what it did and how long it took.
template <class Work>
void step(const char* name, Work work) {
    const auto start = std::chrono::steady_clock::now();
    const std::string text = work();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::printf("%-9s %8.1f ms  %s\n", name, time.count(), text.c_str());
    std::fflush(stdout);
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

void saveClouds(vela::Mat& cloud, const Output& output, std::size_t points) {
    for (const POINT_CLOUD_FORMAT format : {PLY, PCD, VTK, XYZ}) {
        step("save", [&] { return saveCloud(cloud, format, output, points); });
    }
}

void saveDepths(vela::Mat& depth, const Output& output) {
    step("depth", [&] {
        saveDepth(depth, PNG, output);
        saveDepth(depth, PGM, output);
        return "depth.png and depth.pgm in millimetres: " + describe(depth);
    });
    step("depth", [&] {
        require(convertUnit(depth, vela::UNIT::MILLIMETER, vela::UNIT::METER, vela::MEM::CPU),
                "converting the unit");
        saveDepth(depth, PFM, output);
        return std::string("depth.pfm in metres");
    });
}

void saveChecked(const vela::Mat& cloud, const vela::Mat& depth, const Output& output) {
    step("save", [&] { return saveBinaryCloud(cloud, output); });
    step("save", [&] { return saveOrganisedCloud(cloud, output); });
    step("depth", [&] { return saveMetricDepth(depth, output); });
    step("view", [&] { return saveViewer(cloud, output); });
    step("preview", [&] { return savePreviews(cloud, depth, output); });
}

/// Writes the left picture and reads it back.
void saveLeft(cv::Mat& left, const Output& output) {
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

/// What to print about the depth; throws if no pixel has any.
std::string judge(const Quality& quality, std::size_t pixels) {
    const char* const usualReasons = "are left and right swapped, or are the pictures not rectified?";
    if (quality.withDepth == 0) throw UserError(std::string("no pixel has depth: ") + usualReasons);
    const double share = static_cast<double>(quality.withDepth) / static_cast<double>(pixels);
    std::string text =
        textOf("%zu of %zu pixels, %.1f %%, have depth", quality.withDepth, pixels, 100.0 * share);
    if (!std::isnan(quality.medianRelativeError)) {
        text += textOf(", median relative depth error %.2f %%", 100.0 * quality.medianRelativeError);
    }
    if (share < HARDLY_ANY) text += std::string("\nhint: hardly a pixel has depth: ") + usualReasons;
    return text;
}

void run(const Options& options) {
    using vela::COORDINATE_SYSTEM;
    using vela::MEM;
    using vela::UNIT;
    Pair pair;
    step("read", [&] {
        pair = readPair(options);
        return textOf("stereo pair of %d x %d pixels, %d bits a channel", pair.left.cols, pair.left.rows,
                      pair.bits);
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
        return judge(quality, disparity.total());
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
    saveClouds(cloud, output, quality.withDepth);
    vela::Mat depth = makeDepth(options, disparity);
    depth.name = "depth";
    saveDepths(depth, output);
    saveLeft(pair.left, output);
    saveChecked(cloud, depth, output);
    output.publish();
    std::printf("results are in %s\n", options.out.c_str());
}

}  // namespace

int main(int count, char** arguments) {
    signal(SIGPIPE, SIG_IGN);  // make the results even if nobody reads the output
    signal(SIGXFSZ, SIG_IGN);  // report a file-size limit like a full disk
    cv::utils::logging::setLogLevel(
        cv::utils::logging::LOG_LEVEL_SILENT);  // this program reports failures in one line
    try {
        const Options options = parseOptions(count, arguments);
        if (options.help) {
            std::fputs(HELP, stdout);
            return 0;
        }
        Output::removePartialFilesOnSignals();
        run(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "stereo_cloud: %s\n", error.what());
        return 1;
    }
}

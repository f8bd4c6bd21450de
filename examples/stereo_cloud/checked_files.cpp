// SPDX-License-Identifier: Apache-2.0
#include "checked_files.hpp"

#include "Options.hpp"
#include "save.hpp"

#include <vela_io/io.hpp>
#include <vela_io/pictures.hpp>

#include <chrono>
#include <cmath>
#include <cstring>
#include <ratio>

namespace stereo {
namespace {

using vela::UNIT;
using vela::io::Result;

constexpr vela::COORDINATE_SYSTEM AXES = vela::COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD;

/// Runs `work` and throws the error that it reports; returns its duration in milliseconds.
template <class Work>
double timed(Result& result, Work work) {
    const auto start = std::chrono::steady_clock::now();
    result = work();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    if (!result.ok()) throw UserError(result.text.c_str());
    return time.count();
}

std::string lineAbout(const char* name, const Result& written, const char* what, double writing,
                      double reading) {
    return textOf("%s, %zu %s, %.1f MB, written in %.1f ms, read back in %.1f ms, the same", name,
                  written.written, what, static_cast<double>(written.bytes) / 1e6, writing, reading);
}

/// Whether `back` has the points of `cloud`, to the last bit and colour; without the grid those with depth.
bool samePoints(const vela::Mat& cloud, const vela::Mat& back, bool grid) {
    constexpr std::size_t COMPARED = 15;  // x, y, z and three bytes of colour
    const std::size_t pixels = back.width * back.height;
    std::size_t found = 0;
    for (std::size_t i = 0; i < cloud.width * cloud.height; ++i) {
        if (!grid && std::isnan(cloud.getPtr<float>()[4 * i])) continue;
        if (found == pixels || std::memcmp(cloud.ptrCPU + 16 * i, back.ptrCPU + 16 * found, COMPARED) != 0) {
            return false;
        }
        ++found;
    }
    return found == pixels && (!grid || back.width == cloud.width);
}

std::string saveAndCompare(const vela::Mat& cloud, const char* name, bool grid, const Output& output) {
    const std::string path = output.path(name);
    vela::io::CloudOptions options;
    options.keepGrid = grid;
    options.unit = UNIT::METER;
    options.axes = AXES;
    Result written;
    Result read;
    vela::Mat back;
    vela::io::CloudInfo info;
    const double writing = timed(written, [&] { return vela::io::writeCloud(cloud, path, options); });
    const double reading = timed(read, [&] { return vela::io::readCloud(path, back, &info); });
    if (info.unit != options.unit || info.axes != options.axes || !samePoints(cloud, back, grid)) {
        throw UserError(path + " does not hold the cloud");
    }
    return lineAbout(name, written, "points", writing, reading);
}

/// Whether `back` is `depth` to half a millimetre. Depths out of a sample's range are ignored.
bool sameDepths(const vela::Mat& depth, const vela::Mat& back) {
    constexpr double STEP = 0.001;
    constexpr double FARTHEST = 65535 * STEP;
    if (back.width != depth.width || back.height != depth.height) return false;
    for (std::size_t i = 0; i < depth.width * depth.height; ++i) {
        const double wanted = depth.getPtr<float>()[i];
        const double found = back.getPtr<float>()[i];
        const bool kept = wanted >= STEP / 2 && wanted <= FARTHEST;
        if (std::isnan(wanted) ? !std::isnan(found) : kept && !(std::abs(found - wanted) <= 0.501 * STEP)) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string saveBinaryCloud(const vela::Mat& cloud, const Output& output) {
    return saveAndCompare(cloud, "cloud_binary.ply", false, output);
}

std::string saveOrganisedCloud(const vela::Mat& cloud, const Output& output) {
    return saveAndCompare(cloud, "cloud_organised.pcd", true, output);
}

std::string saveMetricDepth(const vela::Mat& depth, const Output& output) {
    const char* const name = "depth_metric.png";
    const std::string path = output.path(name);
    vela::io::DepthOptions options;
    options.unit = UNIT::METER;  // a sample is a millimetre
    options.allowClipping = true;
    Result written;
    Result read;
    vela::Mat back;
    vela::io::DepthInfo info;
    const double writing = timed(written, [&] { return vela::io::writeDepth(depth, path, options); });
    const double reading = timed(read, [&] { return vela::io::readDepth(path, back, &info); });
    if (info.unit != UNIT::METER || !sameDepths(depth, back)) {
        throw UserError(path + " does not hold the depth map");
    }
    std::string text = lineAbout(name, written, "pixels", writing, reading);
    if (written.clipped > 0) text += textOf("; %zu depths have no sample", written.clipped);
    return text;
}

std::string saveViewer(const vela::Mat& cloud, const Output& output) {
    vela::io::HtmlOptions options;
    options.unit = UNIT::METER;
    options.axes = AXES;
    options.title = "stereo_cloud";
    Result written;
    timed(written, [&] { return vela::io::writeHtml(cloud, output.path("cloud.html"), options); });
    return textOf("cloud.html, %zu points, %.1f MB", written.written,
                  static_cast<double>(written.bytes) / 1e6);
}

std::string savePreviews(const vela::Mat& cloud, const vela::Mat& depth, const Output& output) {
    using vela::io::CLOUD_VIEW;
    vela::io::PreviewOptions options;
    options.width = 1920;
    options.unit = UNIT::METER;
    options.axes = AXES;
    options.views = {CLOUD_VIEW::FRONT, CLOUD_VIEW::TOP, CLOUD_VIEW::RIGHT};
    Result written;
    timed(written, [&] { return vela::io::preview(cloud, output.path("preview.png"), options); });
    timed(written, [&] { return vela::io::preview(depth, output.path("depth_preview.png"), options); });
    return "preview.png: the cloud from the front, from above, from its right; depth_preview.png";
}

}  // namespace stereo

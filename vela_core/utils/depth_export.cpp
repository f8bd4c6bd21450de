#include "vela_core/utils/depth_export.hpp"

#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/types/detail/text_format.hpp"
#include "vela_core/utils/detail/BlockFile.hpp"
#include "vela_core/utils/detail/file_names.hpp"

#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

namespace {

bool save16Bit(const vela::Mat& depth, const std::string& path, float factor,
               const std::vector<int>& parameters) {
    const cv::Mat floats(static_cast<int>(depth.height), static_cast<int>(depth.width), CV_32FC1,
                         depth.ptrCPU, depth.width * sizeof(float));
    cv::Mat samples;
    floats.convertTo(samples, CV_16UC1, static_cast<double>(factor));
    return cv::imwrite(path, samples, parameters);
}

bool savePfm(const vela::Mat& depth, const std::string& path) {
    vela::BlockFile file(path);
    if (!file.isOpen()) return false;
    // The negative scale says that the floats are little-endian.
    file.append(vela::formatText("Pf\n%d %d\n%lf\n", static_cast<int>(depth.width),
                                 static_cast<int>(depth.height), -1.0));
    const auto count = static_cast<std::int32_t>(depth.width * depth.height);
    if (depth.ptrCPU != nullptr && count > 0) {
        file.appendFloats(depth.ptrCPU, static_cast<std::size_t>(count), [](float value) {
            return std::fabs(value) <= std::numeric_limits<float>::max() ? value : 0.0F;
        });
    }
    return true;
}

constexpr vela::EnumName<DEPTH_FORMAT> NAMES[] = {{PNG, "PNG"}, {PFM, "PFM"}, {PGM, "PGM"}};

}  // namespace

vela::String vela::toString(const DEPTH_FORMAT& value) {
    return nameIn(NAMES, value);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the public signature takes the name by value
bool saveDepthAs(vela::Mat& depth, DEPTH_FORMAT format, vela::String name, float factor) {
    const auto path = [&](const char* extension) {
        return vela::withExtension(vela::toStdString(name), extension);
    };
    switch (format) {
        case PNG:
            return save16Bit(depth, path(".png"), factor, {cv::IMWRITE_PNG_COMPRESSION, 0});
        case PFM:
            return savePfm(depth, path(".pfm"));
        case PGM:
            return save16Bit(depth, path(".pgm"), factor, {cv::IMWRITE_PXM_BINARY, 0});
    }
    std::printf(" Invalid Depth Format\n");
    std::fflush(stdout);
    return false;
}

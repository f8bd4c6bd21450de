// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/depth_export.hpp"

#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/types/detail/text_format.hpp"
#include "vela_core/utils/detail/BlockFile.hpp"
#include "vela_core/utils/detail/file_names.hpp"

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <string>
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

/// Appends `count` floats, which need not be aligned, with 0 in place of NaN and infinities.
void appendFloats(vela::detail::BlockFile& file, const unsigned char* floats, std::size_t count) {
    constexpr std::size_t PART = vela::detail::BlockFile::LARGEST_RESERVE / sizeof(float);
    for (std::size_t done = 0; done < count; done += PART) {
        const std::size_t part = std::min(PART, count - done);
        char* const out = file.reserve();
        for (std::size_t i = 0; i < part; ++i) {
            float value = 0.0F;
            std::memcpy(&value, floats + (done + i) * sizeof value, sizeof value);
            if (!(std::fabs(value) <= std::numeric_limits<float>::max())) value = 0.0F;
            std::memcpy(out + i * sizeof value, &value, sizeof value);
        }
        file.commit(out + part * sizeof(float));
    }
}

bool savePfm(const vela::Mat& depth, const std::string& path) {
    vela::detail::BlockFile file;
    // The negative scale means little-endian floats.
    const std::string header = vela::detail::formatText(
        "Pf\n%d %d\n-1.000000\n", static_cast<int>(depth.width), static_cast<int>(depth.height));
    if (!file.open(path)) return false;
    file.append(header);
    const auto count = static_cast<std::int32_t>(depth.width * depth.height);
    if (depth.ptrCPU != nullptr && count > 0) {
        appendFloats(file, depth.ptrCPU, static_cast<std::size_t>(count));
    }
    return true;
}

constexpr vela::detail::EnumName<DEPTH_FORMAT> NAMES[] = {{PNG, "PNG"}, {PFM, "PFM"}, {PGM, "PGM"}};

}  // namespace

vela::String vela::toString(const DEPTH_FORMAT& value) {
    return detail::nameIn(NAMES, value);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the public signature takes the name by value
bool saveDepthAs(vela::Mat& depth, DEPTH_FORMAT format, vela::String name, float factor) try {
    const auto path = [&](const char* extension) {
        return vela::detail::withExtension(vela::toStdString(name), extension);
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
} catch (const std::bad_alloc&) {
    return false;
}

// SPDX-License-Identifier: Apache-2.0
// Writes the initial inputs of every target, small files of all kinds, into FOLDER/TARGET.
#include "tests/support/cloud_kinds.hpp"
#include "vela_core/vela.hpp"
#include "vela_io/io.hpp"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>

namespace {

using namespace vela;
using namespace vela::io;

constexpr std::size_t WIDTH = 3;
constexpr std::size_t HEIGHT = 2;
constexpr float NONE = std::numeric_limits<float>::quiet_NaN();

/// Coloured, with one point that is not finite.
Mat makeCloud() {
    Mat cloud(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C4);
    for (std::size_t i = 0; i < WIDTH * HEIGHT; ++i) {
        const float xyz[] = {static_cast<float>(i) - 2.5F, 1e-7F * static_cast<float>(i), 1234.5F};
        const unsigned char color[] = {static_cast<unsigned char>(40 * i), 0, 255, 255};
        std::memcpy(cloud.ptrCPU + 16 * i, xyz, sizeof xyz);
        std::memcpy(cloud.ptrCPU + 16 * i + 12, color, sizeof color);
    }
    cloud.getPtr<float>()[4] = NONE;
    return cloud;
}

bool writeClouds(const std::string& folder) {
    Mat cloud = makeCloud();
    Mat normals(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C3);
    normals.setTo(Vector3<float>(0, -0.6F, 0.8F));
    bool written = true;
    for (const test::CloudKind& kind : test::CLOUD_KINDS) {
        CloudOptions options;
        options.encoding = kind.encoding;
        written = written && writeCloud(cloud, folder + "plain_" + kind.name, options).ok();
        options.normals = &normals;
        options.alpha = options.keepGrid = true;
        options.unit = UNIT::METER;
        options.axes = COORDINATE_SYSTEM::IMAGE;
        written = written && writeCloud(cloud, folder + "full_" + kind.name, options).ok();
    }
    for (const POINT_CLOUD_FORMAT format : {PLY, PCD, VTK, XYZ}) {
        written = written && savePointCloudAs(cloud, format, folder + "exported", true);
    }
    return written;
}

bool writeDepthsAndArrays(const std::string& folder) {
    Mat depth(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C1);
    const float values[] = {0.5F, 1.25F, NONE, 3, 0, 60};
    std::copy(std::begin(values), std::end(values), depth.getPtr<float>());
    DepthOptions options;
    options.unit = UNIT::METER;
    options.targetUnit = UNIT::MILLIMETER;
    bool written = true;
    for (const char* const name : {"a.png", "a.pgm", "a.pfm", "a.npy"}) {
        written = written && writeDepth(depth, folder + name, options).ok();
    }
    options.encoding = ENCODING::ASCII;
    options.invalid = 65535;
    written = written && writeDepth(depth, folder + "plain.pgm", options).ok();
    for (int type = 0; type < 10; ++type) {
        const Mat array(WIDTH, HEIGHT, static_cast<MAT_TYPE>(type));
        written = written && writeNpy(array, folder + std::to_string(type) + ".npy").ok();
    }
    return written;
}

bool writePictures(const std::string& folder) {
    bool written = false;
    for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4, CV_16UC1, CV_16UC3, CV_32FC1, CV_32FC3}) {
        cv::Mat picture(5, 7, type);
        cv::randu(picture, 0, 200);
        for (const char* const extension : {"png", "jpg", "bmp", "tiff", "pgm", "ppm", "pbm", "pfm", "pam",
                                            "webp", "jp2", "hdr", "exr", "ras"}) {
            try {
                written |= cv::imwrite(folder + std::to_string(type) + "." + extension, picture);
            } catch (const cv::Exception&) {
                // This format cannot store such pixels.
            }
        }
    }
    return written;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: corpus FOLDER\n");
        return 2;
    }
    const auto folderOf = [&](const char* target) {
        const std::string folder = argv[1] + ("/" + std::string(target)) + "/";
        std::filesystem::create_directories(folder);
        return folder;
    };
    const bool written = writeClouds(folderOf("io_cloud")) && writeDepthsAndArrays(folderOf("io_depth")) &&
                         writePictures(folderOf("read"));
    return written ? 0 : 1;
}

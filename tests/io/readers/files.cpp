// SPDX-License-Identifier: Apache-2.0
// The library's half of the exchange with other programs: `files write FOLDER` writes a cloud and a depth map
// in every format from arrays in that folder; `files read FILE ARRAY` turns a file into an array.
#include "tests/support/cloud_kinds.hpp"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

using namespace vela;
using namespace vela::io;

int failures = 0;

void require(const Result& result) {
    if (result.ok()) return;
    std::fprintf(stderr, "%s\n", result.text.c_str());
    ++failures;
}

void writeAll(const std::string& folder) {
    Mat cloud;
    Mat normals;
    Mat depth;
    require(readNpy(folder + "/cloud.npy", cloud));
    require(readNpy(folder + "/normals.npy", normals));
    require(readNpy(folder + "/depth.npy", depth));
    if (failures > 0) return;
    for (const test::CloudKind& kind : test::CLOUD_KINDS) {
        CloudOptions options;
        options.encoding = kind.encoding;
        require(writeCloud(cloud, folder + "/plain_" + kind.name, options));
        options.unit = UNIT::METER;
        options.axes = COORDINATE_SYSTEM::IMAGE;
        options.normals = &normals;
        require(writeCloud(cloud, folder + "/full_" + kind.name, options));
    }
    DepthOptions options;
    options.unit = UNIT::METER;
    require(writeDepth(depth, folder + "/depth.png", options));
    require(writeDepth(depth, folder + "/depth.pgm", options));
    options.encoding = ENCODING::ASCII;
    require(writeDepth(depth, folder + "/plain.pgm", options));
    require(writeDepth(depth, folder + "/depth.pfm"));
}

void readOne(const std::string& path, const std::string& array) {
    Mat mat;
    if (kindOf(path) == FILE_KIND::CLOUD) {
        CloudReadOptions options;
        options.fourChannels = true;
        require(readCloud(path, mat, options));
    } else {
        require(readDepth(path, mat));
    }
    if (failures == 0) require(writeNpy(mat, array));
}

}  // namespace

int main(int count, char** words) {
    if (count == 3 && std::strcmp(words[1], "write") == 0) {
        writeAll(words[2]);
    } else if (count == 4 && std::strcmp(words[1], "read") == 0) {
        readOne(words[2], words[3]);
    } else {
        std::fprintf(stderr, "usage: files write FOLDER | files read FILE ARRAY\n");
        return 2;
    }
    return failures == 0 ? 0 : 1;
}

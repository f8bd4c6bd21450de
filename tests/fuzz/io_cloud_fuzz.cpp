// SPDX-License-Identifier: Apache-2.0
// Feeds arbitrary bytes to the point-cloud readers. They must return either a whole cloud, which can be
// written and read again bit for bit, or a one-line error and an unchanged Mat.
#include "MemoryFile.hpp"
#include "requireReads.hpp"
#include "tests/support/cloud_kinds.hpp"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

using namespace vela;
using namespace vela::io;
using fuzz::MemoryFile;
using fuzz::readOrKeep;
using fuzz::require;
using fuzz::requireOneLine;

constexpr std::size_t MOST_POINTS = 1 << 20;

void requireSameFloats(const float* a, const float* b, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        require((std::isnan(a[i]) && std::isnan(b[i])) || std::memcmp(a + i, b + i, sizeof *a) == 0);
    }
}

/// Compares coordinates by value, colours byte by byte.
void requireSame(const Mat& a, const Mat& b) {
    require(a.width == b.width && a.height == b.height && a.dataType == b.dataType);
    for (std::size_t i = 0; i < a.width * a.height * a.channels; i += a.channels) {
        requireSameFloats(a.getPtr<float>() + i, b.getPtr<float>() + i, 3);
        require(a.channels == 3 || std::memcmp(a.getPtr<float>() + i + 3, b.getPtr<float>() + i + 3, 4) == 0);
    }
}

void writeAndReadAgain(const Mat& cloud, const Mat& normals, const CloudInfo& info,
                       const test::CloudKind& kind) {
    static MemoryFile file;
    CloudOptions options;
    options.format = kind.format;
    options.encoding = kind.encoding;
    options.keepGrid = true;
    options.alpha = kind.alpha && info.hasAlpha;
    options.normals = normals.isInit ? &normals : nullptr;
    options.unit = info.unit;
    options.axes = info.axes;
    file.put("", 0);
    require(writeCloud(cloud, file.path(), options).ok());
    Mat back;
    Mat backNormals;
    CloudInfo backInfo;
    CloudReadOptions reading;
    reading.normals = &backNormals;
    require(readCloud(file.path(), back, reading, &backInfo).ok());
    require(backInfo.unit == info.unit && backInfo.axes == info.axes);
    require(backInfo.invalid == info.invalid);
    if (!info.hasAlpha || kind.alpha) requireSame(cloud, back);
    require(backNormals.isInit == normals.isInit);
    if (normals.isInit) requireSame(normals, backNormals);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static MemoryFile file;
    file.put(bytes, size);
    CloudInfo header;
    const Result inspected = inspectCloud(file.path(), header);
    requireOneLine(inspected);

    Mat cloud;
    Mat normals;
    CloudInfo info;
    CloudReadOptions options;
    options.normals = &normals;
    options.maxPoints = MOST_POINTS;
    const Result result =
        readOrKeep(cloud, [&](Mat& mat) { return readCloud(file.path(), mat, options, &info); });
    require(result.ok() || !normals.isInit);
    if (!result.ok()) return 0;
    require(inspected.ok() && header.points == info.points && header.width == info.width &&
            header.height == info.height && header.hasColor == info.hasColor);
    require(info.points == info.width * info.height && info.points == result.written);
    require(result.bytes == size && info.invalid <= info.points);
    if (info.points == 0) return 0;
    require(cloud.width == info.width && cloud.height == info.height);
    require(cloud.dataType == (info.hasColor ? MAT_TYPE::MAT_32F_C4 : MAT_TYPE::MAT_32F_C3));
    require(normals.isInit == info.hasNormals);
    writeAndReadAgain(cloud, normals, info, test::CLOUD_KINDS[size % std::size(test::CLOUD_KINDS)]);
    return 0;
}

// SPDX-License-Identifier: Apache-2.0
// Feeds arbitrary bytes to the readers of depth maps and arrays. They must return either all pixels, which
// can be written and read again, or a one-line error and an unchanged Mat.
#include "MemoryFile.hpp"
#include "requireReads.hpp"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

using namespace vela;
using namespace vela::io;
using fuzz::MemoryFile;
using fuzz::readOrKeep;
using fuzz::require;
using fuzz::requireOneLine;

constexpr std::size_t MOST_PIXELS = 1 << 20;

/// Writes in the given format and reads that file back. Samples of 0 mean no depth.
void writeAndReadAgain(const Mat& depth, const DepthInfo& info, DEPTH_FILE format) {
    const bool samples = format == DEPTH_FILE::PNG || format == DEPTH_FILE::PGM;
    static MemoryFile file;
    DepthOptions options;
    options.format = format;
    if (format == DEPTH_FILE::PGM) options.encoding = info.encoding;
    options.unit = info.unit;
    if (samples) {
        options.scale = info.scale;
        options.invalid = info.invalid;
    }
    file.put("", 0);
    require(writeDepth(depth, file.path(), options).ok());
    Mat back;
    DepthInfo backInfo;
    require(readDepth(file.path(), back, &backInfo).ok());
    require(back.width == depth.width && back.height == depth.height);
    require(!samples || (backInfo.unit == info.unit && backInfo.scale == info.scale));
    for (std::size_t i = 0; i < depth.width * depth.height; ++i) {
        const float a = depth.getPtr<float>()[i];
        const float b = back.getPtr<float>()[i];
        const bool none = std::isnan(a) || (samples && a == 0);
        require(none ? std::isnan(b) : std::memcmp(&a, &b, sizeof a) == 0);
    }
}

void readAsDepth(const MemoryFile& file, std::size_t size) {
    DepthInfo header;
    const Result inspected = inspectDepth(file.path(), header);
    requireOneLine(inspected);
    Mat depth;
    DepthInfo info;
    DepthReadOptions options;
    options.maxPixels = MOST_PIXELS;
    const Result result =
        readOrKeep(depth, [&](Mat& mat) { return readDepth(file.path(), mat, options, &info); });
    if (!result.ok()) return;
    require(inspected.ok() && header.width == info.width && header.height == info.height);
    require(result.points == info.width * info.height && result.bytes == size);
    require(info.withDepth + result.dropped == result.points);
    if (result.points == 0) return;
    require(depth.width == info.width && depth.height == info.height &&
            depth.dataType == MAT_TYPE::MAT_32F_C1);
    if (info.sampleBits == 32) return writeAndReadAgain(depth, info, DEPTH_FILE::PFM);
    // Beyond this range, different samples may round to the same float.
    const bool usual = info.scale > 1e-6 && info.scale < 1e6;
    const bool stated = info.invalid && *info.invalid >= 0 && *info.invalid <= 65535 &&
                        *info.invalid == std::floor(*info.invalid);
    if (usual && stated) writeAndReadAgain(depth, info, info.format);
}

void readAsArray(const MemoryFile& file) {
    Mat array;
    const Result result = readOrKeep(array, [&](Mat& mat) { return readNpy(file.path(), mat); });
    if (!result.ok() || result.points == 0) return;
    static MemoryFile copy;
    copy.put("", 0);
    require(writeNpy(array, copy.path()).ok());
    Mat back;
    require(readNpy(copy.path(), back).ok());
    require(back.width == array.width && back.height == array.height && back.dataType == array.dataType);
    require(std::memcmp(back.ptrCPU, array.ptrCPU, array.width * array.height * array.pixelBytes) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static MemoryFile file;
    file.put(bytes, size);
    readAsDepth(file, size);
    readAsArray(file);
    return 0;
}

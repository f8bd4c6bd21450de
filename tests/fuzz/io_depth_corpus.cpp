// SPDX-License-Identifier: Apache-2.0
// Writes small depth maps and arrays of every kind into the given folder.
#include "vela_core/vela.hpp"
#include "vela_io/io.hpp"

#include <cstdio>
#include <limits>
#include <string>

int main(int argc, char** argv) {
    using namespace vela;
    using namespace vela::io;
    if (argc != 2) {
        std::fprintf(stderr, "usage: io_depth_corpus FOLDER\n");
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";
    Mat depth(3, 2, MAT_TYPE::MAT_32F_C1);
    const float values[] = {0.5F, 1.25F, std::numeric_limits<float>::quiet_NaN(), 3, 0, 60};
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
        const Mat array(3, 2, static_cast<MAT_TYPE>(type));
        written = written && writeNpy(array, folder + std::to_string(type) + ".npy").ok();
    }
    return written ? 0 : 1;
}

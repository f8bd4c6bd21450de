// SPDX-License-Identifier: Apache-2.0
// velatool convert as users start it, beside cp, with files in memory.
#include "support/Session.hpp"
#include "support/children.hpp"
#include "support/files.hpp"
#include "support/scene.hpp"

#include <vela_core/vela.hpp>
#include <vela_io/io.hpp>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::HD;
using bench::Session;

using Command = std::vector<std::string>;

/// Converts a point from `IMAGE` to the axes of the output.
using Turn = std::vector<float> (*)(const float* point);

std::vector<float> asItIs(const float* point) {
    return {point[0], point[1], point[2]};
}

/// To X forward, Y left, Z up, from X right, Y down, Z forward.
std::vector<float> toXForward(const float* point) {
    return {point[2], -point[0], -point[1]};
}

/// Whether a file holds the finite points of a cloud, turned, with their colours.
std::string differences(const std::string& path, const std::vector<float>& points, Turn turn) {
    Mat cloud;
    const io::Result result = io::readCloud(path, cloud);
    if (!result.ok()) return toStdString(result.text);
    const float* read = cloud.getPtr<float>();
    std::size_t left = cloud.width * cloud.height;
    for (std::size_t i = 0; i < points.size(); i += 4) {
        if (std::isnan(points[i])) continue;
        if (left-- == 0) return "points are missing";
        if (std::vector<float>(read, read + 3) != turn(&points[i])) return "another point";
        if (std::memcmp(read + 3, &points[i + 3], 3) != 0) return "another colour";
        read += 4;
    }
    return left == 0 ? "" : "too many points";
}

/// The conversion beside a copy of its input, by both clocks: the tool reads and writes in turns, on one
/// thread.
void compare(Session& session, const std::string& name, const Command& convert, const std::string& copyTo,
             const bench::Check& check) {
    const std::string& in = convert[2];
    const Command copy = {"cp", in, copyTo};
    const auto copied = [&] {
        return bench::contentOf(copyTo) == bench::contentOf(in) ? std::string() : "another content";
    };
    Comparison passed(name + ", wall clock");
    passed.byWallClock()
        .ours([&] { bench::runProgram(convert); }, check)
        .limit(
            "cp", [&] { bench::runProgram(copy); }, copied);
    session.run(passed);

    Comparison used(name + ", processor time");
    used.addSelfTimed(
            "ours", [&] { return bench::processorSecondsOf(convert); }, check)
        .addSelfTimed(
            "limit:cp", [&] { return bench::processorSecondsOf(copy); }, copied);
    session.run(used);
}

void runAll(Session& session) {
    const bench::ScratchFolder folder(bench::memoryFolder());
    std::vector<float> points = bench::makeCloud(HD, bench::INVALID_SHARE, bench::Lane::OPAQUE);
    const Mat cloud(HD, MAT_TYPE::MAT_32F_C4, reinterpret_cast<unsigned char*>(points.data()), HD.width * 16,
                    MEM::CPU);
    const std::string in = folder / "in.ply";
    const std::string out = folder / "out.ply";
    const std::string copy = folder / "copy.ply";
    io::CloudOptions options;
    options.unit = UNIT::MILLIMETER;
    options.axes = COORDINATE_SYSTEM::IMAGE;
    io::writeCloud(cloud, in, options);
    compare(session, "velatool convert binary PLY to other axes",
            {VELA_BENCH_TOOL, "convert", in, out, "--axes-to", "ros"}, copy,
            [&] { return differences(out, points, toXForward); });

    options.encoding = io::ENCODING::ASCII;
    const std::size_t bytes = io::writeCloud(cloud, in, options).bytes;
    compare(
        session,
        "velatool convert text PLY of " + std::to_string((bytes + 500'000) / 1'000'000) + " MB to binary PLY",
        {VELA_BENCH_TOOL, "convert", in, out, "--encoding", "binary"}, copy,
        [&] { return differences(out, points, asItIs); });
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {11, 0.02}, runAll);
}

// SPDX-License-Identifier: Apache-2.0
// What a pixel costs as images grow, from the second-level cache far into memory.
#include "support/Session.hpp"
#include "support/files.hpp"
#include "support/scene.hpp"
#include "support/traffic.hpp"

#include <vela_core/vela.hpp>

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::Session;

constexpr std::size_t SMALLEST = 256;
constexpr std::size_t LARGEST = 8192;
constexpr const char* OPERATIONS[] = {"clone", "fill", "XYZ", "unit", "axes"};

std::size_t sizeOf(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

std::string nameOf(const char* operation, std::size_t side) {
    return std::string("growth ") + operation + '/' + std::to_string(side);
}

/// A square cloud, made of repetitions of the smallest one, and the operations on it.
struct Growing {
    explicit Growing(std::size_t side_) : side(side_), cloud(side, side, MAT_TYPE::MAT_32F_C4) {
        static const std::vector<float> tile = bench::makeCloud({SMALLEST, SMALLEST}, 0, bench::Lane::NORMAL);
        float* place = cloud.getPtr<float>();
        for (std::size_t i = 0; i < tiles(); ++i) {
            place = std::copy(tile.begin(), tile.end(), place);
        }
    }

    std::size_t tiles() const { return side * side / (SMALLEST * SMALLEST); }
    std::size_t bytes() const { return side * side * sizeof(Vector4<float>); }
    std::string name(const char* operation) const { return nameOf(operation, side); }
    float* values() const { return cloud.getPtr<float>(); }

    std::size_t side;
    Mat cloud;
};

void copyAndFill(Session& session, Growing& growing) {
    Mat copy;
    Comparison clone(growing.name("clone"));
    clone
        .check([&] {
            return std::memcmp(copy.ptrCPU, growing.cloud.ptrCPU, growing.bytes()) == 0 ? "" : "differs";
        })
        .ours([&] { copy.clone(growing.cloud); })
        .limit("memcpy into a kept buffer",
               [&] { std::memcpy(copy.ptrCPU, growing.cloud.ptrCPU, growing.bytes()); });
    session.run(clone);

    const Vector4<float> value(1, 2, 3, 4);
    Comparison fill(growing.name("fill"));
    fill.ours([&] { copy.setTo(value); },
              [&] {
                  Vector4<float> last;
                  copy.getValue(growing.side - 1, growing.side - 1, &last);
                  return last == value ? "" : "the last pixel is another";
              })
        .limit(
            "memset", [&] { std::memset(copy.ptrCPU, 0x5a, growing.bytes()); }, bench::nothingToCheck);
    session.run(fill);
}

/// In place, alternating between there and back.
template <class Convert>
void convert(Session& session, const Growing& growing, const char* operation, Convert convertOnce) {
    bool there = false;
    const float before = growing.values()[0];
    Comparison comparison(growing.name(operation));
    comparison.ours([&, convertOnce] { convertOnce(there = !there); },
                    [&] { return growing.values()[0] == before ? "nothing was converted" : ""; });
    bench::addTrafficLimits(
        comparison,
        [&](bench::MultiplyAll multiply) { multiply(growing.values(), growing.bytes() / sizeof(float), -1); },
        bench::nothingToCheck);
    session.run(comparison);
}

void exportPoints(Session& session, Growing& growing) {
    const bench::ScratchFolder folder(bench::memoryFolder());
    const std::string path = folder / "cloud.xyz";
    const std::string other = folder / "bytes";
    std::string bytes;
    Comparison comparison(growing.name("XYZ"));
    comparison
        .ours([&] { savePointCloudAs(growing.cloud, XYZ, path.c_str(), false); },
              [&] {
                  bytes = bench::contentOf(path);
                  const auto lines =
                      std::count(bytes.begin(), bytes.end(), '\n') - 1;  // two in the header, none at the end
                  return static_cast<std::size_t>(lines) == growing.side * growing.side
                             ? ""
                             : "points are missing";
              })
        .limit(
            "write", [&] { bench::writeRaw(other, bytes); },
            [&] { return sizeOf(path) == sizeOf(other) ? "" : "the file has another size"; });
    session.run(comparison);
}

bool wantsAny(const Session& session, std::size_t side) {
    const auto wants = [&](const char* operation) { return session.wants(nameOf(operation, side)); };
    return std::any_of(std::begin(OPERATIONS), std::end(OPERATIONS), wants);
}

void runAll(Session& session) {
    for (std::size_t side = SMALLEST; side <= LARGEST; side *= 2) {
        if (!wantsAny(session, side)) continue;
        Growing growing(side);
        copyAndFill(session, growing);
        exportPoints(session, growing);
        convert(session, growing, "unit", [&](bool there) {
            convertUnit(growing.cloud, there ? UNIT::MILLIMETER : UNIT::METER,
                        there ? UNIT::METER : UNIT::MILLIMETER, MEM::CPU);
        });
        convert(session, growing, "axes", [&](bool there) {
            constexpr COORDINATE_SYSTEM WORLD = COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
            convertCoordinateSystem(growing.cloud, there ? COORDINATE_SYSTEM::IMAGE : WORLD,
                                    there ? WORLD : COORDINATE_SYSTEM::IMAGE, MEM::CPU);
        });
    }
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {5, 0.02}, runAll);
}

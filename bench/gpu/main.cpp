// SPDX-License-Identifier: Apache-2.0
// Times every kernel beside a device-to-device copy that moves as many bytes. See docs/gpu.md.
#include "cases.hpp"
#include "device.hpp"
#include "images.hpp"
#include "timing.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace vela::bench {
namespace {

constexpr unsigned ROUNDS = 21;
constexpr double WANTED_SHARE = 0.90;
constexpr double WANTED_OVER_EMPTY = 2.0;

struct Size {
    std::size_t width;
    std::size_t height;
};
constexpr Size SMALL{1280, 720};
constexpr Size SIZES[] = {SMALL, {3840, 2160}, {16384, 16384}};

/// Exit status: 0 or, after an error message, 1.
int fail(const std::string& why) {
    std::printf("gpu benchmark: %s\n", why.c_str());
    return EXIT_FAILURE;
}

double timeOfEmptyLaunch() {
    std::vector<double> times;
    for (unsigned round = 0; round < ROUNDS; ++round) {
        times.push_back(deviceTime(100, [](unsigned) { launchNothing(); }));
    }
    return medianOf(times);
}

/// Copies as many bytes as the kernel moves: a fill, which only writes, counts against the copy of half its
/// rows, which writes the one half of its bytes and reads the other.
void copyLike(const Case& kernel, const Images& images, unsigned n) {
    const Mat& from = images.image(n);
    const Mat& to = images.copyTarget(n);
    const std::size_t rows = kernel.reads ? from.height : from.height / 2;
    cudaMemcpy2DAsync(to.ptrGPU, to.stepBytesGPU, from.ptrGPU, from.stepBytesGPU,
                      from.width * from.pixelBytes, rows, cudaMemcpyDeviceToDevice, nullptr);
}

struct Result {
    double kernel;
    double plain;
    double copy;
};

/// Medians over rounds in which the kernel, the plain one and the copy take turns.
Result timeCase(const Case& kernel, const Images& images) {
    const Operation run = [&](unsigned n) { kernel.launch(images.image(n), images.other(n), true); };
    const Operation runPlain = [&](unsigned n) { kernel.plain(images.image(n), images.other(n), true); };
    const Operation copy = [&](unsigned n) { copyLike(kernel, images, n); };
    const unsigned batch = batchFor(run);
    const unsigned plainBatch = batchFor(runPlain);
    const unsigned copyBatch = batchFor(copy);
    std::vector<double> kernelTimes;
    std::vector<double> plainTimes;
    std::vector<double> copyTimes;
    for (unsigned round = 0; round < ROUNDS; ++round) {
        kernelTimes.push_back(deviceTime(batch, run));
        plainTimes.push_back(deviceTime(plainBatch, runPlain));
        copyTimes.push_back(deviceTime(copyBatch, copy));
    }
    return {medianOf(kernelTimes), medianOf(plainTimes), medianOf(copyTimes)};
}

void printCase(const Case& kernel, std::size_t width, std::size_t height, const Result& result,
               double emptyLaunch) {
    const double bytes = kernel.bytesPerPixel() * static_cast<double>(width) * static_cast<double>(height);
    const double share = result.copy / result.kernel;
    const double over = result.kernel - emptyLaunch;
    const bool isSmall = width == SMALL.width;
    const bool missed = isSmall ? over > WANTED_OVER_EMPTY : share < WANTED_SHARE;
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    std::printf("%-17s %-12s %10.2f %9.1f %9.1f %8.3f %10.2f %10.2f%s\n", kernel.name.c_str(), size.c_str(),
                result.kernel, bytes / result.kernel / 1e3, bytes / result.copy / 1e3, share, over,
                result.plain / result.kernel, missed ? "  missed" : "");
    std::fflush(stdout);
}

/// Whole calls wait for the device, so the kernel alone is timed beside them in the same way.
void printWholeCalls(const std::vector<Case>& cases) {
    std::printf("\n%-31s %-12s %10s %12s\n", "whole call", "size", "us", "bare kernel");
    for (const WholeCall& whole : wholeCalls()) {
        for (const Case& kernel : cases) {
            if (kernel.name != whole.kernel) continue;
            Mat mat(SMALL.width, SMALL.height, whole.type, MEM::GPU);
            cudaMemset(mat.ptrGPU, 0x3F, mat.stepBytesGPU * mat.height);
            const Operation call = [&](unsigned) { whole.call(mat); };
            const Operation bare = [&](unsigned) { kernel.launch(mat, mat, true); };
            callTime(10, call);
            std::vector<double> callTimes;
            std::vector<double> bareTimes;
            for (unsigned round = 0; round < ROUNDS; ++round) {
                callTimes.push_back(callTime(100, call));
                bareTimes.push_back(callTime(100, bare));
            }
            std::printf("%-31s %zux%-7zu %10.2f %12.2f\n", whole.name.c_str(), SMALL.width, SMALL.height,
                        medianOf(callTimes), medianOf(bareTimes));
        }
    }
}

int run() {
    holdDevice(1);
    require(cudaDeviceSynchronize(), "the first launches");
    const double emptyLaunch = timeOfEmptyLaunch();
    std::printf(
        "an empty launch takes %.2f us; GB/s count bytes read and bytes written; wanted: share of the "
        "copy >= %.2f at the larger sizes, over the empty launch <= %.1f us at 1280x720\n\n",
        emptyLaunch, WANTED_SHARE, WANTED_OVER_EMPTY);
    const std::vector<Case> cases = allCases(uploadMatrices());
    std::printf("%-17s %-12s %10s %9s %9s %8s %10s %10s\n", "kernel", "size", "us", "GB/s", "copy GB/s",
                "share", "over empty", "plain/ours");
    for (const Size& size : SIZES) {
        for (const Case& kernel : cases) {
            const Images images(kernel, size.width, size.height);
            const std::string difference = findDifference(kernel, kernel.launch, images, 0) +
                                           findDifference(kernel, kernel.plain, images, 1);
            if (!difference.empty()) return fail(difference);
            printCase(kernel, size.width, images.height(), timeCase(kernel, images), emptyLaunch);
        }
    }
    printWholeCalls(cases);
    require(cudaDeviceSynchronize(), "the last call");
    return EXIT_SUCCESS;
}

/// Whether there is a usable device; prints a line about it, or the reason.
int probe() {
    int count = 0;
    const cudaError_t status = cudaGetDeviceCount(&count);
    if (status != cudaSuccess) return fail(std::string("no GPU: ") + cudaGetErrorString(status));
    if (count == 0) return fail("no GPU");
    launchNothing();
    require(cudaGetLastError(), "an empty launch");
    require(cudaDeviceSynchronize(), "an empty launch");
    std::printf("%s\n", describeDevice().c_str());
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace vela::bench

int main(int argc, char** argv) {
    const bool probeOnly = argc == 2 && std::strcmp(argv[1], "--probe") == 0;
    if (argc > 1 && !probeOnly) return vela::bench::fail("usage: vela_gpu_bench [--probe]");
    const int found = vela::bench::probe();
    return probeOnly || found != EXIT_SUCCESS ? found : vela::bench::run();
}

// SPDX-License-Identifier: Apache-2.0
#include "timing.hpp"

#include "device.hpp"

#include <algorithm>
#include <cmath>

namespace vela::bench {
namespace {

constexpr double BATCH_MICROSECONDS = 3000;
constexpr unsigned LARGEST_BATCH = 200;  // fits the device's queue, so that queueing never waits
constexpr unsigned FIRST_BATCH = 3;
constexpr double LONGEST_HOLD = 200000;

/// Two marks in the null stream.
class Stopwatch {
public:
    Stopwatch() {
        require(cudaEventCreate(&start_), "cudaEventCreate");
        require(cudaEventCreate(&stop_), "cudaEventCreate");
    }
    ~Stopwatch() {
        cudaEventDestroy(start_);
        cudaEventDestroy(stop_);
    }
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

    void start() { require(cudaEventRecord(start_), "cudaEventRecord"); }
    void stop() { require(cudaEventRecord(stop_), "cudaEventRecord"); }
    bool hasStarted() const { return cudaEventQuery(start_) != cudaErrorNotReady; }

    double microseconds() const {
        require(cudaEventSynchronize(stop_), "what was timed");
        require(cudaGetLastError(), "a launch that was timed");
        float milliseconds = 0;
        require(cudaEventElapsedTime(&milliseconds, start_, stop_), "cudaEventElapsedTime");
        return static_cast<double>(milliseconds) * 1000;
    }

private:
    cudaEvent_t start_ = nullptr;
    cudaEvent_t stop_ = nullptr;
};

}  // namespace

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double deviceTime(unsigned count, const Operation& operation) {
    Stopwatch watch;
    for (double hold = 200 + 10.0 * count;; hold *= 2) {
        holdDevice(hold);
        watch.start();
        for (unsigned n = 0; n < count; ++n) {
            operation(n);
        }
        watch.stop();
        const bool hostWasLate = watch.hasStarted();
        const double time = watch.microseconds();
        if (!hostWasLate || hold > LONGEST_HOLD) return time / count;
    }
}

double callTime(unsigned count, const Operation& operation) {
    Stopwatch watch;
    watch.start();
    for (unsigned n = 0; n < count; ++n) {
        operation(n);
    }
    watch.stop();
    return watch.microseconds() / count;
}

unsigned batchFor(const Operation& operation) {
    const double time = std::max(deviceTime(FIRST_BATCH, operation), 0.1);
    const double wanted = std::clamp(BATCH_MICROSECONDS / time, double{FIRST_BATCH}, double{LARGEST_BATCH});
    return static_cast<unsigned>(std::lround(wanted));
}

}  // namespace vela::bench

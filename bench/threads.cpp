// SPDX-License-Identifier: Apache-2.0
// Several threads at once, each with its own Mat: nothing shared may slow them down.
#include "support/Session.hpp"
#include "support/scene.hpp"
#include "support/traffic.hpp"
#include "support/values.hpp"

#include <vela_core/vela.hpp>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::HD;
using bench::Session;

constexpr int ROUNDS = 20;  // there and back, so that values stay what they are
constexpr bench::Tolerance ROUNDING = {1e-44, 1e-5};

template <class Work>
void onThreads(std::size_t count, Work work) {
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        threads.emplace_back([=] { work(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void convertOn(Session& session, std::size_t threads, const std::vector<float>& points) {
    std::vector<Mat> mats(threads);
    for (Mat& mat : mats) {
        mat.alloc(HD, MAT_TYPE::MAT_32F_C4);
        std::copy(points.begin(), points.end(), mat.getPtr<float>());
    }
    const auto check = [&] {
        for (const Mat& mat : mats) {
            std::string complaint =
                bench::differences(mat.getPtr<float>(), points.data(), points.size(), ROUNDING);
            if (!complaint.empty()) return complaint;
        }
        return std::string();
    };
    Comparison comparison("convertUnit there and back, " + std::to_string(threads) + " threads");
    comparison.byWallClock().check(check).ours([&] {
        onThreads(threads, [&](std::size_t i) {
            for (int round = 0; round < ROUNDS; ++round) {
                convertUnit(mats[i], UNIT::MILLIMETER, UNIT::METER, MEM::CPU);
                convertUnit(mats[i], UNIT::METER, UNIT::MILLIMETER, MEM::CPU);
            }
        });
    });
    bench::addTrafficLimits(comparison, [&](bench::MultiplyAll multiply) {
        onThreads(threads, [&](std::size_t i) {
            for (int round = 0; round < 2 * ROUNDS; ++round) {
                multiply(mats[i].getPtr<float>(), points.size(), -1.0F);
            }
        });
    });
    session.run(comparison);
}

void runAll(Session& session) {
    const std::vector<float> points = bench::makeCloud(HD, 0, bench::Lane::NORMAL);
    for (const std::size_t threads : {1, 2, 4, 8, 32}) {
        convertOn(session, threads, points);
    }
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {5, 0.02}, runAll);
}

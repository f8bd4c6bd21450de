// SPDX-License-Identifier: Apache-2.0
// Mats in programs that fork and that work on several threads.
#include "support/device.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_core/log/detail/statements.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

namespace vela::test {
namespace {

using detail::logError;
using detail::LogStatement;

class ProcessFaultsTest : public DeviceTest {};

/// Converts metres through both sides and back; returns whether they are unchanged.
bool worksOnBothSides(unsigned seed) {
    const auto size = static_cast<std::size_t>(16 + seed % 7);
    Mat mat(size, size, MAT_TYPE::MAT_32F_C3, MEM_BOTH);
    const auto value = static_cast<float>(seed);
    mat.setTo(Vector3<float>(value, value, value), MEM::CPU);
    const bool moved = mat.updateGPUfromCPU() == ERROR_CODE::SUCCESS &&
                       convertUnit(mat, UNIT::METER, UNIT::CENTIMETER, MEM_BOTH) == ERROR_CODE::SUCCESS;
    Mat copy;
    Vector3<float> pixel;
    return moved && mat.copyTo(copy, COPY_TYPE::GPU_CPU) == ERROR_CODE::SUCCESS &&
           copy.getValue(size - 1, size - 1, &pixel, MEM::CPU) == ERROR_CODE::SUCCESS &&
           pixel == Vector3<float>(value * 100.0F, value * 100.0F, value * 100.0F);
}

TEST_F(ProcessFaultsTest, ThreadsWorkOnMatsOfTheirOwn) {
    constexpr unsigned ROUNDS = 200;
    unsigned worked[4] = {};
    std::thread threads[4];
    for (unsigned i = 0; i < 4; ++i) {
        threads[i] = std::thread([i, &worked] {
            for (unsigned round = 0; round < ROUNDS; ++round) {
                worked[i] += worksOnBothSides(i * ROUNDS + round) ? 1 : 0;
            }
        });
    }
    for (unsigned i = 0; i < 4; ++i) {
        threads[i].join();
        EXPECT_EQ(worked[i], ROUNDS) << "thread " << i;
    }
}

#ifdef VELA_GPU_SOFTWARE  // asking for hardware, as the fixture does, is a first use
TEST_F(ProcessFaultsTest, AForkBeforeTheFirstUseWorksInParentAndChild) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto program = [] {
        const pid_t child = fork();
        logError(LogStatement::SET_SUB_VECTOR3F);
        int status = 0;
        const bool worked = worksOnBothSides(3);
        const bool childWorked = child == 0 || (waitpid(child, &status, 0) == child && status == 0);
        std::exit(worked && childWorked ? 0 : 1);
    };
    EXPECT_EXIT(program(), testing::ExitedWithCode(0), "(setSubVector3f Invalid Parameters(.|\n)*){2}");
}
#endif

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
// Applies random operations to a few Mats and to their models. VELA_RANDOM_SEED and VELA_RANDOM_LENGTH select
// a run.
#include "support/capture.hpp"
#include "support/operations.hpp"

#include <array>
#include <cstdlib>
#include <random>

namespace vela::test {
namespace {

unsigned long setting(const char* name, unsigned long usual) {
    const char* const value = std::getenv(name);
    return value == nullptr ? usual : std::strtoul(value, nullptr, 10);
}

class MatRandomTest : public DeviceTest {
protected:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    Arguments draw() {
        constexpr std::int32_t SIDES[] = {1, 1, 2, 2, 3, 3, 4, 0, 5, -1};
        Arguments arguments;
        arguments.width = below(8) == 0 ? 0 : below(70);
        arguments.height = below(8) == 0 ? 0 : below(4);
        arguments.type = fromValue<MAT_TYPE>(static_cast<std::int32_t>(below(10)));
        arguments.mem = fromValue<MEM>(SIDES[below(std::size(SIDES))]);
        arguments.copy = fromValue<COPY_TYPE>(static_cast<std::int32_t>(below(20)) - 1);
        if (toValue(arguments.copy) > 4) arguments.copy = fromValue<COPY_TYPE>(toValue(arguments.copy) % 4);
        arguments.stream = below(3) == 0 ? stream_ : nullptr;
        arguments.seed = below(1000);
        return arguments;
    }

    /// Sets fields that no operation computes, to see how they pass from Mat to Mat.
    static void label(Subject& subject, const Arguments& arguments) {
        subject.mat.name = subject.model.name = "mat " + std::to_string(arguments.seed);
        subject.mat.timestamp = subject.model.timestamp = arguments.seed;
        subject.mat.extraFlag = subject.model.flag = arguments.seed % 2 == 1;
    }

    std::mt19937 random_;
    cudaStream_t stream_ = nullptr;
};

TEST_F(MatRandomTest, AfterRandomOperationsMatsEqualTheirModels) {
    const unsigned long seed = setting("VELA_RANDOM_SEED", 1);
    const unsigned long length = setting("VELA_RANDOM_LENGTH", 100000);
    constexpr std::size_t BATCH = 100;
    SCOPED_TRACE(testing::Message() << "VELA_RANDOM_SEED=" << seed);
    random_.seed(static_cast<std::mt19937::result_type>(seed));
    const OwnStream stream;
    stream_ = stream;
    const std::vector<Operation> all = operations();
    LogCapture log;
    World world;
    {
        Subject a(world), b(world), c(world), d(world), e(world);
        const std::array<Subject*, 5> subjects = {&a, &b, &c, &d, &e};
        for (unsigned long done = 0; done < length && !HasFailure(); done += BATCH) {
            const std::string printed = printedBy([&] {
                for (std::size_t i = 0; i < BATCH && !HasFailure(); ++i) {
                    const Operation& operation = all[below(static_cast<unsigned>(all.size()))];
                    Subject& first = *subjects[below(5)];
                    Subject& second = *subjects[below(5)];
                    const Arguments arguments = draw();
                    // Dangling references may be dropped, but neither read nor mistaken for others.
                    const bool looks = (operation.uses & (Operation::PIXELS | Operation::OTHER)) != 0;
                    if (looks && !(first.model.usable() && second.model.usable())) continue;
                    label(first, arguments);
                    SCOPED_TRACE(testing::Message() << operation.name << ", operation " << done + i);
                    EXPECT_EQ(operation.act(first.mat, second.mat, arguments),
                              operation.model(first.model, second.model, arguments));
                    cudaDeviceSynchronize();
                    expectSame(first.mat, first.model);
                    expectSame(second.mat, second.model);
                }
            });
            for (Subject* const subject : subjects) {
                expectSame(subject->mat, subject->model);
            }
#ifdef VELA_GPU_SOFTWARE  // hardware may word its errors differently
            EXPECT_EQ(printed, world.printed);
#endif
            EXPECT_EQ(log.take(), world.logged);
            world.printed.clear();
            world.logged.clear();
        }
    }
}

}  // namespace
}  // namespace vela::test

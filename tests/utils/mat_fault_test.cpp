// SPDX-License-Identifier: Apache-2.0
// Runs every operation in every initial state and makes each of its runtime calls fail: the result, the
// printed and logged text, the fields, the remaining contents and the leaks must match the model.
#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "support/operations.hpp"

#include <cstdio>

namespace vela::test {
namespace {

struct State {
    const char* name;
    MEM mem;
    bool reference;
    std::size_t width;
    std::size_t height;
};

constexpr MEM NOTHING = static_cast<MEM>(0);
constexpr State STATES[] = {{"empty", NOTHING, false, 0, 0},
                            {"host", MEM::CPU, false, 4, 2},
                            {"device", MEM::GPU, false, 4, 2},
                            {"both", MEM_BOTH, false, 4, 2},
                            {"managed", MEM_MANAGED, false, 4, 2},
                            {"reference to host", MEM::CPU, true, 4, 2},
                            {"reference to device", MEM::GPU, true, 4, 2},
                            {"reference to both", MEM_BOTH, true, 4, 2},
                            {"reference to managed", MEM_MANAGED, true, 4, 2},
                            {"width 0", MEM_BOTH, false, 0, 2},
                            {"height 0", MEM::GPU, false, 4, 0}};

class MatFaultTest : public DeviceTest {
protected:
    void TearDown() override {
        EXPECT_EQ(log_.take(), "") << "messages that nothing accounts for";
        DeviceTest::TearDown();
    }

    /// Runs an operation in which the nth call of a function fails (0: none); returns the calls that the
    /// model made.
    std::map<std::string, int> run(const Operation& operation, const State& first, const State& second,
                                   const Arguments& arguments, const std::string& function, int nth) {
        World world;
        std::map<std::string, int> calls;
        {
            Subject a(world);
            Subject b(world);
            Arguments shape(arguments);
            for (const auto& [subject, state] : {std::pair(&a, &first), std::pair(&b, &second)}) {
                shape.width = state->width;
                shape.height = state->height;
                shape.seed += 10;
                start(*subject, state->mem, state->reference, shape);
            }
            a.mat.name = a.model.name = "cloud";
            b.mat.name = b.model.name = "other";
            b.mat.extraFlag = b.model.flag = true;
            world.calls.clear();
            world.function = function;
            world.nth = nth;
            if (nth > 0) software_device::failCall(function.c_str(), nth, cudaErrorUnknown);
            ERROR_CODE seen{};
            const std::string printed = printedBy([&] { seen = operation.act(a.mat, b.mat, arguments); });
            const ERROR_CODE wanted = operation.model(a.model, b.model, arguments);
            software_device::reset();
            calls = world.calls;
            world.function.clear();
            cudaDeviceSynchronize();
            EXPECT_EQ(seen, wanted);
            EXPECT_EQ(printed, world.printed);
            if (!world.logged.empty()) {
                EXPECT_EQ(log_.take(), world.logged);
            }
            expectSame(a.mat, a.model);
            expectSame(b.mat, b.model);
            expectSame(a.owner, a.ownerModel);
        }
        allocationsExpected_ += world.lost;
        EXPECT_EQ(software_device::liveAllocations(), allocationsExpected_);
        return calls;
    }

    void sweep(const Operation& operation, const State& first, const State& second,
               const Arguments& arguments) {
        ++cases_;
        for (const auto& [function, calls] : run(operation, first, second, arguments, "", 0)) {
            for (int nth = 1; nth <= calls; ++nth) {
                SCOPED_TRACE(testing::Message()
                             << operation.name << " on " << first.name << " and " << second.name << ", mem "
                             << toValue(arguments.mem) << ", copy " << toValue(arguments.copy) << ", "
                             << function << " " << nth);
                run(operation, first, second, arguments, function, nth);
                ++faults_;
                if (HasFailure()) return;
            }
        }
    }

    /// Writing updates the host side; of the types used here one is a cloud and one a picture.
    Operation write() const {
        const std::string path = folder_ / "a.bmp";
        return {"write", Operation::PIXELS,
                [=](Mat& m, Mat&, const Arguments&) { return m.write(path, MEM::GPU); },
                [](ModelMat& m, ModelMat&, const Arguments&) {
                    if (!m.init || m.updateCPUfromGPU() != OK) return BAD;
                    const bool cloud = m.type == MAT_TYPE::MAT_32F_C4;
                    const bool writes = cloud ? m.host != nullptr : m.width * m.height != 0;
                    const std::string line = cloud ? "1009" : "1084";
                    if (!writes) {
                        m.world->logged += "vela_core/utils/Mat.cpp:" + line +
                                           " ERROR [Mat]  Mat type currently not supported.\n";
                    }
                    return writes ? OK : BAD;
                }};
    }

    /// The arguments that make a difference to an operation, on clouds and pictures.
    std::vector<Arguments> variants(const Operation& operation) const {
        std::vector<Arguments> all(1);
        const auto multiply = [&](auto Arguments::*member, auto... values) {
            std::vector<Arguments> more;
            for (Arguments arguments : all) {
                ((arguments.*member = values, more.push_back(arguments)), ...);
            }
            all = more;
        };
        multiply(&Arguments::type, MAT_TYPE::MAT_32F_C4, MAT_TYPE::MAT_8U_C4);
        if ((operation.uses & Operation::MEMORY) != 0) {
            multiply(&Arguments::mem, MEM::CPU, MEM::GPU, MEM_BOTH, MEM_MANAGED);
        }
        if ((operation.uses & Operation::COPY) != 0) {
            multiply(&Arguments::copy, COPY_TYPE::CPU_CPU, COPY_TYPE::CPU_GPU, COPY_TYPE::GPU_GPU,
                     COPY_TYPE::GPU_CPU, fromValue<COPY_TYPE>(4));
        }
        if ((operation.uses & Operation::STREAM) != 0)
            multiply(&Arguments::stream, nullptr, cudaStream_t{stream_});
        return all;
    }

    ScratchFolder folder_;
    const OwnStream stream_;
    LogCapture log_;
    int cases_ = 0;
    int faults_ = 0;
};

TEST_F(MatFaultTest, EveryCallOfTheRuntimeMayFailInEveryState) {
    std::vector<Operation> all = operations();
    all.push_back(write());
    for (const Operation& operation : all) {
        const bool second = (operation.uses & Operation::OTHER) != 0;
        for (const Arguments& arguments : variants(operation)) {
            for (const State& first : STATES) {
                for (std::size_t other = 0; other < (second ? std::size(STATES) : 1); ++other) {
                    sweep(operation, first, STATES[other], arguments);
                    if (HasFailure()) return;
                }
            }
        }
    }
    std::printf("%zu operations, %zu states, %d cases, %d fault points\n", all.size(), std::size(STATES),
                cases_, faults_);
}

}  // namespace
}  // namespace vela::test

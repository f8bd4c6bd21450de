// Each call of the runtime inside each operation of Mat is made to fail; a call that the table does not know
// of is an error too.
#include "support/capture.hpp"
#include "support/device.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_core/types/enum_cast.hpp"
#include "vela_core/utils/Mat.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace vela::test {
namespace {

constexpr auto C4 = MAT_TYPE::MAT_32F_C4;
constexpr auto OK = ERROR_CODE::SUCCESS;
constexpr auto BAD = ERROR_CODE::FAILURE;
constexpr const char* RUNTIME[] = {"cudaMallocPitch",
                                   "cudaMallocManaged",
                                   "cudaFree",
                                   "cudaMemcpy",
                                   "cudaMemcpy2D",
                                   "cudaMemcpy2DAsync",
                                   "cudaStreamAttachMemAsync",
                                   "cudaStreamSynchronize",
                                   "cudaLaunchKernel"};

const std::string ALLOC = "void vela::Mat::alloc(size_t, size_t, vela::MAT_TYPE, vela::MEM)";
const std::string FREE = "void vela::Mat::free(vela::MEM)";
const std::string COPY_TO =
    "vela::ERROR_CODE vela::Mat::copyTo(vela::Mat&, vela::COPY_TYPE, cudaStream_t) const";
const std::string SET_FROM =
    "vela::ERROR_CODE vela::Mat::setFrom(const vela::Mat&, vela::COPY_TYPE, cudaStream_t)";
const std::string UPDATE_CPU = "vela::ERROR_CODE vela::Mat::updateCPUfromGPU(cudaStream_t)";
const std::string UPDATE_GPU = "vela::ERROR_CODE vela::Mat::updateGPUfromCPU(cudaStream_t, int)";

std::string line(const std::string& signature, int error = 999) {
    const char* const text = error == 999  ? "unknown error"
                             : error == 12 ? "invalid pitch argument"
                                           : "invalid argument";
    return "in " + signature + " : Err [" + std::to_string(error) + "]: " + text + ".\n";
}

constexpr const char* FREE_WARNING =
    "vela_core/utils/Mat.cpp:580 ERROR [Mat]  cloud Mat with GPU memory allocated should be freed before "
    "deleting "
    "the Camera object to avoid GPU context issues.\n";

/// One call that fails, and what is seen then.
struct Fault {
    const char* function;
    int nth;
    ERROR_CODE code;
    std::string printed;
    std::string state;  // of the Mat afterwards, as `describe` puts it
    std::string log = {};
};

/// Filled owners to copy from, one for each side or pair of sides.
struct Sources {
    Mat host = filled(5, 3, C4, MEM::CPU, 2);
    Mat device = filled(5, 3, C4, MEM::GPU, 2);
    Mat both = filled(5, 3, C4, MEM_BOTH, 2);
    Mat managed = filled(5, 3, C4, MEM_MANAGED, 2);

    Sources() { host.timestamp = device.timestamp = both.timestamp = managed.timestamp = 8; }
};

using Act = std::function<ERROR_CODE(Mat&, const Sources&)>;

struct Operation {
    const char* name;
    MEM start;  // of the Mat acted on, a filled owner
    Act act;
    std::vector<Fault> faults;
};

/// Ownership, memType, which pointers are set, and the time stamp.
std::string describe(const Mat& mat) {
    const char* const kind = !mat.isInit ? "empty" : mat.memoryOwner ? "owner" : "reference";
    return std::string(kind) + " " + std::to_string(toValue(mat.memType)) +
           (mat.ptrCPU != nullptr ? " C" : " -") + (mat.ptrGPU != nullptr ? "G " : "- ") +
           std::to_string(mat.timestamp);
}

Act alloc(MEM mem) {
    return [=](Mat& mat, const Sources&) { return mat.alloc(6, 2, C4, mem), OK; };
}
Act free(MEM mem) {
    return [=](Mat& mat, const Sources&) { return mat.free(mem), OK; };
}
Act clone(Mat Sources::*source) {
    return [=](Mat& mat, const Sources& sources) { return mat.clone(sources.*source); };
}
Act copyTo(COPY_TYPE type, cudaStream_t stream = nullptr) {
    return [=](Mat& mat, const Sources& sources) { return sources.both.copyTo(mat, type, stream); };
}
Act setFrom(COPY_TYPE type) {
    return [=](Mat& mat, const Sources& sources) { return mat.setFrom(sources.both, type); };
}
Act updateCPU(cudaStream_t stream = nullptr) {
    return [=](Mat& mat, const Sources&) { return mat.updateCPUfromGPU(stream); };
}
Act updateGPU(cudaStream_t stream = nullptr) {
    return [=](Mat& mat, const Sources&) { return mat.updateGPUfromCPU(stream); };
}
ERROR_CODE refer(Mat& mat, const Sources& sources) {
    return mat.ref(sources.host), OK;
}
ERROR_CODE moveOnto(Mat& mat, const Sources&) {
    return Mat(2, 2, C4).move(mat);
}
ERROR_CODE changeUnit(Mat& mat, const Sources&) {
    return convertUnit(mat, UNIT::METER, UNIT::MILLIMETER, MEM_BOTH);
}
ERROR_CODE changeFrame(Mat& mat, const Sources&) {
    constexpr auto to = COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
    return convertCoordinateSystem(mat, COORDINATE_SYSTEM::IMAGE, to, MEM_BOTH);
}

std::vector<Operation> operations(cudaStream_t stream) {
    // A copy to a device buffer that could not be had meets the pitch of 0 first.
    const std::string noDevice = line(UPDATE_GPU, 12);
    // A managed clone is attached to the null stream, which is refused.
    const std::string refused = line(UPDATE_GPU, 1);
    return {
        {"alloc device",
         MEM::CPU,
         alloc(MEM::GPU),
         {{"cudaMallocPitch", 1, OK, line(ALLOC), "owner 2 -- 0"}}},
        {"alloc both", MEM::CPU, alloc(MEM_BOTH), {{"cudaMallocPitch", 1, OK, line(ALLOC), "owner 3 C- 0"}}},
        {"alloc managed",
         MEM::CPU,
         alloc(MEM_MANAGED),
         {{"cudaMallocManaged", 1, OK, line(ALLOC), "owner 4 -- 0"}}},
        {"alloc over device",
         MEM::GPU,
         alloc(MEM::CPU),
         {{"cudaFree", 1, OK, line(FREE), "owner 1 C- 0", FREE_WARNING}}},
        {"alloc over managed",
         MEM_MANAGED,
         alloc(MEM::CPU),
         {{"cudaFree", 1, OK, line(FREE), "owner 1 C- 0"}}},
        {"free device",
         MEM::GPU,
         free(MEM_BOTH),
         {{"cudaFree", 1, OK, line(FREE), "empty 2 -- 0", FREE_WARNING}}},
        {"free both",
         MEM_BOTH,
         free(MEM_BOTH),
         {{"cudaFree", 1, OK, line(FREE), "empty 3 -- 0", FREE_WARNING}}},
        {"free managed", MEM_MANAGED, free(MEM_BOTH), {{"cudaFree", 1, OK, line(FREE), "empty 4 -- 0"}}},
        {"free one of both",
         MEM_BOTH,
         free(MEM::GPU),
         {{"cudaFree", 1, OK, line(FREE), "owner 1 C- 0", FREE_WARNING}}},
        {"ref over both",
         MEM_BOTH,
         refer,
         {{"cudaFree", 1, OK, line(FREE), "reference 1 C- 8", FREE_WARNING}}},
        {"move onto device",
         MEM::GPU,
         moveOnto,
         {{"cudaFree", 1, OK, line(FREE), "owner 1 C- 0", FREE_WARNING}}},
        {"clone host",
         MEM::CPU,
         clone(&Sources::host),
         {{"cudaMemcpy2D", 1, OK, line(SET_FROM), "owner 1 C- 8"}}},
        {"clone device",
         MEM::CPU,
         clone(&Sources::device),
         {{"cudaMallocPitch", 1, OK, line(ALLOC) + line(SET_FROM, 12), "owner 2 -- 8"},
          {"cudaMemcpy2D", 1, OK, line(SET_FROM), "owner 2 -G 8"}}},
        {"clone both",
         MEM::CPU,
         clone(&Sources::both),
         {{"cudaMallocPitch", 1, OK, line(ALLOC) + noDevice, "owner 3 C- 8"},
          {"cudaMemcpy2D", 1, OK, line(SET_FROM), "owner 3 CG 8"},
          {"cudaMemcpy2D", 2, OK, line(UPDATE_GPU), "owner 3 CG 8"}}},
        {"clone managed",
         MEM::CPU,
         clone(&Sources::managed),
         {{"cudaMallocManaged", 1, OK, line(ALLOC) + line(SET_FROM, 1) + refused, "owner 4 -- 8"},
          {"cudaMemcpy2D", 1, OK, line(SET_FROM) + refused, "owner 4 CG 8"},
          {"cudaStreamAttachMemAsync", 1, OK, line(UPDATE_GPU), "owner 4 CG 8"}}},
        {"copyTo fitting",
         MEM_BOTH,
         copyTo(COPY_TYPE::CPU_GPU),
         {{"cudaMemcpy2D", 1, BAD, line(COPY_TO), "owner 3 CG 8"}}},
        {"copyTo on a stream",
         MEM_BOTH,
         copyTo(COPY_TYPE::GPU_CPU, stream),
         {{"cudaMemcpy2DAsync", 1, BAD, line(COPY_TO), "owner 3 CG 8"}}},
        {"setFrom reshaping",
         MEM::CPU,
         setFrom(COPY_TYPE::CPU_GPU),
         {{"cudaMallocPitch", 1, BAD, line(ALLOC) + line(SET_FROM, 12), "owner 2 -- 8"},
          {"cudaMemcpy2D", 1, BAD, line(SET_FROM), "owner 2 -G 8"}}},
        {"setFrom freeing",
         MEM::GPU,
         setFrom(COPY_TYPE::GPU_CPU),
         {{"cudaFree", 1, OK, line(FREE), "owner 1 C- 8", FREE_WARNING},
          {"cudaMemcpy2D", 1, BAD, line(SET_FROM), "owner 1 C- 8"}}},
        {"updateCPU growing",
         MEM::GPU,
         updateCPU(),
         {{"cudaMemcpy2D", 1, BAD, line(UPDATE_CPU), "owner 3 CG 0"}}},
        {"updateCPU on a stream",
         MEM_BOTH,
         updateCPU(stream),
         {{"cudaMemcpy2DAsync", 1, BAD, line(UPDATE_CPU), "owner 3 CG 0"}}},
        {"updateCPU managed",
         MEM_MANAGED,
         updateCPU(),
         {{"cudaStreamAttachMemAsync", 1, BAD, line(UPDATE_CPU), "owner 4 CG 0"},
          {"cudaStreamSynchronize", 1, OK, "", "owner 4 CG 0"}}},
        {"updateGPU growing",
         MEM::CPU,
         updateGPU(),
         {{"cudaMallocPitch", 1, BAD, line(UPDATE_GPU) + noDevice, "owner 3 C- 0"},
          {"cudaMemcpy2D", 1, BAD, line(UPDATE_GPU), "owner 3 CG 0"}}},
        {"updateGPU on a stream",
         MEM_BOTH,
         updateGPU(stream),
         {{"cudaMemcpy2DAsync", 1, BAD, line(UPDATE_GPU), "owner 3 CG 0"}}},
        {"updateGPU managed",
         MEM_MANAGED,
         updateGPU(stream),
         {{"cudaStreamAttachMemAsync", 1, BAD, line(UPDATE_GPU), "owner 4 CG 0"}}},
        {"convertUnit",
         MEM_BOTH,
         changeUnit,
         {{"cudaLaunchKernel", 1, OK, "", "owner 3 CG 0"},
          {"cudaMemcpy2D", 1, OK, line(UPDATE_CPU), "owner 3 CG 0"}}},
        {"convertCoordinateSystem",
         MEM_BOTH,
         changeFrame,
         {{"cudaMallocPitch", 1, OK, "", "owner 3 CG 0"},
          {"cudaMemcpy", 1, OK, "", "owner 3 CG 0"},
          {"cudaLaunchKernel", 1, OK, "", "owner 3 CG 0"},
          {"cudaMemcpy2D", 1, OK, line(UPDATE_CPU), "owner 3 CG 0"},
          {"cudaFree", 1, OK, "", "owner 3 CG 0"}}},
    };
}

struct Seen {
    ERROR_CODE code;
    cudaError lastError;
    std::string printed;
    std::string state;
    std::string log;
};

class MatFaultTest : public DeviceTest {
protected:
    /// Runs an operation with the nth call of a function failing (0: none).
    Seen run(const Operation& operation, const std::string& function, int nth) {
        Seen seen{};
        {
            const Sources sources;
            Mat mat = filled(5, 3, C4, operation.start);
            mat.name = "cloud";
            if (nth > 0) software_device::failCall(function.c_str(), nth, cudaErrorUnknown);
            seen.printed = printedBy([&] { seen.code = operation.act(mat, sources); });
            seen.lastError = cudaGetLastError();
            seen.state = describe(mat);
            seen.log = log_.take();
            software_device::reset();
            cudaDeviceSynchronize();
        }
        // Memory that cudaFree refused to free is lost, and nothing else.
        if (function == "cudaFree" && seen.lastError == cudaErrorUnknown) ++allocationsExpected_;
        EXPECT_EQ(software_device::liveAllocations(), allocationsExpected_);
        return seen;
    }

    LogCapture log_;
};

TEST_F(MatFaultTest, EveryCallOfTheRuntimeMayFail) {
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    int faults = 0;
    for (const Operation& operation : operations(stream)) {
        const Seen clean = run(operation, "", 0);
        EXPECT_EQ(clean.code, OK) << operation.name;
        std::vector<Fault> expected = operation.faults;
        for (const char* const function : RUNTIME) {
            for (int nth = 1;; ++nth) {
                SCOPED_TRACE(std::string(operation.name) + ", " + function + " " + std::to_string(nth));
                const Seen seen = run(operation, function, nth);
                if (seen.lastError == clean.lastError && seen.printed == clean.printed) break;
                const auto fault =
                    std::find_if(expected.begin(), expected.end(), [=](const Fault& candidate) {
                        return candidate.function == std::string(function) && candidate.nth == nth;
                    });
                ASSERT_NE(fault, expected.end()) << "a call that the table does not know of";
                EXPECT_EQ(seen.code, fault->code);
                EXPECT_EQ(seen.printed, fault->printed);
                EXPECT_EQ(seen.state, fault->state);
                EXPECT_EQ(seen.log, fault->log);
                expected.erase(fault);
                ++faults;
            }
        }
        EXPECT_TRUE(expected.empty()) << operation.name << " makes fewer calls than the table says";
    }
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    std::printf("%zu operations, %d fault points\n", operations(stream).size(), faults);
}

}  // namespace
}  // namespace vela::test

// SPDX-License-Identifier: Apache-2.0
// What is done to the pixels of a Mat.
#include "PyMat.hpp"

#include <memory>
#include <optional>
#include <utility>

namespace vela::python {
namespace {

struct Direction {
    MEM read;
    MEM written;
};

// Indexed by COPY_TYPE.
constexpr Direction DIRECTIONS[] = {
    {MEM::CPU, MEM::CPU}, {MEM::CPU, MEM::GPU}, {MEM::GPU, MEM::GPU}, {MEM::GPU, MEM::CPU}};

bool fits(const Mat& source, const Mat& destination, MEM written) {
    return destination.isInit && destination.width == source.width && destination.height == source.height &&
           destination.dataType == source.dataType &&
           (written == MEM::CPU ? hasHost(destination) : hasDevice(destination));
}

/// Whether the host sides have a byte in common.
bool overlap(const Mat& a, const Mat& b) {
    const auto end = [](const Mat& mat) { return mat.ptrCPU + mat.height * mat.stepBytesCPU; };
    return a.ptrCPU < end(b) && b.ptrCPU < end(a);
}

void copyTo(const PyMat& source, PyMat& destination, COPY_TYPE type) {
    const Direction direction = DIRECTIONS[static_cast<int>(type)];
    requireSides(source.mat(), direction.read, "copy_to");
    if (!fits(source.mat(), destination.mat(), direction.written)) {
        PyMat fresh =
            allocated(source.mat().width, source.mat().height, source.mat().dataType, direction.written);
        fresh.mat().name = destination.mat().name;
        destination = std::move(fresh);
    }
    destination.mat().timestamp = source.mat().timestamp;
    const PyMat target = destination;  // what is written stays, even if another thread frees the Mat
    const bool onHost = type == COPY_TYPE::CPU_CPU;
    // A copy onto rows that are still to be read would read what it has written.
    const PyMat from = onHost && overlap(source.mat(), target.mat()) ? clone(source) : source;
    const ERROR_CODE code = withoutLock(from, [&](const Mat& pixels) {
        Mat to(target.mat());
        if (!onHost) return pixels.copyTo(to, type);
        copyRows(pixels, to);
        return ERROR_CODE::SUCCESS;
    });
    check(code, "copy_to");
}

/// Brings one side up to date from the other; `side` is the one that is written.
template <class Update>
void update(PyMat& m, MEM side, const char* operation, Update run) {
    requireSides(m.mat(), side == MEM::CPU ? MEM::GPU : MEM::CPU, operation);
    const bool grows = side == MEM::CPU ? !hasHost(m.mat()) : !hasDevice(m.mat());
    if (!grows) {
        check(withoutLock(m, run), operation);
        return;
    }
    if (side == MEM::GPU) requireDevice(operation);
    forgetMessage();
    // The Mat itself changes here, so that the lock is kept: nobody else may look at it meanwhile.
    check(run(m.mat()), operation);
}

void scalePositions(const Mat& pixels, float factor) {
    for (std::size_t y = 0; y < pixels.height; ++y) {
        auto* value = reinterpret_cast<float*>(pixels.ptrCPU + y * pixels.stepBytesCPU);
        for (std::size_t x = 0; x < pixels.width; ++x, value += 4) {
            value[0] *= factor;
            value[1] *= factor;
            value[2] *= factor;
        }
    }
}

void convertUnitOf(const PyMat& m, UNIT source, UNIT target, MEM mem, bool scaleFourth) {
    requireSides(m.mat(), mem, "convert_unit");
    if (scaleFourth && mem != MEM::CPU) {
        throw nb::value_error(
            "scale_fourth is for the host alone: the device never scales the fourth channel");
    }
    const bool keepsFourth = mem == MEM::CPU && !scaleFourth && m.mat().dataType == MAT_TYPE::MAT_32F_C4;
    const ERROR_CODE code = withoutLock(m, [&](Mat& pixels) {
        if (!keepsFourth) return convertUnit(pixels, source, target, mem);
        if (source != target) scalePositions(pixels, getUnitScale(source, target));
        return ERROR_CODE::SUCCESS;
    });
    check(code, "convert_unit");
}

void convertAxesOf(const PyMat& m, COORDINATE_SYSTEM source, COORDINATE_SYSTEM target, MEM mem) {
    requireSides(m.mat(), mem, "convert_coordinate_system");
    const ERROR_CODE code =
        withoutLock(m, [&](Mat& pixels) { return convertCoordinateSystem(pixels, source, target, mem); });
    check(code, "convert_coordinate_system");
}

}  // namespace

void defineOperations(nb::class_<PyMat>& mat) {
    mat.def("clone", &clone,
            "A deep copy on the same sides, packed, with the time stamp and without the name.")
        .def(
            "ref", [](const PyMat& m) { return m; },
            "Another Mat over the same pixels, time stamp and name; it keeps them if this Mat gets others.")
        .def(
            "free", [](PyMat& m) { m.storage = std::make_shared<Storage>(); },
            "Empties this Mat. The pixels are released once no array and no other Mat uses them.")
        .def("copy_to", &copyTo, "destination"_a, "type"_a.noconvert() = COPY_TYPE::CPU_CPU,
             nb::sig("def copy_to(self, destination: Mat, type: COPY_TYPE = vela._core.COPY_TYPE.CPU_CPU) -> "
                     "None"),
             "Copies the pixels and the time stamp from one side here to one side of another Mat.\n\n"
             "A destination of this size and type that has the side is written through, shared memory too;\n"
             "otherwise it gets new pixels, on that side alone. vela.Error without the side that is read.")
        .def(
            "update_cpu_from_gpu",
            [](PyMat& m) {
                update(m, MEM::CPU, "update_cpu_from_gpu",
                       [](Mat& pixels) { return pixels.updateCPUfromGPU(); });
            },
            "Copies the device side to the host side, which is allocated if missing.")
        .def(
            "update_gpu_from_cpu",
            [](PyMat& m) {
                update(m, MEM::GPU, "update_gpu_from_cpu",
                       [](Mat& pixels) { return pixels.updateGPUfromCPU(); });
            },
            "Copies the host side to the device side, which is allocated if missing.\n\n"
            "A Mat that shares an array's memory cannot grow one: vela.Error.")
        .def(
            "set_to",
            [](const PyMat& m, nb::handle value) {
                nb::cast(arrayOf(m)).attr("__setitem__")(nb::ellipsis(), value);
            },
            "value"_a, nb::sig("def set_to(self, value: ArrayLike) -> None"),
            "Sets every pixel of the host side to a number, or to one number per channel.")
        .def("convert_unit", &convertUnitOf, "source"_a.noconvert(), "target"_a.noconvert(),
             "mem"_a.noconvert() = MEM::CPU, nb::kw_only(), "scale_fourth"_a = false,
             nb::sig("def convert_unit(self, source: UNIT, target: UNIT, mem: MEM = vela._core.MEM.CPU, *, "
                     "scale_fourth: bool = False) -> None"),
             "Scales depths (MAT_32F_C1) or points (MAT_32F_C3, MAT_32F_C4) from one unit to another, in "
             "place.\n\n"
             "mem is CPU, GPU, or BOTH, which converts on the GPU and brings the result to the host. The "
             "fourth\n"
             "channel, packed colour, keeps its bits; scale_fourth=True scales it as well, on the host.\n"
             "vela.Error for other types and for a side that is not there.")
        .def("convert_coordinate_system", &convertAxesOf, "source"_a.noconvert(), "target"_a.noconvert(),
             "mem"_a.noconvert() = MEM::CPU,
             nb::sig(
                 "def convert_coordinate_system(self, source: COORDINATE_SYSTEM, target: COORDINATE_SYSTEM, "
                 "mem: MEM = vela._core.MEM.CPU) -> None"),
             "Moves every point (MAT_32F_C3, MAT_32F_C4) from one axis convention to another, in place.\n\n"
             "mem as in convert_unit; the fourth channel keeps its bits.");
}

}  // namespace vela::python

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ModelMat.hpp"
#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_core/utils/image_conversion.hpp"

#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

namespace vela::test {

/// The arguments of an operation.
struct Arguments {
    std::size_t width = 4;
    std::size_t height = 2;
    MAT_TYPE type = MAT_TYPE::MAT_32F_C4;
    MEM mem = MEM::CPU;
    COPY_TYPE copy = COPY_TYPE::CPU_CPU;
    cudaStream_t stream = nullptr;
    unsigned seed = 1;
};

/// An operation on one or two Mats, and the same operation on their models.
struct Operation {
    enum Uses : unsigned { OTHER = 1, MEMORY = 2, COPY = 4, STREAM = 8, PIXELS = 16 };

    const char* name;
    unsigned uses;  ///< what it depends on besides the Mat; PIXELS: it reads or writes buffers
    std::function<ERROR_CODE(Mat&, Mat&, const Arguments&)> act;
    std::function<ERROR_CODE(ModelMat&, ModelMat&, const Arguments&)> model;
};

/// Marks the pixels of one side as unknown: only the tests of conversions check converted pixels.
inline void forgetRows(const std::shared_ptr<ModelBuffer>& buffer) {
    if (buffer) buffer->rows.reset();
}

inline void convertRows(ModelMat& m, MEM mem, bool withMatrix) {
    if (mem == MEM::CPU) forgetRows(m.host);
    if (mem != MEM::GPU && mem != MEM_BOTH) return;
    World& world = *m.world;
    const bool matrix = !withMatrix || !world.fails("cudaMallocPitch");
    const bool filled = !withMatrix || (!world.fails("cudaMemcpy") && matrix);
    const bool launches = filled && m.device && m.width * m.height != 0;
    if (launches && !world.fails("cudaLaunchKernel")) forgetRows(m.device);
    if (mem == MEM_BOTH) m.updateCPUfromGPU();
    if (withMatrix && matrix && world.fails("cudaFree")) ++world.lost;
}

inline ERROR_CODE convertUnit(ModelMat& m, UNIT /*from*/, UNIT /*to*/, MEM mem) {
    if (m.type != F1 && m.type != F3 && m.type != F4) return ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    convertRows(m, mem, false);
    return OK;
}

inline ERROR_CODE convertCoordinateSystem(ModelMat& m, COORDINATE_SYSTEM /*from*/, COORDINATE_SYSTEM /*to*/,
                                          MEM mem) {
    if (m.type != F3 && m.type != F4) return ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    convertRows(m, mem, true);
    return OK;
}

inline ERROR_CODE convertImage(ModelMat& m, ModelMat& o, cudaStream_t stream) {
    if (!m.init || toValue(m.mem) < 2 || m.type != U4) return BAD;
    const bool fits =
        o.init && toValue(o.mem) >= 2 && o.type == S4 && o.width == m.width && o.height == m.height;
    if (!fits && o.owns(m)) {
        ModelMat earlier(*m.world);
        o.move(earlier);
        return convertImage(&m == &o ? earlier : m, o, stream);
    }
    if (!fits) o.alloc(m.width, m.height, S4, MEM::GPU);
    if (!m.device || !o.device || m.width * m.height == 0 || m.world->fails("cudaLaunchKernel")) return OK;
    forgetRows(o.device);
    return OK;
}

inline std::vector<Operation> operations() {
    using Op = Operation;
    using Arg = const Arguments&;
    // The Mat and its model have the same interface.
    const auto both = [](const char* name, unsigned uses, auto call) { return Op{name, uses, call, call}; };
    const auto succeeds = [=](const char* name, unsigned uses, auto call) {
        return both(name, uses, [=](auto& m, auto& o, Arg a) {
            call(m, o, a);
            return OK;
        });
    };
    return {
        succeeds("alloc", Op::MEMORY,
                 [](auto& m, auto&, Arg a) { m.alloc(a.width, a.height, a.type, a.mem); }),
        succeeds("free", Op::MEMORY, [](auto& m, auto&, Arg a) { m.free(a.mem); }),
        succeeds("ref", Op::OTHER, [](auto& m, auto& o, Arg) { m.ref(o); }),
        succeeds("copy and assign", Op::OTHER,
                 [](auto& m, auto& o, Arg) {
                     // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): copying is tested
                     const std::decay_t<decltype(o)> copy(o);
                     m = copy;
                 }),
        both("move", Op::OTHER, [](auto& m, auto& o, Arg) { return m.move(o); }),
        succeeds("C++ moves", Op::OTHER,
                 [](auto& m, auto& o, Arg) {
                     std::decay_t<decltype(o)> taken(std::move(o));
                     m = std::move(taken);
                 }),
        succeeds("swap", Op::OTHER, [](auto& m, auto& o, Arg) { std::decay_t<decltype(o)>::swap(m, o); }),
        both("clone", Op::OTHER | Op::PIXELS, [](auto& m, auto& o, Arg) { return m.clone(o); }),
        both("copyTo", Op::OTHER | Op::COPY | Op::STREAM | Op::PIXELS,
             [](auto& m, auto& o, Arg a) { return m.copyTo(o, a.copy, a.stream); }),
        both("setFrom", Op::OTHER | Op::COPY | Op::STREAM | Op::PIXELS,
             [](auto& m, auto& o, Arg a) { return m.setFrom(o, a.copy, a.stream); }),
        both("updateCPUfromGPU", Op::STREAM | Op::PIXELS,
             [](auto& m, auto&, Arg a) { return m.updateCPUfromGPU(a.stream); }),
        both("updateGPUfromCPU", Op::STREAM | Op::PIXELS,
             [](auto& m, auto&, Arg a) { return m.updateGPUfromCPU(a.stream); }),
        both("setTo", Op::MEMORY | Op::PIXELS,
             [](auto& m, auto&, Arg a) { return m.setTo(static_cast<float>(a.seed), a.mem); }),
        both("convertUnit", Op::MEMORY | Op::PIXELS,
             [](auto& m, auto&, Arg a) { return convertUnit(m, UNIT::METER, UNIT::CENTIMETER, a.mem); }),
        both("convertCoordinateSystem", Op::MEMORY | Op::PIXELS,
             [](auto& m, auto&, Arg a) {
                 constexpr auto TO = COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD;
                 return convertCoordinateSystem(m, COORDINATE_SYSTEM::IMAGE, TO, a.mem);
             }),
        both("convertImage", Op::OTHER | Op::STREAM | Op::PIXELS,
             [](auto& m, auto& o, Arg a) { return convertImage(m, o, a.stream); }),
    };
}

/// A Mat, its model and, for a reference, the owner of its buffers.
struct Subject {
    Mat mat, owner;
    ModelMat model, ownerModel;

    explicit Subject(World& world) : model(world), ownerModel(world) {}
};

/// Makes a subject: an owner on `mem` with known contents, or a reference to one; empty for the value 0.
inline void start(Subject& subject, MEM mem, bool reference, const Arguments& arguments) {
    if (toValue(mem) == 0) return;
    Mat& mat = reference ? subject.owner : subject.mat;
    ModelMat& model = reference ? subject.ownerModel : subject.model;
    mat.alloc(arguments.width, arguments.height, arguments.type, mem);
    model.alloc(arguments.width, arguments.height, arguments.type, mem);
    Bytes rows(packedSize(mat));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i] =
            static_cast<std::uint8_t>(i % 4 == 3 ? 0x3F : (i * 7 + arguments.seed) % 128);  // floats near 1
    }
    for (const MEM side : {MEM::CPU, MEM::GPU}) {
        const auto& buffer = side == MEM::CPU ? model.host : model.device;
        if (!buffer) continue;
        if (!rows.empty()) store(mat, side, rows.data());
        buffer->rows = rows;
    }
    mat.timestamp = model.timestamp = arguments.seed;
    mat.extraFlag = model.flag = toValue(mem) % 2 == 1;
    if (!reference) return;
    subject.mat.ref(mat);
    subject.model.ref(model);
}

}  // namespace vela::test

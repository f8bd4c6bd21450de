// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ModelMat.hpp"
#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_core/utils/image_conversion.hpp"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vela::test {

using detail::toValue;

/// What an operation is called with.
struct Arguments {
    std::size_t width = 4;
    std::size_t height = 2;
    MAT_TYPE type = MAT_TYPE::MAT_32F_C4;
    MEM mem = MEM::CPU;
    COPY_TYPE copy = COPY_TYPE::CPU_CPU;
    cudaStream_t stream = nullptr;
    unsigned seed = 1;
};

/// An operation on a Mat and, for some, another, and the same on their models. Results are numbers of
/// ERROR_CODE.
struct Operation {
    enum Uses : unsigned { OTHER = 1, MEMORY = 2, COPY = 4, STREAM = 8, PIXELS = 16 };

    const char* name;
    unsigned uses;  ///< what it depends on beside the Mat; PIXELS: buffers are read or written
    std::function<int(Mat&, Mat&, const Arguments&)> act;
    std::function<int(ModelMat&, ModelMat&, const Arguments&)> model;
};

inline int codeOf(bool success) {
    return success ? 0 : 1;
}

/// What a conversion makes of one side of a model: pixels that only tests of the conversion know.
inline void forgetRows(const std::shared_ptr<ModelBuffer>& buffer) {
    if (buffer) buffer->rows.reset();
}

inline Operation fillOperation() {
    return {
        "setTo", Operation::MEMORY | Operation::PIXELS,
        [](Mat& m, Mat&, const Arguments& a) { return toValue(m.setTo(static_cast<float>(a.seed), a.mem)); },
        [](ModelMat& m, ModelMat&, const Arguments& a) {
            const bool host = a.mem == MEM::CPU && ModelMat::hasHost(m.mem);
            const bool device = a.mem == MEM::GPU && ModelMat::hasDevice(m.mem);
            if (!m.init || m.pixelBytes != sizeof(float) || (!host && !device)) return 1;
            if (m.width * m.height == 0) return 0;
            const auto& buffer = host ? m.host : m.device;
            if (!buffer) return codeOf(device);
            if (device && m.world->fails("cudaLaunchKernel")) return 0;
            const auto pixel = static_cast<float>(a.seed);
            buffer->rows = Bytes(m.rowBytes() * m.height);
            for (std::size_t i = 0; i < buffer->rows->size(); i += sizeof pixel) {
                std::memcpy(buffer->rows->data() + i, &pixel, sizeof pixel);
            }
            return 0;
        }};
}

inline int modelConvertImage(ModelMat& m, ModelMat& o, const Arguments& a) {
    constexpr auto FROM = MAT_TYPE::MAT_8U_C4, SIGNED = MAT_TYPE::MAT_8S_C4;
    if (!m.init || toValue(m.mem) < 2 || m.type != FROM) return 1;
    const bool fits =
        o.init && toValue(o.mem) >= 2 && o.type == SIGNED && o.width == m.width && o.height == m.height;
    if (!fits && o.owns(m)) {
        ModelMat earlier(*m.world);
        o.move(earlier);
        const int result = modelConvertImage(&m == &o ? earlier : m, o, a);
        earlier.free(MEM_BOTH);
        return result;
    }
    if (!fits) o.alloc(m.width, m.height, SIGNED, MEM::GPU);
    if (!m.device || !o.device || m.width * m.height == 0 || m.world->fails("cudaLaunchKernel")) return 0;
    forgetRows(o.device);
    return 0;
}

inline std::vector<Operation> operations() {
    using Op = Operation;
    using Arg = const Arguments&;
    constexpr auto TO = COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD;
    const auto convert = [](ModelMat& m, MEM mem, bool withMatrix) {
        if (mem == MEM::CPU) forgetRows(m.host);
        if (mem != MEM::GPU && mem != MEM_BOTH) return;
        World& world = *m.world;
        const bool matrix = !withMatrix || !world.fails("cudaMallocPitch");
        const bool filled = !withMatrix || (!world.fails("cudaMemcpy") && matrix);
        const bool launches = filled && m.device && m.width * m.height != 0;
        if (launches && !world.fails("cudaLaunchKernel")) forgetRows(m.device);
        if (mem == MEM_BOTH) m.update(true, false);
        if (withMatrix && matrix && world.fails("cudaFree")) ++world.lost;
    };
    return {
        {"alloc", Op::MEMORY,
         [](Mat& m, Mat&, Arg a) { return m.alloc(a.width, a.height, a.type, a.mem), 0; },
         [](ModelMat& m, ModelMat&, Arg a) { return m.alloc(a.width, a.height, a.type, a.mem), 0; }},
        {"free", Op::MEMORY, [](Mat& m, Mat&, Arg a) { return m.free(a.mem), 0; },
         [](ModelMat& m, ModelMat&, Arg a) { return m.free(a.mem), 0; }},
        {"ref", Op::OTHER, [](Mat& m, Mat& o, Arg) { return m.ref(o), 0; },
         [](ModelMat& m, ModelMat& o, Arg) { return m.ref(o), 0; }},
        {"copy and assign", Op::OTHER,
         [](Mat& m, Mat& o, Arg) {
             const Mat copy(o);  // NOLINT(performance-unnecessary-copy-initialization): copying is tested
             m = copy;
             return 0;
         },
         [](ModelMat& m, ModelMat& o, Arg) {
             ModelMat copy(*m.world);
             copy.ref(o);
             return m.ref(copy), 0;
         }},
        {"move", Op::OTHER, [](Mat& m, Mat& o, Arg) { return toValue(m.move(o)); },
         [](ModelMat& m, ModelMat& o, Arg) { return codeOf(m.move(o)); }},
        {"C++ moves", Op::OTHER,
         [](Mat& m, Mat& o, Arg) {
             Mat taken(std::move(o));
             m = std::move(taken);
             return 0;
         },
         [](ModelMat& m, ModelMat& o, Arg) {
             ModelMat taken(*m.world);
             taken.take(o);
             m.take(taken);
             return taken.free(MEM_BOTH), 0;
         }},
        {"swap", Op::OTHER, [](Mat& m, Mat& o, Arg) { return Mat::swap(m, o), 0; },
         [](ModelMat& m, ModelMat& o, Arg) { return ModelMat::swap(m, o), 0; }},
        {"clone", Op::OTHER | Op::PIXELS, [](Mat& m, Mat& o, Arg) { return toValue(m.clone(o)); },
         [](ModelMat& m, ModelMat& o, Arg) { return codeOf(m.clone(o)); }},
        {"copyTo", Op::OTHER | Op::COPY | Op::STREAM | Op::PIXELS,
         [](Mat& m, Mat& o, Arg a) { return toValue(m.copyTo(o, a.copy, a.stream)); },
         [](ModelMat& m, ModelMat& o, Arg a) {
             return codeOf(m.copyTo(o, a.copy, a.stream != nullptr, false));
         }},
        {"setFrom", Op::OTHER | Op::COPY | Op::STREAM | Op::PIXELS,
         [](Mat& m, Mat& o, Arg a) { return toValue(m.setFrom(o, a.copy, a.stream)); },
         [](ModelMat& m, ModelMat& o, Arg a) {
             return codeOf(o.copyTo(m, a.copy, a.stream != nullptr, true));
         }},
        {"updateCPUfromGPU", Op::STREAM | Op::PIXELS,
         [](Mat& m, Mat&, Arg a) { return toValue(m.updateCPUfromGPU(a.stream)); },
         [](ModelMat& m, ModelMat&, Arg a) { return codeOf(m.update(true, a.stream != nullptr)); }},
        {"updateGPUfromCPU", Op::STREAM | Op::PIXELS,
         [](Mat& m, Mat&, Arg a) { return toValue(m.updateGPUfromCPU(a.stream)); },
         [](ModelMat& m, ModelMat&, Arg a) { return codeOf(m.update(false, a.stream != nullptr)); }},
        fillOperation(),
        {"convertUnit", Op::MEMORY | Op::PIXELS,
         [](Mat& m, Mat&, Arg a) { return toValue(convertUnit(m, UNIT::METER, UNIT::CENTIMETER, a.mem)); },
         [=](ModelMat& m, ModelMat&, Arg a) {
             if (m.type != MAT_TYPE::MAT_32F_C1 && m.type != MAT_TYPE::MAT_32F_C3 &&
                 m.type != MAT_TYPE::MAT_32F_C4) {
                 return 17;
             }
             return convert(m, a.mem, false), 0;
         }},
        {"convertCoordinateSystem", Op::MEMORY | Op::PIXELS,
         [](Mat& m, Mat&, Arg a) {
             return toValue(convertCoordinateSystem(m, COORDINATE_SYSTEM::IMAGE, TO, a.mem));
         },
         [=](ModelMat& m, ModelMat&, Arg a) {
             if (m.type != MAT_TYPE::MAT_32F_C3 && m.type != MAT_TYPE::MAT_32F_C4) return 17;
             return convert(m, a.mem, true), 0;
         }},
        {"convertImage", Op::OTHER | Op::STREAM | Op::PIXELS,
         [](Mat& m, Mat& o, Arg a) { return toValue(convertImage(m, o, a.stream)); }, modelConvertImage},
    };
}

/// A Mat, the model of it, and what keeps its buffers alive if it is a reference.
struct Subject {
    Mat mat, owner;
    ModelMat model, ownerModel;

    explicit Subject(World& world) : model(world), ownerModel(world) {}
};

/// Makes a subject: an owner on `mem` with known contents, or a reference to such; empty for the value 0.
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

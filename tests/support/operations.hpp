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

/// Applies `change` to the known rows of one side of a model.
template <class Change>
void changeRows(const std::shared_ptr<ModelBuffer>& buffer, Change change) {
    if (buffer && buffer->rows) change(*buffer->rows);
}

/// The fourth float of a pixel is scaled on the host and kept on the device.
inline void modelScale(Bytes& rows, std::size_t channels, float factor, bool host) {
    for (std::size_t i = 0; i < rows.size() / 4; ++i) {
        if (channels == 4 && i % 4 == 3 && !host) continue;
        float value = 0;
        std::memcpy(&value, &rows[i * 4], 4);
        value *= factor;
        std::memcpy(&rows[i * 4], &value, 4);
    }
}

/// IMAGE to RIGHT_HANDED_Y_UP_AND_Z_BACKWARD: Y and Z change their sign.
inline void modelTurn(Bytes& rows, std::size_t channels) {
    for (std::size_t i = 0; i < rows.size() / 4; i += channels) {
        float p[3];
        std::memcpy(p, &rows[i * 4], 12);
        const float turned[3] = {p[0] + 0 * p[1] + 0 * p[2], 0 * p[0] - p[1] + 0 * p[2],
                                 0 * p[0] + 0 * p[1] - p[2]};
        std::memcpy(&rows[i * 4], turned, 12);
    }
}

/// A pixel of bytes that make small floats.
template <class Pixel>
Pixel pixelOf(unsigned seed) {
    Pixel pixel{};
    const float value = 1.0F + static_cast<float>(seed % 64);
    for (std::size_t i = 0; i < sizeof pixel; i += sizeof value) {
        std::memcpy(reinterpret_cast<char*>(&pixel) + i, &value, std::min(sizeof value, sizeof pixel - i));
    }
    return pixel;
}

template <class Pixel>
Operation fillOperation(const char* name) {
    return {name, Operation::MEMORY | Operation::PIXELS,
            [](Mat& m, Mat&, const Arguments& a) { return toValue(m.setTo(pixelOf<Pixel>(a.seed), a.mem)); },
            [](ModelMat& m, ModelMat&, const Arguments& a) {
                const bool host = a.mem == MEM::CPU && ModelMat::hasHost(m.mem);
                const bool device = a.mem == MEM::GPU && ModelMat::hasDevice(m.mem);
                if (!m.init || m.pixelBytes != sizeof(Pixel) || (!host && !device)) return 1;
                if (m.width * m.height == 0) return 0;
                const auto& buffer = host ? m.host : m.device;
                if (!buffer) return codeOf(device);
                if (device && m.world->fails("cudaLaunchKernel")) return 0;
                const auto pixel = pixelOf<Pixel>(a.seed);
                buffer->rows = Bytes(m.rowBytes() * m.height);
                for (std::size_t i = 0; i < buffer->rows->size(); i += sizeof pixel) {
                    std::memcpy(buffer->rows->data() + i, &pixel, sizeof pixel);
                }
                return 0;
            }};
}

/// Sets the last pixel of a side and reads it back; the result is that of both calls and of the comparison.
inline Operation pixelOperation() {
    return {"setValue, getValue", Operation::MEMORY | Operation::PIXELS,
            [](Mat& m, Mat&, const Arguments& a) {
                if (m.width * m.height == 0 || m.pixelBytes != 4) return 0;
                float seen = 0;
                const auto pixel = pixelOf<float>(a.seed);
                const ERROR_CODE set = m.setValue(m.width - 1, m.height - 1, pixel, a.mem);
                const ERROR_CODE got = m.getValue(m.width - 1, m.height - 1, &seen, a.mem);
                return toValue(set) + 10 * toValue(got) + (seen == pixel ? 100 : 0);
            },
            [](ModelMat& m, ModelMat&, const Arguments& a) {
                if (m.width * m.height == 0 || m.pixelBytes != 4) return 0;
                const bool host = a.mem == MEM::CPU && ModelMat::hasHost(m.mem);
                const bool device = a.mem == MEM::GPU && ModelMat::hasDevice(m.mem);
                const auto& buffer = host ? m.host : m.device;
                if (!m.init || (!host && !device) || (host && !buffer)) return 11;
                const std::string end = " [with N = float; size_t = long unsigned int]";
                const auto transfer = [&](const char* signature) {
                    const int error = host ? 0 : m.world->fails("cudaMemcpy") ? 999 : buffer ? 0 : 1;
                    return m.world->report(error, signature + end);
                };
                const auto pixel = pixelOf<float>(a.seed);
                const bool set =
                    transfer("vela::ERROR_CODE vela::Mat::setValue(size_t, size_t, N, vela::MEM)");
                if (set && buffer->rows) std::memcpy(&*(buffer->rows->end() - 4), &pixel, 4);
                const bool got =
                    transfer("vela::ERROR_CODE vela::Mat::getValue(size_t, size_t, N*, vela::MEM) const");
                if (set || !got || !buffer->rows) return set && got ? 100 : 0;
                const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&pixel);
                return std::equal(bytes, bytes + 4, buffer->rows->end() - 4) ? 100 : 0;
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
    o.device->rows = m.device->rows;
    changeRows(o.device, [](Bytes& rows) {
        for (std::uint8_t& byte : rows)
            byte = static_cast<std::uint8_t>(byte ^ 0x80);
    });
    return 0;
}

inline std::vector<Operation> operations() {
    using Op = Operation;
    using Arg = const Arguments&;
    constexpr auto TO = COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD;
    const auto convert = [](ModelMat& m, MEM mem, const char* kernelNeeds, auto change) {
        if (mem == MEM::CPU) changeRows(m.host, [&](Bytes& rows) { change(rows, true); });
        if (mem != MEM::GPU && mem != MEM_BOTH) return;
        World& world = *m.world;
        const bool withMatrix = *kernelNeeds != '\0';
        const bool matrix = !withMatrix || !world.fails("cudaMallocPitch");
        const bool filled = !withMatrix || (!world.fails("cudaMemcpy") && matrix);
        const bool launches = filled && m.device && m.width * m.height != 0;
        if (launches && !world.fails("cudaLaunchKernel")) {
            changeRows(m.device, [&](Bytes& rows) { change(rows, false); });
        }
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
        fillOperation<float>("setTo<float>"),
        fillOperation<Vector3<unsigned char>>("setTo<Vector3<unsigned char>>"),
        fillOperation<Vector4<float>>("setTo<Vector4<float>>"),
        pixelOperation(),
        {"convertUnit", Op::MEMORY | Op::PIXELS,
         [](Mat& m, Mat&, Arg a) { return toValue(convertUnit(m, UNIT::METER, UNIT::CENTIMETER, a.mem)); },
         [=](ModelMat& m, ModelMat&, Arg a) {
             if (m.type != MAT_TYPE::MAT_32F_C1 && m.type != MAT_TYPE::MAT_32F_C3 &&
                 m.type != MAT_TYPE::MAT_32F_C4) {
                 return 17;
             }
             convert(m, a.mem, "",
                     [&](Bytes& rows, bool host) { modelScale(rows, m.channels, 100.0F, host); });
             return 0;
         }},
        {"convertCoordinateSystem", Op::MEMORY | Op::PIXELS,
         [](Mat& m, Mat&, Arg a) {
             return toValue(convertCoordinateSystem(m, COORDINATE_SYSTEM::IMAGE, TO, a.mem));
         },
         [=](ModelMat& m, ModelMat&, Arg a) {
             if (m.type != MAT_TYPE::MAT_32F_C3 && m.type != MAT_TYPE::MAT_32F_C4) return 17;
             convert(m, a.mem, "a matrix", [&](Bytes& rows, bool) { modelTurn(rows, m.channels); });
             return 0;
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

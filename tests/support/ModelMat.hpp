// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/device.hpp"

#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace vela::test {

/// The runtime as the model sees it: which call fails, which calls were made, and what they print.
struct World {
    std::string function;  ///< its `nth` call from now on fails with 999
    int nth = 0;
    std::map<std::string, int> calls;
    std::string printed;
    std::string logged;
    std::size_t lost = 0;  ///< buffers that cudaFree refused to free

    bool fails(const std::string& name) {
        ++calls[name];
        return name == function && --nth == 0;
    }
    ERROR_CODE report(int error, const std::string& signature) {
        static const std::map<int, std::string> TEXTS = {
            {1, "invalid argument"}, {12, "invalid pitch argument"}, {999, "unknown error"}};
        if (error == 0) return OK;
        printed += "in " + signature + " : Err [" + std::to_string(error) + "]: " + TEXTS.at(error) + ".\n";
        return BAD;
    }
};

/// Packed rows, if known. A freed buffer is no longer `live`, even if references to it remain.
struct ModelBuffer {
    std::optional<Bytes> rows;
    bool live = true;
};

/// What a reference takes over from its Mat.
struct ModelImage {
    std::size_t width = 0, height = 0, channels = 0, stepGPU = 0, stepCPU = 0, pixelBytes = 0;
    MAT_TYPE type{};
    MEM mem = MEM::CPU;
    std::shared_ptr<ModelBuffer> host, device;  // the same buffer for managed memory
    unsigned long long timestamp = 0;
};

/// The contract of a Mat as plain code: fields, contents, texts. Made for small sizes, not for speed.
struct ModelMat : ModelImage {
    bool init = false, owner = false, flag = false;
    String name = "n/a";
    World* world;

    explicit ModelMat(World& world_) : world(&world_) {}
    ModelMat(const ModelMat& other) : ModelMat(*other.world) { ref(other); }
    ModelMat(ModelMat&& other) noexcept : ModelMat(*other.world) { *this = std::move(other); }
    ~ModelMat() { free(MEM_BOTH); }
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): like a Mat, which is empty then
    ModelMat& operator=(const ModelMat& other) {
        ref(other);
        return *this;
    }
    ModelMat& operator=(ModelMat&& from) noexcept {
        if (keeps(from)) return *this;
        if (from.move(*this) != OK) ref(from);
        if (&from != this) name = std::exchange(from.name, "");
        return *this;
    }

    ModelImage& image() { return *this; }
    const ModelImage& image() const { return *this; }
    static int side(MEM mem) { return toValue(mem); }
    static bool hasHost(MEM m) { return side(m) == 1 || side(m) == 3 || side(m) == 4; }
    static bool hasDevice(MEM m) { return side(m) >= 2 && side(m) <= 4; }
    std::size_t rowBytes() const { return width * pixelBytes; }
    std::size_t bytes() const { return rowBytes() * height; }
    bool usable() const { return (!host || host->live) && (!device || device->live); }
    bool sharesWith(const ModelMat& other) const {
        return (host && (host == other.host || host == other.device)) || (device && device == other.device);
    }

    /// Whether `s` has pixels in buffers that this Mat owns; `keeps`: as a reference, which changes no owner.
    bool owns(const ModelMat& s) const { return init && owner && s.width * s.height != 0 && sharesWith(s); }
    bool keeps(const ModelMat& s) const { return owns(s) && s.init && !s.owner; }

    void reset() {
        init = owner = false;
        width = height = channels = stepGPU = stepCPU = pixelBytes = 0;
    }
    ERROR_CODE release(std::shared_ptr<ModelBuffer>& buffer) {
        const std::shared_ptr<ModelBuffer> gone = std::exchange(buffer, nullptr);
        if (!gone) return OK;
        gone->live = false;
        const bool failed = world->fails("cudaFree");
        world->lost += failed ? 1 : 0;
        return world->report(failed ? 999 : 0, "void vela::Mat::free(vela::MEM)");
    }
    void free(MEM m) {
        if (init && owner && mem == MEM_MANAGED) {
            release(device);
            host = nullptr;
        } else if (init && owner) {
            const int held = side(mem), asked = side(m);
            if ((held == 1 || held > 2) && (asked == 1 || asked > 2)) {
                if (host) host->live = false;
                host = nullptr;
                stepCPU = 0;
            }
            if (held >= 2 && asked > 1) {
                if (release(device) != OK) {
                    world->logged +=
                        "vela_core/utils/Mat.cpp:580 ERROR [Mat]  " + toStdString(name) +
                        " Mat with GPU memory allocated should be freed before deleting the Camera object "
                        "to avoid GPU context issues.\n";
                }
                stepGPU = 0;
            }
            if (held > 2 && asked == 1) mem = MEM::GPU;
            if (held > 2 && asked == 2) mem = MEM::CPU;
            if (host || device) return;
        }
        reset();
    }
    int mallocPitch() {
        if (world->fails("cudaMallocPitch")) return 999;
        const std::size_t whole = pixelBytes % 3 == 0 ? 1536 : 512;
        stepGPU = (rowBytes() + whole - 1) / whole * whole;
        device = bytes() == 0 ? nullptr : std::make_shared<ModelBuffer>();
        return 0;
    }
    void alloc(std::size_t w, std::size_t h, MAT_TYPE t, MEM m) {
        static constexpr std::size_t CHANNELS[] = {1, 2, 3, 4, 1, 2, 3, 4, 1, 4};
        static constexpr std::size_t BYTES[] = {4, 8, 12, 16, 1, 2, 3, 4, 2, 4};
        static const std::string SIGNATURE =
            "void vela::Mat::alloc(size_t, size_t, vela::MAT_TYPE, vela::MEM)";
        free(MEM_BOTH);
        host = device = nullptr;
        width = w;
        height = h;
        type = t;
        channels = CHANNELS[toValue(t)];
        pixelBytes = BYTES[toValue(t)];
        if (side(m) > 4) world->printed += "ERROR ALLOC MEM TYPE " + std::to_string(side(m)) + "\n";
        if (m == MEM_MANAGED) {
            const int refused = bytes() == 0 ? 1 : 0;
            const int error = world->fails("cudaMallocManaged") ? 999 : refused;
            if (world->report(error, SIGNATURE) == OK) host = device = std::make_shared<ModelBuffer>();
            stepGPU = rowBytes();
        } else {
            if (hasHost(m)) host = std::make_shared<ModelBuffer>();
            if (hasDevice(m)) world->report(mallocPitch(), SIGNATURE);
        }
        stepCPU = rowBytes();
        init = owner = true;
        mem = m;
    }
    void ref(const ModelMat& s) {
        if (keeps(s)) return;
        free(MEM_BOTH);
        if (s.width * s.height == 0 || !s.init) return;
        image() = s.image();
        init = true;
        owner = flag = false;
    }
    ERROR_CODE move(ModelMat& to) {
        if (!init || !owner) return BAD;
        to.free(MEM_BOTH);
        to.image() = image();
        to.init = to.owner = true;
        to.flag = flag;
        init = owner = false;
        return OK;
    }
    static void swap(ModelMat& a, ModelMat& b) {
        ModelMat t(*a.world);
        a.move(t);
        b.move(a);
        t.move(b);
    }
    /// Transfers the pixels; returns the runtime's status.
    int copyRows(ModelMat& d, COPY_TYPE how, cudaStream_t stream) const {
        const int h = toValue(how);
        const bool known = h >= 0 && h <= 3;
        const bool fromHost = h < 2;
        const bool toHost = !known || h == 0 || h == 3;
        if (world->fails(stream != nullptr ? "cudaMemcpy2DAsync" : "cudaMemcpy2D")) return 999;
        if (bytes() == 0) return 0;
        const auto& from = fromHost ? host : device;
        const auto& to = toHost ? d.host : d.device;
        const std::size_t fromStep = fromHost ? stepCPU : stepGPU;
        if (rowBytes() > (toHost ? d.stepCPU : d.stepGPU) || !known || rowBytes() > fromStep) return 12;
        if (!from || !to) return 1;
        to->rows = from->rows;
        return 0;
    }
    ERROR_CODE copy(ModelMat& d, COPY_TYPE how, cudaStream_t stream, const char* signature) const {
        const int h = toValue(how);
        const bool known = h >= 0 && h <= 3;
        const MEM written = h == 1 || h == 2 ? MEM::GPU : MEM::CPU;
        const bool fits = known && d.init && d.width == width && d.height == height && d.type == type &&
                          (h < 2 ? hasHost(mem) : hasDevice(mem)) &&
                          (written == MEM::CPU ? hasHost(d.mem) : hasDevice(d.mem));
        if (known && !fits && d.owns(*this)) {
            ModelMat earlier(*world);
            d.move(earlier);
            const ERROR_CODE result = (this == &d ? earlier : *this).copy(d, how, stream, signature);
            if (stream != nullptr) world->fails("cudaStreamSynchronize");
            return result;
        }
        if (!fits) d.alloc(width, height, type, written);
        d.timestamp = timestamp;
        return world->report(copyRows(d, how, stream), signature);
    }
    ERROR_CODE copyTo(ModelMat& d, COPY_TYPE how, cudaStream_t stream) const {
        return copy(d, how, stream,
                    "vela::ERROR_CODE vela::Mat::copyTo(vela::Mat&, vela::COPY_TYPE, cudaStream_t) const");
    }
    ERROR_CODE setFrom(const ModelMat& s, COPY_TYPE how, cudaStream_t stream) {
        return s.copy(*this, how, stream,
                      "vela::ERROR_CODE vela::Mat::setFrom(const vela::Mat&, vela::COPY_TYPE, cudaStream_t)");
    }
    ERROR_CODE update(bool toHost, cudaStream_t stream) {
        const std::string call = toHost ? "updateCPUfromGPU" : "updateGPUfromCPU";
        const std::string signature =
            "vela::ERROR_CODE vela::Mat::" + call + (toHost ? "(cudaStream_t)" : "(cudaStream_t, int)");
        if (mem == MEM_MANAGED) {
            const bool refused = world->fails("cudaStreamAttachMemAsync");
            const bool valid = device && (toHost || stream != nullptr);
            if (toHost) world->fails("cudaStreamSynchronize");
            const int error = valid ? 0 : 1;
            return world->report(refused ? 999 : error, signature);
        }
        if (owner && toHost && mem == MEM::GPU) {
            host = std::make_shared<ModelBuffer>();
            stepCPU = rowBytes();
            mem = MEM_BOTH;
        } else if (owner && !toHost && mem == MEM::CPU) {
            world->report(mallocPitch(), signature);
            mem = MEM_BOTH;
        } else if (!owner && side(mem) < 3) {
            world->logged += std::string("vela_core/utils/Mat.cpp:") + (toHost ? "844" : "868") +
                             " ERROR [Mat]  " + call + " for reference Mat is forbidden.\n";
            return BAD;
        }
        const COPY_TYPE how = toHost ? COPY_TYPE::GPU_CPU : COPY_TYPE::CPU_GPU;
        return world->report(copyRows(*this, how, stream), signature);
    }
    ERROR_CODE updateCPUfromGPU(cudaStream_t stream = nullptr) { return update(true, stream); }
    ERROR_CODE updateGPUfromCPU(cudaStream_t stream = nullptr) { return update(false, stream); }
    ERROR_CODE clone(const ModelMat& s) {
        if (!s.init) return BAD;
        const bool same = width == s.width && height == s.height && type == s.type && mem == s.mem &&
                          host == s.host && device == s.device;
        if (this == &s || (keeps(s) && same)) {
            timestamp = s.timestamp;
            return OK;
        }
        if (keeps(s)) {
            ModelMat part(*world);
            part.clone(s);
            part.flag = flag;
            return part.move(*this);
        }
        alloc(s.width, s.height, s.type, s.mem);
        timestamp = s.timestamp;
        setFrom(s, s.mem == MEM::GPU ? COPY_TYPE::GPU_GPU : COPY_TYPE::CPU_CPU, nullptr);
        if (s.mem != MEM::CPU && s.mem != MEM::GPU) updateGPUfromCPU();
        return OK;
    }
    ERROR_CODE setTo(float pixel, MEM m) {
        const bool onHost = m == MEM::CPU && hasHost(mem), onDevice = m == MEM::GPU && hasDevice(mem);
        if (!init || pixelBytes != sizeof pixel || (!onHost && !onDevice)) return BAD;
        if (bytes() == 0) return OK;
        const auto& buffer = onHost ? host : device;
        if (!buffer) return onDevice ? OK : BAD;
        if (onDevice && world->fails("cudaLaunchKernel")) return OK;
        buffer->rows = Bytes(bytes());
        for (std::size_t i = 0; i < bytes(); i += sizeof pixel) {
            std::memcpy(buffer->rows->data() + i, &pixel, sizeof pixel);
        }
        return OK;
    }
};

/// Compares all fields, and the contents that are known.
inline void expectSame(const Mat& mat, const ModelMat& model) {
    const auto fields = [](bool init, auto... values) {
        std::string text = init ? "initialised" : "empty";
        ((text += " " + std::to_string(values)), ...);
        return text;
    };
    EXPECT_EQ(fields(mat.isInit, mat.memoryOwner, toValue(mat.memType), mat.width, mat.height, mat.channels,
                     mat.pixelBytes, mat.stepBytesCPU, mat.ptrCPU != nullptr, mat.ptrGPU != nullptr,
                     mat.timestamp, mat.extraFlag),
              fields(model.init, model.owner, toValue(model.mem), model.width, model.height, model.channels,
                     model.pixelBytes, model.stepCPU, model.host != nullptr, model.device != nullptr,
                     model.timestamp, model.flag));
    EXPECT_EQ(mat.name, model.name);
    if (mat.isInit) {
        EXPECT_EQ(mat.dataType, model.type);
    }
#ifdef VELA_GPU_SOFTWARE
    EXPECT_EQ(mat.stepBytesGPU, model.stepGPU);
#endif
    if (!model.init || model.bytes() == 0 || testing::Test::HasFailure()) return;
    for (const MEM side : {MEM::CPU, MEM::GPU}) {
        const auto& buffer = side == MEM::CPU ? model.host : model.device;
        if (buffer && buffer->live && buffer->rows) {
            EXPECT_TRUE(sameBytes(load(mat, side), *buffer->rows)) << toValue(side);
        }
    }
}

}  // namespace vela::test

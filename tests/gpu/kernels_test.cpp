// SPDX-License-Identifier: Apache-2.0
// Runs the kernels on wrapped user memory: any row step, any aligned offset, sizes around words and tiles.
// The whole buffer is compared, so that stray writes are detected.
#include "vela_gpu/kernels.hpp"

#include "support/device.hpp"

#include <cstring>

namespace vela::test {
namespace {

constexpr float MATRIX[16] = {1, -2, 3, 40, 0, 5, -6, 70, 8, 9, 1, -30, 7, 7, 7, 7};
constexpr unsigned WIDTHS[] = {1, 3, 4, 5, 15, 16, 17, 127, 128, 129, 511, 512, 513, 2047, 2048, 2049, 5000};

struct Layout {
    unsigned offset;  ///< of the first pixel, in pixels
    unsigned step;
    unsigned width;
    unsigned height;

    std::size_t pixels() const { return offset + std::size_t{step} * height + 3; }
};

std::vector<Layout> layouts() {
    std::vector<Layout> all;
    for (const unsigned width : WIDTHS) {
        const unsigned padded = (width + 15) / 16 * 16;
        for (const unsigned step : {width, width + 1, padded, padded + 16}) {
            for (const unsigned offset : {0U, 1U, 16U}) {
                all.push_back({offset, step, width, 3});
            }
        }
    }
    all.push_back({0, 16, 5, 40});
    all.push_back({1, 2, 1, 600001});  // more rows than fit into a grid's height
    all.push_back({0, 32, 17, 0});
    all.push_back({0, 32, 0, 3});
    return all;
}

/// Device memory initialised with the given bytes.
Mat onDevice(const Bytes& bytes) {
    Mat mat(bytes.size(), 1, U1, MEM::GPU);
    store(mat, MEM::GPU, bytes.data());
    return mat;
}

template <class T>
T* pixelsOf(const Mat& mat, std::size_t index = 0) {
    return reinterpret_cast<T*>(mat.ptrGPU) + index;
}

/// Every float is a whole number, so that sums of products are exact in any order.
Bytes wholeFloats(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i + 4 <= size; i += 4) {
        const auto value = static_cast<float>(static_cast<int>(i * 37 % 1009) - 500);
        std::memcpy(&bytes[i], &value, sizeof value);
    }
    return bytes;
}

/// Launches a kernel over pixels of every layout; `change` gives the expected result for one pixel.
template <class T, class Launch, class Change>
void expectChange(const Launch& launch, const Change& change) {
    for (const Layout& layout : layouts()) {
        const Bytes before = wholeFloats(layout.pixels() * sizeof(T));
        Bytes wanted = before;
        for (unsigned y = 0; y < layout.height; ++y) {
            for (unsigned x = 0; x < layout.width; ++x) {
                change(&wanted[(layout.offset + std::size_t{y} * layout.step + x) * sizeof(T)]);
            }
        }
        const Mat device = onDevice(before);
        launch(pixelsOf<T>(device, layout.offset), layout);
        EXPECT_EQ(cudaGetLastError(), cudaSuccess);
        EXPECT_TRUE(sameBytes(load(device, MEM::GPU), wanted))
            << sizeof(T) << " bytes a pixel, offset " << layout.offset << ", step " << layout.step << ", "
            << layout.width << " x " << layout.height;
    }
}

template <class T>
void expectFill() {
    T value;
    const Bytes bytes = pattern(sizeof value, 7);
    std::memcpy(static_cast<void*>(&value), bytes.data(), sizeof value);
    const auto launch = [=](T* pixels, const Layout& l) {
        cu_matSetToGPU(value, pixels, l.step, l.width, l.height, nullptr);
    };
    expectChange<T>(launch, [&](void* pixel) { std::memcpy(pixel, bytes.data(), sizeof value); });
}

void scale(void* pixel, int components) {
    for (int i = 0; i < components; ++i) {
        static_cast<float*>(pixel)[i] *= 2.5F;
    }
}

void applyMatrix(void* pixel, int columns) {
    auto* const p = static_cast<float*>(pixel);
    float sums[3];
    for (int row = 0; row < 3; ++row) {
        const float* const k = MATRIX + row * columns;
        sums[row] = k[0] * p[0] + k[1] * p[1] + k[2] * p[2] + (columns == 4 ? k[3] : 0);
    }
    std::memcpy(pixel, sums, sizeof sums);
}

class KernelsTest : public DeviceTest {};

TEST_F(KernelsTest, FillsPixelsOfEverySize) {
    const auto fill = [](auto... pixels) { (expectFill<decltype(pixels)>(), ...); };
    using U = unsigned char;
    fill(U(), Vector2<U>(), Vector3<U>(), Vector4<U>(), std::uint16_t(), Vector4<char>());
    fill(0.0F, Vector2<float>(), Vector3<float>(), Vector4<float>());
}

TEST_F(KernelsTest, ScalesCoordinatesAndNoColours) {
    const auto factor = [](auto* pixels, const Layout& l) {
        cu_applyFactor(pixels, 2.5F, l.step, l.width, l.height);
    };
    expectChange<float>(factor, [](void* pixel) { scale(pixel, 1); });
    expectChange<Vector3<float>>(factor, [](void* pixel) { scale(pixel, 3); });
    expectChange<Vector4<float>>(
        [](auto* pixels, const Layout& l) { cu_applyFactor4f(pixels, 2.5F, l.step, l.width, l.height); },
        [](void* pixel) { scale(pixel, 3); });
}

TEST_F(KernelsTest, AppliesMatrices) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(MATRIX);
    const Mat matrix = onDevice(Bytes(bytes, bytes + sizeof MATRIX));
    expectChange<Vector3<float>>(
        [&](auto* pixels, const Layout& l) {
            cu_applyMat3f(pixels, pixelsOf<float>(matrix), l.step, l.width, l.height);
        },
        [](void* pixel) { applyMatrix(pixel, 3); });
    expectChange<Vector4<float>>(
        [&](auto* pixels, const Layout& l) {
            cu_applyMat4f(pixels, pixelsOf<float>(matrix), l.step, l.width, l.height);
        },
        [](void* pixel) { applyMatrix(pixel, 4); });
}

TEST_F(KernelsTest, ConvertsToSignedBetweenRowsOfDifferentSteps) {
    using From = Vector4<unsigned char>;
    using To = Vector4<char>;
    for (const Layout& layout : layouts()) {
        const unsigned fromSteps[] = {layout.width, layout.width + 1, (layout.width + 3) / 4 * 4};
        for (const unsigned fromStep : fromSteps) {
            const Bytes source = pattern((std::size_t{fromStep} * layout.height + 1) * 4, 3);
            const Mat from = onDevice(source);
            const Bytes before = pattern(layout.pixels() * 4);
            const Mat to = onDevice(before);
            cu_cvt2Signed(pixelsOf<From>(from), pixelsOf<To>(to, layout.offset), fromStep, layout.step,
                          {layout.width, layout.height}, nullptr);
            Bytes wanted = before;
            for (std::size_t y = 0; y < layout.height; ++y) {
                for (std::size_t i = 0; i < std::size_t{4} * layout.width; ++i) {
                    const unsigned byte = source[y * fromStep * 4 + i];
                    wanted[(layout.offset + y * layout.step) * 4 + i] =
                        static_cast<std::uint8_t>(byte >= 128 ? byte - 128 : byte + 128);
                }
            }
            EXPECT_TRUE(sameBytes(load(to, MEM::GPU), wanted))
                << layout.width << ", steps " << fromStep << " " << layout.step;
            EXPECT_TRUE(sameBytes(load(from, MEM::GPU), source));
        }
    }
}

TEST_F(KernelsTest, NothingIsLaunchedWithoutPixelsOrMemory) {
    cu_matSetToGPU<float>(1, nullptr, 4, 4, 4, nullptr);
    cu_applyFactor<float>(nullptr, 2, 4, 4, 4);
    cu_applyFactor<Vector3<float>>(nullptr, 2, 4, 4, 4);
    cu_applyFactor4f(nullptr, 2, 4, 4, 4);
    cu_applyMat3f(nullptr, nullptr, 4, 4, 4);
    cu_applyMat4f(nullptr, nullptr, 4, 4, 4);
    cu_cvt2Signed(nullptr, nullptr, 4, 4, {4, 4}, nullptr);
    const Mat pixels = onDevice(Bytes(64, 1));
    cu_applyMat3f(pixelsOf<Vector3<float>>(pixels), nullptr, 1, 1, 1);
    cu_applyMat4f(pixelsOf<Vector4<float>>(pixels), nullptr, 1, 1, 1);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_TRUE(sameBytes(load(pixels, MEM::GPU), Bytes(64, 1)));
}

}  // namespace
}  // namespace vela::test

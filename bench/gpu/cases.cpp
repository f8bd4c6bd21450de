// SPDX-License-Identifier: Apache-2.0
#include "cases.hpp"

#include "device.hpp"
#include "plain.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_gpu/kernels.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

#include <cstring>

namespace vela::bench {
namespace {

using detail::ApplyMatrix3;
using detail::ApplyMatrix4;
using detail::MatrixInMemory;
using detail::ScaleAll;
using detail::ScalePosition;
using detail::ToSigned;

// First a matrix with a visible effect, then one that only swaps axes, for kernels repeated in place.
constexpr std::size_t MATRIX_FLOATS = 16;
constexpr float MATRICES[4][MATRIX_FLOATS] = {{1, -2, 3, 0.5F, 0, 5, 8, 9, 1},
                                              {0, 1, 0, 0, 0, -1, 1, 0, 0},
                                              {1, -2, 3, 40, 0, 5, -6, 70, 8, 9, 1, -30, 7, 7, 7, 7},
                                              {0, 1, 0, 0, 0, 0, -1, 0, 1, 0, 0, 0, 0, 0, 0, 1}};
constexpr float FACTOR = 2.5F;

template <class Pixel>
Image<Pixel> imageOf(const Mat& mat) {
    return {reinterpret_cast<Pixel*>(mat.ptrGPU), static_cast<unsigned>(mat.stepBytesGPU / sizeof(Pixel)),
            static_cast<unsigned>(mat.width), static_cast<unsigned>(mat.height)};
}

template <class From, class To, class Op>
void applyElement(const Op& op, const void* before, void* after) {
    From from;
    std::memcpy(static_cast<void*>(&from), before, sizeof from);
    const To to = op(from);
    std::memcpy(after, &to, sizeof to);
}

template <class Pixel>
Case fillCase(const std::string& name, MAT_TYPE type) {
    Pixel value;
    for (std::size_t i = 0; i < sizeof value; ++i) {
        reinterpret_cast<unsigned char*>(&value)[i] = static_cast<unsigned char>(17 + 29 * i);
    }
    const auto launch = [=](const Mat& mat, const Mat&, bool) {
        const Image<Pixel> image = imageOf<Pixel>(mat);
        cu_matSetToGPU(value, image.data, image.step, image.width, image.height, nullptr);
    };
    const auto element = [=](const void*, void* after) { std::memcpy(after, &value, sizeof value); };
    const auto plain = [=](const Mat& mat, const Mat&, bool) {
        launchPlainly(imageOf<Pixel>(mat), imageOf<Pixel>(mat), Fill<Pixel>{value});
    };
    return {"fill " + name, type, false, launch, plain, true, element};
}

void applyFactor(const Image<float>& image, float factor) {
    cu_applyFactor(image.data, factor, image.step, image.width, image.height);
}
void applyFactor(const Image<Vector3<float>>& image, float factor) {
    cu_applyFactor(image.data, factor, image.step, image.width, image.height);
}
void applyFactor(const Image<Vector4<float>>& image, float factor) {
    cu_applyFactor4f(image.data, factor, image.step, image.width, image.height);
}

template <class Pixel, class Op>
Case scaleCase(const std::string& name, MAT_TYPE type) {
    return {"scale " + name,
            type,
            true,
            [](const Mat& mat, const Mat&, bool timing) {
                applyFactor(imageOf<Pixel>(mat), timing ? 1.0F : FACTOR);
            },
            [](const Mat& mat, const Mat&, bool timing) {
                launchPlainly(imageOf<Pixel>(mat), imageOf<Pixel>(mat), Op{timing ? 1.0F : FACTOR});
            },
            true,
            [](const void* before, void* after) { applyElement<Pixel, Pixel>(Op{FACTOR}, before, after); }};
}

void applyMatrix(const Image<Vector3<float>>& image, float* matrix) {
    cu_applyMat3f(image.data, matrix, image.step, image.width, image.height);
}
void applyMatrix(const Image<Vector4<float>>& image, float* matrix) {
    cu_applyMat4f(image.data, matrix, image.step, image.width, image.height);
}

template <class Pixel, class Op>
Case matrixCase(const std::string& name, MAT_TYPE type, float* deviceMatrices, std::size_t first) {
    Op op;
    std::memcpy(op.k, MATRICES[first], sizeof op.k);
    return {"matrix " + name,
            type,
            true,
            [=](const Mat& mat, const Mat&, bool timing) {
                applyMatrix(imageOf<Pixel>(mat), deviceMatrices + (first + (timing ? 1 : 0)) * MATRIX_FLOATS);
            },
            [=](const Mat& mat, const Mat&, bool timing) {
                const float* const matrix = deviceMatrices + (first + (timing ? 1 : 0)) * MATRIX_FLOATS;
                launchPlainly(imageOf<Pixel>(mat), imageOf<Pixel>(mat), MatrixInMemory<Op>{matrix});
            },
            true,
            [=](const void* before, void* after) { applyElement<Pixel, Pixel>(op, before, after); }};
}

Case signedCase() {
    using From = Vector4<unsigned char>;
    using To = Vector4<char>;
    return {"to signed 8U C4",
            MAT_TYPE::MAT_8U_C4,
            true,
            [](const Mat& source, const Mat& destination, bool) {
                const Image<From> from = imageOf<From>(source);
                const Image<To> to = imageOf<To>(destination);
                cu_cvt2Signed(from.data, to.data, from.step, to.step, {from.width, from.height}, nullptr);
            },
            [](const Mat& source, const Mat& destination, bool) {
                launchPlainly(imageOf<From>(source), imageOf<To>(destination), ToSigned{});
            },
            false,
            [](const void* before, void* after) { applyElement<From, To>(ToSigned{}, before, after); }};
}

}  // namespace

std::vector<Case> allCases(float* deviceMatrices) {
    using Byte = unsigned char;
    return {
        fillCase<Byte>("8U C1", MAT_TYPE::MAT_8U_C1),
        fillCase<Vector2<Byte>>("8U C2", MAT_TYPE::MAT_8U_C2),
        fillCase<Vector3<Byte>>("8U C3", MAT_TYPE::MAT_8U_C3),
        fillCase<Vector4<Byte>>("8U C4", MAT_TYPE::MAT_8U_C4),
        fillCase<Vector4<char>>("8S C4", MAT_TYPE::MAT_8S_C4),
        fillCase<unsigned short>("US16 C1", MAT_TYPE::MAT_US16_C1),
        fillCase<float>("32F C1", MAT_TYPE::MAT_32F_C1),
        fillCase<Vector2<float>>("32F C2", MAT_TYPE::MAT_32F_C2),
        fillCase<Vector3<float>>("32F C3", MAT_TYPE::MAT_32F_C3),
        fillCase<Vector4<float>>("32F C4", MAT_TYPE::MAT_32F_C4),
        scaleCase<float, ScaleAll>("32F C1", MAT_TYPE::MAT_32F_C1),
        scaleCase<Vector3<float>, ScaleAll>("32F C3", MAT_TYPE::MAT_32F_C3),
        scaleCase<Vector4<float>, ScalePosition>("32F C4", MAT_TYPE::MAT_32F_C4),
        matrixCase<Vector3<float>, ApplyMatrix3>("32F C3", MAT_TYPE::MAT_32F_C3, deviceMatrices, 0),
        matrixCase<Vector4<float>, ApplyMatrix4>("32F C4", MAT_TYPE::MAT_32F_C4, deviceMatrices, 2),
        signedCase(),
    };
}

float* uploadMatrices() {
    void* memory = nullptr;
    require(cudaMalloc(&memory, sizeof MATRICES), "memory for matrices");
    require(cudaMemcpy(memory, MATRICES, sizeof MATRICES, cudaMemcpyHostToDevice), "matrices");
    return static_cast<float*>(memory);
}

std::vector<WholeCall> wholeCalls() {
    // Inches to inches would return at once; back and forth keeps values from growing or vanishing.
    const auto scale = [](Mat& mat) {
        mat.timestamp ^= 1;
        const bool back = mat.timestamp == 0;
        convertUnit(mat, back ? UNIT::MILLIMETER : UNIT::METER, back ? UNIT::METER : UNIT::MILLIMETER,
                    MEM::GPU);
    };
    const auto turn = [](Mat& mat) {
        convertCoordinateSystem(mat, COORDINATE_SYSTEM::IMAGE,
                                COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD, MEM::GPU);
    };
    return {
        {"convertUnit 32F C1", MAT_TYPE::MAT_32F_C1, scale, "scale 32F C1"},
        {"convertUnit 32F C3", MAT_TYPE::MAT_32F_C3, scale, "scale 32F C3"},
        {"convertUnit 32F C4", MAT_TYPE::MAT_32F_C4, scale, "scale 32F C4"},
        {"convertCoordinateSystem 32F C3", MAT_TYPE::MAT_32F_C3, turn, "matrix 32F C3"},
        {"convertCoordinateSystem 32F C4", MAT_TYPE::MAT_32F_C4, turn, "matrix 32F C4"},
    };
}

}  // namespace vela::bench

// SPDX-License-Identifier: Apache-2.0
// Small matrices and quaternions, many of each, so that the compiler cannot compute results in advance.
#include "support/Session.hpp"
#include "support/values.hpp"

#include <vela_core/vela.hpp>

#include <Eigen/Geometry>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <glm/mat4x4.hpp>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

namespace {

using namespace vela;
using bench::Comparison;
using bench::Session;

constexpr std::size_t COUNT = 64;

// Some roundings of sums of a few products below 10.
constexpr bench::Tolerance ROUNDING = {2e-5, 0};

template <class T>
using Many = std::array<T, COUNT>;

using EigenMatrix4 = Eigen::Matrix<float, 4, 4, Eigen::RowMajor>;
using EigenMatrix3 = Eigen::Matrix<float, 3, 3, Eigen::RowMajor>;

/// N x N floats and nothing else, to measure the arithmetic alone.
template <int N>
struct Bare {
    float m[N * N];
};

Bare<4> operator*(const Bare<4>& a, const Bare<4>& b) {
    Bare<4> product;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            product.m[4 * i + j] = a.m[4 * i] * b.m[j] + a.m[4 * i + 1] * b.m[4 + j] +
                                   a.m[4 * i + 2] * b.m[8 + j] + a.m[4 * i + 3] * b.m[12 + j];
        }
    }
    return product;
}

/// The inverse of a matrix whose last row is (0, 0, 0, 1).
Bare<4> inverseOf(const Bare<4>& a) {
    const float* const m = a.m;
    const auto cofactor = [m](int r, int s, int k, int l) {
        return m[4 * r + k] * m[4 * s + l] - m[4 * r + l] * m[4 * s + k];
    };
    const float first[3] = {cofactor(1, 2, 1, 2), cofactor(1, 2, 2, 0), cofactor(1, 2, 0, 1)};
    const float scale = 1.0F / (m[0] * first[0] + m[1] * first[1] + m[2] * first[2]);
    Bare<4> inverse = {{first[0], cofactor(0, 2, 2, 1), cofactor(0, 1, 1, 2), 0,  //
                        first[1], cofactor(0, 2, 0, 2), cofactor(0, 1, 2, 0), 0,  //
                        first[2], cofactor(0, 2, 1, 0), cofactor(0, 1, 0, 1), 0,  //
                        0, 0, 0, 1}};
    for (int i = 0; i < 3; ++i) {
        float* const row = inverse.m + 4 * i;
        std::for_each(row, row + 3, [=](float& value) { value *= scale; });
        row[3] = -(row[0] * m[3] + row[1] * m[7] + row[2] * m[11]);
    }
    return inverse;
}

/// The rotation of the quaternion q divided by its norm.
Bare<3> rotationOf(const Vector4<float>& q) {
    const float n = 2.0F / (q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    const float xx = q.x * q.x * n;
    const float yy = q.y * q.y * n;
    const float zz = q.z * q.z * n;
    const float xy = q.x * q.y * n;
    const float xz = q.x * q.z * n;
    const float yz = q.y * q.z * n;
    const float xw = q.x * q.w * n;
    const float yw = q.y * q.w * n;
    const float zw = q.z * q.w * n;
    return {{1 - yy - zz, xy - zw, xz + yw, xy + zw, 1 - xx - zz, yz - xw, xz - yw, yz + xw, 1 - xx - yy}};
}

/// The same rigid transforms and their quaternions in the types of all contenders.
struct Inputs {
    explicit Inputs(unsigned seed) {
        std::mt19937 engine(seed);
        std::uniform_real_distribution<float> uniform(-1, 1);
        for (std::size_t i = 0; i < COUNT; ++i) {
            eigenQuaternions[i] =
                Eigen::Quaternionf(uniform(engine), uniform(engine), uniform(engine), uniform(engine))
                    .normalized();
            const Eigen::Quaternionf& q = eigenQuaternions[i];
            quaternions[i] = Orientation(Vector4<float>(q.x(), q.y(), q.z(), q.w()));
            bareQuaternions[i] = {q.x(), q.y(), q.z(), q.w()};
            glmQuaternions[i] = glm::quat(q.w(), q.x(), q.y(), q.z());

            eigen[i].setIdentity();
            eigen[i].topLeftCorner<3, 3>() = q.toRotationMatrix();
            eigen[i].topRightCorner<3, 1>() << 3 * uniform(engine), 3 * uniform(engine), 3 * uniform(engine);
            ours[i] = Matrix4f(eigen[i].data());
            std::copy_n(eigen[i].data(), 16, bare[i].m);
            glmMatrices[i] = glm::transpose(glm::make_mat4(eigen[i].data()));
        }
    }

    Many<Matrix4f> ours;
    Many<Bare<4>> bare;
    Many<EigenMatrix4> eigen;
    Many<glm::mat4> glmMatrices;
    Many<Orientation> quaternions;
    Many<Vector4<float>> bareQuaternions;
    Many<Eigen::Quaternionf> eigenQuaternions;
    Many<glm::quat> glmQuaternions;
};

const float* numbers(const Matrix4f& matrix) {
    return matrix.m;
}
const float* numbers(const Rotation& rotation) {
    return rotation.m;
}
template <int N>
const float* numbers(const Bare<N>& matrix) {
    return matrix.m;
}
template <int N>
const float* numbers(const Eigen::Matrix<float, N, N, Eigen::RowMajor>& matrix) {
    return matrix.data();
}

/// A check that compares N x N results with the expected ones.
template <int N, class T>
bench::Check checkOf(const Many<T>& results, const Many<Bare<N>>& expected) {
    return [&] {
        for (std::size_t i = 0; i < COUNT; ++i) {
            std::string complaint = bench::differences(numbers(results[i]), expected[i].m, N * N, ROUNDING);
            if (!complaint.empty()) return complaint;
        }
        return std::string();
    };
}
/// GLM's matrices are column-major.
template <int N, class T>
bench::Check checkOfColumns(const Many<T>& results, const Many<Bare<N>>& expected) {
    return [&] {
        for (std::size_t i = 0; i < COUNT; ++i) {
            const T rows = glm::transpose(results[i]);
            std::string complaint = bench::differences(glm::value_ptr(rows), expected[i].m, N * N, ROUNDING);
            if (!complaint.empty()) return complaint;
        }
        return std::string();
    };
}

/// Constructs every result from operation(i).
template <class T, class Operation>
auto forAll(Many<T>& results, Operation operation) {
    return [&results, operation] {
        for (std::size_t i = 0; i < COUNT; ++i) {
            if constexpr (std::is_trivially_destructible_v<T>) {
                results[i] = operation(i);  // nothing to destroy, so this constructs it
            } else {
                std::destroy_at(&results[i]);
                ::new (static_cast<void*>(&results[i])) T(operation(i));
            }
        }
        benchmark::DoNotOptimize(results.data());
    };
}

/// The 4 x 4 results of each contender, and the expected ones.
struct Outputs {
    Many<Matrix4f> ours;
    Many<Bare<4>> bare;
    Many<EigenMatrix4> eigen;
    Many<glm::mat4> glm;
    Many<Bare<4>> expected;
};

void multiply(Session& session, const Inputs& a, const Inputs& b) {
    Outputs out;
    for (std::size_t i = 0; i < COUNT; ++i) {
        const EigenMatrix4 product = (a.eigen[i].cast<double>() * b.eigen[i].cast<double>()).cast<float>();
        std::copy_n(product.data(), 16, out.expected[i].m);
    }
    Comparison comparison("multiply4x4" VELA_BENCH_VARIANT);
    comparison.repeats(COUNT)
        .ours(forAll(out.ours, [&](std::size_t i) { return a.ours[i] * b.ours[i]; }),
              checkOf<4>(out.ours, out.expected))
        .peer("Eigen",
              forAll(out.eigen, [&](std::size_t i) -> EigenMatrix4 { return a.eigen[i] * b.eigen[i]; }),
              checkOf<4>(out.eigen, out.expected))
        .peer("GLM", forAll(out.glm, [&](std::size_t i) { return a.glmMatrices[i] * b.glmMatrices[i]; }),
              checkOfColumns<4>(out.glm, out.expected))
        .limit("bare struct", forAll(out.bare, [&](std::size_t i) { return a.bare[i] * b.bare[i]; }),
               checkOf<4>(out.bare, out.expected));
    session.run(comparison);
}

void invert(Session& session, const Inputs& a) {
    Outputs out;
    for (std::size_t i = 0; i < COUNT; ++i) {
        const EigenMatrix4 inverse = a.eigen[i].cast<double>().inverse().eval().cast<float>();
        std::copy_n(inverse.data(), 16, out.expected[i].m);
    }
    Comparison comparison("invert4x4" VELA_BENCH_VARIANT);
    comparison.repeats(COUNT)
        .ours(forAll(out.ours, [&](std::size_t i) { return Matrix4f::inverse(a.ours[i]); }),
              checkOf<4>(out.ours, out.expected))
        .peer("Eigen", forAll(out.eigen, [&](std::size_t i) -> EigenMatrix4 { return a.eigen[i].inverse(); }),
              checkOf<4>(out.eigen, out.expected))
        .peer("GLM", forAll(out.glm, [&](std::size_t i) { return glm::inverse(a.glmMatrices[i]); }),
              checkOfColumns<4>(out.glm, out.expected))
        .limit("bare struct", forAll(out.bare, [&](std::size_t i) { return inverseOf(a.bare[i]); }),
               checkOf<4>(out.bare, out.expected));
    session.run(comparison);
}

/// Copy-constructs matrices in place of destroyed ones.
template <class T>
auto copyAll(const Many<T>& sources, Many<T>& results) {
    return [&] {
        std::destroy_n(results.data(), COUNT);
        std::uninitialized_copy_n(sources.data(), COUNT, results.data());
        benchmark::DoNotOptimize(results.data());
    };
}

void copy(Session& session, const Inputs& a) {
    Outputs out;
    out.expected = a.bare;
    Comparison comparison("copy4x4" VELA_BENCH_VARIANT);
    comparison.repeats(COUNT)
        .ours(copyAll(a.ours, out.ours), checkOf<4>(out.ours, out.expected))
        .peer("Eigen", copyAll(a.eigen, out.eigen), checkOf<4>(out.eigen, out.expected))
        .peer("GLM", copyAll(a.glmMatrices, out.glm), checkOfColumns<4>(out.glm, out.expected))
        .limit("bare struct", copyAll(a.bare, out.bare), checkOf<4>(out.bare, out.expected));
    session.run(comparison);
}

void rotate(Session& session, const Inputs& a) {
    Many<Rotation> ours;
    Many<Bare<3>> bare;
    Many<EigenMatrix3> eigen;
    Many<glm::mat3> glmMatrices;
    Many<Bare<3>> expected;
    for (std::size_t i = 0; i < COUNT; ++i) {
        const EigenMatrix3 rotation = a.eigenQuaternions[i].cast<double>().toRotationMatrix().cast<float>();
        std::copy_n(rotation.data(), 9, expected[i].m);
    }
    Comparison comparison("quaternion to matrix" VELA_BENCH_VARIANT);
    comparison.repeats(COUNT)
        .ours(forAll(ours, [&](std::size_t i) { return a.quaternions[i].getRotationMatrix(); }),
              checkOf<3>(ours, expected))
        .peer("Eigen",
              forAll(eigen,
                     [&](std::size_t i) -> EigenMatrix3 { return a.eigenQuaternions[i].toRotationMatrix(); }),
              checkOf<3>(eigen, expected))
        .peer("Eigen, normalising",
              forAll(eigen,
                     [&](std::size_t i) -> EigenMatrix3 {
                         return a.eigenQuaternions[i].normalized().toRotationMatrix();
                     }),
              checkOf<3>(eigen, expected))
        .peer("GLM", forAll(glmMatrices, [&](std::size_t i) { return glm::mat3_cast(a.glmQuaternions[i]); }),
              checkOfColumns<3>(glmMatrices, expected))
        .limit("bare struct", forAll(bare, [&](std::size_t i) { return rotationOf(a.bareQuaternions[i]); }),
               checkOf<3>(bare, expected));
    session.run(comparison);
}

void runAll(Session& session) {
    const Inputs a(1);
    const Inputs b(2);
    multiply(session, a, b);
    invert(session, a);
    rotate(session, a);
    copy(session, a);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {}, runAll);
}

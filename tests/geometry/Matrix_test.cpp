// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"

#include "support/capture.hpp"
#include "support/eigen.hpp"
#include "support/locale.hpp"

#include <gtest/gtest-spi.h>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>
#include <type_traits>
#include <vector>

namespace vela::test {
namespace {

template <class Matrix>
class MatrixTest : public testing::Test {};
using Matrices = testing::Types<Matrix3f, Matrix4f>;
TYPED_TEST_SUITE(MatrixTest, Matrices);

template <class Matrix>
constexpr int SIZE = std::is_base_of_v<Matrix3f, Matrix> ? 3 : 4;

template <int N>
using Wide = Eigen::Matrix<double, N, N, Eigen::RowMajor>;

template <class Matrix>
Wide<SIZE<Matrix>> wide(const Matrix& matrix) {
    using Narrow = Eigen::Matrix<float, SIZE<Matrix>, SIZE<Matrix>, Eigen::RowMajor>;
    return Eigen::Map<const Narrow>(matrix.m).template cast<double>();
}

template <class Matrix>
void expectNearEigen(const Matrix& seen, const Wide<SIZE<Matrix>>& wanted) {
    expectNear(numbersOf(seen), numbersOfEigen(wanted));
}

class Draw {
public:
    float number(float largest = 10) { return std::uniform_real_distribution(-largest, largest)(engine_); }
    template <class Matrix>
    Matrix matrix() {
        Matrix matrix;
        std::generate(std::begin(matrix.m), std::end(matrix.m), [this] { return number(); });
        return matrix;
    }

private:
    std::mt19937 engine_{1};
};

TEST(ExpectNear, AcceptsTheRoundingOfTheLargestNumberAndNoInfinity) {
    expectNear(Numbers{1e-3F, 1e-9F, INFINITY, NAN}, {1e-3F + 1e-9F, 0, INFINITY, NAN});
    EXPECT_NONFATAL_FAILURE(expectNear(Numbers{1.01e-3F}, Numbers{1e-3F}), "instead of");
    EXPECT_NONFATAL_FAILURE(expectNear(Numbers{1, 5}, {1, INFINITY}), "instead of");
    EXPECT_NONFATAL_FAILURE(expectNear(Numbers{1, NAN}, Numbers{1, 1}), "instead of");
}

TYPED_TEST(MatrixTest, CalculatesAsEigenDoes) {
    using Matrix = TypeParam;
    constexpr int N = SIZE<Matrix>;
    Draw draw;
    for (int i = 0; i < 100; ++i) {
        const auto a = draw.matrix<Matrix>();
        const auto b = draw.matrix<Matrix>();
        const float number = draw.number();
        const Wide<N> everywhere = Wide<N>::Constant(static_cast<double>(number));
        expectNearEigen(a * b, wide(a) * wide(b));
        expectNearEigen(a + b, wide(a) + wide(b));
        expectNearEigen(a - b, wide(a) - wide(b));
        expectNearEigen(a * number, wide(a) * static_cast<double>(number));
        expectNearEigen(a + number, wide(a) + everywhere);
        expectNearEigen(a - number, wide(a) - everywhere);
        expectNearEigen(Matrix::transpose(a), wide(a).transpose());
    }
}

TYPED_TEST(MatrixTest, InvertsWhatIsFarFromSingular) {
    Draw draw;
    for (int i = 0; i < 100; ++i) {
        TypeParam a = draw.matrix<TypeParam>() + TypeParam() * 30;
        if constexpr (SIZE<TypeParam> == 4) std::copy_n(Matrix4f().m + 12, 4, a.m + 12);  // a motion
        expectNearEigen(TypeParam::inverse(a), wide(a).inverse());
    }
    expectNear(numbersOf(Matrix3f::inverse(Matrix3f::zeros())), Numbers(9, NAN));
}

/// The cofactor of row i and column j: six products of the minor's elements, summed from left to right.
float cofactor(const Matrix4f& c, int i, int j) {
    const int r0 = i == 0, r1 = 1 + (i <= 1), r2 = 2 + (i <= 2);
    const int k0 = j == 0, k1 = 1 + (j <= 1), k2 = 2 + (j <= 2);
    const auto signedElement = [&](int r) { return (i + j) % 2 == 0 ? c(r, k0) : -c(r, k0); };
    return signedElement(r0) * c(r1, k1) * c(r2, k2) - signedElement(r0) * c(r1, k2) * c(r2, k1) -
           signedElement(r1) * c(r0, k1) * c(r2, k2) + signedElement(r1) * c(r0, k2) * c(r2, k1) +
           signedElement(r2) * c(r0, k1) * c(r1, k2) - signedElement(r2) * c(r0, k2) * c(r1, k1);
}

/// `Matrix4f::inverse`, element by element.
ERROR_CODE invertPlainly(Matrix4f& matrix) {
    const Matrix4f c(matrix);
    Matrix4f a;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            a(i, j) = cofactor(c, j, i);
        }
    }
    const float gate = c.m[1] * c.m[1] + c.m[0] * a.m[0] + c.m[2] * c.m[2] + c.m[3] * c.m[3];
    for (int i = 0; i < 16; ++i) {
        if (gate != 0) {
            matrix.m[i] = (i == 14 ? c.m[i] : a.m[i]) / a.m[15];
        } else if (i % 4 == 0) {
            matrix.m[i] = a.m[i];
        }
    }
    return gate == 0 ? ERROR_CODE::FAILURE : ERROR_CODE::SUCCESS;
}

TEST(Matrix4f, InverseHasTheBitsAndTheStatusOfPlainSums) {
    Draw draw;
    int failures = 0;
    for (int i = 0; i < 3000; ++i) {
        Matrix4f matrix = draw.matrix<Matrix4f>();
        if (i % 3 == 1) {
            // Two equal rows: rounding decides whether the sums cancel, and so the status.
            std::copy_n(matrix.m + 4, 4, matrix.m + 12);
            std::fill_n(matrix.m + 1, 3, 0.0F);
        } else if (i % 3 == 2) {
            for (float& element : matrix.m) {
                if (std::abs(element) < 6) element = std::copysign(0.0F, element);
            }
            if (i % 5 == 0) matrix.m[i % 16] = INFINITY;
        }
        Matrix4f wanted(matrix);
        const ERROR_CODE status = invertPlainly(wanted);
        EXPECT_EQ(matrix.inverse(), status);
        EXPECT_EQ(bitsOf(numbersOf(matrix)), bitsOf(numbersOf(wanted)));
        failures += status == ERROR_CODE::FAILURE && i % 3 == 1 ? 1 : 0;
    }
    EXPECT_GT(failures, 50);
    EXPECT_LT(failures, 950);
}

TEST(Matrix4f, InverseSumsItsGateFromTheSecondElementOn) {
    // 1 * 1 + 1 * -1 + 1e-10 is not 0; in another order 1e-10 would be rounded away beside 1.
    const float values[16] = {1, 1, 1e-5F, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(Matrix4f(values).inverse(), ERROR_CODE::SUCCESS);
}

TEST(Matrix4f, RepeatsTheDotProductsWithAVector) {
    Draw draw;
    const auto a = draw.matrix<Matrix4f>();
    expectNearEigen(a * Vector4<float>(1, 10, 100, 1000),
                    wide(a) * Eigen::Vector4d(1, 10, 100, 1000) * Eigen::RowVector4d::Ones());
}

TYPED_TEST(MatrixTest, StartsAsIdentityAndIsRowMajor) {
    TypeParam matrix;
    expectNear(matrix * matrix, TypeParam::identity(), 0.0F);
    EXPECT_EQ(&matrix(1, 2), matrix.m + (std::is_same_v<TypeParam, Matrix3f> ? 5 : 6));
    expectNear(matrix * 0.0F, TypeParam::zeros(), 0.0F);
}

TYPED_TEST(MatrixTest, LabelsStayWithTheirObject) {
    TypeParam a;
    a.label = "A";
    TypeParam b(a);
    EXPECT_EQ(b.label, "");
    b.label = "B";
    b = a;
    a.setZeros();
    a.setIdentity();
    a.transpose();
    EXPECT_TRUE(a == b) << "labels are not compared";
    EXPECT_EQ((std::vector{a.label, b.label, (a * b).label}), (std::vector<String>{"A", "B", ""}));
}

TYPED_TEST(MatrixTest, ComparesEveryElementExactly) {
    TypeParam matrix = TypeParam::zeros();
    for (float& element : matrix.m) {
        element = 1e-30F;
        EXPECT_TRUE(matrix != TypeParam::zeros() && !(matrix == TypeParam::zeros()));
        element = NAN;
        EXPECT_TRUE(matrix != TypeParam(matrix) && !(matrix == TypeParam(matrix))) << "a NaN equals nothing";
        element = -0.0F;
        EXPECT_TRUE(matrix == TypeParam::zeros() && !(matrix != TypeParam::zeros()));
    }
}

TEST(Matrices, AreDescribedWithAPointInEveryLocale) {
    const CommaLocale comma;
    Matrix3f labelled;
    labelled(0, 1) = -0.5F;
    labelled(2, 0) = 1234567.0F;
    labelled.label = "R";
    EXPECT_EQ(
        labelled.getInfos(),
        "R\n1.000000 -0.500000 0.000000\n0.000000 1.000000 0.000000\n1234567.000000 0.000000 1.000000\n");
    const Matrix4f matrix;
    std::ostringstream wanted;
    wanted << std::hex << std::uppercase << reinterpret_cast<std::uintptr_t>(&matrix) << "\n"
           << "1.000000 0.000000 0.000000 0.000000\n0.000000 1.000000 0.000000 0.000000\n"
           << "0.000000 0.000000 1.000000 0.000000\n0.000000 0.000000 0.000000 1.000000\n";
    EXPECT_EQ(matrix.getInfos(), wanted.str());
}

TEST(Matrix4f, SetsBlocksAndColumns) {
    LogCapture log;
    Matrix4f matrix = Matrix4f::zeros();
    const float nine[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_EQ(matrix.setSubMatrix3f(Matrix3f(nine), 1, 1), ERROR_CODE::SUCCESS);
    EXPECT_EQ(matrix.setSubVector3f({10, 11, 12}, 0), ERROR_CODE::SUCCESS);
    expectNear(numbersOf(matrix), {10, 0, 0, 0, 11, 1, 2, 3, 12, 4, 5, 6, 0, 7, 8, 9}, 0.0F);
    EXPECT_EQ(matrix.setSubVector4f({20, 21, 22, 23}, 3), ERROR_CODE::SUCCESS);
    const Numbers wanted = {10, 0, 0, 20, 11, 1, 2, 21, 12, 4, 5, 22, 0, 7, 8, 23};
    for (const auto& [corner, column] : {std::pair(2, 4), std::pair(-1, -1)}) {
        EXPECT_EQ(matrix.setSubMatrix3f({}, corner, 0), ERROR_CODE::FAILURE);
        EXPECT_EQ(matrix.setSubMatrix3f({}, 0, corner), ERROR_CODE::FAILURE);
        EXPECT_EQ(matrix.setSubVector3f({}, column), ERROR_CODE::FAILURE);
        EXPECT_EQ(matrix.setSubVector4f({}, column), ERROR_CODE::FAILURE);
        EXPECT_EQ(log.take(),
                  "vela_core/utils/Mat.cpp:1679 ERROR [Mat]  setSubMatrix3f Invalid Parameters.\n"
                  "vela_core/utils/Mat.cpp:1679 ERROR [Mat]  setSubMatrix3f Invalid Parameters.\n"
                  "vela_core/utils/Mat.cpp:1701 ERROR [Mat]  setSubVector3f Invalid Parameters.\n"
                  "vela_core/utils/Mat.cpp:1714 ERROR [Mat]  setSubVector4f Invalid Parameters.\n");
    }
    expectNear(numbersOf(matrix), wanted, 0.0F);
}

}  // namespace
}  // namespace vela::test

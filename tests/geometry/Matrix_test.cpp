#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"

#include "support/capture.hpp"
#include "support/geometry.hpp"

#include <gtest/gtest.h>
#include <Eigen/Dense>

#include <cmath>
#include <limits>

namespace vela::test {
namespace {

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

template <class Matrix>
class MatrixTest : public testing::Test {
protected:
    static constexpr int N = std::is_same_v<Matrix, Matrix3f> ? 3 : 4;
    using Reference = Eigen::Matrix<double, N, N, Eigen::RowMajor>;

    static Matrix random(unsigned seed) {
        Random next(seed);
        float values[N * N];
        for (float& value : values) {
            value = next(-2.0F, 2.0F);
        }
        return Matrix(values);
    }
    static Reference reference(const Matrix& matrix) {
        return Eigen::Map<const Eigen::Matrix<float, N, N, Eigen::RowMajor>>(matrix.m)
            .template cast<double>();
    }
    static void expectNear(const Matrix& matrix, const Reference& wanted) {
        EXPECT_LE((reference(matrix) - wanted).cwiseAbs().maxCoeff(), 1e-5) << toStdString(matrix.getInfos());
    }
};
using Matrices = testing::Types<Matrix3f, Matrix4f>;
TYPED_TEST_SUITE(MatrixTest, Matrices);

TYPED_TEST(MatrixTest, IsRowMajorAndStartsAsIdentity) {
    float values[16];
    for (int i = 0; i < 16; ++i) {
        values[i] = static_cast<float>(i);
    }
    TypeParam matrix(values);
    EXPECT_EQ(matrix(1, 2), values[this->N + 2]);
    matrix(2, 1) = -1.0F;
    EXPECT_EQ(matrix.m[2 * this->N + 1], -1.0F);
    EXPECT_EQ(this->reference(TypeParam()), TestFixture::Reference::Identity());
    EXPECT_EQ(this->reference(TypeParam::identity()), TestFixture::Reference::Identity());
    EXPECT_TRUE(TypeParam::zeros() == TypeParam() * 0.0F);
}

TYPED_TEST(MatrixTest, LabelsStayWithTheirObject) {
    TypeParam labelled;
    labelled.label = "R";
    TypeParam copy(labelled);
    EXPECT_TRUE(copy.label.empty());
    TypeParam target;
    target.label = "T";
    target = labelled * 2.0F;
    EXPECT_EQ(target.label, "T");
    labelled.setZeros();
    labelled.setIdentity();
    labelled.transpose();
    EXPECT_EQ(labelled.label, "R");
    EXPECT_TRUE((labelled * copy).label.empty());
    EXPECT_TRUE(labelled == copy) << "labels are not compared";
}

TYPED_TEST(MatrixTest, ArithmeticFollowsEigen) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const TypeParam a = this->random(seed);
        const TypeParam b = this->random(seed + 100);
        const auto ra = this->reference(a);
        const auto rb = this->reference(b);
        this->expectNear(a * b, ra * rb);
        this->expectNear(a + b, ra + rb);
        this->expectNear(a - b, ra - rb);
        this->expectNear(a * 2.5F, ra * 2.5);
        this->expectNear(a + 2.5F, (ra.array() + 2.5).matrix());
        this->expectNear(a - 2.5F, (ra.array() - 2.5).matrix());
        this->expectNear(TypeParam::transpose(a), ra.transpose());
    }
}

TYPED_TEST(MatrixTest, ComparesExactly) {
    TypeParam a;
    TypeParam b;
    b.m[1] = 1e-30F;
    EXPECT_TRUE(a != b && !(a == b));
    b.m[1] = -0.0F;
    EXPECT_TRUE(a == b && !(a != b));
    a.m[1] = b.m[1] = NOT_A_NUMBER;
    EXPECT_TRUE(a != b && !(a == b)) << "a NaN equals nothing";
}

TYPED_TEST(MatrixTest, DescribesItself) {
    TypeParam matrix;
    matrix(0, 1) = -0.5F;
    matrix.label = "R";
    const std::string expected = this->N == 3 ? "R\n1.000000 -0.500000 0.000000\n0.000000 1.000000 0.000000\n"
                                                "0.000000 0.000000 1.000000\n"
                                              : "R\n1.000000 -0.500000 0.000000 0.000000\n"
                                                "0.000000 1.000000 0.000000 0.000000\n"
                                                "0.000000 0.000000 1.000000 0.000000\n"
                                                "0.000000 0.000000 0.000000 1.000000\n";
    EXPECT_EQ(matrix.getInfos(), expected);
    matrix.label = "";
    char address[32];
    std::snprintf(address, sizeof address, "%02lX", reinterpret_cast<unsigned long>(&matrix));
    EXPECT_EQ(matrix.getInfos(), address + expected.substr(1));
}

TEST(Matrix3f, InverseFollowsEigenAndBreaksOnSingularOnes) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Random next(seed);
        float values[9];
        for (int i = 0; i < 9; ++i) {
            values[i] = next(-1.0F, 1.0F) + (i % 4 == 0 ? 3.0F : 0.0F);
        }
        const Eigen::Matrix3d wanted =
            Eigen::Map<const Eigen::Matrix<float, 3, 3, Eigen::RowMajor>>(values).cast<double>().inverse();
        const Matrix3f inverse = Matrix3f::inverse(Matrix3f(values));
        for (int i = 0; i < 9; ++i) {
            EXPECT_NEAR(inverse.m[i], wanted(i / 3, i % 3), 1e-5);
        }
    }
    Matrix3f zero = Matrix3f::zeros();
    zero.inverse();
    for (const float value : zero.m) {
        EXPECT_TRUE(std::isnan(value));
    }
}

TEST(Matrix4f, InverseUndoesRigidTransforms) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
        const Transform transform = randomTransform(seed);
        Matrix4f inverse(transform);
        EXPECT_EQ(inverse.inverse(), ERROR_CODE::SUCCESS);
        expectNear(inverse * transform, Matrix4f(), 2e-5F);
        expectNear(transform * Matrix4f::inverse(transform), Matrix4f(), 2e-5F);
    }
}

/// The adjugate by cofactors, in double precision.
Eigen::Matrix4d adjugate(const Matrix4f& matrix) {
    const Eigen::Matrix4d m =
        Eigen::Map<const Eigen::Matrix<float, 4, 4, Eigen::RowMajor>>(matrix.m).cast<double>();
    Eigen::Matrix4d result;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            Eigen::Matrix3d minor;
            for (int r = 0; r < 9; ++r) {
                minor(r / 3, r % 3) = m(r / 3 + (r / 3 >= j), r % 3 + (r % 3 >= i));
            }
            result(i, j) = ((i + j) % 2 == 0 ? 1 : -1) * minor.determinant();
        }
    }
    return result;
}

TEST(Matrix4f, InverseDividesByTheRotationsDeterminantAndKeepsElement14) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Random next(seed);
        float values[16];
        for (float& value : values) {
            value = next(-2.0F, 2.0F);
        }
        const Matrix4f input(values);
        const Eigen::Matrix4d a = adjugate(input);
        Matrix4f inverse(input);
        EXPECT_EQ(inverse.inverse(), ERROR_CODE::SUCCESS);
        for (int i = 0; i < 14; ++i) {
            const double wanted = a(i / 4, i % 4) / a(3, 3);
            EXPECT_NEAR(inverse.m[i], wanted, 1e-4 * (1.0 + std::abs(wanted))) << i;
        }
        const double kept = static_cast<double>(input.m[14]) / a(3, 3);
        EXPECT_NEAR(inverse.m[14], kept, 1e-4 * (1.0 + std::abs(kept)));
        EXPECT_EQ(inverse.m[15], 1.0F);
    }
}

TEST(Matrix4f, InverseStopsAtAZeroGateAfterItsFirstWrites) {
    Matrix4f zero = Matrix4f::zeros();
    EXPECT_EQ(zero.inverse(), ERROR_CODE::FAILURE);
    EXPECT_TRUE(zero == Matrix4f::zeros());

    // By hand: A0 is the determinant of the lower right block, -2, so that c0 A0 = -4 against c1^2 = 4.
    const float values[16] = {2, 2, 0, 0, 2, -1, 0, 0, 3, 0, 2, 0, 4, 0, 0, 1};
    Matrix4f gated(values);
    EXPECT_EQ(gated.inverse(), ERROR_CODE::FAILURE);
    const float wanted[16] = {-2, 2, 0, 0, -4, -1, 0, 0, 3, 0, 2, 0, 8, 0, 0, 1};
    expectNear(gated, Matrix4f(wanted), 0.0F);

    // A zero rotation block whose first row still has a translation: divided by zero, and reported as done.
    const float flat[16] = {0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    Matrix4f broken(flat);
    EXPECT_EQ(broken.inverse(), ERROR_CODE::SUCCESS);
    EXPECT_TRUE(std::isnan(broken.m[15]) && std::isnan(broken.m[0]));
}

TEST(Matrix4f, TimesAVectorFillsAllColumns) {
    const Matrix4f result = Matrix4f() * Vector4<float>(1, 2, 3, 4);
    const float wanted[16] = {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4};
    EXPECT_TRUE(result == Matrix4f(wanted));
    float values[16];
    for (int i = 0; i < 16; ++i) {
        values[i] = static_cast<float>(i);
    }
    EXPECT_EQ((Matrix4f(values) * Vector4<float>(1, 10, 100, 1000))(1, 2), 7654.0F);
}

TEST(Matrix4f, SetsBlocksAndColumns) {
    LogCapture log;
    const float nine[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    Matrix4f matrix = Matrix4f::zeros();
    EXPECT_EQ(matrix.setSubMatrix3f(Matrix3f(nine), 1, 1), ERROR_CODE::SUCCESS);
    EXPECT_EQ(matrix.setSubVector3f({10, 11, 12}, 0), ERROR_CODE::SUCCESS);
    const float wanted[16] = {10, 0, 0, 0, 11, 1, 2, 3, 12, 4, 5, 6, 0, 7, 8, 9};
    EXPECT_TRUE(matrix == Matrix4f(wanted));
    EXPECT_EQ(matrix.setSubVector4f({20, 21, 22, 23}, 3), ERROR_CODE::SUCCESS);
    const float column[16] = {10, 0, 0, 20, 11, 1, 2, 21, 12, 4, 5, 22, 0, 7, 8, 23};
    EXPECT_TRUE(matrix == Matrix4f(column));
    EXPECT_EQ(log.take(), "");

    for (const auto& [row, col] : {std::pair(2, 0), std::pair(0, 2), std::pair(-1, 0), std::pair(0, -1)}) {
        EXPECT_EQ(matrix.setSubMatrix3f(Matrix3f(), row, col), ERROR_CODE::FAILURE);
        EXPECT_EQ(log.take(),
                  "vela_core/utils/Mat.cpp:1679 ERROR [Mat]  setSubMatrix3f Invalid Parameters.\n");
    }
    for (const int col : {4, -1}) {
        EXPECT_EQ(matrix.setSubVector3f({}, col), ERROR_CODE::FAILURE);
        EXPECT_EQ(log.take(),
                  "vela_core/utils/Mat.cpp:1701 ERROR [Mat]  setSubVector3f Invalid Parameters.\n");
        EXPECT_EQ(matrix.setSubVector4f({}, col), ERROR_CODE::FAILURE);
        EXPECT_EQ(log.take(),
                  "vela_core/utils/Mat.cpp:1714 ERROR [Mat]  setSubVector4f Invalid Parameters.\n");
    }
    LogCapture::logger()->set_log_level(quill::LogLevel::Critical);
    EXPECT_EQ(matrix.setSubVector4f({}, 4), ERROR_CODE::FAILURE);
    EXPECT_EQ(log.take(), "");
    EXPECT_TRUE(matrix == Matrix4f(column)) << "refused calls change nothing";
}

}  // namespace
}  // namespace vela::test

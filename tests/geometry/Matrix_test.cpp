#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"

#include "support/capture.hpp"
#include "support/geometry.hpp"

namespace vela::test {
namespace {

template <class Matrix>
class MatrixTest : public testing::Test {};
using Matrices = testing::Types<Matrix3f, Matrix4f>;
TYPED_TEST_SUITE(MatrixTest, Matrices);

TYPED_TEST(MatrixTest, FollowsTheExamples) {
    using Matrix = TypeParam;
    const char* const file = std::is_same_v<Matrix, Matrix3f> ? "Matrix3f.txt" : "Matrix4f.txt";
    expectExamples(file, "product", [](const Matrix& a, const Matrix& b) { return a * b; });
    expectExamples(file, "sum", [](const Matrix& a, const Matrix& b) { return a + b; });
    expectExamples(file, "difference", [](const Matrix& a, const Matrix& b) { return a - b; });
    expectExamples(file, "scaled", [](const Matrix& a, float factor) { return a * factor; });
    expectExamples(file, "plus number", [](const Matrix& a, float summand) { return a + summand; });
    expectExamples(file, "minus number", [](const Matrix& a, float summand) { return a - summand; });
    expectExamples(file, "transposed", [](const Matrix& a) { return Matrix::transpose(a); });
    expectExamples(file, "inverse", [](const Matrix& a) { return Matrix::inverse(a); });
}

TEST(Matrix4f, FollowsItsOwnExamples) {
    expectExamples("Matrix4f.txt", "status of inverse", [](Matrix4f a) { return a.inverse(); });
    expectExamples("Matrix4f.txt", "times vector",
                   [](const Matrix4f& a, const Vector4<float>& v) { return a * v; });
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

TEST(Matrices, DescribeThemselves) {
    Matrix3f labelled;
    labelled(0, 1) = -0.5F;
    labelled.label = "R";
    EXPECT_EQ(labelled.getInfos(),
              "R\n1.000000 -0.500000 0.000000\n0.000000 1.000000 0.000000\n0.000000 0.000000 1.000000\n");
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

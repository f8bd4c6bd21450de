// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <cstring>
#include <iosfwd>
#include <utility>

namespace vela VELA_API {

/// Common part of `Matrix3f` and `Matrix4f`: N x N floats, row-major, and a label for the text dump. Copies
/// and assignments take the numbers only: a copy has an empty label, a target keeps its own. Operators return
/// new matrices without label. `Derived` is the matrix class.
template <class Derived, int N>
class SquareMatrix {
public:
    float m[N * N];  ///< element (row i, column j) is m[N * i + j]
    String label;    ///< used by `getInfos` only

    /// The identity, without a label.
    SquareMatrix() { setIdentity(); }
    /// Copies N * N values, row-major.
    explicit SquareMatrix(const float* values) { std::memcpy(m, values, sizeof m); }
    /// Copies the numbers; the label is empty.
    SquareMatrix(const SquareMatrix& other) { std::memcpy(m, other.m, sizeof m); }
    /// Copies the numbers; the label stays.
    SquareMatrix& operator=(const SquareMatrix& other) {
        // Of a constant size, so that compilers emit no call; std::copy_n ends in memmove.
        if (this != &other) std::memcpy(m, other.m, sizeof m);
        return *this;
    }

    /// @name Fixed values
    /// The setters keep the label; the functions return matrices without one.
    /// @{

    /// Ones on the diagonal, zeros elsewhere.
    void setIdentity() {
        setZeros();
        for (int i = 0; i < N; ++i) {
            m[(N + 1) * i] = 1.0F;
        }
    }
    /// Sets every element to 0.
    void setZeros() {
        for (float& element : m) {
            element = 0.0F;
        }
    }
    /// The identity matrix.
    static Derived identity() { return Derived(); }
    /// A matrix of zeros.
    static Derived zeros() {
        Derived result;
        result.setZeros();
        return result;
    }
    /// @}

    /// Element (row, col); no bounds check.
    float& operator()(int row, int col) { return m[N * row + col]; }
    /// @overload
    const float& operator()(int row, int col) const { return m[N * row + col]; }

    /// Swaps element (i, j) with element (j, i).
    void transpose() {
        for (int i = 0; i < N; ++i) {
            for (int j = i + 1; j < N; ++j) {
                std::swap(m[N * i + j], m[N * j + i]);
            }
        }
    }
    /// A transposed copy.
    static Derived transpose(const Derived& matrix) {
        Derived result(matrix);
        result.transpose();
        return result;
    }

    /// Matrix product, this times b.
    Derived operator*(const Derived& b) const {
        float product[N * N];  // cannot alias an operand, as far as compilers can tell
        for (int i = 0; i < N; ++i) {
            const float* const row = m + N * i;
            for (int j = 0; j < N; ++j) {
                // Written out: at -O2 compilers do not unroll a loop over three terms.
                float sum = row[0] * b.m[j] + row[1] * b.m[N + j] + row[2] * b.m[2 * N + j];
                if constexpr (N == 4) sum += row[3] * b.m[3 * N + j];
                product[N * i + j] = sum;
            }
        }
        return Derived(product);
    }
    /// Every element times the factor.
    Derived operator*(const float& factor) const {
        return elementwise([=](float a) { return a * factor; });
    }
    /// Adds the number to every element, not only to the diagonal.
    Derived operator+(const float& summand) const {
        return elementwise([=](float a) { return a + summand; });
    }
    /// Subtracts the number from every element.
    Derived operator-(const float& subtrahend) const {
        return elementwise([=](float a) { return a - subtrahend; });
    }
    /// Sum, element by element.
    Derived operator+(const Derived& b) const {
        return elementwise(b, [](float x, float y) { return x + y; });
    }
    /// Difference, element by element.
    Derived operator-(const Derived& b) const {
        return elementwise(b, [](float x, float y) { return x - y; });
    }

    /// Exact comparison of the numbers; a NaN is equal to nothing.
    friend bool operator==(const Derived& a, const Derived& b) {
        for (int i = 0; i < N * N; ++i) {
            if (!(a.m[i] == b.m[i])) return false;
        }
        return true;
    }
    /// The opposite of `==`.
    friend bool operator!=(const Derived& a, const Derived& b) { return !(a == b); }

    /// A line with the label, or the object's address if it has none, then a line for each row, numbers as by
    /// "%f" with a decimal point in every locale.
    String getInfos() const;

private:
    template <class Operation>
    Derived elementwise(Operation operation) const {
        float result[N * N];
        for (int i = 0; i < N * N; ++i) {
            result[i] = operation(m[i]);
        }
        return Derived(result);
    }
    template <class Operation>
    Derived elementwise(const Derived& b, Operation operation) const {
        float result[N * N];
        for (int i = 0; i < N * N; ++i) {
            result[i] = operation(m[i], b.m[i]);
        }
        return Derived(result);
    }
};

/// Writes the rows in order, each number as the stream formats floats: "[1 0 0; 0 1 0; 0 0 1]".
template <class Derived, int N>
std::ostream& operator<<(std::ostream& stream, const SquareMatrix<Derived, N>& matrix);

}  // namespace vela

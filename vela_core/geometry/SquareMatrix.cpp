// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/SquareMatrix.hpp"

#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/types/detail/text_format.hpp"
#include "vela_core/utils/detail/number_text.hpp"

#include <ostream>
#include <string>

namespace vela {
using namespace detail;

template <class Derived, int N>
String SquareMatrix<Derived, N>::getInfos() const {
    std::string text = labelOrAddress(label, this) + "\n";
    char number[NUMBER_TEXT_SIZE];
    for (int i = 0; i < N * N; ++i) {
        text.append(number, writeFixed(number, m[i]));  // with a decimal point in every locale
        text += (i + 1) % N == 0 ? '\n' : ' ';
    }
    return text;
}

template <class Derived, int N>
std::ostream& operator<<(std::ostream& stream, const SquareMatrix<Derived, N>& matrix) {
    for (int i = 0; i < N * N; ++i) {
        const char* const separator = i == 0 ? "[" : i % N == 0 ? "; " : " ";
        stream << separator << matrix.m[i];
    }
    return stream << ']';
}

template class SquareMatrix<Matrix3f, 3>;
template class SquareMatrix<Matrix4f, 4>;
template std::ostream& operator<<(std::ostream&, const SquareMatrix<Matrix3f, 3>&);
template std::ostream& operator<<(std::ostream&, const SquareMatrix<Matrix4f, 4>&);

}  // namespace vela

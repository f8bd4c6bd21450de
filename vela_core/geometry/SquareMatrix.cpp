#include "vela_core/geometry/SquareMatrix.hpp"

#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/types/text_format.hpp"

namespace vela {

template <class Derived, int N>
String SquareMatrix<Derived, N>::getInfos() const {
    std::string text = labelOrAddress(label, this) + "\n";
    for (int i = 0; i < N * N; ++i) {
        const char* const separator = (i + 1) % N == 0 ? "\n" : " ";
        text += formatText("%f%s", static_cast<double>(m[i]), separator);
    }
    return text;
}

template class SquareMatrix<Matrix3f, 3>;
template class SquareMatrix<Matrix4f, 4>;

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/PixelType.hpp"
#include "vela_core/types/Vector.hpp"

#include <type_traits>

namespace vela {

/// Maps a C++ pixel type to the `MAT_TYPE` whose pixels it describes: `PixelTraits<Vector4<float>>::type` is
/// `MAT_32F_C4`. Types without a `MAT_TYPE` have `exists == false` and no `type`.
template <class N>
struct PixelTraits {
    static constexpr bool exists = false;  ///< whether a `MAT_TYPE` has these pixels
};

namespace detail {
template <MAT_TYPE TYPE>
struct PixelOf {
    static constexpr bool exists = true;
    static constexpr MAT_TYPE type = TYPE;
};
}  // namespace detail

template <>
struct PixelTraits<float> : detail::PixelOf<MAT_TYPE::MAT_32F_C1> {};
template <>
struct PixelTraits<Vector2<float>> : detail::PixelOf<MAT_TYPE::MAT_32F_C2> {};
template <>
struct PixelTraits<Vector3<float>> : detail::PixelOf<MAT_TYPE::MAT_32F_C3> {};
template <>
struct PixelTraits<Vector4<float>> : detail::PixelOf<MAT_TYPE::MAT_32F_C4> {};
template <>
struct PixelTraits<unsigned char> : detail::PixelOf<MAT_TYPE::MAT_8U_C1> {};
template <>
struct PixelTraits<Vector2<unsigned char>> : detail::PixelOf<MAT_TYPE::MAT_8U_C2> {};
template <>
struct PixelTraits<Vector3<unsigned char>> : detail::PixelOf<MAT_TYPE::MAT_8U_C3> {};
template <>
struct PixelTraits<Vector4<unsigned char>> : detail::PixelOf<MAT_TYPE::MAT_8U_C4> {};
template <>
struct PixelTraits<unsigned short> : detail::PixelOf<MAT_TYPE::MAT_US16_C1> {};
template <>
struct PixelTraits<Vector4<char>> : detail::PixelOf<MAT_TYPE::MAT_8S_C4> {};

namespace detail {
/// Stops the compiler with a readable message where a Mat is asked for pixels that no `MAT_TYPE` has.
template <class N>
struct RequirePixel {
    static_assert(
        PixelTraits<N>::exists,
        "no Mat has pixels of this type: use float, unsigned char, unsigned short, Vector2, Vector3 "
        "or Vector4 of float or unsigned char, or Vector4<char>");
    using type = N;
};
}  // namespace detail

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/host_device.hpp"

#include <cstddef>

namespace vela {

// Small fixed vectors: components in index order without padding, so that an array of them is an image row.
// They are trivially copyable and zero by default.

/// Two components x, y.
template <class T>
struct Vector2 {
    T x{};  ///< first component
    T y{};  ///< second component

    /// All components 0.
    constexpr Vector2() = default;
    /// The given components.
    VELA_HOST_DEVICE constexpr Vector2(T x_, T y_) : x(x_), y(y_) {}

    /// Component i of 0 to 1; no bounds check.
    VELA_HOST_DEVICE constexpr T& operator[](std::size_t i) { return i == 0 ? x : y; }
    /// As above.
    VELA_HOST_DEVICE constexpr const T& operator[](std::size_t i) const { return i == 0 ? x : y; }

    /// Exact comparison of all components; a NaN is equal to nothing.
    friend constexpr bool operator==(const Vector2& a, const Vector2& b) { return a.x == b.x && a.y == b.y; }
    /// The opposite of `==`.
    friend constexpr bool operator!=(const Vector2& a, const Vector2& b) { return !(a == b); }
};

/// Three components x, y, z.
template <class T>
struct Vector3 {
    T x{};  ///< first component
    T y{};  ///< second component
    T z{};  ///< third component

    /// All components 0.
    constexpr Vector3() = default;
    /// The given components.
    VELA_HOST_DEVICE constexpr Vector3(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}

    /// Component i of 0 to 2; no bounds check.
    VELA_HOST_DEVICE constexpr T& operator[](std::size_t i) { return i == 0 ? x : i == 1 ? y : z; }
    /// As above.
    VELA_HOST_DEVICE constexpr const T& operator[](std::size_t i) const {
        return i == 0 ? x : i == 1 ? y : z;
    }

    /// Exact comparison of all components; a NaN is equal to nothing.
    friend constexpr bool operator==(const Vector3& a, const Vector3& b) {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
    /// The opposite of `==`.
    friend constexpr bool operator!=(const Vector3& a, const Vector3& b) { return !(a == b); }
};

/// Four components x, y, z, w: a quaternion, a homogeneous point, or a point with packed colour in w.
template <class T>
struct Vector4 {
    T x{};  ///< first component
    T y{};  ///< second component
    T z{};  ///< third component
    T w{};  ///< fourth component

    /// All components 0.
    constexpr Vector4() = default;
    /// The given components.
    VELA_HOST_DEVICE constexpr Vector4(T x_, T y_, T z_, T w_) : x(x_), y(y_), z(z_), w(w_) {}

    /// Component i of 0 to 3; no bounds check.
    VELA_HOST_DEVICE constexpr T& operator[](std::size_t i) {
        return i == 0 ? x : i == 1 ? y : i == 2 ? z : w;
    }
    /// As above.
    VELA_HOST_DEVICE constexpr const T& operator[](std::size_t i) const {
        return i == 0 ? x : i == 1 ? y : i == 2 ? z : w;
    }

    /// Exact comparison of all components; a NaN is equal to nothing.
    friend constexpr bool operator==(const Vector4& a, const Vector4& b) {
        return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
    }
    /// The opposite of `==`.
    friend constexpr bool operator!=(const Vector4& a, const Vector4& b) { return !(a == b); }
};

}  // namespace vela

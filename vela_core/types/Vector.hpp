#pragma once

#include "vela_core/types/host_device.hpp"

#include <cstddef>

namespace vela {

// Small fixed vectors: components in index order without padding, so that an array of them is an image row.
// They are trivially copyable and zero by default.

/// Two components x, y.
template <class T>
struct Vector2 {
    T x{};
    T y{};

    constexpr Vector2() = default;
    VELA_HOST_DEVICE constexpr Vector2(T x_, T y_) : x(x_), y(y_) {}

    /// Component i of 0 to 1; no bounds check.
    VELA_HOST_DEVICE constexpr T& operator[](std::size_t i) { return i == 0 ? x : y; }
    VELA_HOST_DEVICE constexpr const T& operator[](std::size_t i) const { return i == 0 ? x : y; }

    friend constexpr bool operator==(const Vector2& a, const Vector2& b) { return a.x == b.x && a.y == b.y; }
    friend constexpr bool operator!=(const Vector2& a, const Vector2& b) { return !(a == b); }
};

/// Three components x, y, z.
template <class T>
struct Vector3 {
    T x{};
    T y{};
    T z{};

    constexpr Vector3() = default;
    VELA_HOST_DEVICE constexpr Vector3(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}

    /// Component i of 0 to 2; no bounds check.
    VELA_HOST_DEVICE constexpr T& operator[](std::size_t i) { return i == 0 ? x : i == 1 ? y : z; }
    VELA_HOST_DEVICE constexpr const T& operator[](std::size_t i) const {
        return i == 0 ? x : i == 1 ? y : z;
    }

    friend constexpr bool operator==(const Vector3& a, const Vector3& b) {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
    friend constexpr bool operator!=(const Vector3& a, const Vector3& b) { return !(a == b); }
};

/// Four components x, y, z, w: a quaternion, a homogeneous point, or a point with packed colour in w.
template <class T>
struct Vector4 {
    T x{};
    T y{};
    T z{};
    T w{};

    constexpr Vector4() = default;
    VELA_HOST_DEVICE constexpr Vector4(T x_, T y_, T z_, T w_) : x(x_), y(y_), z(z_), w(w_) {}

    /// Component i of 0 to 3; no bounds check.
    VELA_HOST_DEVICE constexpr T& operator[](std::size_t i) {
        return i == 0 ? x : i == 1 ? y : i == 2 ? z : w;
    }
    VELA_HOST_DEVICE constexpr const T& operator[](std::size_t i) const {
        return i == 0 ? x : i == 1 ? y : i == 2 ? z : w;
    }

    friend constexpr bool operator==(const Vector4& a, const Vector4& b) {
        return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
    }
    friend constexpr bool operator!=(const Vector4& a, const Vector4& b) { return !(a == b); }
};

}  // namespace vela

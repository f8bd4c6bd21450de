// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/PixelTraits.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vela::interop {

/// Pixels of type T in rows that are `step()` bytes apart. Owns nothing and is trivially copyable: pass it by
/// value to loops and kernels. An empty view has no pixels and converts to false.
template <class T>
class ImageView {
    using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;

public:
    ImageView() = default;
    /// Rows of `width` pixels from `data` on, `step` bytes apart.
    ImageView(Byte* data, std::size_t width, std::size_t height, std::size_t step)
        : data_(data), width_(width), height_(height), step_(step) {}

    /// Whether the view has pixels.
    explicit operator bool() const { return data_ != nullptr; }
    /// Pixels in a row.
    std::size_t width() const { return width_; }
    /// Rows.
    std::size_t height() const { return height_; }
    /// Bytes from row to row.
    std::size_t step() const { return step_; }
    /// Whether rows follow each other without padding.
    bool isPacked() const { return step_ == width_ * sizeof(T); }

    /// First pixel of row y; no bounds check.
    T* begin(std::size_t y) const { return reinterpret_cast<T*>(data_ + y * step_); }
    /// One past the last pixel of row y; no bounds check.
    T* end(std::size_t y) const { return begin(y) + width_; }
    /// Pixel at column x of row y; no bounds check.
    T& operator()(std::size_t x, std::size_t y) const { return begin(y)[x]; }

private:
    Byte* data_ = nullptr;
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    std::size_t step_ = 0;
};

/// The host side of a Mat as pixels of type T, without a copy; `hostView<const T>` of a const Mat.
///
/// Respects the row step, which `Mat::getValue` and `Mat::setTo` do not. The view is empty when the Mat has
/// no host buffer, its pixels are not T, or pointer and step are not aligned for T. It dangles once the Mat
/// releases or reallocates its buffer, so a temporary Mat is refused at compile time.
///
///     if (const auto points = hostView<Vector4<float>>(cloud)) {
///         for (std::size_t y = 0; y < points.height(); ++y) {
///             for (auto* p = points.begin(y); p != points.end(y); ++p) p->z += 1;
///         }
///     }
template <class T>
ImageView<T> hostView(std::conditional_t<std::is_const_v<T>, const Mat, Mat>& mat) {
    using Pixel = typename vela::detail::RequirePixel<std::remove_const_t<T>>::type;
    const bool aligned = reinterpret_cast<std::uintptr_t>(mat.ptrCPU) % alignof(T) == 0 &&
                         (mat.height <= 1 || mat.stepBytesCPU % alignof(T) == 0);
    if (!mat.isOnHost() || mat.ptrCPU == nullptr || mat.dataType != PixelTraits<Pixel>::type || !aligned) {
        return {};
    }
    return {mat.ptrCPU, mat.width, mat.height, mat.stepBytesCPU};
}
template <class T>
void hostView(const Mat&& temporary) = delete;

}  // namespace vela::interop

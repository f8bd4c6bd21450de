// SPDX-License-Identifier: Apache-2.0
#include "plain.hpp"

#include "vela_core/types/Vector.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

#include <algorithm>

namespace vela::bench {
namespace {

using detail::ApplyMatrix3;
using detail::ApplyMatrix4;
using detail::fetched;
using detail::MatrixInMemory;
using detail::ScaleAll;
using detail::ScalePosition;
using detail::ToSigned;

constexpr unsigned THREADS = 256;
constexpr unsigned MOST_BLOCKS = 65535;

template <class From, class Op>
__device__ auto pixelOf(const Op& op, const From& pixel) {
    return op(pixel);
}
template <class Pixel>
__device__ Pixel pixelOf(const Fill<Pixel>& fill, const Pixel& /*pixel*/) {
    return fill.value;
}

template <class From, class To, class Op>
__global__ void plainKernel(Image<From> from, Image<To> to, Op op) {
    const auto& apply = fetched(op);
    const std::size_t count = std::size_t{from.width} * from.height;
    const std::size_t stride = std::size_t{gridDim.x} * blockDim.x;
    for (std::size_t i = std::size_t{blockIdx.x} * blockDim.x + threadIdx.x; i < count; i += stride) {
        const std::size_t y = i / from.width;
        const std::size_t x = i % from.width;
        to.data[y * to.step + x] = pixelOf(apply, from.data[y * from.step + x]);
    }
}

}  // namespace

template <class From, class To, class Op>
void launchPlainly(const Image<From>& from, const Image<To>& to, const Op& op) {
    const std::size_t count = std::size_t{from.width} * from.height;
    const auto blocks = std::min<std::size_t>((count + THREADS - 1) / THREADS, MOST_BLOCKS);
    plainKernel<<<static_cast<unsigned>(blocks), THREADS>>>(from, to, op);
}

#define VELA_PLAIN(From, To, ...) \
    template void launchPlainly(const Image<From>&, const Image<To>&, const __VA_ARGS__&);
#define VELA_PLAIN_FILL(Pixel) VELA_PLAIN(Pixel, Pixel, Fill<Pixel>)
VELA_PLAIN_FILL(unsigned char)
VELA_PLAIN_FILL(Vector2<unsigned char>)
VELA_PLAIN_FILL(Vector3<unsigned char>)
VELA_PLAIN_FILL(Vector4<unsigned char>)
VELA_PLAIN_FILL(Vector4<char>)
VELA_PLAIN_FILL(unsigned short)
VELA_PLAIN_FILL(float)
VELA_PLAIN_FILL(Vector2<float>)
VELA_PLAIN_FILL(Vector3<float>)
VELA_PLAIN_FILL(Vector4<float>)
VELA_PLAIN(float, float, ScaleAll)
VELA_PLAIN(Vector3<float>, Vector3<float>, ScaleAll)
VELA_PLAIN(Vector4<float>, Vector4<float>, ScalePosition)
VELA_PLAIN(Vector3<float>, Vector3<float>, MatrixInMemory<ApplyMatrix3>)
VELA_PLAIN(Vector4<float>, Vector4<float>, MatrixInMemory<ApplyMatrix4>)
VELA_PLAIN(Vector4<unsigned char>, Vector4<char>, ToSigned)

}  // namespace vela::bench

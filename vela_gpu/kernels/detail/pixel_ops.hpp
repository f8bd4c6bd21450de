// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/Vector.hpp"
#include "vela_gpu/kernels/detail/device_code.hpp"

#include <type_traits>

namespace vela::detail {

// The operations on one pixel, written once: host loops, CUDA launchers and software launchers only walk
// rows.

/// Multiplies all components by the factor.
struct ScaleAll {
    float factor;

    VELA_HOST_DEVICE float operator()(float value) const { return value * factor; }
    VELA_HOST_DEVICE Vector3<float> operator()(Vector3<float> p) const {
        return {p.x * factor, p.y * factor, p.z * factor};
    }
    VELA_HOST_DEVICE Vector4<float> operator()(Vector4<float> p) const {
        return {p.x * factor, p.y * factor, p.z * factor, p.w * factor};
    }
};

/// Multiplies the position by the factor; the fourth component, packed colour, keeps its bits.
struct ScalePosition {
    float factor;

    VELA_HOST_DEVICE Vector4<float> operator()(Vector4<float> p) const {
        return {p.x * factor, p.y * factor, p.z * factor, p.w};
    }
};

/// Maps the position (x, y, z) to K (x, y, z); K is row-major.
struct ApplyMatrix3 {
    float k[9];

    VELA_HOST_DEVICE Vector3<float> operator()(Vector3<float> p) const {
        return {k[0] * p.x + k[1] * p.y + k[2] * p.z, k[3] * p.x + k[4] * p.y + k[5] * p.z,
                k[6] * p.x + k[7] * p.y + k[8] * p.z};
    }
};

/// Maps the position (x, y, z) to rows 0 to 2 of K times (x, y, z, 1); the fourth component keeps its bits.
struct ApplyMatrix4 {
    float k[16];

    VELA_HOST_DEVICE Vector4<float> operator()(Vector4<float> p) const {
        return {k[0] * p.x + k[1] * p.y + k[2] * p.z + k[3], k[4] * p.x + k[5] * p.y + k[6] * p.z + k[7],
                k[8] * p.x + k[9] * p.y + k[10] * p.z + k[11], p.w};
    }
};

/// An operation whose matrix lies in device memory. Kernels call `fetched` once per tile, after they have
/// requested its pixels, so that they wait for both at once.
template <class Op>
struct MatrixInMemory {
    const float* matrix;

    VELA_HOST_DEVICE Op fetched() const {
        Op op;
        for (unsigned i = 0; i < std::extent_v<decltype(Op::k)>; ++i) {
            op.k[i] = VELA_LOAD_CONSTANT(matrix + i);
        }
        return op;
    }
};

/// The operation that a lane applies to its pixels.
template <class Op>
VELA_HOST_DEVICE const Op& fetched(const Op& op) {
    return op;
}
template <class Op>
VELA_HOST_DEVICE Op fetched(const MatrixInMemory<Op>& op) {
    return op.fetched();
}

/// Subtracts 128 from every channel. Plain `char` has the bits of a signed byte, whatever its sign on this
/// machine.
struct ToSigned {
    VELA_HOST_DEVICE Vector4<char> operator()(Vector4<unsigned char> p) const {
        return {shift(p.x), shift(p.y), shift(p.z), shift(p.w)};
    }
    VELA_HOST_DEVICE static char shift(unsigned char value) {
        return static_cast<char>(static_cast<unsigned char>(value - 128));
    }
};

}  // namespace vela::detail

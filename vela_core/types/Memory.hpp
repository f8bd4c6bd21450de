#pragma once

#include <cstddef>
#include <cstdint>

namespace vela {

/// Side of memory, used as a bit mask together with `MEM_BOTH` and `MEM_MANAGED`.
enum class MEM : std::int32_t {
    CPU = 1,  ///< host memory
    GPU = 2,  ///< CUDA device memory
};

/// One host and one device buffer, kept in step by explicit copies.
constexpr MEM MEM_BOTH = static_cast<MEM>(3);
/// One CUDA managed buffer that both sides address.
constexpr MEM MEM_MANAGED = static_cast<MEM>(4);

/// Element type and channel count of a pixel.
enum class MAT_TYPE : std::int32_t {
    MAT_32F_C1 = 0,
    MAT_32F_C2 = 1,
    MAT_32F_C3 = 2,
    MAT_32F_C4 = 3,
    MAT_8U_C1 = 4,
    MAT_8U_C2 = 5,
    MAT_8U_C3 = 6,
    MAT_8U_C4 = 7,
    MAT_US16_C1 = 8,  ///< unsigned 16 bits
    MAT_8S_C4 = 9,
};

/// Direction of a copy: the source's side, then the destination's.
enum class COPY_TYPE : std::int32_t {
    CPU_CPU = 0,
    CPU_GPU = 1,
    GPU_GPU = 2,
    GPU_CPU = 3,
};

/// Channels per pixel; 0 for a value without enumerator.
std::size_t getChannels(MAT_TYPE type) noexcept;

/// Bytes per pixel, all channels; 0 for a value without enumerator.
std::size_t getPixelBytes(MAT_TYPE type) noexcept;

}  // namespace vela

#pragma once

#include "vela_core/utils/Mat.hpp"

#include <cstddef>
#include <cstdint>

namespace vela {

/// One two-dimensional copy of all of the source's rows in the direction of `type`: complete on return
/// without a stream, queued on `stream` otherwise. An unknown direction reads a null pointer, which the
/// runtime refuses.
cudaError cpy(const Mat& source, Mat& destination, COPY_TYPE type, cudaStream_t stream);

/// Keeps the destination if it fits the source's size and type and has the side that `type` writes, and the
/// source has the side that is read; otherwise allocates it on the written side alone.
void prepareCopyDestination(const Mat& source, Mat& destination, COPY_TYPE type);

/// A size as it passes through the 32-bit integers of copies: the low 32 bits, sign-extended.
constexpr std::size_t throughInt32(std::size_t size) {
    return static_cast<std::size_t>(static_cast<std::int32_t>(size));
}

}  // namespace vela

// SPDX-License-Identifier: Apache-2.0
#include "vela_gpu/kernels/detail/pixel_tiles.hpp"

#include <cuda_runtime_api.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace vela::detail {
namespace {

// Small blocks, so that images of a megabyte still spread over all multiprocessors.
constexpr unsigned int BLOCK_WARPS = 4;
constexpr unsigned int BLOCK_THREADS = BLOCK_WARPS * WARP_LANES;
constexpr std::size_t LARGEST_GRID_HEIGHT = 65535;

/// Calls visit(tile, y, lane) for the tiles of this thread's warp, striding over rows beyond the grid's
/// height. The lanes of a warp stay together.
template <class Walker, class Visit>
__device__ void forEachTile(const Walker& walker, Visit visit) {
    const std::size_t tile = std::size_t{blockIdx.x} * (blockDim.x / WARP_LANES) + threadIdx.x / WARP_LANES;
    if (tile >= walker.tilesPerRow()) return;
    const std::size_t stride = std::size_t{gridDim.y} * blockDim.y;
    for (std::size_t y = std::size_t{blockIdx.y} * blockDim.y + threadIdx.y; y < walker.height();
         y += stride) {
        visit(tile, y, threadIdx.x % WARP_LANES);
    }
}

template <class Walker>
__device__ void walk(const Walker& walker) {
    forEachTile(walker, walker);
}

template <class From, class To, class Op>
__device__ void walk(const ExchangingMapTiles<From, To, Op>& walker) {
    __shared__ Word shared[BLOCK_WARPS][TILE_WORDS<From>];
    Word* const words = shared[threadIdx.y * (blockDim.x / WARP_LANES) + threadIdx.x / WARP_LANES];
    forEachTile(walker, [&](std::size_t tile, std::size_t y, unsigned int lane) {
        const auto op = walker.load(tile, y, lane, words);
        __syncwarp();
        walker.map(op, lane, words);
        __syncwarp();
        walker.store(op, tile, y, lane, words);  // reads what this lane loads next: no third barrier
    });
}

template <class Walker>
__global__ void __launch_bounds__(BLOCK_THREADS) tileKernel(const __grid_constant__ Walker walker) {
    walk(walker);
}

/// Launch shape: blocks no wider than a row needs, enough to cover the image.
struct Shape {
    dim3 grid;
    dim3 block;

    Shape(std::size_t tiles, std::size_t height) {
        const unsigned int blockTiles = tiles >= BLOCK_WARPS ? BLOCK_WARPS : tiles >= 2 ? 2 : 1;
        const unsigned int blockRows = BLOCK_WARPS / blockTiles;
        // A launch refuses more blocks than it can take; they must not wrap around.
        const std::size_t width =
            std::min<std::size_t>((tiles - 1) / blockTiles + 1, std::numeric_limits<unsigned int>::max());
        const std::size_t rows = std::min((height - 1) / blockRows + 1, LARGEST_GRID_HEIGHT);
        grid = dim3(static_cast<unsigned int>(width), static_cast<unsigned int>(rows));
        block = dim3(blockTiles * WARP_LANES, blockRows);
    }
};

template <class Walker>
void launchTiles(const Walker& walker, cudaStream_t stream) {
    const Shape shape(walker.tilesPerRow(), walker.height());
    tileKernel<<<shape.grid, shape.block, 0, stream>>>(walker);
}

}  // namespace
}  // namespace vela::detail

#include "vela_gpu/kernels/detail/kernel_entries.inl"

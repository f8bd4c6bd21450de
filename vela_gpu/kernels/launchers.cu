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
constexpr unsigned int BLOCK_THREADS = BLOCK_WARPS * LANES;
constexpr std::size_t LARGEST_GRID_HEIGHT = 65535;

/// Calls visit(tile, y, lane) for the tiles of this thread's warp; rows beyond the grid's height are met by
/// striding. A warp's lanes go together.
template <class Walker, class Visit>
__device__ void forEachTile(const Walker& walker, Visit visit) {
    const std::size_t tile = std::size_t{blockIdx.x} * (blockDim.x / LANES) + threadIdx.x / LANES;
    if (tile >= walker.tilesPerRow()) return;
    const std::size_t stride = std::size_t{gridDim.y} * blockDim.y;
    for (std::size_t y = std::size_t{blockIdx.y} * blockDim.y + threadIdx.y; y < walker.height();
         y += stride) {
        visit(tile, y, threadIdx.x % LANES);
    }
}

template <class Walker>
__device__ void walk(const Walker& walker) {
    forEachTile(walker, walker);
}

template <class From, class To, class Op>
__device__ void walk(const ExchangingMapTiles<From, To, Op>& walker) {
    __shared__ Word shared[BLOCK_WARPS][TILE_WORDS<From>];
    Word* const words = shared[threadIdx.y * (blockDim.x / LANES) + threadIdx.x / LANES];
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

/// Blocks as wide as the rows have use for, and as many of them as it takes.
struct Shape {
    dim3 grid;
    dim3 block;

    Shape(std::size_t tiles, std::size_t height) {
        const unsigned int blockTiles = tiles >= BLOCK_WARPS ? BLOCK_WARPS : tiles >= 2 ? 2 : 1;
        const unsigned int blockRows = BLOCK_WARPS / blockTiles;
        // More blocks than a launch takes are refused by it, not wrapped around.
        const std::size_t width =
            std::min<std::size_t>((tiles - 1) / blockTiles + 1, std::numeric_limits<unsigned int>::max());
        const std::size_t rows = std::min((height - 1) / blockRows + 1, LARGEST_GRID_HEIGHT);
        grid = dim3(static_cast<unsigned int>(width), static_cast<unsigned int>(rows));
        block = dim3(blockTiles * LANES, blockRows);
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

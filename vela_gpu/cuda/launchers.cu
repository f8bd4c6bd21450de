#include "vela_gpu/PixelView.hpp"
#include "vela_gpu/pixel_runs.hpp"

#include <cuda_runtime_api.h>

#include <algorithm>

namespace vela {
namespace {

// A warp takes 32 neighbouring runs of a row, 512 bytes or three times that.
constexpr unsigned int BLOCK_RUNS = 32;
constexpr unsigned int BLOCK_ROWS = 8;
constexpr unsigned int LARGEST_GRID_HEIGHT = 65535;

/// Calls walker(run, y) for the runs of this thread; rows beyond the grid's height are met by striding.
template <class Walker>
__device__ void walkRuns(const Walker& walker, unsigned int runs, unsigned int rows) {
    const unsigned int run = blockIdx.x * BLOCK_RUNS + threadIdx.x;
    if (run >= runs) return;
    for (unsigned int y = blockIdx.y * BLOCK_ROWS + threadIdx.y; y < rows; y += gridDim.y * BLOCK_ROWS) {
        walker(run, y);
    }
}

template <class Walker>
__global__ void runKernel(Walker walker, unsigned int runs, unsigned int rows) {
    walkRuns(walker, runs, rows);
}

template <class Walker>
__global__ void runByMatrixKernel(Walker walker, const float* matrix, unsigned int runs, unsigned int rows) {
    for (unsigned int i = 0; i < sizeof walker.op.k / sizeof *walker.op.k; ++i) {
        walker.op.k[i] = __ldg(matrix + i);
    }
    walkRuns(walker, runs, rows);
}

dim3 gridFor(unsigned int runs, unsigned int rows) {
    return {(runs - 1) / BLOCK_RUNS + 1, std::min((rows - 1) / BLOCK_ROWS + 1, LARGEST_GRID_HEIGHT)};
}

template <class Walker, class T>
void launchRuns(const Walker& walker, const PixelView<T>& view, cudaStream_t stream) {
    const unsigned int runs = runsPerRow(view);
    runKernel<<<gridFor(runs, view.height), dim3(BLOCK_RUNS, BLOCK_ROWS), 0, stream>>>(walker, runs,
                                                                                       view.height);
}

template <class Op, class T>
void launchRunsByMatrix(const PixelView<T>& view, const float* matrix) {
    const unsigned int runs = runsPerRow(view);
    runByMatrixKernel<<<gridFor(runs, view.height), dim3(BLOCK_RUNS, BLOCK_ROWS)>>>(
        MapRun(view, view, Op{}), matrix, runs, view.height);
}

}  // namespace
}  // namespace vela

#include "vela_gpu/kernel_entries.inl"

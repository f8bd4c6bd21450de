#include "vela_gpu/PixelView.hpp"
#include "vela_gpu/kernels.hpp"
#include "vela_gpu/pixel_ops.hpp"

#include <algorithm>

namespace vela {
namespace {

constexpr unsigned int BLOCK_WIDTH = 64;
constexpr unsigned int BLOCK_HEIGHT = 4;
constexpr unsigned int LARGEST_GRID_HEIGHT = 65535;

/// Calls visit(pixel) for the pixels of this thread; rows beyond the grid's height are met by striding.
template <class T, class Visit>
__device__ void forEachPixelOfThread(const PixelView<T>& view, Visit visit) {
    const unsigned int x = blockIdx.x * blockDim.x + threadIdx.x;
    if (x >= view.width) return;
    for (unsigned int y = blockIdx.y * blockDim.y + threadIdx.y; y < view.height;
         y += gridDim.y * blockDim.y) {
        visit(reinterpret_cast<T*>(reinterpret_cast<char*>(view.data) + y * view.stepBytes)[x]);
    }
}

template <class T>
__global__ void fillKernel(PixelView<T> view, T value) {
    forEachPixelOfThread(view, [=](T& pixel) { pixel = value; });
}

template <class From, class To, class Op>
__global__ void mapKernel(PixelView<From> source, PixelView<To> destination, Op op) {
    const unsigned int x = blockIdx.x * blockDim.x + threadIdx.x;
    if (x >= source.width) return;
    for (unsigned int y = blockIdx.y * blockDim.y + threadIdx.y; y < source.height;
         y += gridDim.y * blockDim.y) {
        const char* const from = reinterpret_cast<const char*>(source.data) + y * source.stepBytes;
        char* const to = reinterpret_cast<char*>(destination.data) + y * destination.stepBytes;
        reinterpret_cast<To*>(to)[x] = op(reinterpret_cast<const From*>(from)[x]);
    }
}

template <class T, class Op>
__global__ void transformKernel(PixelView<T> view, Op op) {
    forEachPixelOfThread(view, [=](T& pixel) { pixel = op(pixel); });
}

template <class Op, class T>
__global__ void transformByMatrixKernel(PixelView<T> view, const float* matrix) {
    Op op;
    for (unsigned int i = 0; i < sizeof op.k / sizeof *op.k; ++i) {
        op.k[i] = matrix[i];
    }
    forEachPixelOfThread(view, [=](T& pixel) { pixel = op(pixel); });
}

template <class T>
dim3 gridFor(const PixelView<T>& view) {
    const unsigned int rows = (view.height - 1) / BLOCK_HEIGHT + 1;
    return {(view.width - 1) / BLOCK_WIDTH + 1, std::min(rows, LARGEST_GRID_HEIGHT)};
}

template <class T>
void fillPixels(const PixelView<T>& view, T value, cudaStream_t stream) {
    if (view.empty()) return;
    fillKernel<<<gridFor(view), dim3(BLOCK_WIDTH, BLOCK_HEIGHT), 0, stream>>>(view, value);
}

template <class From, class To, class Op>
void mapPixels(const PixelView<From>& source, const PixelView<To>& destination, Op op, cudaStream_t stream) {
    if (source.empty() || destination.empty()) return;
    mapKernel<<<gridFor(source), dim3(BLOCK_WIDTH, BLOCK_HEIGHT), 0, stream>>>(source, destination, op);
}

template <class T, class Op>
void transformPixels(const PixelView<T>& view, Op op) {
    if (view.empty()) return;
    transformKernel<<<gridFor(view), dim3(BLOCK_WIDTH, BLOCK_HEIGHT)>>>(view, op);
}

template <class Op, class T>
void transformPixelsByMatrix(const PixelView<T>& view, const float* matrix) {
    if (view.empty() || matrix == nullptr) return;
    transformByMatrixKernel<Op><<<gridFor(view), dim3(BLOCK_WIDTH, BLOCK_HEIGHT)>>>(view, matrix);
}

}  // namespace
}  // namespace vela

#include "vela_gpu/kernel_entries.inl"

#include "vela_gpu/kernels.hpp"
#include "vela_gpu/pixel_loop.hpp"
#include "vela_gpu/pixel_ops.hpp"
#include "vela_gpu/software/StandIn.hpp"

#include <cstring>

namespace vela {
namespace {

using software_device::StandIn;

/// The same view over the bytes behind a device address; without data where not all of it can be reached.
template <class T>
PixelView<T> reach(const StandIn& device, PixelView<T> view) {
    view.data = device.kernelAddress(view.data, view.spanBytes());
    return view;
}

/// Launches `kernel`, which returns whether it could reach its memory.
template <class Kernel>
void launch(cudaStream_t stream, Kernel kernel) {
    StandIn& device = StandIn::get();
    device.call("cudaLaunchKernel", [&] {
        return device.submit(stream,
                             [=, &device] { return kernel(device) ? cudaSuccess : cudaErrorIllegalAddress; });
    });
}

template <class T>
void fillPixels(const PixelView<T>& view, T value, cudaStream_t stream) {
    if (view.empty()) return;
    launch(stream, [=](const StandIn& device) {
        const PixelView<T> reached = reach(device, view);
        forEachPixel(reached, [=](const T&) { return value; });
        return reached.data != nullptr;
    });
}

template <class From, class To, class Op>
void mapPixels(const PixelView<From>& source, const PixelView<To>& destination, Op op, cudaStream_t stream) {
    if (source.empty() || destination.empty()) return;
    launch(stream, [=](const StandIn& device) {
        const PixelView<From> from = reach(device, source);
        const PixelView<To> to = reach(device, destination);
        mapEachPixel(from, to, op);
        return from.data != nullptr && to.data != nullptr;
    });
}

template <class T, class Op>
void transformPixels(const PixelView<T>& view, Op op) {
    if (view.empty()) return;
    launch(nullptr, [=](const StandIn& device) {
        const PixelView<T> reached = reach(device, view);
        forEachPixel(reached, op);
        return reached.data != nullptr;
    });
}

/// Like `transformPixels`, with an Op that is made of a matrix in device memory.
template <class Op, class T>
void transformPixelsByMatrix(const PixelView<T>& view, const float* matrix) {
    if (view.empty() || matrix == nullptr) return;
    launch(nullptr, [=](const StandIn& device) {
        const PixelView<T> reached = reach(device, view);
        Op op{};
        const float* const values = device.kernelAddress(matrix, sizeof op.k);
        if (reached.data == nullptr || values == nullptr) return false;
        std::memcpy(op.k, values, sizeof op.k);
        forEachPixel(reached, op);
        return true;
    });
}

}  // namespace
}  // namespace vela

#include "vela_gpu/kernel_entries.inl"

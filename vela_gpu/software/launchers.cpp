#include "vela_gpu/PixelView.hpp"
#include "vela_gpu/pixel_runs.hpp"
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

/// The same walker over memory that this process can reach; false if some of it cannot.
template <class T>
bool reach(const StandIn& device, FillRun<T>& walker) {
    walker.view = reach(device, walker.view);
    return walker.view.data != nullptr;
}

template <class From, class To, class Op>
bool reach(const StandIn& device, MapRun<From, To, Op>& walker) {
    walker.source = reach(device, walker.source);
    walker.destination = reach(device, walker.destination);
    return walker.source.data != nullptr && walker.destination.data != nullptr;
}

template <class Walker, class T>
cudaError_t walkRuns(const StandIn& device, Walker walker, const PixelView<T>& view) {
    if (!reach(device, walker)) return cudaErrorIllegalAddress;
    const std::uint32_t runs = runsPerRow(view);
    for (std::uint32_t y = 0; y < view.height; ++y) {
        for (std::uint32_t run = 0; run < runs; ++run) {
            walker(run, y);
        }
    }
    return cudaSuccess;
}

template <class Kernel>
void launch(cudaStream_t stream, Kernel kernel) {
    StandIn& device = StandIn::get();
    device.call("cudaLaunchKernel",
                [&] { return device.submit(stream, [=, &device] { return kernel(device); }); });
}

template <class Walker, class T>
void launchRuns(const Walker& walker, const PixelView<T>& view, cudaStream_t stream) {
    launch(stream, [=](const StandIn& device) { return walkRuns(device, walker, view); });
}

template <class Op, class T>
void launchRunsByMatrix(const PixelView<T>& view, const float* matrix) {
    launch(nullptr, [=](const StandIn& device) {
        Op op{};
        const float* const values = device.kernelAddress(matrix, sizeof op.k);
        if (values == nullptr) return cudaErrorIllegalAddress;
        std::memcpy(op.k, values, sizeof op.k);
        return walkRuns(device, MapRun(view, view, op), view);
    });
}

}  // namespace
}  // namespace vela

#include "vela_gpu/kernel_entries.inl"

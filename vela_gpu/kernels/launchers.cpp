// SPDX-License-Identifier: Apache-2.0
#include "vela_gpu/kernels/detail/pixel_tiles.hpp"
#include "vela_gpu/software/detail/SoftwareDevice.hpp"

namespace vela::detail {
namespace {

using software_device::SoftwareDevice;

/// Translates a view of device addresses to host addresses; `data` is null unless every byte is live.
template <class T>
PixelView<T> reach(const SoftwareDevice& device, PixelView<T> rows) {
    rows.data = device.kernelAddress(rows.data, rows.spanBytes());
    return rows;
}

/// Translates the address of an operation's matrix; false if it cannot be reached.
template <class Op>
bool reachMatrix(const SoftwareDevice& /*device*/, const Op& /*op*/) {
    return true;
}

template <class Op>
bool reachMatrix(const SoftwareDevice& device, MatrixInMemory<Op>& op) {
    op.matrix = device.kernelAddress(op.matrix, sizeof(Op));
    return op.matrix != nullptr;
}

/// The same for a walker.
template <class T>
bool reach(const SoftwareDevice& device, FillTiles<T>& walker) {
    walker.rows = reach(device, walker.rows);
    return walker.rows.data != nullptr;
}

template <class From, class To, class Op>
bool reach(const SoftwareDevice& device, MapRows<From, To, Op>& walker) {
    walker.source = reach(device, walker.source);
    walker.destination = reach(device, walker.destination);
    return walker.source.data != nullptr && walker.destination.data != nullptr &&
           reachMatrix(device, walker.op);
}

template <class Visit>
void forEachLane(Visit visit) {
    for (unsigned lane = 0; lane < WARP_LANES; ++lane) {
        visit(lane);
    }
}

template <class Walker>
void walkTile(const Walker& walker, std::size_t tile, std::size_t y) {
    forEachLane([&](unsigned lane) { walker(tile, y, lane); });
}

template <class From, class To, class Op>
void walkTile(const ExchangingMapTiles<From, To, Op>& walker, std::size_t tile, std::size_t y) {
    Word shared[TILE_WORDS<From>] = {};
    const auto op = fetched(walker.op);
    forEachLane([&](unsigned lane) { walker.load(tile, y, lane, shared); });
    forEachLane([&](unsigned lane) { walker.map(op, lane, shared); });
    forEachLane([&](unsigned lane) { walker.store(op, tile, y, lane, shared); });
}

template <class Walker>
cudaError_t walk(const SoftwareDevice& device, Walker walker) {
    if (!reach(device, walker)) return cudaErrorIllegalAddress;
    for (std::size_t y = 0; y < walker.height(); ++y) {
        for (std::size_t tile = 0; tile < walker.tilesPerRow(); ++tile) {
            walkTile(walker, tile, y);
        }
    }
    return cudaSuccess;
}

template <class Kernel>
void launch(cudaStream_t stream, Kernel kernel) {
    SoftwareDevice& device = SoftwareDevice::get();
    device.call("cudaLaunchKernel",
                [&] { return device.submit(stream, [=, &device] { return kernel(device); }); });
}

template <class Walker>
void launchTiles(const Walker& walker, cudaStream_t stream) {
    launch(stream, [=](const SoftwareDevice& device) { return walk(device, walker); });
}

}  // namespace
}  // namespace vela::detail

#include "vela_gpu/kernels/detail/kernel_entries.inl"

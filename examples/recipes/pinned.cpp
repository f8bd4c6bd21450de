// SPDX-License-Identifier: Apache-2.0
// Copies of pageable host memory on a stream block in the driver. With page-locked memory, wrapped in a Mat,
// they overlap with the host's work.
#include <vela_core/vela.hpp>

#include <cuda_runtime_api.h>

#include <cstdio>
#include <vector>

using namespace vela;

/// Host memory that is page-locked during this object's lifetime.
class PinnedBuffer {
public:
    explicit PinnedBuffer(std::size_t bytes) : bytes_(bytes) {
        isPinned_ = cudaHostRegister(bytes_.data(), bytes, cudaHostRegisterDefault) == cudaSuccess;
    }
    ~PinnedBuffer() {
        if (isPinned_) cudaHostUnregister(bytes_.data());
    }
    PinnedBuffer(const PinnedBuffer&) = delete;
    PinnedBuffer& operator=(const PinnedBuffer&) = delete;

    unsigned char* data() { return bytes_.data(); }
    bool isPinned() const { return isPinned_; }

private:
    std::vector<unsigned char> bytes_;
    bool isPinned_ = false;
};

int main() {
    constexpr std::size_t WIDTH = 1280, HEIGHT = 720, STEP = WIDTH * sizeof(Vector4<float>);
    PinnedBuffer memory(STEP * HEIGHT);
    if (!memory.isPinned()) {
        std::printf("no page-locked memory: is there a GPU?\n");
        return 1;
    }
    Mat cloud(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C4, memory.data(), STEP, MEM::CPU);  // refers, does not own
    cloud.setTo(Vector4<float>(1, 2, 3, 4));

    cudaStream_t stream = nullptr;
    if (cudaStreamCreate(&stream) != cudaSuccess) return 1;
    Mat onGpu(WIDTH, HEIGHT, MAT_TYPE::MAT_32F_C4, MEM::GPU);
    cloud.copyTo(onGpu, COPY_TYPE::CPU_GPU, stream);  // returns at once
    // ... the host prepares the next frame in another buffer here ...
    cudaStreamSynchronize(stream);
    cudaStreamDestroy(stream);
    std::printf("copied beside the host's work\n");
}

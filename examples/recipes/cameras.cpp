// SPDX-License-Identifier: Apache-2.0
// Two cameras with one stream each, so that their uploads and downloads do not wait for each other.
#include <vela_core/vela.hpp>

#include <cstdio>

using namespace vela;

struct Camera {
    cudaStream_t stream = nullptr;
    Mat picture{640, 480, MAT_TYPE::MAT_8U_C4};
    Mat onGpu{640, 480, MAT_TYPE::MAT_8U_C4, MEM::GPU};
    Mat result{640, 480, MAT_TYPE::MAT_8U_C4};
};

int main() {
    Camera cameras[2];
    unsigned char shade = 10;
    for (Camera& camera : cameras) {
        if (cudaStreamCreate(&camera.stream) != cudaSuccess) return 1;
        camera.picture.setTo(Vector4<unsigned char>(shade, shade, shade, 255));
        shade = 20;
    }
    // Everything is queued first; nothing here waits.
    for (Camera& camera : cameras) {
        camera.picture.copyTo(camera.onGpu, COPY_TYPE::CPU_GPU, camera.stream);
        camera.onGpu.copyTo(camera.result, COPY_TYPE::GPU_CPU, camera.stream);
    }
    // Each camera's Mats are used again only after its stream has finished.
    for (Camera& camera : cameras) {
        cudaStreamSynchronize(camera.stream);
        std::printf("shade %d\n", camera.result.getPtr<unsigned char>()[0]);
        cudaStreamDestroy(camera.stream);
    }
}

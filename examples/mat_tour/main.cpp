// SPDX-License-Identifier: Apache-2.0
// Who owns which buffers: allocate, wrap, refer, clone, move, copy between sides, write and read.
#include <vela_core/vela.hpp>

#include <cstdio>
#include <utility>

using namespace vela;

void show(const char* what, const Mat& mat) {
    std::printf("%-28s %s\n", what, mat.isInit ? mat.memoryOwner ? "owns" : "refers" : "empty");
}

int main() {
    Mat image(4, 3, MAT_TYPE::MAT_8U_C3);  // owns host memory
    image.setTo(Vector3<unsigned char>(10, 20, 30));
    show("allocated", image);

    unsigned char pixels[36] = {};
    Mat wrapped(4, 3, MAT_TYPE::MAT_8U_C3, pixels, 12, MEM::CPU);  // the caller's memory
    image.copyTo(wrapped);                                         // fits, so the pixels are written there
    std::printf("%-28s %d\n", "the caller's array holds", pixels[35]);
    show("wrapped", wrapped);

    Mat reference = image;  // a copy refers to the same pixels
    reference.setValue(0, 0, Vector3<unsigned char>(1, 2, 3));
    std::printf("%-28s %d\n", "the owner sees", image.getPtr<unsigned char>()[0]);
    show("copied", reference);

    Mat clone;
    clone.clone(image);  // the deep copy
    show("cloned", clone);

    Mat taken = std::move(clone);  // buffers change hands
    show("moved from", clone);     // NOLINT(bugprone-use-after-move): shows what a move leaves
    show("moved to", taken);

    Mat onGpu;
    image.copyTo(onGpu, COPY_TYPE::CPU_GPU);  // reallocated to fit, on the GPU only
    onGpu.updateCPUfromGPU();                 // and then on both sides
    show("copied to the GPU", onGpu);

    std::printf("%-28s %s\n", "a reference may not move:", toString(reference.move(taken)).c_str());
    std::printf("%-28s %s\n", "nor grow a second side:", toString(reference.updateGPUfromCPU()).c_str());

    taken.write("mat_tour.png");
    taken.read("mat_tour.png");
    std::printf("%-28s %s", "read back:", taken.getInfos().c_str());
}

// SPDX-License-Identifier: Apache-2.0
// Hands a depth map to a consumer of DLPack tensors and takes a tensor back.
#include <vela_core/vela.hpp>
#include <vela_interop/dlpack.hpp>

#include <cstdio>
#include <utility>

int main() {
    namespace interop = vela::interop;
    vela::Mat depth(640, 480, vela::MAT_TYPE::MAT_32F_C1);
    depth.setTo(1.5F);
    interop::DlpackTensor tensor = interop::moveToDlpack(std::move(depth));
    if (!tensor) return 1;
    const interop::dl::Tensor& t = tensor->dl_tensor;
    std::printf("tensor of %d x %d\n", static_cast<int>(t.shape[0]), static_cast<int>(t.shape[1]));

    const interop::DlpackMat back = interop::viewOfDlpack(std::move(tensor));  // keep both halves
    float value = 0;
    back.mat.getValue(639, 479, &value);
    std::printf("last depth %.1f\n", static_cast<double>(value));
}

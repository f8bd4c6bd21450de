// SPDX-License-Identifier: Apache-2.0
#include <vela_core/log/KLogger.hpp>
#include <vela_core/vela.hpp>

#if defined(VELA_GPU_CUDA) == defined(VELA_GPU_SOFTWARE)
#error "users are told which flavour it is"
#endif

#include <iostream>

int main() {
    vela::Mat mat(4, 2, vela::MAT_TYPE::MAT_32F_C4);
    vela::KLogger::get_instance().loggers[vela::LOGGER_NAME::CORE]->set_log_level(quill::LogLevel::Critical);
    const vela::ERROR_CODE code = vela::Mat(mat).updateGPUfromCPU();
    vela::Rotation rotation;
    rotation.setRotationVector({0, 0, 1});
    std::cout << code << " " << rotation.getEulerAngles().z << "\n";
    return code == vela::ERROR_CODE::FAILURE ? 0 : 1;
}

// SPDX-License-Identifier: Apache-2.0
// Feeds arbitrary bytes to Mat::read. It must return SUCCESS with a consistent Mat or FAILURE with the old
// one, and never throw.
#include "MemoryFile.hpp"
#include "vela_core/log/KLogger.hpp"
#include "vela_core/vela.hpp"

#include <quill/Logger.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using vela::fuzz::require;
    static vela::fuzz::MemoryFile file;
    file.put(bytes, size);
    vela::Mat mat(3, 2, vela::MAT_TYPE::MAT_8U_C1);
    mat.name = "kept";
    mat.setTo<unsigned char>(7);
    const vela::ERROR_CODE result = mat.read(file.path());
    // OpenCV does not close a Radiance file whose header is broken.
    file.closeLaterOnes();
    require(mat.isInit && mat.memoryOwner && mat.ptrCPU != nullptr && mat.ptrGPU == nullptr);
    require(mat.stepBytesCPU == mat.width * mat.pixelBytes && mat.name == vela::String("kept"));
    if (result == vela::ERROR_CODE::SUCCESS) {
        require(mat.width * mat.height > 0);
        volatile unsigned char last = mat.ptrCPU[mat.stepBytesCPU * mat.height - 1];
        static_cast<void>(last);
    } else {
        require(result == vela::ERROR_CODE::FAILURE && mat.width == 3 && mat.height == 2 &&
                mat.ptrCPU[5] == 7);
    }
    return 0;
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Refuse large pictures: decoding gigabytes is not what this target tests.
    setenv("OPENCV_IO_MAX_IMAGE_PIXELS", "16777216", 1);
    vela::KLogger::get_instance().loggers.at(vela::LOGGER_NAME::CORE)->set_log_level(quill::LogLevel::None);
    return 0;
}

// SPDX-License-Identifier: Apache-2.0
#include <vela_core/log/KLogger.hpp>
#include <vela_core/vela.hpp>
#ifdef IO
#include <vela_io/io.hpp>
#endif

#if defined(VELA_GPU_CUDA) == defined(VELA_GPU_SOFTWARE)
#error "users are told which flavour it is"
#endif

#include <quill/Frontend.h>
#include <quill/sinks/Sink.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The program's own sink.
class Messages : public quill::Sink {
public:
    std::string text;  // written by quill's thread, read after a flush

    void write_log(quill::MacroMetadata const*, std::uint64_t, std::string_view, std::string_view,
                   std::string const&, std::string_view, quill::LogLevel, std::string_view, std::string_view,
                   std::vector<std::pair<std::string, std::string>> const*, std::string_view message,
                   std::string_view) override {
        text += message;
    }
    void flush_sink() override {}
};

int main() {
    const vela::Mat mat(4, 2, vela::MAT_TYPE::MAT_32F_C4);
#ifdef IO
    vela::io::DepthInfo info;
    if (vela::io::inspectDepth("absent.png", info).ok()) return 2;
#endif

    // The library's messages through a logger that this program makes: both must use one copy of quill.
    auto& loggers = vela::KLogger::get_instance().loggers;
    const auto messages = std::make_shared<Messages>();
    quill::Logger* const logger = quill::Frontend::create_or_get_logger("consumer", messages);
    loggers[vela::LOGGER_NAME::CORE] = logger;
    const vela::ERROR_CODE code = vela::Mat(mat).updateGPUfromCPU();
    logger->flush_log();

    vela::Rotation rotation;
    rotation.setRotationVector({0, 0, 1});
    std::cout << code << " " << rotation.getEulerAngles().z << "\n" << messages->text << "\n";
    const bool arrived = messages->text == "[Mat]  updateGPUfromCPU for reference Mat is forbidden.";
    return code == vela::ERROR_CODE::FAILURE && arrived ? 0 : 1;
}

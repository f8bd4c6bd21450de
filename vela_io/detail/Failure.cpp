// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/Failure.hpp"

#include <cerrno>
#include <system_error>

namespace vela::io::detail {
namespace {

/// As the shell prints it: in lower case at the start.
std::string systemText(int error) {
    std::string text = std::generic_category().message(error);
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z' && (text.size() < 2 || text[1] >= 'a')) {
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    }
    return text;
}

}  // namespace

void refuse(std::string text) {
    throw Failure{ERROR_CODE::INVALID_FUNCTION_PARAMETERS, std::move(text)};
}

void failFormat(std::string text, std::size_t line) {
    throw Failure{ERROR_CODE::FAILURE, std::move(text), 0, line};
}

void failSystem(int error, const std::string& what) {
    throw Failure{ERROR_CODE::FAILURE, what.empty() ? systemText(error) : what + ": " + systemText(error),
                  error};
}

void failCancelled() {
    throw Failure{ERROR_CODE::FAILURE, "cancelled", ECANCELED};
}

std::string nameOf(const String& path) {
    const std::string text = toStdString(path);
    return text == "-" ? "(standard stream)" : text.empty() ? "(no path)" : text;
}

Result resultOf(const Failure& failure, const String& path) {
    const std::string line = failure.line == 0 ? "" : ":" + std::to_string(failure.line);
    Result result;
    result.code = failure.code;
    result.text = nameOf(path) + line + ": " + failure.text;
    result.systemError = failure.systemError;
    return result;
}

}  // namespace vela::io::detail

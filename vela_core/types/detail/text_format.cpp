// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/detail/text_format.hpp"

#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace vela::detail {

std::string formatText(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

std::string labelOrAddress(const String& label, const void* object) {
    if (!label.empty()) return label.c_str();
    return formatText("%02lX", reinterpret_cast<std::uintptr_t>(object));
}

}  // namespace vela::detail

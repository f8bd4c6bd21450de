// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/String.hpp"

#include <cstring>
#include <ostream>

namespace vela {

char* String::copyOf(const char* text) {
    if (text == nullptr) return noData();
    if (*text == '\0') return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(new char[size], text, size));
}

void String::release(char* data) noexcept {
    if (data != noData()) delete[] data;
}

bool operator==(const String& a, const String& b) noexcept {
    const char* const left = a.c_str();
    const char* const right = b.c_str();
    if (left == nullptr || right == nullptr) return left == right;
    return std::strcmp(left, right) == 0;
}

std::ostream& operator<<(std::ostream& stream, const String& text) {
    return text.empty() ? stream : stream << text.c_str();
}

std::string toStdString(const String& text) {
    return text.empty() ? std::string() : std::string(text.c_str());
}

}  // namespace vela

#include "vela_core/utils/number_text.hpp"

#include <charconv>

namespace vela {
namespace {

constexpr int DIGITS_AFTER_POINT = 6;

}  // namespace

char* writeFixed(char* out, float value) {
    const auto number = static_cast<double>(value);
    return std::to_chars(out, out + NUMBER_TEXT_SIZE, number, std::chars_format::fixed, DIGITS_AFTER_POINT)
        .ptr;
}

char* writeScientific(char* out, float value) {
    const auto number = static_cast<double>(value);
    return std::to_chars(out, out + NUMBER_TEXT_SIZE, number, std::chars_format::scientific,
                         DIGITS_AFTER_POINT)
        .ptr;
}

char* writeInteger(char* out, int value) {
    return std::to_chars(out, out + NUMBER_TEXT_SIZE, value).ptr;
}

}  // namespace vela

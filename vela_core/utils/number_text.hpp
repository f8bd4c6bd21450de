#pragma once

#include <cstddef>

namespace vela {

/// Room for any float in either form.
inline constexpr std::size_t NUMBER_TEXT_SIZE = 64;

/// Writes what `printf` makes of the value by "%f" and returns the end; no zero byte is added.
char* writeFixed(char* out, float value);

/// Writes what `printf` makes of the value by "%e" and returns the end; no zero byte is added.
char* writeScientific(char* out, float value);

/// Writes the value in decimal digits and returns the end; no zero byte is added.
char* writeInteger(char* out, int value);

}  // namespace vela

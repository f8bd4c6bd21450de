// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MemoryFile.hpp"
#include "vela_io/io.hpp"

#include <cstring>

namespace vela::fuzz {

/// A failure says what is wrong, in one line.
inline void requireOneLine(const io::Result& result) {
    const String& text = result.text;
    require(text.c_str() != nullptr && std::strchr(text.c_str(), '\n') == nullptr);
    require(result.ok() || (text.c_str()[0] != '\0' && result.code == ERROR_CODE::FAILURE));
}

}  // namespace vela::fuzz

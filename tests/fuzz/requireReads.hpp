// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MemoryFile.hpp"
#include "vela_io/io.hpp"

#include <cstring>

namespace vela::fuzz {

/// A failure must say what is wrong in one line.
inline void requireOneLine(const io::Result& result) {
    const String& text = result.text;
    require(text.c_str() != nullptr && std::strchr(text.c_str(), '\n') == nullptr);
    require(result.ok() || (text.c_str()[0] != '\0' && result.code == ERROR_CODE::FAILURE));
}

/// Reads into a Mat that already holds something; a failed read must leave it unchanged.
template <class Read>
io::Result readOrKeep(Mat& mat, Read read) {
    mat = Mat(3, 2, MAT_TYPE::MAT_8U_C1);
    const unsigned char* const before = mat.ptrCPU;
    const io::Result result = read(mat);
    requireOneLine(result);
    require(result.ok() || (mat.ptrCPU == before && mat.width == 3));
    return result;
}

}  // namespace vela::fuzz

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/InputFile.hpp"
#include "vela_io/detail/OutputFile.hpp"

namespace vela::io::detail {

/// What the header of a NumPy file says.
struct NpyHeader {
    char kind = 'f';  ///< 'f', 'u' or 'i'
    std::size_t itemBytes = 4;
    bool swapped = false;       ///< the other byte order than this machine's
    bool fortranOrder = false;  ///< the first index runs fastest
    std::size_t height = 0;
    std::size_t width = 0;
    std::size_t channels = 1;
};

bool isNpy(const char* begin, std::size_t count);
NpyHeader readNpyHeader(InputFile& file);
/// The elements as they are in a packed C-order array in this machine's byte order.
void readNpyElements(InputFile& file, const NpyHeader& header, unsigned char* out);

/// Header of a C-order array in this machine's byte order.
void writeNpyHeader(OutputFile& file, const NpyHeader& header);

}  // namespace vela::io::detail

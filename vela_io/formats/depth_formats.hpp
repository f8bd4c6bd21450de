// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/InputFile.hpp"
#include "vela_io/detail/OutputFile.hpp"
#include "vela_io/detail/depths.hpp"

namespace vela::io::detail {

// Each takes one file from its first byte to its last.

void readPng(InputFile& file, DepthSink& sink);
void writePng(OutputFile& file, const DepthHeader& header, DepthSource& source, int compression);

void readPgm(InputFile& file, DepthSink& sink);
void writePgm(OutputFile& file, const DepthHeader& header, DepthSource& source);

void readPfm(InputFile& file, DepthSink& sink);
void writePfm(OutputFile& file, const DepthHeader& header, DepthSource& source);

void readNpyDepth(InputFile& file, DepthSink& sink);
void writeNpyDepth(OutputFile& file, const DepthHeader& header, DepthSource& source);

}  // namespace vela::io::detail

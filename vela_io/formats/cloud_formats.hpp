// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/InputFile.hpp"
#include "vela_io/detail/OutputFile.hpp"
#include "vela_io/detail/points.hpp"

#include <string_view>

namespace vela::io::detail {

// Each reader and writer takes one file from its first byte to its last. A reader calls `sink.begin` once and
// goes on only if points are wanted.

void readPly(InputFile& file, PointSink& sink);
void writePly(OutputFile& file, const CloudHeader& header, PointSource& source);

void readPcd(InputFile& file, PointSink& sink);
void writePcd(OutputFile& file, const CloudHeader& header, PointSource& source);

void readVtk(InputFile& file, PointSink& sink);
void writeVtk(OutputFile& file, const CloudHeader& header, PointSource& source);

void readXyz(InputFile& file, PointSink& sink);
void writeXyz(OutputFile& file, const CloudHeader& header, PointSource& source);

/// Three numbers with `separator` between them.
char* writeThree(char* out, float x, float y, float z, char separator);

/// A point as a line of text: coordinates, then colours, then the normal.
char* writePointText(char* out, const Point& point, const Normal& normal, const CloudHeader& header);

}  // namespace vela::io::detail

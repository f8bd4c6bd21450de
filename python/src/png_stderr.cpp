// SPDX-License-Identifier: Apache-2.0
// The stream of the libpng that wheels carry; see cmake/VelaWheel.cmake.
#include <cstdio>

extern "C" FILE* vela_png_stderr;
FILE* vela_png_stderr = stderr;

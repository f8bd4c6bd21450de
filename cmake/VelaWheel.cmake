# SPDX-License-Identifier: Apache-2.0
# A wheel carries what it needs: libpng and zlib become part of the extension.
find_library(vela_png_archive NAMES libpng.a libpng16.a REQUIRED)
find_library(ZLIB_LIBRARY NAMES libz.a REQUIRED)
# Distributions compile libpng.a for programs, whose code may contain the address of another library's variable.
# An extension's may not, and there is one, stderr: so a copy of the archive refers to our own variable instead.
execute_process(
    COMMAND ${CMAKE_OBJCOPY} --redefine-sym stderr=vela_png_stderr ${vela_png_archive} ${PROJECT_BINARY_DIR}/libpng.a
    COMMAND_ERROR_IS_FATAL ANY)
set(PNG_LIBRARY ${PROJECT_BINARY_DIR}/libpng.a CACHE FILEPATH "libpng as the extension takes it" FORCE)

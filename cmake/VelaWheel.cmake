# SPDX-License-Identifier: Apache-2.0
# A wheel carries what it needs: libpng and zlib become part of the extension.
find_library(PNG_LIBRARY NAMES libpng.a libpng16.a REQUIRED)
find_library(ZLIB_LIBRARY NAMES libz.a REQUIRED)

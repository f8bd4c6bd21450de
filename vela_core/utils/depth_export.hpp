// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstdint>

/// Image formats of depth maps, with the extension of their files.
/// @ingroup utils
enum DEPTH_FORMAT : std::int32_t {
    PNG = 0,  ///< ".png", 16 bits, depth times factor, uncompressed
    PFM = 1,  ///< ".pfm", 32-bit floats, the depth itself
    PGM = 2,  ///< ".pgm", 16 bits as decimal text (plain form), depth times factor
};

namespace vela VELA_API {

/// The display name; "Unknown" for a value without enumerator.
String toString(const DEPTH_FORMAT& value);

}  // namespace vela

/// Writes a depth map to an image file; the format's extension is added to `name` unless it is there.
/// @ingroup utils
///
/// The host buffer is read as width * height packed floats, whatever the Mat's type and step; this is not
/// checked. 16-bit samples are round(depth * factor), saturated to 0 to 65535, as OpenCV's `convertTo` rounds
/// and saturates. PFM files hold 0 for NaN and infinite depth, and the top row first, although the format's
/// convention is bottom first: existing readers rely on it. Returns false when the file cannot be written
/// (PFM: opened), when memory is short, and for an unknown format, which also prints a line on standard
/// output. If writing a PFM file fails, the file is cut short. Exceptions of OpenCV, for example for an empty
/// map, reach the caller.
VELA_API bool saveDepthAs(vela::Mat& depth, DEPTH_FORMAT format, vela::String name, float factor);

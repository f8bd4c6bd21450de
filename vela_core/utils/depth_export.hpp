// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstdint>

/// Image formats of depth maps, with the extension of their files.
enum DEPTH_FORMAT : std::int32_t {
    PNG = 0,  ///< ".png", 16 bits, depth times factor, not compressed
    PFM = 1,  ///< ".pfm", 32-bit floats, depth as it is
    PGM = 2,  ///< ".pgm", 16 bits in decimal digits (plain form), depth times factor
};

namespace vela VELA_API {

String toString(const DEPTH_FORMAT& value);

}  // namespace vela

/// Writes a depth map to an image file; the format's extension is added to `name` unless it ends so.
///
/// The host buffer is read as width * height packed floats, whatever the Mat's type and step; this is not
/// checked. 16-bit samples are round(depth * factor), saturated to 0 to 65535, as OpenCV's `convertTo` rounds
/// and saturates. PFM files hold 0 for NaN and infinite depth, and their rows top first, although the
/// format's convention is bottom first: existing readers rely on it. False when the file cannot be written
/// (of a PFM file: opened) or memory is short, and for an unknown format, which is also said on standard
/// output. A PFM file that could not be written whole is the beginning of what it should be. OpenCV's
/// exceptions, for an empty map say, reach the caller.
VELA_API bool saveDepthAs(vela::Mat& depth, DEPTH_FORMAT format, vela::String name, float factor);

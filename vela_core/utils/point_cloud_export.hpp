// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstdint>

/// Text formats of point clouds, with the extension of their files.
/// @ingroup utils
enum POINT_CLOUD_FORMAT : std::int32_t {
    XYZ = 0,  ///< ".xyz", comment lines, then the points
    PCD = 1,  ///< ".pcd", PCD .7 ASCII, with or without colour
    PLY = 2,  ///< ".ply", PLY ASCII 1.0, with or without colour
    VTK = 3,  ///< ".vtk", VTK legacy ASCII polydata
};

namespace vela VELA_API {

/// The display name; "Unknown" for a value without enumerator.
String toString(const POINT_CLOUD_FORMAT& value);

}  // namespace vela

/// Writes the points of a cloud to a text file, one line "x y z" by "%f" for each, with its colour if `color`
/// is set and the format has colour. Points whose x is NaN or infinite are omitted; y and z are not checked.
///
/// The host buffer is read as width * height packed pixels of four floats, whatever the Mat's type and step:
/// x, y, z, and the bytes red, green, blue, unused. If the Mat owns its memory, pixels that do not lie
/// entirely inside the buffer are omitted; a reference is not checked. A Mat without a host buffer has no
/// points. The format's extension is added to `name` unless it is there.
///
/// The lines pass through a temporary file, `name` + "_tmp0.txt", because the headers state the number of
/// points. It is created afresh, so that simultaneous exports under one name do not disturb each other. It
/// remains if the output cannot be opened; if it cannot be created, the output has no points. The last point
/// has no line feed, and in VTK files "VERTICES" follows on the same line: existing readers rely on it.
///
/// Returns false when the output cannot be opened or memory is short. Write errors, for example on a full
/// disk, are not reported: the file is then cut short.
VELA_API bool savePointCloudAs(vela::Mat& cloud, POINT_CLOUD_FORMAT format, vela::String name, bool color);

/// Always false: the exporters write for little-endian hosts.
/// @ingroup utils
VELA_API bool is_big_endian();

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstdint>

/// Text formats of point clouds, with the extension of their files.
enum POINT_CLOUD_FORMAT : std::int32_t {
    XYZ = 0,  ///< ".xyz", a comment and the points
    PCD = 1,  ///< ".pcd", PCD .7 ASCII, with or without colour
    PLY = 2,  ///< ".ply", PLY ASCII 1.0, with or without colour
    VTK = 3,  ///< ".vtk", VTK legacy ASCII polydata
};

namespace vela VELA_API {

String toString(const POINT_CLOUD_FORMAT& value);

}  // namespace vela

/// Writes the points of a cloud to a text file, one line "x y z" each by "%f", and their colour if `color` is
/// set and the format has it. Points whose x is NaN or infinite are left out; y and z are written whatever
/// they are.
///
/// The host buffer is read as width * height packed pixels of four floats, whatever the Mat's type and step:
/// x, y, z, and the bytes red, green, blue, unused. Of a Mat that owns its memory, pixels which do not lie
/// wholly inside the buffer are left out; of a reference nothing is checked. A Mat without a host buffer has
/// no points. The format's extension is added to `name` unless it ends so.
///
/// The lines go through the file `name` + "_tmp0.txt", because the headers state the number of points. It is
/// made afresh, so that exports under one name at the same time do not disturb each other. It stays behind if
/// the output cannot be opened, and if it cannot be made the body is empty. The last point has no line end,
/// and in VTK files "VERTICES" follows it on its line: existing readers rely on it.
///
/// False when the output cannot be opened or memory is short. Failed writes, on a full disk say, do not show:
/// the file is then the beginning of what it should be.
VELA_API bool savePointCloudAs(vela::Mat& cloud, POINT_CLOUD_FORMAT format, vela::String name, bool color);

/// Always false: the exporters write for little-endian hosts.
VELA_API bool is_big_endian();

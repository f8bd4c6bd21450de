// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/io.hpp"

namespace vela::test {

/// A format and encoding of clouds, and whether such files store alpha.
struct CloudKind {
    const char* name;
    io::CLOUD_FILE format;
    io::ENCODING encoding;
    bool alpha;
};

constexpr CloudKind CLOUD_KINDS[] = {
    {"ascii.ply", io::CLOUD_FILE::PLY, io::ENCODING::ASCII, true},
    {"binary.ply", io::CLOUD_FILE::PLY, io::ENCODING::BINARY, true},
    {"big.ply", io::CLOUD_FILE::PLY, io::ENCODING::BINARY_BIG_ENDIAN, true},
    {"ascii.pcd", io::CLOUD_FILE::PCD, io::ENCODING::ASCII, true},
    {"binary.pcd", io::CLOUD_FILE::PCD, io::ENCODING::BINARY, true},
    {"packed.pcd", io::CLOUD_FILE::PCD, io::ENCODING::BINARY_COMPRESSED, true},
    {"ascii.vtk", io::CLOUD_FILE::VTK, io::ENCODING::ASCII, false},
    {"binary.vtk", io::CLOUD_FILE::VTK, io::ENCODING::BINARY, false},
    {"ascii.xyz", io::CLOUD_FILE::XYZ, io::ENCODING::ASCII, false}};

}  // namespace vela::test

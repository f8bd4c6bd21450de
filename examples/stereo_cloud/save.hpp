// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Output.hpp"

#include <vela_core/vela.hpp>

#include <cstdio>
#include <string>

namespace stereo {

// These exporters do not report a full disk, so each function reads back what it wrote. They throw UserError.

/// Saves the host side as cloud.ply, .pcd, .vtk or .xyz with `points` points; returns what to print about it.
std::string saveCloud(vela::Mat& cloud, POINT_CLOUD_FORMAT format, const Output& output, std::size_t points);

/// Saves one float per pixel as depth.png, .pgm or .pfm.
void saveDepth(vela::Mat& depth, DEPTH_FORMAT format, const Output& output);

/// `format` filled in as by printf.
template <class... Arguments>
std::string textOf(const char* format, Arguments... arguments) {
    char text[400];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

}  // namespace stereo

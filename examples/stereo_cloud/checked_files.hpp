// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Output.hpp"

#include <vela_core/vela.hpp>

#include <string>

namespace stereo {

// Files written by vela::io, which reports every failure. The cloud is in metres and
// RIGHT_HANDED_Y_UP_AND_Z_BACKWARD, the depth map in metres. Each function returns what to print about the
// file and throws UserError.

/// The points with depth as binary PLY, cloud_binary.ply, and all pixels as binary PCD, cloud_organised.pcd;
/// read back and compared.
std::string saveBinaryCloud(const vela::Mat& cloud, const Output& output);
std::string saveOrganisedCloud(const vela::Mat& cloud, const Output& output);

/// Millimetres as 16-bit samples in depth_metric.png, which states its unit; read back and compared.
std::string saveMetricDepth(const vela::Mat& depth, const Output& output);

/// A page for the browser, cloud.html.
std::string saveViewer(const vela::Mat& cloud, const Output& output);

/// The cloud from the front, from above and from the right in preview.png; the depth map in
/// depth_preview.png.
std::string savePreviews(const vela::Mat& cloud, const vela::Mat& depth, const Output& output);

}  // namespace stereo

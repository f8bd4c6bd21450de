// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/types/Resolution.hpp"

namespace vela VELA_API {

/// Intrinsic parameters of one camera of the pair: the pinhole model of OpenCV, u = fx x/z + cx, v = fy y/z +
/// cy with x right, y down and z forward. The centre of the top left pixel is (0, 0). All values start at 0.
struct CameraParameters {
    float fx = 0.0F;            ///< focal length along a row, in pixels
    float fy = 0.0F;            ///< focal length along a column, in pixels
    float cx = 0.0F;            ///< column of the principal point, in pixels
    float cy = 0.0F;            ///< row of the principal point, in pixels
    double distortion[5] = {};  ///< k1, k2, p1, p2, k3 of Brown and Conrady's model, as OpenCV orders them
    Resolution image_size;      ///< of the images that the other values belong to
};

/// Calibration of a stereo pair.
struct CalibrationParameters {
    CameraParameters left;   ///< of the left camera
    CameraParameters right;  ///< of the right camera
    /// Pose of the right camera in the frame of the left one, in the length unit of the calibration; the
    /// identity at first.
    Transform camera_pair_transform;

    /// Distance between the two cameras, never negative, in the length unit of the calibration: the Euclidean
    /// norm of the translation of `camera_pair_transform`.
    float getCameraBaseline() const;
};

}  // namespace vela

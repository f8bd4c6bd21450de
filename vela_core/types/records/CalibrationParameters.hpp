#pragma once

#include "vela_core/geometry/Transform.hpp"
#include "vela_core/types/Resolution.hpp"

namespace vela {

/// Intrinsic parameters of one camera of the pair, in pixels.
struct CameraParameters {
    float fx = 0.0F;
    float fy = 0.0F;
    float cx = 0.0F;
    float cy = 0.0F;
    double distortion[5] = {};  ///< k1, k2, p1, p2, k3
    Resolution image_size;
};

/// Calibration of a stereo pair.
struct CalibrationParameters {
    CameraParameters left;
    CameraParameters right;
    Transform
        camera_pair_transform;  ///< the right camera in the left one's frame, in the unit of the calibration

    /// The distance of the two cameras, never negative.
    float getCameraBaseline() const;
};

}  // namespace vela

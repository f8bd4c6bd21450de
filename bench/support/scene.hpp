// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/Resolution.hpp"

#include <cstdint>
#include <vector>

namespace vela::bench {

inline constexpr Resolution HD = {1280, 720};
/// HD as OpenCV counts.
inline constexpr int ROWS = static_cast<int>(HD.height);
inline constexpr int COLUMNS = static_cast<int>(HD.width);
/// Of the points and depths of clouds.
inline constexpr double INVALID_SHARE = 0.1;

/// What the fourth float of a point holds.
enum class Lane {
    NORMAL,       ///< a packed colour whose alpha makes it an ordinary float
    TRANSPARENT,  ///< a packed colour with alpha 0: mostly a subnormal float
    OPAQUE,       ///< a packed colour with alpha 255: any bits, NaN among them
};

/// Points of a smooth surface with noise seen by a camera, in millimetres, x, y, z and colour; NaN in the
/// given share of them. The same points each time.
std::vector<float> makeCloud(Resolution resolution, double invalidShare, Lane lane);

/// The z of such a cloud.
std::vector<float> makeDepth(Resolution resolution, double invalidShare);

/// A picture with this number of interleaved channels: smooth areas with noise, as cameras see them.
std::vector<std::uint8_t> makePicture(Resolution resolution, int channels);

}  // namespace vela::bench

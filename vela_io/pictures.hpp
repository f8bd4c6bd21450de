// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/io.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// Pictures of clouds and depth maps, made without a window, OpenGL or OpenCV.

namespace vela {
namespace io VELA_API {

/// What the colours of points show.
enum class COLOR_BY : std::int32_t {
    RGB = 0,     ///< the packed colour of `MAT_32F_C4` clouds
    DEPTH = 1,   ///< distance along the forward axis
    HEIGHT = 2,  ///< distance along the up axis
};

/// The side that a cloud is seen from, in parallel projection; forward is where the camera looked.
enum class CLOUD_VIEW : std::int32_t {
    FRONT = 0,  ///< as the camera saw it
    TOP = 1,    ///< from above, forward is up in the picture
    LEFT = 2,   ///< from the camera's left, forward is left in the picture
    RIGHT = 3,  ///< from the camera's right, forward is right in the picture
    BACK = 4,   ///< from behind the scene, towards the camera
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const COLOR_BY& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const CLOUD_VIEW& value);

/// How `preview` draws.
struct PreviewOptions {
    /// Width of a cloud's picture in pixels, at least 320. For depth maps it is the maximum:
    /// small ones are enlarged by a whole factor, large ones show every nth pixel.
    std::size_t width = 1280;
    std::size_t height = 720;                                           ///< height likewise, at least 200
    std::optional<UNIT> unit;                                           ///< of the Mat, for the labels
    COORDINATE_SYSTEM axes = COORDINATE_SYSTEM::IMAGE;                  ///< of the cloud
    std::vector<CLOUD_VIEW> views{CLOUD_VIEW::FRONT, CLOUD_VIEW::TOP};  ///< one to four, side by side
    /// By the packed colour where the Mat has four channels, otherwise by depth, if not given.
    std::optional<COLOR_BY> color;
    std::optional<float> nearest;   ///< lower end of the colour bar; the 2nd percentile, if not given
    std::optional<float> farthest;  ///< upper end of the colour bar; the 98th percentile, if not given
    Progress progress;              ///< called from time to time, if not empty
};

/// Draws a depth map (`MAT_32F_C1` or `MAT_US16_C1`) or a cloud (`MAT_32F_C3` or `C4`) as a PNG file.
///
/// A depth map is shown in colours beside a bar with ticks; pixels without a depth (0, negative, not finite)
/// are hatched. A cloud is drawn once per view at the largest scale that shows 99 % of it along each axis,
/// with axes in the cloud's own coordinates and nearer points before farther ones. `Result::points` counts
/// all pixels or points, `written` those that are drawn, `dropped` those without a depth or not finite.
Result preview(const Mat& mat, const String& path, const PreviewOptions& options = {});

/// How `writeHtml` writes.
struct HtmlOptions {
    std::optional<UNIT> unit;                           ///< of the cloud, for the labels
    COORDINATE_SYSTEM axes = COORDINATE_SYSTEM::IMAGE;  ///< of the cloud
    std::optional<COLOR_BY> color;                      ///< shown first; as in `PreviewOptions`, if not given
    std::size_t maxPoints = 2'000'000;                  ///< larger clouds are sampled at random
    String title = "Point cloud";                       ///< of the page
    Progress progress;                                  ///< called from time to time, if not empty
};

/// Writes a cloud (`MAT_32F_C3` or `C4`) as one HTML page that shows it: orbit, pan, zoom, point size, colour
/// by RGB, depth or height, axes, a scale bar, and the coordinates of a clicked point, by mouse, touch and
/// keyboard.
///
/// The page needs WebGL 2, fetches nothing and works from a local file. Coordinates are rounded to 1/65535 of
/// the extent of their axis; points that are not finite are left out. `#yaw=30&pitch=10&zoom=2&size=3`
/// appended to its URL opens it on a view (degrees, factor, pixels); `color=depth` and `pick=0.5,0.5`, a
/// place in fractions of the window size, may follow. The counts have the same meaning as in `preview`.
Result writeHtml(const Mat& cloud, const String& path, const HtmlOptions& options = {});

}  // namespace io
}  // namespace vela

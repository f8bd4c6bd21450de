// SPDX-License-Identifier: Apache-2.0
// vela.io: pictures of clouds and depth maps.
#include "PyMat.hpp"
#include "casters.hpp"
#include "enums.hpp"
#include "io_calls.hpp"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/vector.h>
#include <vela_io/pictures.hpp>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace vela::python {
namespace {

io::Result preview(const PyMat& mat, nb::handle path, std::size_t width, std::size_t height,
                   std::optional<UNIT> unit, COORDINATE_SYSTEM axes, std::vector<io::CLOUD_VIEW> views,
                   std::optional<io::COLOR_BY> color, std::optional<float> nearest,
                   std::optional<float> farthest, nb::handle progress) {
    const String file = pathOf(path);
    const std::shared_ptr<Storage> held = mat.storage;
    const Mat pixels = referenceTo(held->mat);
    PyProgress reporter(progress);
    io::PreviewOptions options;
    options.width = width;
    options.height = height;
    options.unit = unit;
    options.axes = axes;
    options.views = std::move(views);
    options.color = color;
    options.nearest = nearest;
    options.farthest = farthest;
    options.progress = reporter.function();
    return run(file, "preview", reporter, [&] { return io::preview(pixels, file, options); });
}

io::Result saveHtml(const PyMat& cloud, nb::handle path, std::optional<UNIT> unit, COORDINATE_SYSTEM axes,
                    std::optional<io::COLOR_BY> color, std::size_t maxPoints, const String& title,
                    nb::handle progress) {
    const String file = pathOf(path);
    const std::shared_ptr<Storage> held = cloud.storage;
    const Mat pixels = referenceTo(held->mat);
    PyProgress reporter(progress);
    io::HtmlOptions options;
    options.unit = unit;
    options.axes = axes;
    options.color = color;
    options.maxPoints = maxPoints;
    options.title = title;
    options.progress = reporter.function();
    return run(file, "save_html", reporter, [&] { return io::writeHtml(pixels, file, options); });
}

}  // namespace

void bindPictures(nb::module_& module) {
    bindEnum<io::COLOR_BY>(module, "COLOR_BY", "What the colours of points mean.");
    bindEnum<io::CLOUD_VIEW>(module, "CLOUD_VIEW", "Side that a cloud is seen from, in parallel projection.");
    const io::PreviewOptions drawing;
    const io::HtmlOptions page;
    module.def(
        "preview", &preview, "mat"_a, "path"_a, nb::kw_only(), "width"_a = drawing.width,
        "height"_a = drawing.height, "unit"_a = nb::none(), "axes"_a = drawing.axes,
        "views"_a = nb::make_tuple(io::CLOUD_VIEW::FRONT, io::CLOUD_VIEW::TOP), "color"_a = nb::none(),
        "nearest"_a = nb::none(), "farthest"_a = nb::none(), "progress"_a = nb::none(),
        nb::sig("def preview(mat: Mat, path: " VELA_PATH ", *, width: int = 1280, height: int = 720, "
                "unit: UNIT | None = None, axes: COORDINATE_SYSTEM = vela._core.COORDINATE_SYSTEM.IMAGE, "
                "views: collections.abc.Sequence[CLOUD_VIEW] = "
                "(vela._core.CLOUD_VIEW.FRONT, vela._core.CLOUD_VIEW.TOP), color: COLOR_BY | None = None, "
                "nearest: float | None = None, farthest: float | None = None, "
                "progress: " VELA_PROGRESS ") -> Result"),
        "Draws a depth map (H, W), float32 or uint16, or a cloud (H, W, 3|4), float32, as a PNG file.\n\n"
        "width and height are those of the picture in pixels, 320 x 200 to 16384 x 16384; a depth map may\n"
        "take less. unit and axes are those of the Mat: labels name the unit, and axes say which way is\n"
        "forward and up. A cloud is drawn once per view, one to four side by side. Points have the packed\n"
        "colour where there is one, else that of their depth; color chooses. nearest and farthest end the\n"
        "colour bar, in the unit of the Mat: the 2nd and 98th percentile unless given.\n"
        "Result.written counts the pixels or points that are drawn. OSError and vela.Error as in "
        "write_cloud.");
    module.def(
        "save_html", &saveHtml, "cloud"_a, "path"_a, nb::kw_only(), "unit"_a = nb::none(),
        "axes"_a = page.axes, "color"_a = nb::none(), "max_points"_a = page.maxPoints, "title"_a = page.title,
        "progress"_a = nb::none(),
        nb::sig(
            "def save_html(cloud: Mat, path: " VELA_PATH ", *, unit: UNIT | None = None, "
            "axes: COORDINATE_SYSTEM = vela._core.COORDINATE_SYSTEM.IMAGE, color: COLOR_BY | None = None, "
            "max_points: int = 2000000, title: str = 'Point cloud', "
            "progress: " VELA_PROGRESS ") -> Result"),
        "Writes a cloud (H, W, 3|4), float32, as one HTML page that shows it: to turn, pan and zoom.\n\n"
        "The page needs a browser with WebGL 2 and no network. unit and axes are those of the cloud; color\n"
        "is what the page shows first. Of more than max_points points as many are chosen at random; those\n"
        "that are not finite are left out. Coordinates are rounded to 1/65535 of the extent of their axis.\n"
        "OSError and vela.Error as in write_cloud.");
}

}  // namespace vela::python

// SPDX-License-Identifier: Apache-2.0
// vela.io: files of clouds, depth maps and arrays.
#include "PyMat.hpp"
#include "casters.hpp"
#include "enums.hpp"
#include "io_calls.hpp"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <vela_io/io.hpp>

#include <memory>
#include <optional>
#include <utility>

namespace vela::python {
namespace {

/// What a reader tells beside the Mat.
struct PyCloudInfo : io::CloudInfo {
    std::optional<PyMat> normals;
    String note;
};
struct PyDepthInfo : io::DepthInfo {
    String note;
};

io::Result writeCloud(const PyMat& cloud, nb::handle path, std::optional<io::CLOUD_FILE> format,
                      std::optional<io::ENCODING> encoding, bool color, bool alpha,
                      const std::optional<PyMat>& normals, bool keepGrid, std::optional<UNIT> unit,
                      std::optional<COORDINATE_SYSTEM> axes, std::optional<UNIT> targetUnit,
                      std::optional<COORDINATE_SYSTEM> targetAxes, char separator, bool sync,
                      nb::handle progress) {
    const String file = pathOf(path);
    const std::shared_ptr<Storage> held = cloud.storage;
    const Mat pixels = referenceTo(held->mat);
    const Mat normalPixels = normals ? referenceTo(normals->mat()) : Mat();
    PyProgress reporter(progress);
    io::CloudOptions options;
    options.format = format;
    options.encoding = encoding;
    options.color = color;
    options.alpha = alpha;
    options.normals = normals ? &normalPixels : nullptr;
    options.keepGrid = keepGrid;
    options.unit = unit;
    options.axes = axes;
    options.targetUnit = targetUnit;
    options.targetAxes = targetAxes;
    options.separator = separator;
    options.sync = sync;
    options.progress = reporter.function();
    return run(file, "write_cloud", reporter, [&] { return io::writeCloud(pixels, file, options); });
}

std::pair<PyMat, PyCloudInfo> readCloud(nb::handle path, std::optional<io::CLOUD_FILE> format, bool color,
                                        bool fourChannels, bool normals, std::optional<UNIT> unit,
                                        std::optional<COORDINATE_SYSTEM> axes, std::optional<UNIT> targetUnit,
                                        std::optional<COORDINATE_SYSTEM> targetAxes, std::size_t maxPoints,
                                        nb::handle progress) {
    const String file = pathOf(path);
    PyMat cloud;
    PyCloudInfo info;
    PyMat found;
    PyProgress reporter(progress);
    io::CloudReadOptions options;
    options.format = format;
    options.color = color;
    options.fourChannels = fourChannels;
    options.normals = normals ? &found.mat() : nullptr;
    options.unit = unit;
    options.axes = axes;
    options.targetUnit = targetUnit;
    options.targetAxes = targetAxes;
    options.maxPoints = maxPoints;
    options.progress = reporter.function();
    info.note = run(file, "read_cloud", reporter, [&] {
                    return io::readCloud(file, cloud.mat(), options, &info);
                }).text;
    if (found.mat().isInit) info.normals = found;
    return {cloud, info};
}

PyCloudInfo inspectCloud(nb::handle path) {
    const String file = pathOf(path);
    PyCloudInfo info;
    PyProgress silent{nb::none()};
    info.note = run(file, "inspect_cloud", silent, [&] { return io::inspectCloud(file, info); }).text;
    return info;
}

io::Result writeDepth(const PyMat& depth, nb::handle path, std::optional<io::DEPTH_FILE> format,
                      std::optional<io::ENCODING> encoding, std::optional<UNIT> unit,
                      std::optional<UNIT> targetUnit, std::optional<double> scale,
                      std::optional<double> invalid, bool allowClipping, io::ROW_ORDER rows, int compression,
                      bool sync, nb::handle progress) {
    const String file = pathOf(path);
    const std::shared_ptr<Storage> held = depth.storage;
    const Mat pixels = referenceTo(held->mat);
    PyProgress reporter(progress);
    io::DepthOptions options;
    options.format = format;
    options.encoding = encoding;
    options.unit = unit;
    options.targetUnit = targetUnit;
    options.scale = scale;
    options.invalid = invalid;
    options.allowClipping = allowClipping;
    options.rows = rows;
    options.compression = compression;
    options.sync = sync;
    options.progress = reporter.function();
    return run(file, "write_depth", reporter, [&] { return io::writeDepth(pixels, file, options); });
}

std::pair<PyMat, PyDepthInfo> readDepth(nb::handle path, std::optional<UNIT> unit,
                                        std::optional<UNIT> targetUnit, std::optional<double> scale,
                                        std::optional<double> invalid, io::ROW_ORDER rows,
                                        std::size_t maxPixels, nb::handle progress) {
    const String file = pathOf(path);
    PyMat depth;
    PyDepthInfo info;
    PyProgress reporter(progress);
    io::DepthReadOptions options;
    options.unit = unit;
    options.targetUnit = targetUnit;
    options.scale = scale;
    options.invalid = invalid;
    options.rows = rows;
    options.maxPixels = maxPixels;
    options.progress = reporter.function();
    info.note = run(file, "read_depth", reporter, [&] {
                    return io::readDepth(file, depth.mat(), options, &info);
                }).text;
    return {depth, info};
}

PyDepthInfo inspectDepth(nb::handle path) {
    const String file = pathOf(path);
    PyDepthInfo info;
    PyProgress silent{nb::none()};
    info.note = run(file, "inspect_depth", silent, [&] { return io::inspectDepth(file, info); }).text;
    return info;
}

io::Result writeNpy(const PyMat& mat, nb::handle path, bool sync, nb::handle progress) {
    const String file = pathOf(path);
    const std::shared_ptr<Storage> held = mat.storage;
    const Mat pixels = referenceTo(held->mat);
    PyProgress reporter(progress);
    const io::NpyOptions options{sync, reporter.function()};
    return run(file, "write_npy", reporter, [&] { return io::writeNpy(pixels, file, options); });
}

PyMat readNpy(nb::handle path, nb::handle progress) {
    const String file = pathOf(path);
    PyMat mat;
    PyProgress reporter(progress);
    run(file, "read_npy", reporter, [&] { return io::readNpy(file, mat.mat(), reporter.function()); });
    return mat;
}

/// "Name(field=value, …)" of every readable field, as dataclasses print.
nb::object fieldsText(nb::handle self) {
    nb::list parts;
    for (const nb::handle name : self.type().attr("__match_args__")) {
        parts.append(nb::str("{}={!r}").format(name, nb::getattr(self, name)));
    }
    return nb::str("{}({})").format(self.type().attr("__name__"), nb::str(", ").attr("join")(parts));
}

template <class Type, class... Names>
void finish(nb::class_<Type>& type, Names... names) {
    type.attr("__match_args__") = nb::make_tuple(names...);
    type.def("__repr__", &fieldsText, nb::sig("def __repr__(self) -> str"));
}

void bindResults(nb::module_& module) {
    nb::class_<io::Result> result(module, "Result", "What a writer did.");
    result.def_ro("points", &io::Result::points, "Points or pixels given.")
        .def_ro("written", &io::Result::written, "Points or pixels in the file.")
        .def_ro("dropped", &io::Result::dropped,
                "Points left out because x, y or z is not finite; pixels without a depth.")
        .def_ro("clipped", &io::Result::clipped,
                "Pixels whose finite depth has no sample of its own in the file.")
        .def_ro("bytes", &io::Result::bytes, "Of the file.");
    finish(result, "points", "written", "dropped", "clipped", "bytes");

    nb::class_<PyCloudInfo> cloud(module, "CloudInfo", "What a cloud file says of itself.");
    cloud.def_ro("format", &PyCloudInfo::format)
        .def_ro("encoding", &PyCloudInfo::encoding)
        .def_ro("width", &PyCloudInfo::width, "Of the grid, or the number of points.")
        .def_ro("height", &PyCloudInfo::height, "Of the grid, or 1.")
        .def_ro("points", &PyCloudInfo::points)
        .def_ro("invalid", &PyCloudInfo::invalid,
                "Points of which x, y or z is not finite; counted by read_cloud.")
        .def_ro("has_color", &PyCloudInfo::hasColor)
        .def_ro("has_alpha", &PyCloudInfo::hasAlpha)
        .def_ro("has_normals", &PyCloudInfo::hasNormals)
        .def_ro("unit", &PyCloudInfo::unit, "Of the points in the Mat, or in the file for inspect_cloud.")
        .def_ro("axes", &PyCloudInfo::axes, "Likewise.")
        .def_ro("separator", &PyCloudInfo::separator, "Of XYZ files.")
        .def_ro("normals", &PyCloudInfo::normals, "MAT_32F_C4, if they were asked for and are there.")
        .def_ro("note", &PyCloudInfo::note, "What of the file was left out.");
    finish(cloud, "format", "encoding", "width", "height", "points", "invalid", "has_color", "has_alpha",
           "has_normals", "unit", "axes", "separator", "normals", "note");

    nb::class_<PyDepthInfo> depth(module, "DepthInfo", "What a depth file says of itself.");
    depth.def_ro("format", &PyDepthInfo::format)
        .def_ro("encoding", &PyDepthInfo::encoding)
        .def_ro("width", &PyDepthInfo::width)
        .def_ro("height", &PyDepthInfo::height)
        .def_ro("sample_bits", &PyDepthInfo::sampleBits, "8 or 16 for integers, 32 for floats.")
        .def_ro("with_depth", &PyDepthInfo::withDepth, "Pixels with a depth; counted by read_depth.")
        .def_ro("unit", &PyDepthInfo::unit, "Of the depths in the Mat, or in the file for inspect_depth.")
        .def_ro("scale", &PyDepthInfo::scale, "Samples per unit of depth in the file.")
        .def_ro("invalid", &PyDepthInfo::invalid, "What stands for no depth.")
        .def_ro("rows", &PyDepthInfo::rows, "As it was taken.")
        .def_ro("note", &PyDepthInfo::note, "What of the file was left out.");
    finish(depth, "format", "encoding", "width", "height", "sample_bits", "with_depth", "unit", "scale",
           "invalid", "rows", "note");
}

constexpr std::size_t MOST = 0x7fffffff;

void bindClouds(nb::module_& module) {
    module.def(
        "write_cloud", &writeCloud, "cloud"_a, "path"_a, nb::kw_only(), "format"_a = nb::none(),
        "encoding"_a = nb::none(), "color"_a = true, "alpha"_a = false, "normals"_a = nb::none(),
        "keep_grid"_a = false, "unit"_a = nb::none(), "axes"_a = nb::none(), "target_unit"_a = nb::none(),
        "target_axes"_a = nb::none(), "separator"_a = ' ', "sync"_a = false, "progress"_a = nb::none(),
        nb::sig("def write_cloud(cloud: Mat, path: " VELA_PATH ", *, format: CLOUD_FILE | None = None, "
                "encoding: ENCODING | None = None, color: bool = True, alpha: bool = False, "
                "normals: Mat | None = None, keep_grid: bool = False, unit: UNIT | None = None, "
                "axes: COORDINATE_SYSTEM | None = None, target_unit: UNIT | None = None, "
                "target_axes: COORDINATE_SYSTEM | None = None, separator: str = ' ', sync: bool = False, "
                "progress: " VELA_PROGRESS ") -> Result"),
        "Writes the points of a cloud, MAT_32F_C3 or MAT_32F_C4, to a PLY, PCD, VTK or XYZ file.\n\n"
        "The format is that of the path's extension unless it is given; the encoding is binary where the\n"
        "format has it. Points that are not finite are left out unless keep_grid is set, which also keeps\n"
        "width and height. unit and axes are stated in the file; target_unit and target_axes convert on\n"
        "the way and leave the Mat as it is. sync waits for the disk. progress(done, total) is called from\n"
        "time to time, in bytes; False from it ends the work.\n"
        "The path holds the old file or the whole new one. OSError if the system fails, vela.Error "
        "otherwise.");
    module.def(
        "read_cloud", &readCloud, "path"_a, nb::kw_only(), "format"_a = nb::none(), "color"_a = true,
        "four_channels"_a = false, "normals"_a = false, "unit"_a = nb::none(), "axes"_a = nb::none(),
        "target_unit"_a = nb::none(), "target_axes"_a = nb::none(), "max_points"_a = MOST,
        "progress"_a = nb::none(),
        nb::sig("def read_cloud(path: " VELA_PATH
                ", *, format: CLOUD_FILE | None = None, color: bool = True, "
                "four_channels: bool = False, normals: bool = False, unit: UNIT | None = None, "
                "axes: COORDINATE_SYSTEM | None = None, target_unit: UNIT | None = None, "
                "target_axes: COORDINATE_SYSTEM | None = None, max_points: int = 2147483647, "
                "progress: " VELA_PROGRESS ") -> tuple[Mat, CloudInfo]"),
        "Reads a cloud: MAT_32F_C4 with the colours of the file, MAT_32F_C3 where it has none.\n\n"
        "unit and axes stand in for what the file does not state; target_unit and target_axes convert.\n"
        "four_channels gives MAT_32F_C4 in any case. normals=True puts those of the file into the info.\n"
        "OSError if the system fails, vela.Error with file and line for a faulty file.");
    module.def("inspect_cloud", &inspectCloud, "path"_a,
               nb::sig("def inspect_cloud(path: " VELA_PATH ") -> CloudInfo"),
               "What the header of a cloud file states; of XYZ files all lines are read, to count them.");
}

void bindDepthMaps(nb::module_& module) {
    module.def(
        "write_depth", &writeDepth, "depth"_a, "path"_a, nb::kw_only(), "format"_a = nb::none(),
        "encoding"_a = nb::none(), "unit"_a = nb::none(), "target_unit"_a = nb::none(),
        "scale"_a = nb::none(), "invalid"_a = nb::none(), "allow_clipping"_a = false,
        "rows"_a = io::ROW_ORDER::BOTTOM_FIRST, "compression"_a = -1, "sync"_a = false,
        "progress"_a = nb::none(),
        nb::sig(
            "def write_depth(depth: Mat, path: " VELA_PATH ", *, format: DEPTH_FILE | None = None, "
            "encoding: ENCODING | None = None, unit: UNIT | None = None, target_unit: UNIT | None = None, "
            "scale: float | None = None, invalid: float | None = None, allow_clipping: bool = False, "
            "rows: ROW_ORDER = vela._core.ROW_ORDER.BOTTOM_FIRST, compression: int = -1, sync: bool = False, "
            "progress: " VELA_PROGRESS ") -> Result"),
        "Writes a depth map, MAT_32F_C1 or MAT_US16_C1, to a PNG, PGM, PFM or NPY file.\n\n"
        "A sample of PNG and PGM is the depth in target_unit times scale, rounded; PFM and NPY hold floats.\n"
        "Without scale a sample is a millimetre where the unit is known, otherwise one unit.\n"
        "invalid stands in the file for pixels without a depth. Depths that have no sample make the call\n"
        "fail unless allow_clipping is set. rows is for PFM. OSError and vela.Error as of write_cloud.");
    module.def(
        "read_depth", &readDepth, "path"_a, nb::kw_only(), "unit"_a = nb::none(),
        "target_unit"_a = nb::none(), "scale"_a = nb::none(), "invalid"_a = nb::none(),
        "rows"_a = io::ROW_ORDER::BOTTOM_FIRST, "max_pixels"_a = MOST, "progress"_a = nb::none(),
        nb::sig("def read_depth(path: " VELA_PATH
                ", *, unit: UNIT | None = None, target_unit: UNIT | None = None, "
                "scale: float | None = None, invalid: float | None = None, "
                "rows: ROW_ORDER = vela._core.ROW_ORDER.BOTTOM_FIRST, max_pixels: int = 2147483647, "
                "progress: " VELA_PROGRESS ") -> tuple[Mat, DepthInfo]"),
        "Reads a depth map into MAT_32F_C1: samples divided by the scale, NaN where there is no depth.\n\n"
        "What the file states about itself takes precedence over unit, scale and invalid.");
    module.def("inspect_depth", &inspectDepth, "path"_a,
               nb::sig("def inspect_depth(path: " VELA_PATH ") -> DepthInfo"),
               "What the header of a depth file states.");
}

void bindArrays(nb::module_& module) {
    module.def("write_npy", &writeNpy, "mat"_a, "path"_a, nb::kw_only(), "sync"_a = false,
               "progress"_a = nb::none(),
               nb::sig("def write_npy(mat: Mat, path: " VELA_PATH
                       ", *, sync: bool = False, progress: " VELA_PROGRESS ") -> Result"),
               "Writes a Mat of any type as numpy.save would write m.numpy(), whole or not at all.");
    module.def("read_npy", &readNpy, "path"_a, nb::kw_only(), "progress"_a = nb::none(),
               nb::sig("def read_npy(path: " VELA_PATH ", *, progress: " VELA_PROGRESS ") -> Mat"),
               "Reads an array whose elements and channels are those of a MAT_TYPE; vela.Error for others.");
    module.def(
        "kind_of", [](nb::handle path) { return io::kindOf(pathOf(path)); }, "path"_a,
        nb::sig("def kind_of(path: " VELA_PATH ") -> FILE_KIND"),
        "What a file holds, by its first bytes; UNKNOWN also if it cannot be read.");
}

}  // namespace

void bindIo(nb::module_& module) {
    bindEnum<io::CLOUD_FILE>(module, "CLOUD_FILE", "Kind of point-cloud file.");
    bindEnum<io::DEPTH_FILE>(module, "DEPTH_FILE", "Kind of depth-map file.");
    bindEnum<io::ENCODING>(module, "ENCODING", "How numbers stand in a file.");
    bindEnum<io::ROW_ORDER>(module, "ROW_ORDER", "Which row of an image comes first in a file.");
    bindEnum<io::FILE_KIND>(module, "FILE_KIND", "What a file holds.");
    bindResults(module);
    bindClouds(module);
    bindDepthMaps(module);
    bindArrays(module);
}

}  // namespace vela::python

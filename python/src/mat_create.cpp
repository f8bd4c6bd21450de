// SPDX-License-Identifier: Apache-2.0
// How Mats are made: from a size, from arrays, from points.
#include "PyMat.hpp"

#include <nanobind/stl/optional.h>

#include <cstring>
#include <optional>
#include <string>

namespace vela::python {
namespace {

constexpr MAT_TYPE LAST_TYPE = MAT_TYPE::MAT_8S_C4;

std::size_t channelsOf(const nb::ndarray<>& array) {
    return array.ndim() == 2 ? 1 : array.shape(2);
}

MAT_TYPE typeFor(const nb::ndarray<>& array) {
    for (int i = 0; i <= static_cast<int>(LAST_TYPE); ++i) {
        const auto type = static_cast<MAT_TYPE>(i);
        if (elementOf(type) == array.dtype() && getChannels(type) == channelsOf(array)) return type;
    }
    throw nb::type_error(
        "no MAT_TYPE has this dtype and number of channels: float32 and uint8 have 1 to 4, uint16 has 1, "
        "int8 has 4");
}

/// Why rows cannot be taken as they lie, or null if they can.
const char* whyNotShared(const nb::ndarray<>& array) {
    const auto channels = static_cast<std::int64_t>(channelsOf(array));
    const auto rowElements = static_cast<std::int64_t>(array.shape(1)) * channels;
    if (array.ndim() == 3 && channels > 1 && array.stride(2) != 1) return "channels are not adjacent";
    if (array.shape(1) > 1 && array.stride(1) != channels) return "the pixels of a row are not adjacent";
    if (array.shape(0) > 1 && array.stride(0) < rowElements) return "rows overlap or run backwards";
    return nullptr;
}

PyMat sharing(const nb::ndarray<>& array, MAT_TYPE type) {
    PyMat m;
    const std::size_t packedStep = array.shape(1) * getPixelBytes(type);
    const std::size_t step =
        array.shape(0) == 1 ? packedStep : static_cast<std::size_t>(array.stride(0)) * elementBytes(type);
    const Mat pixels(array.shape(1), array.shape(0), type, static_cast<unsigned char*>(array.data()), step,
                     MEM::CPU);
    m.mat().ref(pixels);
    m.storage->source = array;
    return m;
}

/// Copies `count` elements that lie `stride` elements apart; the target is packed.
unsigned char* gather(unsigned char* to, const unsigned char* from, std::int64_t stride, std::size_t count,
                      std::size_t bytes) {
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(to, from + static_cast<std::int64_t>(i) * stride * static_cast<std::int64_t>(bytes),
                    bytes);
        to += bytes;
    }
    return to;
}

PyMat copying(const nb::ndarray<>& array, MAT_TYPE type) {
    PyMat m = allocated(array.shape(1), array.shape(0), type, MEM::CPU);
    const std::size_t bytes = elementBytes(type);
    const std::size_t channels = channelsOf(array);
    const bool pixelsWhole = channels == 1 || array.stride(2) == 1;
    const bool rowsWhole = pixelsWhole && array.stride(1) == static_cast<std::int64_t>(channels);
    const auto at = [&](std::size_t y, std::size_t x) {
        return static_cast<const unsigned char*>(array.data()) +
               (static_cast<std::int64_t>(y) * array.stride(0) +
                static_cast<std::int64_t>(x) * array.stride(1)) *
                   static_cast<std::int64_t>(bytes);
    };
    const nb::gil_scoped_release released;  // `array` is held by the caller
    unsigned char* to = m.mat().ptrCPU;
    for (std::size_t y = 0; y < array.shape(0); ++y) {
        if (rowsWhole) {
            const std::size_t rowBytes = array.shape(1) * channels * bytes;
            if (rowBytes != 0) std::memcpy(to, at(y, 0), rowBytes);
            to += rowBytes;
            continue;
        }
        for (std::size_t x = 0; x < array.shape(1); ++x) {
            to = gather(to, at(y, x), channels == 1 ? 1 : array.stride(2), channels, bytes);
        }
    }
    return m;
}

PyMat fromArray(nb::handle object, std::optional<bool> copy) {
    nb::ndarray<> array;
    const bool writable = nb::try_cast(object, array, false);
    if (!writable) {
        nb::ndarray<nb::ro> readOnly;
        if (!nb::try_cast(object, readOnly, false)) {
            throw nb::type_error(
                "an object with __dlpack__ or the buffer protocol is needed, such as an ndarray");
        }
        array = nb::ndarray<>(readOnly);
    }
    if (array.device_type() != nb::device::cpu::value)
        throw nb::type_error("the array is not in host memory");
    if (array.ndim() != 2 && array.ndim() != 3) {
        throw nb::value_error("an array of shape (height, width) or (height, width, channels) is needed");
    }
    const MAT_TYPE type = typeFor(array);
    const char* const reason = writable ? whyNotShared(array) : "the array is read-only";
    if (reason != nullptr && copy == false) {
        throw nb::value_error((std::string("cannot share the array: ") + reason).c_str());
    }
    // Without pixels there is nothing to share, and nothing to copy.
    if (array.size() == 0) return allocated(array.shape(1), array.shape(0), type, MEM::CPU);
    return reason == nullptr && !copy.value_or(false) ? sharing(array, type) : copying(array, type);
}

using Points = nb::ndarray<const float, nb::c_contig, nb::device::cpu>;
using Colors = nb::ndarray<const std::uint8_t, nb::c_contig, nb::device::cpu>;

PyMat fromPoints(const Points& points, const std::optional<Colors>& colors) {
    const std::size_t dimensions = points.ndim();
    const std::size_t perPoint = dimensions == 0 ? 0 : points.shape(dimensions - 1);
    if ((dimensions != 2 && dimensions != 3) || (perPoint != 3 && perPoint != 4)) {
        throw nb::value_error("points must have the shape (N, 3), (N, 4), (H, W, 3) or (H, W, 4)");
    }
    const std::size_t width = points.shape(dimensions - 2);
    const std::size_t height = dimensions == 3 ? points.shape(0) : 1;
    const std::size_t perColor =
        colors && colors->ndim() == dimensions ? colors->shape(dimensions - 1) : std::size_t{0};
    if (colors && ((perColor != 3 && perColor != 4) || colors->size() / perColor != width * height ||
                   colors->shape(dimensions - 2) != width)) {
        throw nb::value_error("colors must have the shape of points, with 3 or 4 channels");
    }
    PyMat m = allocated(width, height, MAT_TYPE::MAT_32F_C4, MEM::CPU);
    const nb::gil_scoped_release released;
    unsigned char* to = m.mat().ptrCPU;
    for (std::size_t i = 0; i < width * height; ++i, to += 4 * sizeof(float)) {
        float packed = 0.0F;
        if (perPoint == 4) std::memcpy(&packed, points.data() + 4 * i + 3, sizeof packed);
        std::memcpy(to, points.data() + perPoint * i, 3 * sizeof(float));
        std::memcpy(to + 3 * sizeof(float), &packed, sizeof packed);
        if (!colors) continue;
        to[15] = 255;
        std::memcpy(to + 3 * sizeof(float), colors->data() + perColor * i, perColor);
    }
    return m;
}

}  // namespace

void defineCreation(nb::class_<PyMat>& mat) {
    mat.def(nb::init<>(), "An empty Mat.")
        .def(
            "__init__",
            [](PyMat* self, std::size_t width, std::size_t height, MAT_TYPE type, MEM mem) {
                new (self) PyMat(allocated(width, height, type, mem));
            },
            "width"_a, "height"_a, "type"_a.noconvert(), "mem"_a.noconvert() = MEM::CPU,
            nb::sig("def __init__(self, width: int, height: int, type: MAT_TYPE, mem: MEM = "
                    "vela._core.MEM.CPU) -> None"),
            "A Mat that owns uninitialised pixels, packed on the host.\n\n"
            "MEM.GPU, MEM.BOTH and MEM.MANAGED raise vela.Error where there is no GPU.")
        .def_static(
            "from_array", &fromArray, "array"_a, nb::kw_only(), "copy"_a = nb::none(),
            nb::sig("def from_array(array: ArrayLike, *, copy: bool | None = None) -> Mat"),
            "A Mat of the pixels of an array of shape (height, width) or (height, width, channels).\n\n"
            "float32 and uint8 with 1 to 4 channels, uint16 with 1, int8 with 4; anything with __dlpack__ "
            "or\n"
            "the buffer protocol, in host memory. The Mat shares the array's memory and keeps the array "
            "alive;\n"
            "rows may be apart, as in a part of a larger array. What cannot be shared is copied: read-only\n"
            "arrays, channels or pixels that are not adjacent (array[..., ::-1], array[:, ::2]), rows that "
            "run\n"
            "backwards. copy=True always copies; copy=False raises ValueError where only a copy would do.\n"
            "TypeError for another dtype and number of channels, ValueError for another number of "
            "dimensions.")
        .def_static(
            "from_points", &fromPoints, "points"_a, "colors"_a = nb::none(),
            nb::sig("def from_points(points: ArrayLike, colors: ArrayLike | None = "
                    "None) -> Mat"),
            "A cloud, MAT_32F_C4, copied from points of shape (N, 3), (N, 4), (H, W, 3) or (H, W, 4), "
            "float32.\n\n"
            "(N, ...) becomes one row of N points. colors, uint8 with 3 or 4 channels in the order red, "
            "green,\n"
            "blue, alpha, are packed into the fourth float, alpha 255 if there is none; without colors the\n"
            "fourth float is that of points, or 0. ValueError for other shapes.");
}

}  // namespace vela::python

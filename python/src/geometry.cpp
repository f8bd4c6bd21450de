// SPDX-License-Identifier: Apache-2.0
#include "casters.hpp"

#include <nanobind/ndarray.h>
#include <nanobind/operators.h>
#include <nanobind/stl/string.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace vela::python {
namespace {

using Numbers = nb::ndarray<const float, nb::c_contig, nb::device::cpu>;

/// Arrays, and whatever numpy makes arrays of, as packed floats. Of anything else another overload may know.
Numbers numbersOf(nb::handle object) {
    Numbers numbers;
    if (nb::try_cast(object, numbers)) return numbers;
    try {
        return nb::cast<Numbers>(nb::module_::import_("numpy").attr("asarray")(object, "float32"));
    } catch (const std::exception&) {
        throw nb::next_overload();
    }
}

template <std::size_t rows>
Numbers squareOf(nb::handle object) {
    Numbers numbers = numbersOf(object);
    if (numbers.ndim() == 2 && numbers.shape(0) == rows && numbers.shape(1) == rows) return numbers;
    throw nb::next_overload();
}

/// A writable array over numbers inside `self`, which it keeps alive.
nb::object viewOf(float* numbers, std::initializer_list<std::size_t> shape, nb::handle self) {
    return nb::cast(nb::ndarray<nb::numpy, float>(numbers, shape, self), nb::rv_policy::reference);
}

nb::object toArray(nb::handle self, nb::handle dtype, nb::handle copy) {
    const nb::object array = self.attr("matrix");
    if (!dtype.is_none() && !array.attr("dtype").equal(dtype)) {
        if (copy.is(nb::handle(Py_False))) throw nb::value_error("another dtype needs a copy");
        return array.attr("astype")(dtype);
    }
    return copy.is(nb::handle(Py_True)) ? array.attr("copy")() : array;
}

/// R p + t for every point; `stride` is the length of a row of the matrix, and of t there is only in 4 x 4.
nb::object apply(const float* matrix, std::size_t stride, const Numbers& points) {
    const std::size_t dimensions = points.ndim();
    if (dimensions == 0 || points.shape(dimensions - 1) != 3) {
        throw nb::value_error("points must have the shape (..., 3)");
    }
    auto result = std::make_unique<float[]>(points.size());
    for (std::size_t i = 0; i < points.size(); i += 3) {
        const float* const p = points.data() + i;
        for (std::size_t row = 0; row < 3; ++row) {
            const float* const r = matrix + row * stride;
            result[i + row] = r[0] * p[0] + r[1] * p[1] + r[2] * p[2] + (stride == 4 ? r[3] : 0.0F);
        }
    }
    std::vector<std::size_t> shape(dimensions);
    for (std::size_t i = 0; i < dimensions; ++i)
        shape[i] = points.shape(i);
    nb::capsule owner(result.get(), [](void* held) noexcept { delete[] static_cast<float*>(held); });
    return nb::cast(nb::ndarray<nb::numpy, float>(result.release(), dimensions, shape.data(), owner));
}

// Tuples are taken for translations.
#define VELA_TRANSLATION "Translation | tuple[float, float, float]"

constexpr const char* EULER_DOC =
    "Angles about x, y and z with R = Ry Rz Rx, in radians, or in degrees if radian is False.";

std::string textOf(nb::handle object) {
    return nb::cast<std::string>(nb::str(object));
}

Vector3<float> xyzOf(const Translation& t) {
    return {t.tx, t.ty, t.tz};
}

Matrix4f inverted(const Matrix4f& matrix) {
    Matrix4f result(matrix);
    check(result.inverse(), "inverse");
    return result;
}

std::string matrixText(nb::handle self) {
    return textOf(self.type().attr("__name__")) + "(" + textOf(self.attr("matrix").attr("tolist")()) + ")";
}

/// What all matrices share; Matrix is the class itself, whose products and inverses are of its kind.
template <std::size_t rows, class Matrix, class... Base>
nb::class_<Matrix, Base...>& defineMatrix(nb::class_<Matrix, Base...>& type) {
    using Plain = std::conditional_t<rows == 3, Matrix3f, Matrix4f>;
    type.def(nb::init<>(), "The identity.")
        .def(
            "__init__",
            [](Matrix* self, nb::handle values) { new (self) Matrix(Plain(squareOf<rows>(values).data())); },
            "values"_a, nb::sig("def __init__(self, values: numpy.typing.ArrayLike) -> None"),
            "Copies a square array of numbers, row by row.")
        .def(
            "__matmul__", [](const Matrix& a, const Matrix& b) { return Matrix(a * b); }, nb::is_operator());
    if constexpr (!std::is_same_v<Matrix, Plain>) {
        type.def(
            "__matmul__", [](const Matrix& a, const Plain& b) { return Plain(a * b); }, nb::is_operator());
    }
    type.def(
            "__matmul__",
            [](const Matrix& a, nb::handle points) { return apply(a.m, rows, numbersOf(points)); },
            nb::is_operator(),
            nb::sig("def __matmul__(self, points: numpy.typing.ArrayLike) -> "
                    "numpy.typing.NDArray[numpy.float32]"),
            "The points, of shape (..., 3), rotated and moved: a new array.")
        .def(
            "transpose", [](const Matrix& a) { return Matrix(Matrix::transpose(a)); },
            "The transposed matrix.")
        .def(
            "__eq__", [](const Matrix& a, const Matrix& b) { return a == b; }, nb::is_operator(),
            nb::sig("def __eq__(self, arg: object, /) -> bool"))
        .def("__copy__", [](const Matrix& a) { return Matrix(a); })
        .def(
            "__deepcopy__", [](const Matrix& a, nb::handle) { return Matrix(a); },
            nb::sig("def __deepcopy__(self, memo: typing.Any) -> typing.Self"))
        .def(
            "__reduce__",
            [](nb::handle self) {
                return nb::make_tuple(self.type(), nb::make_tuple(self.attr("matrix").attr("tolist")()));
            },
            nb::sig("def __reduce__(self) -> tuple[typing.Any, ...]"))
        .def("__repr__", &matrixText);
    type.attr("__hash__") = nb::none();
    return type;
}

/// The array over the numbers; of the classes that derive from others it is inherited.
template <std::size_t rows, class Matrix, class... Base>
nb::class_<Matrix, Base...>& defineArray(nb::class_<Matrix, Base...>& type) {
    return type
        .def_prop_ro(
            "matrix",
            [](nb::handle self) {
                return viewOf(nb::cast<Matrix&>(self).m, {rows, rows}, self);
            },
            nb::sig("def matrix(self) -> numpy.typing.NDArray[numpy.float32]"),
            "The elements, row by row: a writable view that keeps this object alive.")
        .def("__array__", &toArray, "dtype"_a = nb::none(), "copy"_a = nb::none(),
             nb::sig("def __array__(self, dtype: typing.Any = None, copy: bool | None = None) -> "
                     "numpy.typing.NDArray[typing.Any]"))
        .def_prop_rw(
            "label", [](const Matrix& a) { return a.label; },
            [](Matrix& a, const String& label) { a.label = label; },
            "A label for the user; copies have none.");
}

void bindMatrices(nb::module_& module) {
    nb::class_<Matrix3f> small(module, "Matrix3f", "3 x 3 floats; the identity by default.");
    defineMatrix<3>(defineArray<3>(small))
        .def(
            "inverse", [](const Matrix3f& a) { return Matrix3f::inverse(a); },
            "The inverse; infinities and NaN for a singular matrix.");
    nb::class_<Matrix4f> large(
        module, "Matrix4f",
        "4 x 4 floats; the identity by default. The last row is (0, 0, 0, 1) in all rigid motions.");
    defineMatrix<4>(defineArray<4>(large))
        .def(
            "inverse", [](const Matrix4f& a) { return inverted(a); },
            "The inverse of a matrix whose last row is (0, 0, 0, 1). vela.Error for a singular one.");
}

void bindVectors(nb::module_& module) {
    nb::class_<Translation>(module, "Translation", "A position or direction; it does not change.")
        .def(nb::init<>(), "Zero.")
        .def(nb::init<float, float, float>(), "x"_a, "y"_a, "z"_a)
        .def(nb::init<const Vector3<float>&>(), "xyz"_a,
             nb::sig("def __init__(self, xyz: collections.abc.Sequence[float]) -> None"))
        .def_ro("x", &Translation::tx)
        .def_ro("y", &Translation::ty)
        .def_ro("z", &Translation::tz)
        .def_prop_ro("xyz", &xyzOf)
        .def(
            "normalize", [](const Translation& t) { return Translation::normalize(t); },
            "Divided by its length; zero stays zero.")
        .def(
            "rotated", [](const Translation& t, const Orientation& q) { return t * q; }, "orientation"_a)
        .def(
            "__eq__", [](const Translation& a, const Translation& b) { return xyzOf(a) == xyzOf(b); },
            nb::is_operator(), nb::sig("def __eq__(self, arg: object, /) -> bool"))
        .def(
            "__reduce__", [](nb::handle self) { return nb::make_tuple(self.type(), self.attr("xyz")); },
            nb::sig("def __reduce__(self) -> tuple[typing.Any, ...]"))
        .def("__repr__", [](nb::handle self) { return "Translation" + textOf(self.attr("xyz")); })
        .attr("__hash__") = nb::none();
    nb::implicitly_convertible<nb::tuple, Translation>();

    nb::class_<Orientation>(module, "Orientation",
                            "A rotation as an immutable quaternion; the identity by default.\n\n"
                            "Libraries differ in the order of the components, so it is always named.")
        .def(nb::init<>(), "No rotation.")
        .def_static(
            "from_xyzw", [](const Vector4<float>& v) { return Orientation(v); }, "xyzw"_a)
        .def_static(
            "from_wxyz",
            [](const Vector4<float>& v) {
                return Orientation({v.y, v.z, v.w, v.x});
            },
            "wxyz"_a)
        .def_static(
            "from_rotation", [](const Rotation& r) { return Orientation(r); }, "rotation"_a)
        .def_static(
            "between", [](const Translation& a, const Translation& b) { return Orientation(a, b); },
            "source"_a, "target"_a,
            nb::sig("def between(source: " VELA_TRANSLATION ", target: " VELA_TRANSLATION ") -> Orientation"),
            "The rotation that turns one direction into another; close to zero for opposite ones.")
        .def_prop_ro("xyzw", [](const Orientation& q) { return Vector4<float>(q.ox, q.oy, q.oz, q.ow); })
        .def_prop_ro("wxyz", [](const Orientation& q) { return Vector4<float>(q.ow, q.ox, q.oy, q.oz); })
        .def_prop_ro("rotation", &Orientation::getRotation,
                     "The rotation matrix of this quaternion divided by its norm.")
        .def(
            "normalise",
            [](Orientation q) {
                q.normalise();
                return q;
            },
            "Divided by its norm; zero stays zero.")
        .def(
            "__matmul__", [](const Orientation& a, const Orientation& b) { return a * b; }, nb::is_operator(),
            "The rotation by the right one, then by this.")
        .def(
            "__eq__",
            [](const Orientation& a, const Orientation& b) {
                return a.ox == b.ox && a.oy == b.oy && a.oz == b.oz && a.ow == b.ow;
            },
            nb::is_operator(), nb::sig("def __eq__(self, arg: object, /) -> bool"))
        .def(
            "__reduce__",
            [](nb::handle self) {
                return nb::make_tuple(nb::module_::import_("vela._restore").attr("restore_orientation"),
                                      self.attr("xyzw"));
            },
            nb::sig("def __reduce__(self) -> tuple[typing.Any, ...]"))
        .def("__repr__",
             [](nb::handle self) { return "Orientation.from_xyzw(" + textOf(self.attr("xyzw")) + ")"; })
        .attr("__hash__") = nb::none();
}

void bindRotation(nb::module_& module) {
    nb::class_<Rotation, Matrix3f> type(module, "Rotation",
                                        "A rotation matrix, 3 x 3; the identity by default.");
    defineMatrix<3>(type)
        .def(
            "__init__",
            [](Rotation* self, float angle, const Translation& axis) { new (self) Rotation(angle, axis); },
            "angle"_a, "axis"_a,
            nb::sig("def __init__(self, angle: float, axis: " VELA_TRANSLATION ") -> None"),
            "The rotation by an angle in radians about an axis of any length.")
        .def(nb::init<const Orientation&>(), "orientation"_a)
        .def(nb::init<const Matrix3f&>(), "matrix"_a)
        .def("inverse", [](const Rotation& r) { return Rotation(Matrix3f::inverse(r)); })
        .def_prop_rw("orientation", &Rotation::getOrientation, &Rotation::setOrientation)
        .def("euler_angles", &Rotation::getEulerAngles, "radian"_a = true, EULER_DOC)
        .def("set_euler_angles", &Rotation::setEulerAngles, "angles"_a, "radian"_a = true);
}

void bindTransform(nb::module_& module) {
    nb::class_<Transform, Matrix4f> type(
        module, "Transform",
        "A rigid motion, 4 x 4: rotation and translation; the identity by default.\n\n"
        "transform @ points moves an array of points of shape (..., 3).");
    defineMatrix<4>(type)
        .def(nb::init<const Rotation&, const Translation&>(), "rotation"_a, "translation"_a,
             nb::sig("def __init__(self, rotation: Rotation, translation: " VELA_TRANSLATION ") -> None"))
        .def(nb::init<const Orientation&, const Translation&>(), "orientation"_a, "translation"_a,
             nb::sig("def __init__(self, orientation: Orientation, translation: " VELA_TRANSLATION
                     ") -> None"))
        .def(nb::init<const Matrix4f&>(), "matrix"_a)
        .def(
            "inverse", [](const Transform& t) { return Transform(inverted(t)); },
            "The inverse; vela.Error for a singular matrix.")
        .def_prop_rw("translation", &Transform::getTranslation, &Transform::setTranslation,
                     nb::for_setter(nb::sig("def translation(self, value: " VELA_TRANSLATION ", /) -> None")))
        .def_prop_rw("rotation", &Transform::getRotation, &Transform::setRotation)
        .def_prop_rw("orientation", &Transform::getOrientation, &Transform::setOrientation)
        .def("euler_angles", &Transform::getEulerAngles, "radian"_a = true, EULER_DOC)
        .def("set_euler_angles", &Transform::setEulerAngles, "angles"_a, "radian"_a = true)
        .def(
            "convert_unit",
            [](Transform& t, UNIT from, UNIT to) { check(convertUnit(t, from, to), "convert_unit"); },
            "source"_a.noconvert(), "target"_a.noconvert(), "Scales the translation, in place.")
        .def(
            "convert_coordinate_system",
            [](Transform& t, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
                check(convertCoordinateSystem(t, from, to), "convert_coordinate_system");
            },
            "source"_a.noconvert(), "target"_a.noconvert(),
            "Expresses rotation and translation in another axis convention, in place.")
        .def(
            "remove_yaw",
            [](Transform& t, COORDINATE_SYSTEM system) { check(removeYaw(t, system), "remove_yaw"); },
            "system"_a.noconvert(),
            "Turns the rotation about the vertical until it faces forward, in place; pitch, roll and "
            "translation stay.");
}

void bindPose(nb::module_& module) {
    nb::class_<Pose>(module, "Pose", "A rigid motion with time, confidence and covariance.")
        .def(nb::init<>(), "The identity, not valid.")
        .def(nb::init<const Transform&, unsigned long long, int>(), "transform"_a, "timestamp"_a = 0,
             "confidence"_a = 0)
        .def_rw("transform", &Pose::transform)
        .def_rw("timestamp", &Pose::timestamp, "Nanoseconds.")
        .def_rw("confidence", &Pose::confidence, "0 to 100.")
        .def_rw("valid", &Pose::valid, "Set by the producer of the pose only.")
        .def_prop_ro(
            "pose_covariance",
            [](nb::handle self) {
                return viewOf(nb::cast<Pose&>(self).pose_covariance, {6, 6}, self);
            },
            nb::sig("def pose_covariance(self) -> numpy.typing.NDArray[numpy.float32]"),
            "A writable view, 6 x 6: translation, then rotation.")
        .def_prop_ro(
            "twist", [](nb::handle self) { return viewOf(nb::cast<Pose&>(self).twist, {6}, self); },
            nb::sig("def twist(self) -> numpy.typing.NDArray[numpy.float32]"),
            "A writable view, 6 numbers: linear, then angular velocity.")
        .def_prop_ro("translation", &Pose::getTranslation)
        .def_prop_ro("rotation", &Pose::getRotation)
        .def_prop_ro("orientation", &Pose::getOrientation)
        .def("euler_angles", &Pose::getEulerAngles, "radian"_a = true, EULER_DOC);
}

}  // namespace

void bindGeometry(nb::module_& module) {
    bindMatrices(module);
    // Each is named in signatures of the others: the types first, then what they can do.
    bindVectors(module);
    bindRotation(module);
    bindTransform(module);
    bindPose(module);
    module.def("get_coordinate_transform_conversion4f", &getCoordinateTransformConversion4f,
               "source"_a.noconvert(), "target"_a.noconvert(),
               "The matrix that maps points of one axis convention to another.");
    module.def("get_unit_scale", &getUnitScale, "source"_a.noconvert(), "target"_a.noconvert(),
               "The factor from lengths in one unit to lengths in another.");
    module.def("compute_rotation_matrix_from_gravity", &computeRotationMatrixFromGravity, "gravity"_a,
               "reference"_a,
               "The rotation that maps the unit vector `reference` to the direction of `gravity`.\n\n"
               "NaN or infinities for parallel and for opposite directions.");
}

}  // namespace vela::python

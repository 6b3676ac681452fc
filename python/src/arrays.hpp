#pragma once

// numpy arrays as the C++ layer's images and values. Images are column-major
// like the library: a Fortran-ordered (rows, cols) or (rows, cols, planes)
// array already is one, so it is used as it stands; any other layout is
// copied once into Fortran order.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cmath>
#include <complex>
#include <initializer_list>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "ornex/image.hpp"

namespace ornex::python {

namespace py = pybind11;

template <class... Ts>
struct ElementTypes {};

using Reals = ElementTypes<double, float>;
using BlendTypes = ElementTypes<double, float, uint8_t, int8_t, uint16_t, int16_t>;
using FillTypes = ElementTypes<double, float, uint8_t, int8_t, uint16_t, int16_t, bool>;
using CopyTypes =
    ElementTypes<double, float, uint8_t, int8_t, uint16_t, int16_t, uint32_t, int32_t, uint64_t, int64_t, bool>;

[[noreturn]] inline void badValue(const std::string &argument, const std::string &constraint)
{
    throw py::value_error(argument + ": " + constraint);
}

inline void requireValue(bool holds, const std::string &argument, const std::string &constraint)
{
    if (!holds) {
        badValue(argument, constraint);
    }
}

inline std::string dtypeName(const py::array &array) { return py::str(array.dtype()).cast<std::string>(); }

template <class T>
std::string dtypeName()
{
    return py::str(py::dtype::of<T>()).cast<std::string>();
}

inline py::array asArray(const py::handle &object, const char *argument)
{
    try {
        return py::array::ensure(object);
    } catch (const py::error_already_set &) {
        throw py::type_error(std::string(argument) + ": must be an array");
    }
}

// Calls call(T{}) for the element type T of the array, among Ts.
template <class... Ts, class F>
py::object withElementType(ElementTypes<Ts...>, const py::array &array, const char *argument, F &&call)
{
    py::object result;
    bool matched = false;
    auto tryOne = [&](auto element) {
        using T = decltype(element);
        if (!matched && py::isinstance<py::array_t<T>>(array)) {
            matched = true;
            result = call(element);
        }
    };
    (tryOne(Ts{}), ...);
    if (!matched) {
        std::string supported;
        ((supported += (supported.empty() ? "" : ", ") + dtypeName<Ts>()), ...);
        throw py::type_error(std::string(argument) + ": dtype " + dtypeName(array) + " is not supported (" +
                             supported + ")");
    }
    return result;
}

inline int32_t checkedExtent(py::ssize_t extent, const char *argument)
{
    requireValue(extent <= std::numeric_limits<int32_t>::max(), argument, "too large (at most 2^31 - 1 per axis)");
    return static_cast<int32_t>(extent);
}

// Images are (rows, cols), or (rows, cols, planes) where planes are allowed.
inline void requireImageShape(const py::array &array, const char *argument, bool onePlane)
{
    if (onePlane) {
        requireValue(array.ndim() == 2, argument, "must have shape (rows, cols)");
    } else {
        requireValue(array.ndim() == 2 || array.ndim() == 3, argument,
                     "must have shape (rows, cols) or (rows, cols, planes)");
    }
}

template <class T>
ImageView<T> viewOf(const py::array_t<T, py::array::f_style> &array, const char *argument)
{
    const int32_t rows = checkedExtent(array.shape(0), argument), cols = checkedExtent(array.shape(1), argument);
    const int32_t planes = array.ndim() == 3 ? checkedExtent(array.shape(2), argument) : 1;
    return {const_cast<T *>(array.data()), rows, cols, planes};
}

// An image to read: the caller's array, or its one Fortran-ordered copy.
template <class T>
struct InputImage {
    py::array_t<T, py::array::f_style> pixels;
    ImageView<const T> view;
};

template <class T>
InputImage<T> inputImage(const py::array &array, const char *argument, bool onePlane = false)
{
    requireImageShape(array, argument, onePlane);
    auto pixels = py::array_t<T, py::array::f_style>::ensure(array);
    const ImageView<T> view = viewOf<T>(pixels, argument);
    return {std::move(pixels), view};
}

// An image to draw into: it must be the caller's own memory in Fortran
// order, since a copy would quietly lose the drawing.
template <class T>
ImageView<T> targetImage(const py::array &array, const char *argument)
{
    requireImageShape(array, argument, false);
    requireValue(array.writeable(), argument, "is read-only; drawing needs a writeable array");
    requireValue((array.flags() & py::detail::npy_api::NPY_ARRAY_F_CONTIGUOUS_) != 0, argument,
                 "must be Fortran-ordered (column-major) to be drawn into in place: "
                 "make it once with numpy.asfortranarray or numpy.zeros(..., order='F')");
    return viewOf<T>(py::reinterpret_borrow<py::array_t<T, py::array::f_style>>(array), argument);
}

// The result image as a Fortran-ordered array that owns the C++ pixels.
template <class T>
py::array_t<T> toArray(Image<T> &&image, bool keepPlaneAxis = false)
{
    auto *owned = new Image<T>(std::move(image));
    py::capsule release(owned, [](void *pixels) { delete static_cast<Image<T> *>(pixels); });
    const auto rows = py::ssize_t(owned->rows()), cols = py::ssize_t(owned->cols());
    const auto item = py::ssize_t(sizeof(T));
    if (owned->planes() == 1 && !keepPlaneAxis) {
        return py::array_t<T>({rows, cols}, {item, item * rows}, owned->data(), release);
    }
    return py::array_t<T>({rows, cols, py::ssize_t(owned->planes())}, {item, item * rows, item * rows * cols},
                          owned->data(), release);
}

// u + v i for every element, as a Fortran-ordered complex array.
template <class T>
py::array_t<std::complex<T>> complexArray(const Image<T> &u, const Image<T> &v)
{
    py::array_t<std::complex<T>, py::array::f_style> result({py::ssize_t(u.rows()), py::ssize_t(u.cols())});
    std::complex<T> *out = result.mutable_data();
    for (size_t k = 0; k < u.values().size(); ++k) {
        out[k] = {u.values()[k], v.values()[k]};
    }
    return result;
}

inline double asDouble(const py::handle &value)
{
    return py::float_(py::reinterpret_borrow<py::object>(value)).cast<double>();
}

// One value converted to T: integers must be whole and inside T's range.
template <class T>
T elementValue(const py::handle &value, const char *argument)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(asDouble(value));
    } else {
        py::object number = py::reinterpret_borrow<py::object>(value);
        if (!py::isinstance<py::int_>(number)) {
            const double real = asDouble(number);
            requireValue(std::isfinite(real) && std::trunc(real) == real, argument,
                         "must be whole numbers for an integer image");
            number = py::int_(number);
        }
        const py::int_ lowest(static_cast<long long>(std::numeric_limits<T>::min()));
        const py::int_ highest(static_cast<unsigned long long>(std::numeric_limits<T>::max()));
        requireValue(!(number < lowest) && !(number > highest), argument, "out of range for " + dtypeName<T>());
        if constexpr (std::is_signed_v<T>) {
            return static_cast<T>(py::cast<long long>(number));
        } else {
            return static_cast<T>(py::cast<unsigned long long>(number));
        }
    }
}

// One value per plane; a single number stands for every plane.
template <class T>
std::vector<T> planeValues(const py::object &values, int32_t planes, const char *argument)
{
    const py::list items = py::module_::import("numpy").attr("ravel")(values).attr("tolist")();
    requireValue(items.size() == 1 || items.size() == size_t(planes), argument,
                 "needs one value or one per plane (" + std::to_string(planes) + ")");
    std::vector<T> converted(static_cast<size_t>(planes));
    for (int32_t p = 0; p < planes; ++p) {
        converted[size_t(p)] = elementValue<T>(items[items.size() == 1 ? 0 : size_t(p)], argument);
    }
    return converted;
}

// Numbers of a sequence (or one number) as doubles.
inline std::vector<double> doubles(const py::object &values)
{
    const py::list items = py::module_::import("numpy").attr("ravel")(values).attr("tolist")();
    std::vector<double> converted;
    for (const py::handle item : items) {
        converted.push_back(asDouble(item));
    }
    return converted;
}

// Whole numbers of an integer array in int32, shape (count, 2) or (2,).
inline std::vector<Point> points(const py::object &object, const char *argument, bool single)
{
    const py::array array = asArray(object, argument);
    const char kind = array.dtype().kind();
    if (kind != 'i' && kind != 'u') {
        throw py::type_error(std::string(argument) + ": must hold whole numbers (an integer array or ints)");
    }
    if (single) {
        requireValue(array.ndim() == 1 && array.shape(0) == 2, argument, "must be one (row, col) pair");
    } else {
        requireValue(array.ndim() == 2 && array.shape(1) == 2, argument, "must have shape (n, 2): (row, col) pairs");
    }
    const py::list flat = py::module_::import("numpy").attr("ravel")(array).attr("tolist")();
    std::vector<Point> result;
    for (size_t k = 0; k + 1 < flat.size(); k += 2) {
        const auto row = py::cast<long long>(flat[k]), col = py::cast<long long>(flat[k + 1]);
        requireValue(row >= std::numeric_limits<int32_t>::min() && row <= std::numeric_limits<int32_t>::max() &&
                         col >= std::numeric_limits<int32_t>::min() && col <= std::numeric_limits<int32_t>::max(),
                     argument, "coordinates must fit in 32 bits");
        result.push_back({static_cast<int32_t>(row), static_cast<int32_t>(col)});
    }
    return result;
}

inline Point point(const py::object &object, const char *argument) { return points(object, argument, true)[0]; }

// A name among the choices, as its index.
inline size_t choice(const std::string &value, std::initializer_list<const char *> choices, const char *argument)
{
    size_t index = 0;
    std::string listed;
    for (const char *name : choices) {
        if (value == name) {
            return index;
        }
        listed += (listed.empty() ? "'" : ", '") + std::string(name) + "'";
        ++index;
    }
    badValue(argument, "must be one of " + listed);
}

} // namespace ornex::python

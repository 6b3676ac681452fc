#include <variant>

#include "arrays.hpp"
#include "bindings.hpp"
#include "ornex/geometry.hpp"

namespace ornex::python {
namespace {

using namespace pybind11::literals;

// A projective transform of either precision; warp takes it for images of
// its own dtype.
struct Transform {
    std::variant<ProjectiveTransform<double>, ProjectiveTransform<float>> made;
};

Interpolation interpolation(const std::string &name)
{
    switch (choice(name, {"nearest", "bilinear", "bicubic"}, "interpolation")) {
    case 0: return Interpolation::nearest;
    case 1: return Interpolation::bilinear;
    default: return Interpolation::bicubic;
    }
}

Quad quadOf(const py::object &corners, const char *argument)
{
    const std::vector<Point> list = points(corners, argument, false);
    requireValue(list.size() == 4, argument, "must be four (row, col) corners");
    return {list[0], list[1], list[2], list[3]};
}

// Matrix k (0 or 1) of the transform's pair as a 3x3 array M acting on the
// row vector [col row 1]: [x' y' w'] = [col row 1] @ M.
py::array_t<double> matrix(const Transform &transform, size_t k)
{
    py::array_t<double> result({3, 3});
    auto out = result.mutable_unchecked<2>();
    std::visit(
        [&](const auto &made) {
            for (py::ssize_t j = 0; j < 3; ++j) {
                for (py::ssize_t i = 0; i < 3; ++i) {
                    out(i, j) = double(made.block[9 * k + size_t(3 * j + i)]);
                }
            }
        },
        transform.made);
    return result;
}

Transform homographyCall(const py::object &source, const py::object &to, const std::pair<int32_t, int32_t> &shape,
                         const py::object &dtype)
{
    const py::array region = asArray(source, "source");
    const Quad target = quadOf(to, "to");
    const py::array probe(py::dtype::from_args(dtype), std::vector<py::ssize_t>{0});
    Transform made;
    withElementType(Reals{}, probe, "dtype", [&](auto element) -> py::object {
        using T = decltype(element);
        if (region.ndim() == 1) {
            requireValue(region.shape(0) == 4, "source", "must be a rectangle (row, col, rows, cols) or four corners");
            const std::vector<Point> pairs = points(region.attr("reshape")(2, 2), "source", false);
            const Rect rect{pairs[0].row, pairs[0].col, pairs[1].row, pairs[1].col};
            made.made = ornex::homography<T>(rect, target, shape.first, shape.second);
        } else {
            made.made = ornex::homography<T>(quadOf(region, "source"), target, shape.first, shape.second);
        }
        return py::none();
    });
    return made;
}

py::object warpCall(const py::object &source, const std::pair<int32_t, int32_t> &outputShape,
                    const Transform &transform, const std::string &method, bool exact, int32_t subdivisions,
                    const py::object &background)
{
    WarpOptions options;
    options.interpolation = interpolation(method);
    options.exact = exact;
    options.subdivisions = subdivisions;
    options.background = doubles(background);
    const py::array array = asArray(source, "source");
    return withElementType(Reals{}, array, "source", [&](auto element) -> py::object {
        using T = decltype(element);
        const auto *made = std::get_if<ProjectiveTransform<T>>(&transform.made);
        if (made == nullptr) {
            throw py::type_error("transform: made for the other precision than the source's " + dtypeName<T>() +
                                 "; pass dtype= to homography");
        }
        const InputImage<T> input = inputImage<T>(array, "source");
        Image<T> output;
        {
            py::gil_scoped_release unlocked;
            output = ornex::warp<T>(input.view, outputShape.first, outputShape.second, *made, options);
        }
        return toArray(std::move(output), array.ndim() == 3);
    });
}

py::object shearCall(const py::object &image, const std::string &direction, double amount, const std::string &method,
                     const py::object &background)
{
    const ShearDirection along =
        choice(direction, {"horizontal", "vertical"}, "direction") == 0 ? ShearDirection::horizontal
                                                                         : ShearDirection::vertical;
    const ShearOptions options{interpolation(method), doubles(background)};
    const py::array array = asArray(image, "image");
    return withElementType(Reals{}, array, "image", [&](auto element) -> py::object {
        using T = decltype(element);
        const InputImage<T> input = inputImage<T>(array, "image");
        Image<T> output;
        {
            py::gil_scoped_release unlocked;
            output = ornex::shear(input.view, along, amount, options);
        }
        return toArray(std::move(output), array.ndim() == 3);
    });
}

} // namespace

void addGeometry(py::module_ &module)
{
    py::class_<Transform>(module, "ProjectiveTransform", R"(A projective transform made by homography, for warp.

Attributes:
    dtype: the precision it was computed in (warp takes images of it).
    matrices: the pair of 3x3 matrices in the order warp reads them, each
        acting on the row vector [col row 1].)")
        .def_property_readonly("dtype",
                               [](const Transform &t) {
                                   return std::holds_alternative<ProjectiveTransform<double>>(t.made)
                                              ? py::dtype::of<double>()
                                              : py::dtype::of<float>();
                               })
        .def_property_readonly("matrices",
                               [](const Transform &t) { return py::make_tuple(matrix(t, 0), matrix(t, 1)); })
        .def("__repr__", [](const Transform &t) {
            return std::visit(
                [](const auto &made) {
                    std::string source;
                    if (made.fromQuad) {
                        for (const Point &p : made.quad) {
                            source += (source.empty() ? "[(" : ", (") + std::to_string(p.row) + ", " +
                                      std::to_string(p.col) + ")";
                        }
                        source += "]";
                    } else {
                        source = "(" + std::to_string(made.rect.row) + ", " + std::to_string(made.rect.col) + ", " +
                                 std::to_string(made.rect.rows) + ", " + std::to_string(made.rect.cols) + ")";
                    }
                    using T = typename decltype(made.block)::value_type;
                    return "<ProjectiveTransform " + dtypeName<T>() + " from " + source + ">";
                },
                t.made);
        });

    module.def("homography", &homographyCall, "source"_a, "to"_a, "source_shape"_a, py::kw_only(),
               "dtype"_a = py::module_::import("numpy").attr("float64"),
               R"(The projective transform that carries a region of an image onto a
quadrilateral of the output.

Parameters:
    source: a rectangle (row, col, rows, cols) of the source image, at least
        2 x 2, or four (row, col) corners; either must lie inside the image.
        Corners go round: first row and column, first row and last column,
        last row and column, last row and first column.
    to: the four (row, col) corners it goes to, no three collinear.
    source_shape: (rows, cols) of the source image.
    dtype: numpy.float64 or numpy.float32, the precision of the matrices and
        of the images warp then takes.

Returns:
    a ProjectiveTransform.

Example:
    >>> t = ornex.homography((0, 0, 32, 48), [(0, 4), (2, 40), (30, 44), (28, 0)],
    ...                      image.shape[:2])
    >>> out = ornex.warp(image, (32, 48), t)
)");

    module.def("warp", &warpCall, "source"_a, "output_shape"_a, "transform"_a, py::kw_only(),
               "interpolation"_a = "bilinear", "exact"_a = true, "subdivisions"_a = 4, "background"_a = 0.0,
               R"(Warps every plane of an image through a projective transform.

The source region is cut into (subdivisions + 1)^2 cells, each mapped by its
corners. Output pixels outside the mapped region keep the background; sample
positions are clamped to the source image.

Parameters:
    source: float32 or float64 array (rows, cols) or (rows, cols, planes), of
        the transform's dtype.
    output_shape: (rows, cols) of the result.
    transform: from homography.
    interpolation: 'nearest', 'bilinear' or 'bicubic'.
    exact: divide every sample position exactly; False follows a quadratic
        along each output column span of a cell (cheaper).
    subdivisions: D >= 0 as above.
    background: one value for all planes or one per plane.

Returns:
    array of shape output_shape (plus the source's plane axis), source dtype.

Example:
    >>> t = ornex.homography((0, 0, 64, 64), [(0, 8), (0, 56), (63, 63), (63, 0)],
    ...                      (64, 64))
    >>> out = ornex.warp(image, (64, 64), t, interpolation='bicubic')
)");

    module.def("shear", &shearCall, "image"_a, "direction"_a, "amount"_a, py::kw_only(),
               "interpolation"_a = "bilinear", "background"_a = 0.0,
               R"(Shears every plane of an image.

'horizontal' shifts row r along itself by amount * r columns; 'vertical'
shifts column c down by amount * c rows. A negative amount shifts the other
way, measured from the last line. Each line grows by
ceil(|amount| * (lines - 1)) pixels.

Parameters:
    image: float32 or float64 array (rows, cols) or (rows, cols, planes).
    direction: 'horizontal' or 'vertical'.
    amount: pixels of shift per line.
    interpolation: 'nearest', 'bilinear' or 'bicubic'.
    background: what no shifted line covers: one value, or one per plane.

Returns:
    the sheared image, wider (horizontal) or taller (vertical).

Example:
    >>> slanted = ornex.shear(image, 'horizontal', 0.5)
)");
}

} // namespace ornex::python

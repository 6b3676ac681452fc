#include <optional>
#include <utility>

#include "arrays.hpp"
#include "bindings.hpp"
#include "ornex/detection.hpp"

namespace ornex::python {
namespace {

using namespace pybind11::literals;

template <class T>
py::array_t<T> vectorArray(const std::vector<T> &values)
{
    py::array_t<T> array(py::ssize_t(values.size()));
    std::copy(values.begin(), values.end(), array.mutable_data());
    return array;
}

py::object cannyCall(const py::object &image, double sigma, std::optional<std::pair<double, double>> thresholds,
                     double nonEdgePercent)
{
    CannyOptions options;
    options.sigma = sigma;
    if (thresholds) {
        options.thresholds = CannyThresholds{thresholds->first, thresholds->second};
    }
    options.nonEdgePercent = nonEdgePercent;
    const py::array array = asArray(image, "image");
    return withElementType(Reals{}, array, "image", [&](auto element) -> py::object {
        using T = decltype(element);
        const InputImage<T> input = inputImage<T>(array, "image", true);
        CannyResult<T> result;
        {
            py::gil_scoped_release unlocked;
            result = ornex::canny(input.view, options);
        }
        return py::make_tuple(toArray(std::move(result.edges)), toArray(std::move(result.magnitude)));
    });
}

py::object houghCall(const py::object &edges, double thetaResolution, double rhoResolution, const py::object &dtype)
{
    const py::array array = asArray(edges, "edges");
    if (!py::isinstance<py::array_t<uint8_t>>(array) && !py::isinstance<py::array_t<bool>>(array)) {
        throw py::type_error("edges: dtype " + dtypeName(array) + " is not supported (uint8, bool)");
    }
    requireImageShape(array, "edges", true);
    // A logical array holds the same bytes (0 or 1) as an edge map.
    const auto pixels = py::array_t<uint8_t, py::array::f_style>::ensure(
        py::isinstance<py::array_t<bool>>(array) ? array.attr("view")("uint8") : py::object(array));
    const ImageView<const uint8_t> view = viewOf<uint8_t>(pixels, "edges");
    const HoughOptions options{thetaResolution, rhoResolution};
    const py::array probe(py::dtype::from_args(dtype), std::vector<py::ssize_t>{0});
    return withElementType(Reals{}, probe, "dtype", [&](auto element) -> py::object {
        using T = decltype(element);
        HoughTransform<T> transform;
        {
            py::gil_scoped_release unlocked;
            transform = ornex::hough<T>(view, options);
        }
        return py::make_tuple(toArray(std::move(transform.accumulator)), vectorArray(transform.rho),
                              vectorArray(transform.theta));
    });
}

py::object houghLinesCall(const py::object &theta, const py::object &rho, const std::pair<int32_t, int32_t> &shape)
{
    const py::array thetaArray = asArray(theta, "theta"), rhoArray = asArray(rho, "rho");
    return withElementType(Reals{}, thetaArray, "theta", [&](auto element) -> py::object {
        using T = decltype(element);
        if (!py::isinstance<py::array_t<T>>(rhoArray)) {
            throw py::type_error("rho: dtype " + dtypeName(rhoArray) + " differs from theta's " + dtypeName<T>());
        }
        requireValue(thetaArray.ndim() == 1, "theta", "must be one-dimensional");
        requireValue(rhoArray.ndim() == 1, "rho", "must be one-dimensional");
        const auto thetaValues = py::array_t<T>::ensure(thetaArray), rhoValues = py::array_t<T>::ensure(rhoArray);
        const std::vector<T> thetas(thetaValues.data(), thetaValues.data() + thetaValues.size());
        const std::vector<T> rhos(rhoValues.data(), rhoValues.data() + rhoValues.size());
        std::vector<LineEnds> ends;
        {
            py::gil_scoped_release unlocked;
            ends = ornex::houghLines(thetas, rhos, shape.first, shape.second);
        }
        py::array_t<int32_t> result({py::ssize_t(ends.size()), py::ssize_t(2), py::ssize_t(2)});
        auto out = result.mutable_unchecked<3>();
        for (size_t i = 0; i < ends.size(); ++i) {
            const auto k = py::ssize_t(i);
            out(k, 0, 0) = ends[i].first.row;
            out(k, 0, 1) = ends[i].first.col;
            out(k, 1, 0) = ends[i].second.row;
            out(k, 1, 1) = ends[i].second.col;
        }
        return result;
    });
}

} // namespace

void addDetection(py::module_ &module)
{
    module.def("canny", &cannyCall, "image"_a, py::kw_only(), "sigma"_a = 1.0, "thresholds"_a = py::none(),
               "non_edge_percent"_a = 70.0,
               R"(Canny edges of a one-plane image.

Gaussian smoothing and derivatives, non-maximum suppression, hysteresis. The
Gaussian reaches ceil(3 sigma) pixels to each side.

Parameters:
    image: float32 or float64 array of shape (rows, cols), at least
        ceil(3 sigma) + 1 rows and columns.
    sigma: width of the Gaussian in pixels.
    thresholds: (low, high) hysteresis thresholds on the 0..1 scale of the
        normalised gradient magnitude, or None to choose them from the
        magnitude histogram.
    non_edge_percent: with automatic thresholds, about this per cent of the
        pixels fall below the high one.

Returns:
    (edges, magnitude): edges is a uint8 array, 1 on an edge and 0 elsewhere;
    magnitude the gradient magnitude after non-maximum suppression, scaled
    to 0..1, in the image's dtype.

Example:
    >>> edges, magnitude = ornex.canny(image, sigma=1.5,
    ...                                thresholds=(0.05, 0.15))
)");

    module.def("hough", &houghCall, "edges"_a, py::kw_only(), "theta_resolution"_a = 1.0, "rho_resolution"_a = 1.0,
               "dtype"_a = py::module_::import("numpy").attr("float64"),
               R"(The Hough transform of an edge map: every nonzero pixel votes.

accumulator[k, j] counts the edge pixels on the line
rho[k] = col cos(theta[j]) + row sin(theta[j]). theta runs from -90 degrees
up to (not including) 90 in steps of theta_resolution; rho is symmetric,
2R + 1 bins with R = ceil(diagonal / rho_resolution).

Parameters:
    edges: uint8 or bool array of shape (rows, cols).
    theta_resolution: degrees between theta columns; 90 must be a whole
        multiple of it.
    rho_resolution: pixels between rho bins.
    dtype: numpy.float64 or numpy.float32, the type of the results.

Returns:
    (accumulator, rho, theta): accumulator of shape (len(rho), len(theta)),
    rho in pixels, theta in radians.

Example:
    >>> accumulator, rho, theta = ornex.hough(edges, theta_resolution=0.5)
    >>> k, j = numpy.unravel_index(accumulator.argmax(), accumulator.shape)
)");

    module.def("hough_lines", &houghLinesCall, "theta"_a, "rho"_a, "image_shape"_a,
               R"(Where Hough lines cross the border of an image.

Each line rho[i] = col cos(theta[i]) + row sin(theta[i]) is tried on the top,
left, right and bottom borders in that order; a line through a corner may
report that corner twice.

Parameters:
    theta: one-dimensional float32 or float64 array of angles in radians.
    rho: distances in pixels, as many as theta and of its dtype.
    image_shape: (rows, cols) of the image.

Returns:
    int32 array of shape (n, 2, 2): for each line its two (row, col) end
    points, both (-1, -1) when the line misses the image.

Example:
    >>> ends = ornex.hough_lines(numpy.array([0.0]), numpy.array([5.0]),
    ...                          (20, 30))
    >>> ends[0].tolist()
    [[0, 5], [19, 5]]
)");
}

} // namespace ornex::python

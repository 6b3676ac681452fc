#include <array>
#include <optional>

#include "arrays.hpp"
#include "bindings.hpp"
#include "ornex/draw.hpp"

namespace ornex::python {
namespace {

using namespace pybind11::literals;
using OptionalClip = std::optional<std::array<int32_t, 4>>;

std::optional<ClipRect> clipOf(const OptionalClip &clip)
{
    if (!clip) {
        return std::nullopt;
    }
    return ClipRect{(*clip)[0], (*clip)[1], (*clip)[2], (*clip)[3]};
}

// Converts the arguments, then draws into the caller's array with the GIL
// released. draw(view, values) gets the image and its per-plane values.
template <class Types, class Draw>
void drawInto(const py::object &image, const py::object &values, const char *valuesName, Types types, Draw draw)
{
    if (!py::isinstance<py::array>(image)) {
        throw py::type_error("image: must be a numpy array to draw into");
    }
    const auto array = py::reinterpret_borrow<py::array>(image);
    withElementType(types, array, "image", [&](auto element) -> py::object {
        using T = decltype(element);
        const ImageView<T> view = targetImage<T>(array, "image");
        const std::vector<T> converted = planeValues<T>(values, view.planes, valuesName);
        py::gil_scoped_release unlocked;
        draw(view, converted);
        return py::none();
    });
}

void drawLineCall(const py::object &image, const py::object &start, const py::object &end, const py::object &value,
                  const OptionalClip &clip)
{
    const Point from = point(start, "start"), to = point(end, "end");
    drawInto(image, value, "value", CopyTypes{}, [&](auto view, const auto &values) {
        ornex::drawLine(view, from, to, values, clipOf(clip));
    });
}

void drawAntialiasedLineCall(const py::object &image, const py::object &start, const py::object &end,
                             const py::object &colour, double opacity)
{
    const Point from = point(start, "start"), to = point(end, "end");
    drawInto(image, colour, "colour", BlendTypes{}, [&](auto view, const auto &values) {
        ornex::drawAntialiasedLine(view, from, to, values, opacity);
    });
}

void drawCircleCall(const py::object &image, const py::object &centre, int32_t radius, const py::object &value)
{
    const Point at = point(centre, "centre");
    drawInto(image, value, "value", CopyTypes{},
             [&](auto view, const auto &values) { ornex::drawCircle(view, at, radius, values); });
}

void drawAntialiasedCircleCall(const py::object &image, const py::object &centre, int32_t radius,
                               const py::object &colour)
{
    const Point at = point(centre, "centre");
    drawInto(image, colour, "colour", BlendTypes{},
             [&](auto view, const auto &values) { ornex::drawAntialiasedCircle(view, at, radius, values); });
}

void fillPolygonCall(const py::object &image, const py::object &vertices, const py::object &value, double opacity)
{
    const std::vector<Point> corners = points(vertices, "vertices", false);
    drawInto(image, value, "value", FillTypes{},
             [&](auto view, const auto &values) { ornex::fillPolygon(view, corners, values, opacity); });
}

void fillAntialiasedCircleCall(const py::object &image, const py::object &centre, int32_t radius,
                               const py::object &colour, double opacity, const OptionalClip &clip)
{
    const Point at = point(centre, "centre");
    drawInto(image, colour, "colour", BlendTypes{}, [&](auto view, const auto &values) {
        ornex::fillAntialiasedCircle(view, at, radius, values, opacity, clipOf(clip));
    });
}

void fillAntialiasedPolygonCall(const py::object &image, const py::object &vertices, const py::object &value,
                                double opacity, const OptionalClip &clip, const py::object &weights)
{
    const std::vector<Point> corners = points(vertices, "vertices", false);
    const std::vector<double> profile = weights.is_none() ? polygonBoxProfile() : doubles(weights);
    drawInto(image, value, "value", FillTypes{}, [&](auto view, const auto &values) {
        ornex::fillAntialiasedPolygon(view, corners, values, opacity, clipOf(clip), profile);
    });
}

constexpr const char *imageNote = R"(
    image: the array drawn into, (rows, cols) or (rows, cols, planes),
        Fortran-ordered and writeable, of dtype )";

std::string withImage(const char *first, const char *rest)
{
    return std::string(first) + imageNote + rest;
}

} // namespace

void addDraw(py::module_ &module)
{
    module.def("draw_line", &drawLineCall, "image"_a, "start"_a, "end"_a, "value"_a, py::kw_only(),
               "clip"_a = py::none(),
               withImage(R"(Sets every pixel of the digital line from start to end (both included).

The line is clipped to clip before it is walked, so a clipped line starts
afresh at the clipped end. Values are copied as they are.

Parameters:)",
                         R"(any integer, float or bool.
    start, end: (row, col) end points, at most 32000 rows and columns apart.
    value: one value for all planes or one per plane.
    clip: (row_min, row_max, col_min, col_max), inclusive; default the image.

Returns:
    None; image is changed in place.

Example:
    >>> image = numpy.zeros((100, 200), numpy.uint8, order='F')
    >>> ornex.draw_line(image, (10, 5), (80, 190), 255)
)")
                   .c_str());

    module.def("draw_antialiased_line", &drawAntialiasedLineCall, "image"_a, "start"_a, "end"_a, "colour"_a,
               py::kw_only(), "opacity"_a = 1.0,
               withImage(R"(Blends a one-pixel anti-aliased line into an image.

Along the line, each pixel and its two neighbours across it are covered by
1 - their distance from the ideal line, times opacity. Integer images blend
in steps of 1/1024 and wrap rather than saturate at the ends of their range.
A vertical line given bottom-up draws nothing.

Parameters:)",
                         R"(float64, float32, uint8, int8, uint16 or int16.
    start, end: (row, col) end points, at most 32000 rows and columns apart.
    colour: one value for all planes or one per plane.
    opacity: 0..1.

Returns:
    None; image is changed in place.

Example:
    >>> ornex.draw_antialiased_line(image, (10, 10), (90, 150), 1.0, opacity=0.5)
)")
                   .c_str());

    module.def("draw_circle", &drawCircleCall, "image"_a, "centre"_a, "radius"_a, "value"_a,
               withImage(R"(Sets the pixels of the digital circle of radius around centre.

Parameters:)",
                         R"(any integer, float or bool.
    centre: (row, col), within -2^28 .. 2^28.
    radius: pixels, 1 .. 32000.
    value: one value for all planes or one per plane.

Returns:
    None; image is changed in place.

Example:
    >>> ornex.draw_circle(image, (32, 32), 20, 255)
)")
                   .c_str());

    module.def("draw_antialiased_circle", &drawAntialiasedCircleCall, "image"_a, "centre"_a, "radius"_a, "colour"_a,
               withImage(R"(Blends the anti-aliased outline of the circle of radius around centre.

Each step shares colour between the two pixels either side of the exact
circle by their distances from it.

Parameters:)",
                         R"(float64, float32, uint8, int8, uint16 or int16.
    centre: (row, col), within -2^28 .. 2^28.
    radius: pixels, 1 .. 32000.
    colour: one value for all planes or one per plane.

Returns:
    None; image is changed in place.

Example:
    >>> ornex.draw_antialiased_circle(image, (32, 32), 20, 1.0)
)")
                   .c_str());

    module.def("fill_polygon", &fillPolygonCall, "image"_a, "vertices"_a, "value"_a, py::kw_only(), "opacity"_a = 1.0,
               withImage(R"(Fills a polygon by the even-odd rule, boundary pixels included.

New pixels are value * opacity + old * (1 - opacity); integer and bool
images blend in steps of 1/1024 (the opacity rounded to the nearest step).

Parameters:)",
                         R"(float64, float32, uint8, int8, uint16, int16 or bool.
    vertices: (n, 2) integer array of (row, col) corners, n >= 3; they may
        lie outside the image.
    value: one value for all planes or one per plane.
    opacity: 0..1.

Returns:
    None; image is changed in place.

Example:
    >>> ornex.fill_polygon(image, [(10, 10), (10, 80), (90, 45)], 200)
)")
                   .c_str());

    module.def("fill_antialiased_circle", &fillAntialiasedCircleCall, "image"_a, "centre"_a, "radius"_a, "colour"_a,
               py::kw_only(), "opacity"_a = 1.0, "clip"_a = py::none(),
               withImage(R"(Fills the disc of radius around centre, anti-aliased.

A pixel wholly inside is blended at opacity, a pixel the circle passes
through at opacity times the share of it the disc covers.

Parameters:)",
                         R"(float64, float32, uint8, int8, uint16 or int16.
    centre: (row, col), within -2^28 .. 2^28.
    radius: pixels, 1 .. 32000.
    colour: one value for all planes or one per plane.
    opacity: 0..1.
    clip: (row_min, row_max, col_min, col_max), inclusive; default the image.

Returns:
    None; image is changed in place.

Example:
    >>> ornex.fill_antialiased_circle(image, (32, 32), 20, 255, opacity=0.5)
)")
                   .c_str());

    module.def("fill_antialiased_polygon", &fillAntialiasedPolygonCall, "image"_a, "vertices"_a, "value"_a,
               py::kw_only(), "opacity"_a = 1.0, "clip"_a = py::none(), "weights"_a = py::none(),
               withImage(R"(Fills a polygon by the even-odd rule, anti-aliased along its edges.

Each pixel is blended once at opacity times the share of it the polygon
covers, which comes from the distances of its centre to the edges through
weights: entry i is the share of a pixel whose centre lies (i - 24)/16 pixel
inside an edge. The default box profile, clamp(1/2 + (i - 24)/16, 0, 1),
runs the edges through the vertex centres.

Parameters:)",
                         R"(float64, float32, uint8, int8, uint16, int16 or bool.
    vertices: (n, 2) integer array of (row, col) corners, n >= 3, rows within
        -524288 .. 524287 and edges at most 32767 rows and columns long.
    value: one value for all planes or one per plane.
    opacity: 0..1.
    clip: (row_min, row_max, col_min, col_max), inclusive; default the image.
    weights: 49 coverage values 0..1, or None for the box profile.

Returns:
    None; image is changed in place.

Example:
    >>> ornex.fill_antialiased_polygon(image, [(10, 10), (10, 80), (90, 45)], 200)
)")
                   .c_str());
}

} // namespace ornex::python

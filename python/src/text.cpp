#include <array>
#include <optional>
#include <string>

#include "arrays.hpp"
#include "bindings.hpp"
#include "ornex/draw.hpp"

namespace ornex::python {
namespace {

using namespace pybind11::literals;
using TextTypes = ElementTypes<double, float>;
using NumberTypes = ElementTypes<double, float, uint8_t, int8_t, uint16_t, int16_t, int32_t, uint32_t, bool>;

// A glyph copied out of Python, so that drawing needs no Python object.
struct StoredGlyph {
    std::vector<uint8_t> bitmap;
    uint16_t width = 0, height = 0;
    int32_t xOffset = 0, yOffset = 0, advance = 0;
};

StoredGlyph storedGlyph(const py::object &glyphs, char character)
{
    // Each byte of the text stands for the character of that code (Latin-1).
    const auto key = py::reinterpret_steal<py::str>(PyUnicode_FromOrdinal(static_cast<unsigned char>(character)));
    py::object found;
    if (py::isinstance<py::dict>(glyphs)) {
        const auto table = py::reinterpret_borrow<py::dict>(glyphs);
        requireValue(table.contains(key), "glyphs", "has no glyph for " + py::repr(key).cast<std::string>());
        found = table[key];
    } else {
        found = glyphs(key);
    }
    const auto parts = found.cast<py::tuple>();
    requireValue(parts.size() == 4, "glyphs", "must give (bitmap, x_offset, y_offset, advance)");
    const auto bitmap = py::array_t<uint8_t, py::array::c_style | py::array::forcecast>::ensure(parts[0]);
    requireValue(bitmap && bitmap.ndim() == 2, "glyphs", "bitmap must be a (height, width) uint8 array");
    requireValue(bitmap.shape(0) <= 65535 && bitmap.shape(1) <= 65535, "glyphs", "bitmap too large");
    StoredGlyph glyph{std::vector<uint8_t>(bitmap.data(), bitmap.data() + bitmap.size()),
                      static_cast<uint16_t>(bitmap.shape(1)), static_cast<uint16_t>(bitmap.shape(0)),
                      elementValue<int32_t>(parts[1], "x_offset"), elementValue<int32_t>(parts[2], "y_offset"),
                      elementValue<int32_t>(parts[3], "advance")};
    return glyph;
}

std::string textBytes(const py::object &text)
{
    if (py::isinstance<py::bytes>(text)) {
        return text.cast<std::string>();
    }
    PyObject *latin1 = PyUnicode_AsEncodedString(py::str(text).ptr(), "latin-1", "strict");
    if (latin1 == nullptr) {
        PyErr_Clear();
        badValue("text", "has characters beyond U+00FF; glyphs are looked up one byte at a time");
    }
    return py::reinterpret_steal<py::bytes>(latin1).cast<std::string>();
}

py::tuple drawTextCall(const py::object &image, const py::object &text, const py::object &position,
                       const py::object &glyphs, const py::object &colour, double opacity, bool antialiased,
                       int32_t lineHeight)
{
    if (!py::isinstance<py::array>(image)) {
        throw py::type_error("image: must be a numpy array to draw into");
    }
    const auto array = py::reinterpret_borrow<py::array>(image);
    const std::string bytes = textBytes(text);
    const Point pen = point(position, "position");
    const TextOptions options{opacity, antialiased, lineHeight};
    Point end;
    withElementType(TextTypes{}, array, "image", [&](auto element) -> py::object {
        using T = decltype(element);
        const ImageView<T> view = targetImage<T>(array, "image");
        const std::vector<T> values = planeValues<T>(colour, view.planes, "colour");
        std::array<std::optional<StoredGlyph>, 256> font;
        for (const char character : bytes) {
            auto &slot = font[static_cast<unsigned char>(character)];
            if (!slot && !(character == '\n' && lineHeight > 0)) {
                slot = storedGlyph(glyphs, character);
            }
        }
        const auto lookUp = [&font](char character) {
            const StoredGlyph &glyph = *font[static_cast<unsigned char>(character)];
            return Glyph{glyph.bitmap, glyph.width, glyph.height, glyph.xOffset, glyph.yOffset, glyph.advance};
        };
        py::gil_scoped_release unlocked;
        end = ornex::drawText(view, bytes, pen, lookUp, values, options);
        return py::none();
    });
    return py::make_tuple(end.row, end.col);
}

std::string formatNumbersCall(const std::string &format, const py::object &values)
{
    py::array array = asArray(values, "values");
    if (!py::isinstance<py::array>(values) && array.dtype().kind() == 'i') {
        // Plain Python ints are formatted as 32-bit integers.
        const py::list items = array.attr("ravel")().attr("tolist")();
        for (const py::handle item : items) {
            elementValue<int32_t>(item, "values");
        }
        array = array.attr("astype")("int32");
    }
    return withElementType(NumberTypes{}, array, "values", [&](auto element) -> py::object {
               using T = decltype(element);
               const auto flat = py::array_t<T, py::array::c_style>::ensure(array.attr("ravel")());
               const std::vector<T> numbers(flat.data(), flat.data() + flat.size());
               std::string formatted;
               {
                   py::gil_scoped_release unlocked;
                   formatted = ornex::formatNumbers(format, numbers);
               }
               return py::str(formatted);
           })
        .cast<std::string>();
}

} // namespace

void addText(py::module_ &module)
{
    module.def("draw_text", &drawTextCall, "image"_a, "text"_a, "position"_a, "glyphs"_a, "colour"_a, py::kw_only(),
               "opacity"_a = 1.0, "antialiased"_a = true, "line_height"_a = 0,
               R"(Draws text with the caller's glyphs.

Parameters:
    image: float64 or float32 array (rows, cols) or (rows, cols, planes),
        Fortran-ordered and writeable.
    text: str of characters up to U+00FF (or bytes); each is looked up on
        its own.
    position: (row, col) of the pen: the baseline row and the pen's column.
    glyphs: a dict or a callable from a one-character str to
        (bitmap, x_offset, y_offset, advance): bitmap a (height, width) uint8
        coverage array (0 empty .. 255 full) whose top-left pixel lies
        x_offset columns right of and y_offset rows above the pen; advance
        the columns the pen then moves. Any font rasteriser gives these.
    colour: one value for all planes or one per plane.
    opacity: 1 draws the colour as it is, 0 leaves the image unchanged.
    antialiased: blend each pixel by its coverage; otherwise any ink is full
        colour.
    line_height: rows from one baseline to the next at '\n'; 0 hands '\n' to
        glyphs like any other character.

Returns:
    (row, col) where the pen ends, to continue the text.

Example:
    >>> block = numpy.full((7, 5), 255, numpy.uint8)
    >>> font = {c: (block, 0, 7, 6) for c in '0123456789'}
    >>> image = numpy.zeros((20, 60), order='F')
    >>> ornex.draw_text(image, '42', (10, 2), font, 1.0)
    (10, 14)
)");

    module.def("format_numbers", &formatNumbersCall, "format"_a, "values"_a,
               R"(printf-style formatting of numbers of one type.

Each conversion of format takes the next value; '%%' is a percent sign.
Conversions must suit the type (%d %i %o %u %x %X %c for integers and bool,
%f %e %g %a for floats). When the values run out, the rest of the format
from the next conversion on is left out.

Parameters:
    format: the format string.
    values: a numpy array (float64, float32, uint8, int8, uint16, int16,
        int32, uint32 or bool), or Python numbers (ints as int32, floats as
        float64).

Returns:
    the formatted str.

Example:
    >>> ornex.format_numbers('x=%d, y=%d', [3, 4])
    'x=3, y=4'
    >>> ornex.format_numbers('%d%% of %d', [100, 7])
    '100% of 7'
    >>> ornex.format_numbers('%.1f%%', [99.5])  # the rest waits for a value
    '99.5'
)");
}

} // namespace ornex::python

#pragma once

// Drawing into images: plain and anti-aliased lines and circles, filled
// polygons, anti-aliased filled discs and polygons, text from the caller's
// glyphs, and number formatting. Every function draws into the caller's
// image and checks all of its arguments before the first pixel is written.

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "ornex/image.hpp"
#include "ornex/kernels.hpp"
#include "ornex_rt.h"

namespace ornex {

// Inclusive bounds of the pixels a drawing may touch.
struct ClipRect {
    int32_t rowMin = 0;
    int32_t rowMax = 0;
    int32_t colMin = 0;
    int32_t colMax = 0;
};

// Element types of the blending drawers (anti-aliased lines and circles).
template <class T>
concept BlendPixel = requires { detail::Kernels<T>::antialiasedLine; };

// Element types of the polygon filler: the blending types and logical images.
template <class T>
concept FillPixel = requires { detail::Kernels<T>::fillPolygon; };

// Element types the plain line and circle drawers copy: any, byte for byte.
template <class T>
concept CopyPixel = std::is_trivially_copyable_v<T> && !std::is_const_v<T>;

// Element types of text images.
template <class T>
concept TextPixel = std::same_as<T, double> || std::same_as<T, float>;

// Element types formatNumbers takes.
template <class T>
concept FormatNumber = requires { detail::Kernels<T>::typeCode; };

namespace draw_detail {

// Lines are clipped in 32-bit arithmetic that forms twice the product of two
// coordinate differences; below this span the products cannot wrap.
inline constexpr int64_t maxLineSpan = 32000;
// Centres and vertices further out would overflow the kernels' offsets.
inline constexpr int64_t maxCoordinate = int64_t(1) << 28;
// Radii up to this keep radius^2 and the Q12 circle positions in 32 bits.
inline constexpr int32_t maxRadius = 32000;

template <class T>
void requireCanvas(const ImageView<T> &image, const char *argument)
{
    detail::requireImage(image, argument);
    detail::require(image.planeSize() <= std::numeric_limits<int32_t>::max(), argument, "too large for 32-bit offsets");
}

template <class T>
void requireCanvas(const RgbView<T> &image, const char *argument)
{
    detail::requireRgb(image, argument);
    detail::require(image.red.planeSize() <= std::numeric_limits<int32_t>::max(), argument,
                    "too large for 32-bit offsets");
}

template <class T>
ClipRect wholeImage(const ImageView<T> &image)
{
    return {0, image.rows - 1, 0, image.cols - 1};
}

template <class T>
ClipRect wholeImage(const RgbView<T> &image)
{
    return wholeImage(image.red);
}

// The caller's clip rectangle, which must lie inside the image, or else the
// whole image.
template <class View>
ClipRect clipRect(const View &image, const std::optional<ClipRect> &clip)
{
    const ClipRect whole = wholeImage(image);
    const ClipRect rect = clip.value_or(whole);
    detail::require(rect.rowMin >= 0 && rect.rowMin <= rect.rowMax && rect.rowMax <= whole.rowMax &&
                        rect.colMin >= 0 && rect.colMin <= rect.colMax && rect.colMax <= whole.colMax,
                    "clip", "must lie inside the image");
    return rect;
}

inline void requireLineSpan(Point from, Point to)
{
    detail::require(std::llabs(int64_t(to.row) - from.row) <= maxLineSpan &&
                        std::llabs(int64_t(to.col) - from.col) <= maxLineSpan,
                    "to", "must lie within 32000 rows and columns of from");
}

inline void requireNearOrigin(Point point, const char *argument)
{
    detail::require(std::llabs(int64_t(point.row)) <= maxCoordinate && std::llabs(int64_t(point.col)) <= maxCoordinate,
                    argument, "coordinates must lie within -268435456 .. 268435456");
}

inline void requireRadius(int32_t radius)
{
    detail::require(radius > 0, "radius", "must be positive");
    detail::require(radius <= maxRadius, "radius", "must be at most 32000");
}

template <class T>
void requireOnePerPlane(const ImageView<T> &image, const std::vector<T> &values, const char *argument)
{
    detail::require(values.size() == static_cast<size_t>(image.planes), argument, "needs one value per plane");
}

inline void requireOpacity(double opacity)
{
    detail::require(opacity >= 0.0 && opacity <= 1.0, "opacity", "must lie in [0, 1]");
}

// Rounds halves away from zero, as the library itself rounds.
inline int32_t roundToInt(double x)
{
    return static_cast<int32_t>(x > 0 ? x + 0.5 : x - 0.5);
}

// Weight table entries of the anti-aliased lines of T: the element type for
// floating images, uint16 for uint16 images, int16 otherwise.
template <class T>
using LineWeight = std::conditional_t<std::is_floating_point_v<T>, T,
                                      std::conditional_t<std::same_as<T, uint16_t>, uint16_t, int16_t>>;

// Anti-aliased line weights: 25 entries per table row, entry d for a
// perpendicular distance of d/16 pixel. A one-pixel line covers a pixel at
// distance x by max(0, 1 - x); with the opacity o the weight is w = o * cover.
// Row 0 keeps 1 - w of the old pixel, row 1 + k adds w * colour[k]. Integer
// tables hold row 0 in Q10 (1024 = 1) and everything rounded to nearest,
// halves away from zero.
template <class T>
std::vector<LineWeight<T>> lineWeightTable(const T *colour, int32_t planes, double opacity)
{
    using W = LineWeight<T>;
    constexpr bool fixedPoint = std::is_integral_v<T>;
    std::vector<W> table(static_cast<size_t>(25) * (1 + planes));
    for (int d = 0; d < 25; ++d) {
        const double weight = opacity * std::max(0.0, 1.0 - d / 16.0);
        table[d] = fixedPoint ? W(roundToInt(1024.0 * (1.0 - weight))) : W(1.0 - weight);
        for (int32_t k = 0; k < planes; ++k) {
            const double term = weight * static_cast<double>(colour[k]);
            table[25 * (1 + k) + d] = fixedPoint ? W(roundToInt(term)) : W(term);
        }
    }
    return table;
}

// The square-root table of the integer anti-aliased circles: entry t is
// 4096 * sqrt(1 - (t/4096)^2), rounded; 3224 entries are all the kernels read.
inline const std::vector<int16_t> &circleSquareRootTable()
{
    static const std::vector<int16_t> table = [] {
        std::vector<int16_t> entries(3224);
        for (size_t t = 0; t < entries.size(); ++t) {
            const double u = t / 4096.0;
            entries[t] = static_cast<int16_t>(std::lround(4096.0 * std::sqrt(1.0 - u * u)));
        }
        return entries;
    }();
    return table;
}

// The values as the byte-copying kernels read them: one after another, each
// sizeof(T) bytes (std::vector<bool> keeps no such array of its own).
template <class T>
std::vector<unsigned char> valueBytes(const std::vector<T> &values)
{
    std::vector<unsigned char> bytes(values.size() * sizeof(T));
    for (size_t i = 0; i < values.size(); ++i) {
        const T value = values[i];
        std::memcpy(bytes.data() + i * sizeof(T), &value, sizeof(T));
    }
    return bytes;
}

// The vertex list of the polygon kernels: row, column, row, column, ...
inline std::vector<int32_t> interleave(const std::vector<Point> &vertices)
{
    std::vector<int32_t> list;
    list.reserve(vertices.size() * 2);
    for (const Point &vertex : vertices) {
        list.push_back(vertex.row);
        list.push_back(vertex.col);
    }
    return list;
}

// Integer images blend with a Q10 opacity (1024 = opaque).
inline int16_t opacityQ10(double opacity)
{
    return static_cast<int16_t>(std::floor(opacity * 1024.0 + 0.5));
}

// Every conversion of a number format must take exactly one value of the
// element type as printf passes it (double, or int); '*' widths and
// precisions would read values that are not there.
template <class T>
void requireNumberFormat(std::string_view format)
{
    detail::require(format.find('\0') == std::string_view::npos, "format", "must not contain a zero byte");
    constexpr bool floating = std::is_floating_point_v<T>;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') {
            continue;
        }
        size_t j = i + 1;
        if (j < format.size() && format[j] == '%') {
            i = j;
            continue;
        }
        while (j < format.size() && std::strchr("-+ #0'", format[j]) != nullptr) ++j;
        while (j < format.size() && format[j] >= '0' && format[j] <= '9') ++j;
        if (j < format.size() && format[j] == '.') {
            ++j;
            while (j < format.size() && format[j] >= '0' && format[j] <= '9') ++j;
        }
        const size_t lengthStart = j;
        while (j < format.size() && (format[j] == 'h' || format[j] == 'l')) ++j;
        const std::string_view length = format.substr(lengthStart, j - lengthStart);
        const char letter = j < format.size() ? format[j] : '\0';
        if (letter == 'n') {
            continue;
        }
        if (floating) {
            detail::require(letter != '\0' && std::strchr("fFeEgGaA", letter) != nullptr &&
                                (length.empty() || length == "l"),
                            "format", "conversions must suit floating-point values (%f %e %g %a, no '*')");
        } else {
            detail::require(letter != '\0' && std::strchr("diouxXc", letter) != nullptr &&
                                (length.empty() || length == "h" || length == "hh"),
                            "format", "conversions must suit integer values (%d %i %o %u %x %X %c, no '*')");
        }
        i = j;
    }
}

} // namespace draw_detail

// ---------------------------------------------------------------------------
// Plain lines

// Sets every pixel of the digital line from `from` to `to` (both ends
// included) to `values`, one value per plane, copied as they are. The line
// is clipped to `clip` (default: the whole image) before it is walked, so a
// clipped line starts afresh at the clipped end.
//   Image<uint8_t> image(100, 200);
//   drawLine(image.view(), {10, 5}, {80, 190}, {255});
//   drawLine(image.view(), {0, 0}, {99, 199}, {128}, ClipRect{20, 60, 20, 60});
template <CopyPixel T>
void drawLine(ImageView<T> image, Point from, Point to, const std::vector<T> &values,
              const std::optional<ClipRect> &clip = std::nullopt)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireOnePerPlane(image, values, "values");
    const ClipRect rect = draw_detail::clipRect(image, clip);
    draw_detail::requireLineSpan(from, to);
    const std::vector<unsigned char> bytes = draw_detail::valueBytes(values);
    ORNEX_Line_Bresenham(from.row, from.col, to.row, to.col, image.data, image.rows, bytes.data(), sizeof(T),
                         rect.rowMin, rect.rowMax, rect.colMin, rect.colMax, image.planes,
                         static_cast<int32_t>(image.planeSize()));
}

// The same for an RGB image, with a red, green and blue value.
//   drawLine(rgb, {10, 5}, {80, 190}, {255, 0, 0});
template <CopyPixel T>
void drawLine(RgbView<T> image, Point from, Point to, const std::array<T, 3> &colour,
              const std::optional<ClipRect> &clip = std::nullopt)
{
    draw_detail::requireCanvas(image, "image");
    const ClipRect rect = draw_detail::clipRect(image, clip);
    draw_detail::requireLineSpan(from, to);
    ORNEX_Line_Bresenham_RGB(from.row, from.col, to.row, to.col, image.red.data, image.green.data, image.blue.data,
                             image.rows(), colour.data(), sizeof(T), rect.rowMin, rect.rowMax, rect.colMin,
                             rect.colMax);
}

// ---------------------------------------------------------------------------
// Anti-aliased lines

// Blends a one-pixel anti-aliased line into the image: along the line, each
// pixel and its two neighbours across it are covered by 1 - distance from
// the ideal line (nothing beyond one pixel), times `opacity`. `colour` has
// one value per plane. Integer images blend in Q10 and wrap rather than
// saturate at the ends of their range. A vertical line given bottom-up
// (from.row > to.row) draws nothing, as the kernel does.
//   Image<float> image(120, 160);
//   drawAntialiasedLine(image.view(), {10, 10}, {90, 150}, {1.0f});
//   drawAntialiasedLine(image.view(), {90, 10}, {10, 150}, {0.5f}, 0.25);
template <BlendPixel T>
void drawAntialiasedLine(ImageView<T> image, Point from, Point to, const std::vector<T> &colour, double opacity = 1.0)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireOnePerPlane(image, colour, "colour");
    draw_detail::requireOpacity(opacity);
    draw_detail::requireLineSpan(from, to);
    const auto table = draw_detail::lineWeightTable(colour.data(), image.planes, opacity);
    const int32_t stride = static_cast<int32_t>(image.planeSize());
    detail::Kernels<T>::antialiasedLine(from.row, from.col, to.row, to.col, image.data, image.rows, 0, image.rows - 1,
                                        0, image.cols - 1, table.data(), 1, image.planes, stride);
}

// The same for an RGB image.
//   drawAntialiasedLine(rgb, {10, 10}, {90, 150}, {255, 128, 0}, 0.8);
template <BlendPixel T>
void drawAntialiasedLine(RgbView<T> image, Point from, Point to, const std::array<T, 3> &colour, double opacity = 1.0)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireOpacity(opacity);
    draw_detail::requireLineSpan(from, to);
    const auto table = draw_detail::lineWeightTable(colour.data(), 3, opacity);
    detail::Kernels<T>::antialiasedLineRgb(from.row, from.col, to.row, to.col, image.red.data, image.green.data,
                                           image.blue.data, image.rows(), 0, image.rows() - 1, 0, image.cols() - 1,
                                           table.data(), 1);
}

// ---------------------------------------------------------------------------
// Circle outlines

namespace draw_detail {

// Walks the first octant (row offset x from 0 up to the diagonal, column
// offset y from the radius down) with the integer midpoint rule and hands
// each point to `plot`.
template <class Plot>
void walkOctant(int32_t radius, Plot plot)
{
    int32_t x = 0, y = radius, d = 3 - 2 * radius;
    while (x <= y) {
        plot(x, y);
        if (d >= 0) {
            d += 4 * (x - y) + 10;
            --y;
        } else {
            d += 4 * x + 6;
        }
        ++x;
    }
}

} // namespace draw_detail

// Sets the pixels of the circle of `radius` around `centre` to `values`
// (one per plane), copied as they are; pixels outside the image are skipped.
//   Image<uint16_t> image(64, 64);
//   drawCircle(image.view(), {32, 32}, 20, {4095});
template <CopyPixel T>
void drawCircle(ImageView<T> image, Point centre, int32_t radius, const std::vector<T> &values)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireOnePerPlane(image, values, "values");
    draw_detail::requireNearOrigin(centre, "centre");
    draw_detail::requireRadius(radius);
    const int32_t stride = static_cast<int32_t>(image.planeSize());
    const std::vector<unsigned char> bytes = draw_detail::valueBytes(values);
    draw_detail::walkOctant(radius, [&](int32_t a, int32_t b) {
        ORNEX_Circle_SymOctantPts(image.data, centre.row, centre.col, a, b, 0, image.rows - 1, 0, image.cols - 1,
                                  bytes.data(), sizeof(T), image.rows, image.planes, stride);
    });
}

// The same for an RGB image.
//   drawCircle(rgb, {32, 32}, 20, {0, 255, 0});
template <CopyPixel T>
void drawCircle(RgbView<T> image, Point centre, int32_t radius, const std::array<T, 3> &colour)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireNearOrigin(centre, "centre");
    draw_detail::requireRadius(radius);
    draw_detail::walkOctant(radius, [&](int32_t a, int32_t b) {
        ORNEX_Circle_SymOctantPts_RGB(image.red.data, image.green.data, image.blue.data, centre.row, centre.col, a, b,
                                      0, image.rows() - 1, 0, image.cols() - 1, colour.data(), sizeof(T),
                                      image.rows());
    });
}

// ---------------------------------------------------------------------------
// Anti-aliased circle outlines

// Blends the anti-aliased outline of the circle of `radius` around `centre`:
// each step shares `colour` between the two pixels either side of the exact
// circle by their distances from it. The four axis pixels (and the four
// diagonal ones, where the octant ends on a pixel) replace the background.
//   Image<double> image(64, 64);
//   drawAntialiasedCircle(image.view(), {32, 32}, 20, {1.0});
template <BlendPixel T>
void drawAntialiasedCircle(ImageView<T> image, Point centre, int32_t radius, const std::vector<T> &colour)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireOnePerPlane(image, colour, "colour");
    draw_detail::requireNearOrigin(centre, "centre");
    draw_detail::requireRadius(radius);
    const int32_t stride = static_cast<int32_t>(image.planeSize());
    const int32_t rowMax = image.rows - 1, colMax = image.cols - 1;
    // The integer members read circle positions from a square-root table.
    if constexpr (std::is_floating_point_v<T>) {
        detail::Kernels<T>::antialiasedCircle(image.data, colour.data(), 0, radius, centre.row, centre.col, 0, rowMax,
                                              0, colMax, image.rows, radius, image.planes, stride);
    } else {
        detail::Kernels<T>::antialiasedCircle(image.data, colour.data(), draw_detail::circleSquareRootTable().data(), 0,
                                              radius, centre.row, centre.col, 0, rowMax, 0, colMax, image.rows, radius,
                                              image.planes, stride);
    }
}

// The same for an RGB image.
//   drawAntialiasedCircle(rgb, {32, 32}, 20, {255, 255, 0});
template <BlendPixel T>
void drawAntialiasedCircle(RgbView<T> image, Point centre, int32_t radius, const std::array<T, 3> &colour)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireNearOrigin(centre, "centre");
    draw_detail::requireRadius(radius);
    const int32_t rowMax = image.rows() - 1, colMax = image.cols() - 1;
    if constexpr (std::is_floating_point_v<T>) {
        detail::Kernels<T>::antialiasedCircleRgb(image.red.data, image.green.data, image.blue.data, colour.data(), 0,
                                                 radius, centre.row, centre.col, 0, rowMax, 0, colMax, image.rows(),
                                                 radius);
    } else {
        detail::Kernels<T>::antialiasedCircleRgb(image.red.data, image.green.data, image.blue.data, colour.data(),
                                                 draw_detail::circleSquareRootTable().data(), 0, radius, centre.row,
                                                 centre.col, 0, rowMax, 0, colMax, image.rows(), radius);
    }
}

// ---------------------------------------------------------------------------
// Filled polygons

namespace draw_detail {

// Logical images go to the kernels as the bytes they are (0 or 1).
template <class T>
using FillElement = std::conditional_t<std::same_as<T, bool>, uint8_t, T>;

template <class T>
FillElement<T> *fillPixels(T *pixels)
{
    return reinterpret_cast<FillElement<T> *>(pixels);
}

// The opacity as the filler of T takes it: in the element type for floating
// images, in Q10 for the others.
template <class T>
auto fillOpacity(double opacity)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(opacity);
    } else {
        return opacityQ10(opacity);
    }
}

inline void requirePolygon(const std::vector<Point> &vertices)
{
    detail::require(vertices.size() >= 3, "vertices", "needs at least 3 points");
    detail::require(vertices.size() <= static_cast<size_t>(std::numeric_limits<int32_t>::max() / 16), "vertices",
                    "too many points");
    for (const Point &vertex : vertices) {
        requireNearOrigin(vertex, "vertices");
    }
}

} // namespace draw_detail

// Fills the closed polygon through `vertices` (the last joins the first)
// with `values` (one per plane) by the even-odd rule, boundary pixels
// included; vertices may lie outside the image. `opacity` blends
// new = value * opacity + old * (1 - opacity). Integer and logical images
// blend in steps of 1/1024: the opacity is rounded to the nearest step,
// halves up, so 0.5 is exactly 512/1024.
//   Image<uint8_t> image(100, 100);
//   fillPolygon(image.view(), {{10, 10}, {10, 80}, {90, 45}}, {200});
//   fillPolygon(image.view(), {{0, 0}, {0, 50}, {50, 50}, {50, 0}}, {255}, 0.5);
template <FillPixel T>
void fillPolygon(ImageView<T> image, const std::vector<Point> &vertices, const std::vector<T> &values,
                 double opacity = 1.0)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requirePolygon(vertices);
    draw_detail::requireOnePerPlane(image, values, "values");
    draw_detail::requireOpacity(opacity);
    const std::vector<int32_t> list = draw_detail::interleave(vertices);
    std::vector<int32_t> edges(16 * vertices.size()), sortRecords(6 * vertices.size());
    const std::vector<draw_detail::FillElement<T>> fillValues(values.begin(), values.end());
    detail::Kernels<T>::fillPolygon(edges.data(), static_cast<int32_t>(list.size()), list.data(), sortRecords.data(),
                                    draw_detail::fillPixels(image.data), 0, image.rows - 1, 0, image.cols - 1,
                                    image.rows, fillValues.data(), draw_detail::fillOpacity<T>(opacity), image.planes,
                                    static_cast<int32_t>(image.planeSize()));
}

// The same for an RGB image.
//   fillPolygon(rgb, {{10, 10}, {10, 80}, {90, 45}}, {255, 0, 255}, 0.75);
template <FillPixel T>
void fillPolygon(RgbView<T> image, const std::vector<Point> &vertices, const std::array<T, 3> &colour,
                 double opacity = 1.0)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requirePolygon(vertices);
    draw_detail::requireOpacity(opacity);
    const std::vector<int32_t> list = draw_detail::interleave(vertices);
    std::vector<int32_t> edges(16 * vertices.size()), sortRecords(6 * vertices.size());
    const std::array<draw_detail::FillElement<T>, 3> fillValues{colour[0], colour[1], colour[2]};
    detail::Kernels<T>::fillPolygonRgb(
        edges.data(), static_cast<int32_t>(list.size()), list.data(), sortRecords.data(),
        draw_detail::fillPixels(image.red.data), draw_detail::fillPixels(image.green.data),
        draw_detail::fillPixels(image.blue.data), 0, image.rows() - 1, 0, image.cols() - 1, image.rows(),
        fillValues.data(), draw_detail::fillOpacity<T>(opacity));
}

// ---------------------------------------------------------------------------
// Anti-aliased filled discs and polygons

// Fills the disc of `radius` around `centre` with `colour` (one value per
// plane), anti-aliased: a pixel wholly inside is blended at `opacity`, a
// pixel the circle passes through at `opacity` times the share of it the
// disc covers (one half when its centre lies on the circle), a pixel outside
// is left alone. Each pixel is blended once, as fillPolygon blends; only
// pixels inside `clip` (default: the whole image) are written.
//   Image<uint8_t> image(64, 64);
//   fillAntialiasedCircle(image.view(), {32, 32}, 20, {255});
//   fillAntialiasedCircle(image.view(), {32, 32}, 20, {128}, 0.5, ClipRect{0, 31, 0, 63});
template <BlendPixel T>
void fillAntialiasedCircle(ImageView<T> image, Point centre, int32_t radius, const std::vector<T> &colour,
                           double opacity = 1.0, const std::optional<ClipRect> &clip = std::nullopt)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireOnePerPlane(image, colour, "colour");
    draw_detail::requireNearOrigin(centre, "centre");
    draw_detail::requireRadius(radius);
    draw_detail::requireOpacity(opacity);
    const ClipRect rect = draw_detail::clipRect(image, clip);
    detail::Kernels<T>::fillAntialiasedCircle(image.data, colour.data(), centre.row, centre.col, rect.rowMin,
                                              rect.rowMax, rect.colMin, rect.colMax, image.rows, radius,
                                              draw_detail::fillOpacity<T>(opacity), image.planes,
                                              static_cast<int32_t>(image.planeSize()));
}

// The same for an RGB image.
//   fillAntialiasedCircle(rgb, {32, 32}, 20, {0.2, 0.4, 1.0}, 0.8);
template <BlendPixel T>
void fillAntialiasedCircle(RgbView<T> image, Point centre, int32_t radius, const std::array<T, 3> &colour,
                           double opacity = 1.0, const std::optional<ClipRect> &clip = std::nullopt)
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireNearOrigin(centre, "centre");
    draw_detail::requireRadius(radius);
    draw_detail::requireOpacity(opacity);
    const ClipRect rect = draw_detail::clipRect(image, clip);
    detail::Kernels<T>::fillAntialiasedCircleRgb(
        image.red.data, image.green.data, image.blue.data, colour.data(), centre.row, centre.col, rect.rowMin,
        rect.rowMax, rect.colMin, rect.colMax, image.rows(), radius, draw_detail::fillOpacity<T>(opacity));
}

// The edge profile of fillAntialiasedPolygon: entry i is the share of a
// pixel whose centre lies (i - 24)/16 pixel inside an edge. This one, the
// box profile clamp(1/2 + (i - 24)/16, 0, 1), runs the edges through the
// vertex centres.
inline std::vector<double> polygonBoxProfile()
{
    std::vector<double> weights(49);
    for (int i = 0; i < 49; ++i) {
        weights[i] = std::clamp(0.5 + (i - 24) / 16.0, 0.0, 1.0);
    }
    return weights;
}

namespace draw_detail {

// Vertex rows and image rows beyond these would wrap the filler's Q10 rows;
// longer edges would wrap the squared lengths of their normals.
inline constexpr int32_t lowestAntialiasedRow = -524288;
inline constexpr int32_t highestAntialiasedRow = 524287;
inline constexpr int64_t maxAntialiasedEdge = 32767;

inline void requireAntialiasedPolygon(const std::vector<Point> &vertices)
{
    requirePolygon(vertices);
    for (size_t k = 0; k < vertices.size(); ++k) {
        const Point from = vertices[k], to = vertices[(k + 1) % vertices.size()];
        detail::require(from.row >= lowestAntialiasedRow && from.row <= highestAntialiasedRow, "vertices",
                        "rows must lie within -524288 .. 524287");
        detail::require(std::llabs(int64_t(to.row) - from.row) <= maxAntialiasedEdge &&
                            std::llabs(int64_t(to.col) - from.col) <= maxAntialiasedEdge,
                        "vertices", "edges must span at most 32767 rows and columns");
    }
}

template <class View>
void requireAntialiasedRows(const View &image)
{
    detail::require(wholeImage(image).rowMax <= highestAntialiasedRow, "image", "must have at most 524288 rows");
}

// The edge profile as the filler of T reads it: in the element type for
// floating images, in Q10 (1024 = all) rounded to nearest for the others.
template <class T>
auto polygonWeightTable(const std::vector<double> &weights)
{
    detail::require(weights.size() == 49, "weights", "needs 49 entries");
    using W = std::conditional_t<std::is_floating_point_v<T>, T, int16_t>;
    std::vector<W> table;
    for (const double weight : weights) {
        detail::require(weight >= 0.0 && weight <= 1.0, "weights", "entries must lie in [0, 1]");
        table.push_back(std::is_floating_point_v<T> ? W(weight) : W(roundToInt(1024.0 * weight)));
    }
    return table;
}

} // namespace draw_detail

// Fills the closed polygon through `vertices` (the last joins the first) by
// the even-odd rule, anti-aliased: each pixel is blended once with `values`
// (one per plane) at `opacity` times the share of it the polygon covers.
// That share comes from the distances of the pixel centre to the edges
// through `weights` (see polygonBoxProfile; entries 0 and 48 always stand
// for none and all); with the box profile an axis-aligned rectangle's sides
// are half covered and its corners a quarter. Only pixels inside `clip`
// (default: the whole image) are written; vertices may lie outside, with
// rows within -524288 .. 524287 and edges at most 32767 rows and columns
// long. Integer and logical images blend in steps of 1/1024, as fillPolygon.
//   Image<uint8_t> image(100, 100);
//   fillAntialiasedPolygon(image.view(), {{10, 10}, {10, 80}, {90, 45}}, {200});
//   fillAntialiasedPolygon(image.view(), {{0, 0}, {0, 50}, {50, 50}}, {255}, 0.5, ClipRect{0, 49, 0, 99});
template <FillPixel T>
void fillAntialiasedPolygon(ImageView<T> image, const std::vector<Point> &vertices, const std::vector<T> &values,
                            double opacity = 1.0, const std::optional<ClipRect> &clip = std::nullopt,
                            const std::vector<double> &weights = polygonBoxProfile())
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireAntialiasedRows(image);
    draw_detail::requireAntialiasedPolygon(vertices);
    draw_detail::requireOnePerPlane(image, values, "values");
    draw_detail::requireOpacity(opacity);
    const ClipRect rect = draw_detail::clipRect(image, clip);
    const auto table = draw_detail::polygonWeightTable<T>(weights);
    const std::vector<int32_t> list = draw_detail::interleave(vertices);
    std::vector<int32_t> edges(16 * vertices.size()), sortRecords(6 * vertices.size());
    const std::vector<draw_detail::FillElement<T>> fillValues(values.begin(), values.end());
    detail::Kernels<T>::fillAntialiasedPolygon(edges.data(), static_cast<int32_t>(list.size()), list.data(),
                                               sortRecords.data(), draw_detail::fillPixels(image.data), rect.rowMin,
                                               rect.rowMax, rect.colMin, rect.colMax, image.rows, fillValues.data(),
                                               draw_detail::fillOpacity<T>(opacity), table.data(), image.planes,
                                               static_cast<int32_t>(image.planeSize()));
}

// The same for an RGB image.
//   fillAntialiasedPolygon(rgb, {{10, 10}, {10, 80}, {90, 45}}, {255, 0, 255}, 0.75);
template <FillPixel T>
void fillAntialiasedPolygon(RgbView<T> image, const std::vector<Point> &vertices, const std::array<T, 3> &colour,
                            double opacity = 1.0, const std::optional<ClipRect> &clip = std::nullopt,
                            const std::vector<double> &weights = polygonBoxProfile())
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireAntialiasedRows(image);
    draw_detail::requireAntialiasedPolygon(vertices);
    draw_detail::requireOpacity(opacity);
    const ClipRect rect = draw_detail::clipRect(image, clip);
    const auto table = draw_detail::polygonWeightTable<T>(weights);
    const std::vector<int32_t> list = draw_detail::interleave(vertices);
    std::vector<int32_t> edges(16 * vertices.size()), sortRecords(6 * vertices.size());
    const std::array<draw_detail::FillElement<T>, 3> fillValues{colour[0], colour[1], colour[2]};
    detail::Kernels<T>::fillAntialiasedPolygonRgb(
        edges.data(), static_cast<int32_t>(list.size()), list.data(), sortRecords.data(),
        draw_detail::fillPixels(image.red.data), draw_detail::fillPixels(image.green.data),
        draw_detail::fillPixels(image.blue.data), rect.rowMin, rect.rowMax, rect.colMin, rect.colMax, image.rows(),
        fillValues.data(), draw_detail::fillOpacity<T>(opacity), table.data());
}

// ---------------------------------------------------------------------------
// Text

// One character of a font: a row-major coverage bitmap (0 empty .. 255
// full) of width x height bytes whose top-left pixel lies xOffset columns
// right of and yOffset rows above the pen, and the columns the pen moves on.
// The bitmap is only viewed; it must outlive the drawing call.
struct Glyph {
    std::span<const uint8_t> bitmap;
    uint16_t width = 0;
    uint16_t height = 0;
    int32_t xOffset = 0;
    int32_t yOffset = 0;
    int32_t advance = 0;
};

// Anything that gives the glyph of a character.
template <class F>
concept GlyphSource =
    std::invocable<const F &, char> && std::convertible_to<std::invoke_result_t<const F &, char>, Glyph>;

struct TextOptions {
    // 1 draws the colour as it is, 0 leaves the image unchanged.
    double opacity = 1.0;
    // Blend each glyph pixel by its coverage; otherwise any ink is full colour.
    bool antiAliased = true;
    // Rows from one baseline to the next at '\n'; 0 hands '\n' to the glyph
    // source like any other character.
    int32_t lineHeight = 0;
};

namespace draw_detail {

struct PlacedGlyph {
    Glyph glyph;
    int32_t row, col;
};

// Lays out the whole text before anything is drawn, so that a bad glyph
// leaves the image untouched.
template <GlyphSource F>
std::vector<PlacedGlyph> layOut(std::string_view text, Point position, const F &glyphs, const TextOptions &options,
                                Point &penAfter)
{
    detail::require(options.lineHeight >= 0, "options.lineHeight", "must not be negative");
    requireOpacity(options.opacity);
    constexpr int64_t lowest = std::numeric_limits<int32_t>::min(), highest = std::numeric_limits<int32_t>::max();
    std::vector<PlacedGlyph> placed;
    int64_t row = position.row, col = position.col;
    for (const char character : text) {
        if (character == '\n' && options.lineHeight > 0) {
            row += options.lineHeight;
            col = position.col;
        } else {
            const Glyph glyph = std::invoke(glyphs, character);
            detail::require(glyph.bitmap.size() >= static_cast<size_t>(glyph.width) * glyph.height, "glyphs",
                            "bitmap shorter than width x height");
            placed.push_back({glyph, static_cast<int32_t>(row), static_cast<int32_t>(col)});
            col += glyph.advance;
        }
        detail::require(row >= lowest && row <= highest && col >= lowest && col <= highest, "text",
                        "runs beyond 32-bit coordinates");
    }
    penAfter = {static_cast<int32_t>(row), static_cast<int32_t>(col)};
    return placed;
}

} // namespace draw_detail

// Draws `text` with the glyphs of `glyphs` (a callable char -> Glyph) into
// the image, the pen starting at `position` (the baseline row and the
// column of the pen), one colour value per plane. Returns where the pen
// ends, to continue the text.
//   auto font = [&](char c) { return Glyph{bitmaps[c], 5, 7, 0, 7, 6}; };
//   Image<double> image(40, 200);
//   drawText(image.view(), "x = 42", {20, 4}, font, {1.0});
template <TextPixel T, GlyphSource F>
Point drawText(ImageView<T> image, std::string_view text, Point position, const F &glyphs, const std::vector<T> &colour,
               const TextOptions &options = {})
{
    draw_detail::requireCanvas(image, "image");
    draw_detail::requireOnePerPlane(image, colour, "colour");
    Point pen;
    const auto placed = draw_detail::layOut(text, position, glyphs, options, pen);
    const ORNEX_DrawTextFcn_I blend = ORNEX_GetDrawTextFcn_I(detail::Kernels<T>::typeCode, options.antiAliased ? 1 : 0);
    const T opacity = static_cast<T>(options.opacity);
    for (const auto &[glyph, row, col] : placed) {
        for (int32_t p = 0; p < image.planes; ++p) {
            blend(glyph.bitmap.data(), col, row, glyph.xOffset, glyph.yOffset, glyph.width, glyph.height, image.cols,
                  image.rows, image.plane(p).data, &colour[p], &opacity, 0);
        }
    }
    return pen;
}

// The same for an RGB image.
//   drawText(rgb, "42", {20, 4}, font, {1.0f, 0.0f, 0.0f}, {.opacity = 0.5});
template <TextPixel T, GlyphSource F>
Point drawText(RgbView<T> image, std::string_view text, Point position, const F &glyphs,
               const std::array<T, 3> &colour, const TextOptions &options = {})
{
    draw_detail::requireCanvas(image, "image");
    Point pen;
    const auto placed = draw_detail::layOut(text, position, glyphs, options, pen);
    const ORNEX_DrawTextFcn_RGB blend =
        ORNEX_GetDrawTextFcn_RGB(detail::Kernels<T>::typeCode, options.antiAliased ? 1 : 0);
    const T opacity = static_cast<T>(options.opacity);
    for (const auto &[glyph, row, col] : placed) {
        blend(glyph.bitmap.data(), col, row, glyph.xOffset, glyph.yOffset, glyph.width, glyph.height, image.cols(),
              image.rows(), image.red.data, image.green.data, image.blue.data, colour.data(), &opacity, 0);
    }
    return pen;
}

// printf-style formatting of numbers of one type: each conversion of
// `format` takes the next value; "%%" is a percent sign and takes none.
// Conversions must suit the type (%d %i %o %u %x %X %c for integers and
// logical values, %f %e %g %a for floating point; %n counts nothing and
// takes a value's place). When the values run out, the rest of the format
// from the next conversion on is left out.
//   formatNumbers("x=%d, y=%d", std::vector<int32_t>{3, 4});   // "x=3, y=4"
//   formatNumbers("%.1f%% of %d", std::vector<double>{99.5}); // "99.5" (the rest waits for a value)
template <FormatNumber T>
std::string formatNumbers(std::string_view format, const std::vector<T> &values)
{
    draw_detail::requireNumberFormat<T>(format);
    detail::require(values.size() <= static_cast<size_t>(std::numeric_limits<int32_t>::max()), "values", "too many");
    using Stored = std::conditional_t<std::same_as<T, bool>, uint8_t, T>;
    std::vector<Stored> stored(values.begin(), values.end());
    const auto valueLimit = static_cast<int32_t>(values.size()) - 1;
    if (stored.empty()) {
        // The kernel does nothing without a value array; with the limit at -1
        // it never reads this one.
        stored.push_back(Stored{});
    }
    // Without a '%' the format is copied whole, so the first size must hold
    // it. A cut output always fills the buffer, so a full buffer is tried
    // again with twice the room.
    size_t size = std::max<size_t>(64, 2 * format.size() + 2);
    for (;;) {
        detail::require(size <= static_cast<size_t>(1) << 30, "format", "output longer than 1 GiB");
        std::string writableFormat(format);
        std::vector<char> out(size, '\0');
        ORNEX_snprintf(out.data(), writableFormat.data(), stored.data(), valueLimit, detail::Kernels<T>::typeCode, 0,
                       static_cast<int32_t>(size));
        const size_t length = std::strlen(out.data());
        if (length + 1 < size) {
            return std::string(out.data(), length);
        }
        size *= 2;
    }
}

} // namespace ornex

#pragma once

// Geometric transforms: projective transforms between a rectangle or a
// quadrilateral and a quadrilateral, the subdivided projective warp of whole
// images, and shear.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "ornex/image.hpp"
#include "ornex/kernels.hpp"
#include "ornex_rt.h"

namespace ornex {

namespace detail {

template <class T>
concept GeometryReal = requires { Kernels<T>::warpQuad; };

} // namespace detail

// How an image is sampled between pixels.
enum class Interpolation : int32_t { nearest = 1, bilinear = 2, bicubic = 3 };

// An axis-aligned rectangle: its first row and column and its size.
struct Rect {
    int32_t row = 0;
    int32_t col = 0;
    int32_t rows = 0;
    int32_t cols = 0;
};

// Four corners going round: the one standing for the first row and column,
// then first row and last column, last row and column, last row and first
// column.
using Quad = std::array<Point, 4>;

// A projective transform from a source region (a rectangle or a
// quadrilateral of the source image) onto a quadrilateral of the output.
// block holds the two 3x3 matrices in the order the matching warp reads
// them: for a rectangle source, 0-8 source to output and 9-17 output to
// source; for a quadrilateral source the other way round. Matrices are
// stored column by column and act on the row vector [column row 1].
template <class T>
struct ProjectiveTransform {
    std::array<T, 18> block{};
    bool fromQuad = false;
    Rect rect;  // the source region when !fromQuad
    Quad quad;  // the source region when fromQuad
};

namespace detail {

inline std::array<int32_t, 8> quadCorners(const Quad &quad)
{
    return {quad[0].row, quad[0].col, quad[1].row, quad[1].col,
            quad[2].row, quad[2].col, quad[3].row, quad[3].col};
}

inline bool regionInside(const Quad &quad, int32_t rows, int32_t cols)
{
    for (const Point &p : quad) {
        if (p.row < 0 || p.row >= rows || p.col < 0 || p.col >= cols) {
            return false;
        }
    }
    return true;
}

inline bool regionInside(const Rect &rect, int32_t rows, int32_t cols)
{
    return rect.row >= 0 && rect.col >= 0 && rect.rows <= rows - rect.row && rect.cols <= cols - rect.col;
}

inline void requireSourceExtent(int32_t sourceRows, int32_t sourceCols)
{
    require(sourceRows > 0, "sourceRows", "must be positive");
    require(sourceCols > 0, "sourceCols", "must be positive");
}

// Corners further out would let the corner differences and their cross
// products leave 64-bit integers.
inline constexpr int64_t maxCornerCoordinate = int64_t(1) << 29;

// A projective map carries a rectangle onto a convex quadrilateral, and only
// then keeps every output pixel's source position finite and inside the
// source region; any other corners would have the warp read outside.
inline void requireConvexQuad(const Quad &quad, const char *argument)
{
    for (const Point &p : quad) {
        require(std::llabs(p.row) <= maxCornerCoordinate && std::llabs(p.col) <= maxCornerCoordinate, argument,
                "corners must lie within -536870912 .. 536870912");
    }
    int turn = 0;
    for (size_t k = 0; k < 4; ++k) {
        const Point &a = quad[k], &b = quad[(k + 1) % 4], &c = quad[(k + 2) % 4];
        const int64_t cross = (int64_t(b.col) - a.col) * (int64_t(c.row) - b.row) -
                              (int64_t(b.row) - a.row) * (int64_t(c.col) - b.col);
        const int sign = (cross > 0) - (cross < 0);
        require(sign != 0 && (turn == 0 || sign == turn), argument,
                "must be a convex quadrilateral with its corners going round");
        turn = sign;
    }
}

// The divisor w of the matrix at block[first] at (row, column).
template <class T>
double divisorAt(const std::array<T, 18> &block, size_t first, double row, double col)
{
    return col * double(block[first + 6]) + row * double(block[first + 7]) + double(block[first + 8]);
}

// Whether that divisor keeps one sign, never zero, at every point (row,
// column).
template <class T, size_t N>
bool divisorKeepsSign(const std::array<T, 18> &block, size_t first, const std::array<std::array<double, 2>, N> &points)
{
    int side = 0;
    for (const auto &[row, col] : points) {
        const double w = divisorAt(block, first, row, col);
        const int sign = (w > 0) - (w < 0);
        if (sign == 0 || (side != 0 && sign != side)) {
            return false;
        }
        side = sign;
    }
    return true;
}

// The four points a pixel diagonally around each point.
template <size_t N>
std::array<std::array<double, 2>, 4 * N> pixelAround(const std::array<std::array<double, 2>, N> &points)
{
    std::array<std::array<double, 2>, 4 * N> around{};
    for (size_t k = 0; k < 4 * N; ++k) {
        around[k] = {points[k / 4][0] + (k % 2 ? 1 : -1), points[k / 4][1] + (k / 2 % 2 ? 1 : -1)};
    }
    return around;
}

inline std::array<std::array<double, 2>, 4> cornerPoints(const Quad &quad)
{
    std::array<std::array<double, 2>, 4> points{};
    for (size_t k = 0; k < 4; ++k) {
        points[k] = {double(quad[k].row), double(quad[k].col)};
    }
    return points;
}

// The warp fills each cell pixel by pixel, reaching up to half a pixel past
// the target quadrilateral; the output-to-source divisor w, linear across
// the output, must keep its sign a pixel around every corner, or a position
// there would not be a number.
template <class T>
void requireRoomBeforeHorizon(const std::array<T, 18> &block, bool fromQuad, const Quad &to)
{
    require(divisorKeepsSign(block, fromQuad ? 0 : 9, pixelAround(cornerPoints(to))), "to",
            "comes within a pixel of where the transform divides by zero");
}

// With subdivisions the quadrilateral warp rounds its division points to
// whole pixels, so a cell corner may lie up to a pixel outside the source
// quadrilateral (a thin one especially). Such a corner must still map to a
// finite point: the forward divisor keeps its sign a pixel around every
// source corner. The cells then fill the image of that margin and a pixel
// more, where the sampling divisor must keep its sign.
template <class T>
void requireCellsClearOfHorizon(const std::array<T, 18> &block, const Quad &from)
{
    const char *const constraint = "cut the source quadrilateral into cells that reach past where the transform "
                                   "divides by zero; use none, or a fuller quadrilateral";
    const auto margin = pixelAround(cornerPoints(from));
    require(divisorKeepsSign(block, 9, margin), "subdivisions", constraint);
    std::array<std::array<double, 2>, margin.size()> image{};
    for (size_t k = 0; k < margin.size(); ++k) {
        const auto [row, col] = margin[k];
        const double w = divisorAt(block, 9, row, col);
        image[k] = {(col * double(block[12]) + row * double(block[13]) + double(block[14])) / w,
                    (col * double(block[9]) + row * double(block[10]) + double(block[11])) / w};
    }
    require(divisorKeepsSign(block, 0, pixelAround(image)), "subdivisions", constraint);
}

template <class T>
void requireFiniteMatrices(const std::array<T, 18> &block, const char *argument, const char *constraint)
{
    for (const T value : block) {
        require(std::isfinite(value), argument, constraint);
    }
}

} // namespace detail

// ---------------------------------------------------------------------------
// Projective transforms

// The transform that carries the rectangle rect of a sourceRows x sourceCols
// image onto the quadrilateral to (corner k of the rectangle onto to[k]),
// which must be convex with its corners going round (either way), within
// -2^29 .. 2^29, and keep a pixel clear of the transform's horizon.
// Both matrices take image coordinates: the rectangle's origin is taken off
// on the way in and added back on the way out.
//   ornex::Quad to{{{0, 4}, {2, 40}, {30, 44}, {28, 0}}};
//   auto t = ornex::homography<float>(ornex::Rect{0, 0, 32, 48}, to, image.rows(), image.cols());
//   auto out = ornex::warp(image.view(), 32, 48, t);
template <detail::GeometryReal T = double>
ProjectiveTransform<T> homography(const Rect &rect, const Quad &to, int32_t sourceRows, int32_t sourceCols)
{
    detail::requireSourceExtent(sourceRows, sourceCols);
    detail::require(rect.rows >= 2 && rect.cols >= 2, "rect", "must have at least two rows and two columns");
    detail::require(detail::regionInside(rect, sourceRows, sourceCols), "rect", "must lie inside the image");
    detail::requireConvexQuad(to, "to");
    ProjectiveTransform<T> transform;
    transform.rect = rect;
    const auto points = detail::quadCorners(to);
    const std::array<int32_t, 4> rectangle{rect.row, rect.col, rect.rows, rect.cols};
    // Mode 2 with the inverse offset: the forward matrix takes the origin
    // off and the adjugate adds it back, which is what the warp expects.
    detail::Kernels<T>::rectTransform(points.data(), rectangle.data(), uint32_t(sourceRows), uint32_t(sourceCols), 2,
                                      1, 1, transform.block.data());
    detail::requireFiniteMatrices(transform.block, "to", "too far out for this precision");
    detail::requireRoomBeforeHorizon(transform.block, false, to);
    return transform;
}

// The transform that carries the quadrilateral from of a sourceRows x
// sourceCols image onto the quadrilateral to (from[k] onto to[k]), both
// convex as above. Both are
// first mapped from a sourceRows x sourceCols rectangle; the result is not
// normalised.
//   ornex::Quad from{{{2, 2}, {0, 30}, {25, 28}, {20, 0}}};
//   ornex::Quad to{{{0, 0}, {0, 31}, {31, 31}, {31, 0}}};
//   auto out = ornex::warp(image.view(), 32, 32, ornex::homography(from, to, image.rows(), image.cols()));
template <detail::GeometryReal T = double>
ProjectiveTransform<T> homography(const Quad &from, const Quad &to, int32_t sourceRows, int32_t sourceCols)
{
    detail::requireSourceExtent(sourceRows, sourceCols);
    detail::require(detail::regionInside(from, sourceRows, sourceCols), "from", "must lie inside the image");
    detail::requireConvexQuad(from, "from");
    detail::requireConvexQuad(to, "to");
    ProjectiveTransform<T> transform;
    transform.fromQuad = true;
    transform.quad = from;
    const auto first = detail::quadCorners(from), second = detail::quadCorners(to);
    std::array<T, 54> block{};
    detail::Kernels<T>::quadTransform(first.data(), uint32_t(sourceRows), uint32_t(sourceCols), block.data(),
                                      second.data(), 1);
    // 36-44 map the output quadrilateral back to the source one, 45-53 the
    // source forward: the quadrilateral warp reads them in that order.
    std::copy(block.begin() + 36, block.end(), transform.block.begin());
    detail::requireFiniteMatrices(transform.block, "to", "too far out for this precision");
    detail::requireRoomBeforeHorizon(transform.block, true, to);
    return transform;
}

// ---------------------------------------------------------------------------
// Projective warp

struct WarpOptions {
    Interpolation interpolation = Interpolation::bilinear;
    // true: every sample position is divided exactly; false: positions follow
    // a quadratic along each output column span of a cell (cheaper, close
    // when the cells are small).
    bool exact = true;
    // D: the source region is cut into (D + 1) x (D + 1) cells, each mapped
    // by its corners and filled on its own.
    int32_t subdivisions = 4;
    // Written to every output pixel first: one value for all planes or one
    // per plane (converted to the element type).
    std::vector<double> background{0.0};
};

namespace detail {

template <GeometryReal T>
struct WarpPlanes {
    const T *in[3];
    int32_t rows, cols, planes;
    bool threePlanes;
};

template <GeometryReal T>
Image<T> warp(const WarpPlanes<T> &source, int32_t outputRows, int32_t outputCols,
              const ProjectiveTransform<T> &transform, const WarpOptions &options)
{
    require(outputRows > 0, "outputRows", "must be positive");
    require(outputCols > 0, "outputCols", "must be positive");
    require(options.subdivisions >= 0, "subdivisions", "must not be negative");
    require(options.interpolation == Interpolation::nearest || options.interpolation == Interpolation::bilinear ||
                options.interpolation == Interpolation::bicubic,
            "interpolation", "must be nearest, bilinear or bicubic");
    require(options.background.size() == 1 || options.background.size() == size_t(source.planes), "background",
            "needs one value or one per plane");
    require(transform.fromQuad ? regionInside(transform.quad, source.rows, source.cols)
                               : regionInside(transform.rect, source.rows, source.cols),
            "transform", "its source region must lie inside the source image");
    requireFiniteMatrices(transform.block, "transform", "its matrices must be finite");
    if (transform.fromQuad && options.subdivisions > 0) {
        requireCellsClearOfHorizon(transform.block, transform.quad);
    }

    Image<T> output(outputRows, outputCols, source.planes);
    const ImageView<T> out = output.view();
    T *const outPlanes[3] = {out.data, source.threePlanes ? out.plane(1).data : nullptr,
                             source.threePlanes ? out.plane(2).data : nullptr};
    std::vector<T> background(options.background.begin(), options.background.end());
    const uint8_t oneValueForAll = background.size() == 1 ? 1 : 0;
    const uint8_t threePlanes = source.threePlanes ? 1 : 0;
    const int32_t numPlanes = source.threePlanes ? 1 : source.planes;
    const auto method = static_cast<int32_t>(options.interpolation);
    const uint8_t exact = options.exact ? 1 : 0;
    std::vector<int32_t> edgeBuffer(64), sortScratch(24);
    int32_t drawn = 1;
    Kernels<T>::fillBackground(background.data(), outPlanes[0], outPlanes[1], outPlanes[2], outputRows, outputCols,
                               threePlanes, oneValueForAll, numPlanes);
    if (transform.fromQuad) {
        const auto quad = quadCorners(transform.quad);
        drawn = Kernels<T>::warpQuad(edgeBuffer.data(), quad.data(), sortScratch.data(), outPlanes[0], outPlanes[1],
                                     outPlanes[2], 0, outputRows - 1, 0, outputCols - 1, source.rows, threePlanes,
                                     transform.block.data(), source.in[0], source.in[1], source.in[2], exact,
                                     outputRows, outputCols, source.cols, method, options.subdivisions, numPlanes);
    } else {
        // The warp reads the last two values as row and column limits, not
        // as sizes.
        const Rect &r = transform.rect;
        const std::array<int32_t, 4> limits{r.row, r.col, r.row + r.rows, r.col + r.cols};
        Kernels<T>::warpRect(edgeBuffer.data(), limits.data(), sortScratch.data(), outPlanes[0], outPlanes[1],
                             outPlanes[2], 0, outputRows - 1, 0, outputCols - 1, source.rows, threePlanes,
                             transform.block.data(), source.in[0], source.in[1], source.in[2], exact, outputRows,
                             outputCols, source.cols, method, 0, 0, options.subdivisions, 1, numPlanes);
    }
    require(drawn != 0, "subdivisions", "too many for the source quadrilateral: a cell has collinear corners");
    return output;
}

} // namespace detail

// Warps every plane of source through transform into an outputRows x
// outputCols image. Output pixels outside the mapped region keep the
// background; sample positions are clamped to the source image.
//   auto t = ornex::homography<double>(ornex::Rect{0, 0, image.rows(), image.cols()}, to, image.rows(), image.cols());
//   ornex::WarpOptions options;
//   options.interpolation = ornex::Interpolation::bicubic;
//   ornex::Image<double> out = ornex::warp(image.view(), 64, 64, t, options);
template <detail::GeometryReal T>
Image<T> warp(std::type_identity_t<ImageView<const T>> source, int32_t outputRows, int32_t outputCols,
              const ProjectiveTransform<T> &transform, const WarpOptions &options = {})
{
    detail::requireImage(source, "source");
    return detail::warp<T>({{source.data, nullptr, nullptr}, source.rows, source.cols, source.planes, false},
                           outputRows, outputCols, transform, options);
}

// The same for three separate colour planes; the result has three planes
// (red, green, blue).
//   ornex::RgbView<float> rgb{red.view(), green.view(), blue.view()};
//   ornex::Image<float> out = ornex::warp(rgb, 64, 64, t);
template <class T>
    requires detail::GeometryReal<std::remove_const_t<T>>
Image<std::remove_const_t<T>> warp(const RgbView<T> &source, int32_t outputRows, int32_t outputCols,
                                   const ProjectiveTransform<std::remove_const_t<T>> &transform,
                                   const WarpOptions &options = {})
{
    detail::requireRgb(source, "source");
    return detail::warp<std::remove_const_t<T>>(
        {{source.red.data, source.green.data, source.blue.data}, source.rows(), source.cols(), 3, true}, outputRows,
        outputCols, transform, options);
}

// ---------------------------------------------------------------------------
// Shear

enum class ShearDirection {
    horizontal, // rows slide along themselves: row r moves right by amount * r
    vertical,   // columns slide along themselves: column c moves down by amount * c
};

struct ShearOptions {
    Interpolation interpolation = Interpolation::bilinear;
    // Fills what no shifted line covers: one value for all planes or one per
    // plane (converted to the element type).
    std::vector<double> background{0.0};
};

namespace detail {

// Rows sheared together by the horizontal shear.
constexpr int32_t shearBandRows = 64;

template <GeometryReal T>
Image<T> shear(ImageView<const T> image, ShearDirection direction, double amount, const ShearOptions &options)
{
    requireImage(image, "image");
    require(direction == ShearDirection::horizontal || direction == ShearDirection::vertical, "direction",
            "must be horizontal or vertical");
    require(std::isfinite(amount), "amount", "must be finite");
    require(options.interpolation == Interpolation::nearest || options.interpolation == Interpolation::bilinear ||
                options.interpolation == Interpolation::bicubic,
            "interpolation", "must be nearest, bilinear or bicubic");
    require(options.background.size() == 1 || options.background.size() == size_t(image.planes), "background",
            "needs one value or one per plane");
    const bool horizontal = direction == ShearDirection::horizontal;
    const int32_t lines = horizontal ? image.rows : image.cols;
    const int32_t lineLength = horizontal ? image.cols : image.rows;
    const double spread = std::ceil(std::abs(amount) * (lines - 1));
    require(spread <= double(std::numeric_limits<int32_t>::max() - lineLength), "amount", "too large for the image");
    const int32_t outLength = lineLength + static_cast<int32_t>(spread);

    Image<T> output(horizontal ? image.rows : outLength, horizontal ? outLength : image.cols, image.planes);
    const ImageView<T> out = output.view();
    const std::vector<T> background(options.background.begin(), options.background.end());
    const auto skew = options.interpolation == Interpolation::nearest    ? Kernels<T>::shearNearest
                      : options.interpolation == Interpolation::bilinear ? Kernels<T>::shearBilinear
                                                                         : Kernels<T>::shearBicubic;
    auto offsetOf = [&](int32_t i) {
        const double shift = amount >= 0 ? amount * i : -amount * (lines - 1 - i);
        return static_cast<T>(shift);
    };
    // A row of a column-major image lies a whole column apart value by
    // value. Rows are sheared in bands: a band is copied out so that each of
    // its rows is contiguous, each row is sheared on its own with the same
    // kernel at stride 1, and the shifted rows are copied back into place.
    // The band's rows lie an odd number of 64-byte lines apart, so that
    // they do not all fall into the same cache sets.
    auto pitchOf = [](int32_t length) {
        constexpr size_t perLine = 64 / sizeof(T);
        return ((size_t(length) + perLine - 1) / perLine | 1) * perLine;
    };
    const size_t pitchIn = pitchOf(lineLength), pitchOut = pitchOf(outLength);
    std::vector<T> bandIn, bandOut;
    if (horizontal) {
        const auto bandRows = size_t(std::min(shearBandRows, lines));
        bandIn.resize(bandRows * pitchIn);
        bandOut.resize(bandRows * pitchOut);
    }
    for (int32_t p = 0; p < image.planes; ++p) {
        const T *in = image.data + p * image.planeSize();
        T *target = out.data + p * out.planeSize();
        const T *fill = &background[background.size() == 1 ? 0 : size_t(p)];
        if (!horizontal) {
            for (int32_t i = 0; i < lines; ++i) {
                skew(in + ptrdiff_t(i) * image.rows, lineLength, outLength, offsetOf(i), 1, 1,
                     target + ptrdiff_t(i) * out.rows, 0, fill);
            }
            continue;
        }
        for (int32_t first = 0; first < lines; first += shearBandRows) {
            const int32_t band = std::min(shearBandRows, lines - first);
            for (int32_t c = 0; c < lineLength; ++c) {
                const T *column = in + ptrdiff_t(c) * image.rows + first;
                for (int32_t i = 0; i < band; ++i) {
                    bandIn[size_t(i) * pitchIn + size_t(c)] = column[i];
                }
            }
            for (int32_t i = 0; i < band; ++i) {
                skew(bandIn.data() + size_t(i) * pitchIn, lineLength, outLength, offsetOf(first + i), 1,
                     1, bandOut.data() + size_t(i) * pitchOut, 0, fill);
            }
            for (int32_t k = 0; k < outLength; ++k) {
                T *column = target + ptrdiff_t(k) * out.rows + first;
                for (int32_t i = 0; i < band; ++i) {
                    column[i] = bandOut[size_t(i) * pitchOut + size_t(k)];
                }
            }
        }
    }
    return output;
}

} // namespace detail

// Shears every plane of an image. Horizontal: row r is shifted along itself
// by amount * r columns; vertical: column c by amount * c rows. A negative
// amount shifts the other way, measured from the last line, so that every
// offset is >= 0. Each line grows by ceil(|amount| * (lines - 1)), where
// lines is the number of rows (horizontal) or columns (vertical): a rows x
// cols image becomes rows x (cols + that) or (rows + that) x cols. The
// interpolated values at the ends of a shifted line blend with the
// background; what reaches past the output (the cubic tails) is cut.
//   auto slanted = ornex::shear(image, ornex::ShearDirection::horizontal, 0.5);
//   auto up = ornex::shear(image, ornex::ShearDirection::vertical, -0.25,
//                          {ornex::Interpolation::bicubic, {1.0}});
inline Image<float> shear(ImageView<const float> image, ShearDirection direction, double amount,
                          const ShearOptions &options = {})
{
    return detail::shear<float>(image, direction, amount, options);
}
inline Image<double> shear(ImageView<const double> image, ShearDirection direction, double amount,
                           const ShearOptions &options = {})
{
    return detail::shear<double>(image, direction, amount, options);
}

} // namespace ornex

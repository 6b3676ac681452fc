// Subdivided projective warp, double and single: the rectangle driver with
// the matrices of ORNEX_CalculateXformMtrx_*, the quadrilateral driver with
// those of ORNEX_CalculateQ2QXformMtrx_*, all three sampling methods, exact
// and approximate positions, 0..5 subdivisions, after
// ORNEX_FillBackgroundValues_*.
// Kept in range, as the header asks: every quadrilateral convex with its
// corners going round (a projective map of a rectangle is only then finite
// and one-to-one over it), source regions inside the source image, finite
// matrices whose sampling divisor w keeps one sign, well away from zero,
// over the bounding box, widened by a pixel, of every output point a cell
// can cover (cells are rounded to pixels, so spans reach half a pixel past
// the exact quadrilateral, and a pixel with w = 0 is sampled at a position
// that is not a number, which the header lets pass the clamps); for the
// quadrilateral driver the cells' corners can lie a pixel outside the
// source quadrilateral, so the forward divisor keeps its sign over that
// margin and its image counts as covered. The output window is no larger
// than the output buffer (its index formula stays inside), lower bounds lie
// within the source.
// Sizes up to 16.
#include <cmath>

#include "fuzz_input.hpp"
#include "ornex_rt.h"

namespace {

using Quad = std::array<int32_t, 8>;

Quad randomQuad(FuzzInput &in, int32_t rowLow, int32_t rowHigh, int32_t colLow, int32_t colHigh)
{
    Quad q;
    for (size_t k = 0; k < 8; k += 2) {
        q[k] = in.range(rowLow, rowHigh);
        q[k + 1] = in.range(colLow, colHigh);
    }
    return q;
}

bool convex(const Quad &q)
{
    int turn = 0;
    for (size_t k = 0; k < 4; ++k) {
        const int32_t *a = &q[2 * k], *b = &q[2 * ((k + 1) % 4)], *c = &q[2 * ((k + 2) % 4)];
        const int64_t cross = int64_t(b[1] - a[1]) * (c[0] - b[0]) - int64_t(b[0] - a[0]) * (c[1] - b[1]);
        const int sign = (cross > 0) - (cross < 0);
        if (sign == 0 || (turn != 0 && sign != turn))
            return false;
        turn = sign;
    }
    return true;
}

// w = column m6 + row m7 + m8 at (row, column).
template <class T>
double divisorAt(const T *m, double row, double col)
{
    return col * double(m[6]) + row * double(m[7]) + double(m[8]);
}

// Whether w keeps one sign, well away from zero, at the points; w is
// linear, so then also between them.
template <class T>
bool divisorKeepsSign(const T *m, const std::vector<std::array<double, 2>> &points)
{
    double low = INFINITY, high = -INFINITY;
    for (const auto &[row, col] : points) {
        const double w = divisorAt(m, row, col);
        low = std::min(low, w);
        high = std::max(high, w);
    }
    return low > 1e-4 * high || high < 1e-4 * low;
}

// The corners of the bounding box of the points, widened by a pixel.
std::vector<std::array<double, 2>> boxAround(const std::vector<std::array<double, 2>> &points)
{
    double rowLow = INFINITY, rowHigh = -INFINITY, colLow = INFINITY, colHigh = -INFINITY;
    for (const auto &[row, col] : points) {
        rowLow = std::min(rowLow, row - 1), rowHigh = std::max(rowHigh, row + 1);
        colLow = std::min(colLow, col - 1), colHigh = std::max(colHigh, col + 1);
    }
    return {{rowLow, colLow}, {rowLow, colHigh}, {rowHigh, colLow}, {rowHigh, colHigh}};
}

// The four points a pixel diagonally around each point.
std::vector<std::array<double, 2>> pixelAround(const std::vector<std::array<double, 2>> &points)
{
    std::vector<std::array<double, 2>> around;
    for (const auto &[row, col] : points)
        for (const double dRow : {-1, 1})
            for (const double dCol : {-1, 1})
                around.push_back({row + dRow, col + dCol});
    return around;
}

std::vector<std::array<double, 2>> cornersOf(const Quad &q)
{
    return {{double(q[0]), double(q[1])}, {double(q[2]), double(q[3])}, {double(q[4]), double(q[5])},
            {double(q[6]), double(q[7])}};
}

// The cells of the quadrilateral driver have their corners rounded to
// whole pixels, up to a pixel outside the source quadrilateral: the forward
// divisor must keep its sign over that margin, and the points of the margin
// are mapped into the output, where the cells are filled.
template <class T>
bool cellCornersMapped(const T *forward, const Quad &from, std::vector<std::array<double, 2>> &mapped)
{
    const auto margin = pixelAround(cornersOf(from));
    if (!divisorKeepsSign(forward, margin))
        return false;
    for (const auto &[row, col] : margin) {
        const double w = divisorAt(forward, row, col);
        mapped.push_back({(col * double(forward[3]) + row * double(forward[4]) + double(forward[5])) / w,
                          (col * double(forward[0]) + row * double(forward[1]) + double(forward[2])) / w});
    }
    return true;
}

template <class T, auto rectMatrix, auto quadMatrix, auto warpRect, auto warpQuad, auto fillBackground>
void run(FuzzInput &in)
{
    const int32_t inRows = in.range(2, 16), inCols = in.range(2, 16);
    const int32_t outRows = in.range(1, 16), outCols = in.range(1, 16);
    const bool threePlanes = in.flag();
    const int32_t numPlanes = threePlanes ? 1 : in.range(1, 3);
    const bool fromQuad = in.flag(), exact = in.flag();
    const int32_t method = in.range(1, 3), divisions = in.range(0, 5);
    const int32_t rowFirst = in.range(-8, 8), colFirst = in.range(-8, 8);
    const int32_t rowLast = rowFirst + in.range(0, outRows - 1), colLast = colFirst + in.range(0, outCols - 1);
    const Quad to = randomQuad(in, rowFirst - 8, rowLast + 8, colFirst - 8, colLast + 8);

    std::array<T, 18> block;
    Quad from{};
    std::array<int32_t, 4> limits{0, 0, inRows, inCols};
    const bool useRect = in.flag();
    if (fromQuad) {
        from = randomQuad(in, 0, inRows - 1, 0, inCols - 1);
        if (!convex(from))
            return;
        std::array<T, 54> both;
        quadMatrix(from.data(), uint32_t(inRows), uint32_t(inCols), both.data(), to.data(), 1);
        std::copy(both.begin() + 36, both.end(), block.begin());
    } else {
        if (useRect) {
            limits[0] = in.range(0, inRows - 2);
            limits[1] = in.range(0, inCols - 2);
            limits[2] = limits[0] + in.range(2, inRows - limits[0]);
            limits[3] = limits[1] + in.range(2, inCols - limits[1]);
        }
        const int32_t rectangle[4] = {limits[0], limits[1], limits[2] - limits[0], limits[3] - limits[1]};
        rectMatrix(to.data(), rectangle, uint32_t(inRows), uint32_t(inCols), 2, 1, 1, block.data());
    }
    if (!convex(to) || !std::all_of(block.begin(), block.end(), [](T v) { return std::isfinite(v); }))
        return;
    // Where the cells are filled: the target quadrilateral, and for the
    // quadrilateral driver the image of the cells' margin.
    std::vector<std::array<double, 2>> filled = cornersOf(to);
    if (fromQuad && !cellCornersMapped(block.data() + 9, from, filled))
        return;
    if (!divisorKeepsSign(block.data() + (fromQuad ? 0 : 9), boxAround(filled)))
        return;
    const int32_t rowLowerBound = in.range(0, inRows - 1), colLowerBound = in.range(0, inCols - 1);

    const size_t inPlane = size_t(inRows) * inCols, outPlane = size_t(outRows) * outCols;
    std::vector<T> source = in.reals<T>(inPlane * (threePlanes ? 3 : numPlanes), 4);
    std::vector<T> output(outPlane * (threePlanes ? 3 : numPlanes));
    const T *in0 = source.data(), *in1 = threePlanes ? in0 + inPlane : nullptr,
            *in2 = threePlanes ? in0 + 2 * inPlane : nullptr;
    T *out0 = output.data(), *out1 = threePlanes ? out0 + outPlane : nullptr,
      *out2 = threePlanes ? out0 + 2 * outPlane : nullptr;
    const T background[3] = {T(in.real(4)), T(in.real(4)), T(in.real(4))};
    std::vector<int32_t> edgeBuffer(64), sortScratch(24);

    fillBackground(background, out0, out1, out2, outRows, outCols, threePlanes, in.flag(), numPlanes);
    if (fromQuad)
        warpQuad(edgeBuffer.data(), from.data(), sortScratch.data(), out0, out1, out2, rowFirst, rowLast, colFirst,
                 colLast, inRows, threePlanes, block.data(), in0, in1, in2, exact, outRows, outCols, inCols, method,
                 divisions, numPlanes);
    else
        warpRect(edgeBuffer.data(), limits.data(), sortScratch.data(), out0, out1, out2, rowFirst, rowLast, colFirst,
                 colLast, inRows, threePlanes, block.data(), in0, in1, in2, exact, outRows, outCols, inCols, method,
                 rowLowerBound, colLowerBound, divisions, useRect, numPlanes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    if (in.flag())
        run<double, ORNEX_CalculateXformMtrx_D, ORNEX_CalculateQ2QXformMtrx_D, ORNEX_DivideRectXform_D,
            ORNEX_DivideQuadXform_D, ORNEX_FillBackgroundValues_D>(in);
    else
        run<float, ORNEX_CalculateXformMtrx_R, ORNEX_CalculateQ2QXformMtrx_R, ORNEX_DivideRectXform_R,
            ORNEX_DivideQuadXform_R, ORNEX_FillBackgroundValues_R>(in);
    return 0;
}

#include "ornex_rt.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <type_traits>

#include "draw/column_sweep.hpp"
#include "frame/simd_level.hpp"
#include "geometry/projective_warp.hpp"
#include "geometry/repeated_sum.hpp"
#include "geometry/second_order_sum.hpp"
#include "geometry/sample_runs.hpp"

namespace ornex::geometry {
namespace {

// Below this many rows before the window, stepping them is as quick.
constexpr int64_t rowsSteppedOneByOne = 32;

// The positions after rows that only step them, out of line and returned
// by value, so that the walks' own loops keep their values in registers.
template <class T>
[[gnu::noinline]] std::array<T, 3> skipExactRows(T q, T dq, T p, T dp, T w, T dw, uint64_t rows)
{
    return {repeatedSum(q, dq, rows), repeatedSum(p, dp, rows), repeatedSum(w, dw, rows)};
}

template <class T>
[[gnu::noinline]] std::array<T, 4> skipQuadraticRows(T y, T stepY, T changeY, T x, T stepX, T changeX, uint64_t rows)
{
    secondOrderSum(y, stepY, changeY, rows);
    secondOrderSum(x, stepX, changeX, rows);
    return {y, stepY, x, stepX};
}

// Walks the rows spanStart .. spanEnd of one output column with the source
// position of each, found exactly (one division per coordinate) or on the
// quadratic through the span's two ends and its homogeneous middle, and
// hands visit(row, y, x) the rows firstVisited .. lastVisited. Every row up
// to the last visited one steps the position.
template <class T, class Visit>
void walkSpan(const T *matrix, int32_t column, int32_t spanStart, int32_t spanEnd, bool exact, int32_t firstVisited,
              int32_t lastVisited, const Visit &visit)
{
    const Homogeneous<T> first = mapHomogeneous(spanStart, column, matrix);
    const Homogeneous<T> last = mapHomogeneous(spanEnd, column, matrix);
    const int32_t steps = wrapSub(spanEnd, spanStart);
    if (steps < 0) {
        return;
    }
    if (steps == 0) {
        visit(spanStart, first.q / first.w, first.p / first.w);
        return;
    }
    const T t = T(1) / T(steps);
    if (exact) {
        const T dq = (last.q - first.q) * t, dp = (last.p - first.p) * t, dw = (last.w - first.w) * t;
        T q = first.q, p = first.p, w = first.w;
        int32_t row = spanStart;
        // Rows before the window only step the position: taken at once.
        if (firstVisited - int64_t(spanStart) > rowsSteppedOneByOne) {
            const auto skipped = skipExactRows(q, dq, p, dp, w, dw, uint64_t(firstVisited - int64_t(spanStart)));
            q = skipped[0];
            p = skipped[1];
            w = skipped[2];
            row = firstVisited;
        }
        for (;; ++row) {
            if (row >= firstVisited) {
                visit(row, q / w, p / w);
            }
            if (row == lastVisited) {
                return;
            }
            q = q + dq;
            p = p + dp;
            w = w + dw;
        }
    }
    const T startY = first.q / first.w, endY = last.q / last.w, middleY = (first.q + last.q) / (first.w + last.w);
    const T startX = first.p / first.w, endX = last.p / last.w, middleX = (first.p + last.p) / (first.w + last.w);
    const T tSquared = t * t;
    const T curveY = T(2) * (startY - T(2) * middleY + endY) * tSquared;
    const T curveX = T(2) * (startX - T(2) * middleX + endX) * tSquared;
    const T slopeY = (T(4) * middleY - T(3) * startY - endY) * t;
    const T slopeX = (T(4) * middleX - T(3) * startX - endX) * t;
    T y = startY, x = startX;
    T stepY = slopeY + curveY, stepX = slopeX + curveX;
    const T stepChangeY = T(2) * curveY, stepChangeX = T(2) * curveX;
    int32_t row = spanStart;
    if (firstVisited - int64_t(spanStart) > rowsSteppedOneByOne) {
        const auto skipped =
            skipQuadraticRows(y, stepY, stepChangeY, x, stepX, stepChangeX, uint64_t(firstVisited - int64_t(spanStart)));
        y = skipped[0];
        stepY = skipped[1];
        x = skipped[2];
        stepX = skipped[3];
        row = firstVisited;
    }
    for (;; ++row) {
        if (row >= firstVisited) {
            visit(row, y, x);
        }
        if (row == lastVisited) {
            return;
        }
        y = y + stepY;
        x = x + stepX;
        stepY = stepY + stepChangeY;
        stepX = stepX + stepChangeX;
    }
}

// The source planes and the output planes of a warp, by index.
template <class T>
struct WarpPlanes {
    const WarpImages<T> &images;
    int32_t count;
    ptrdiff_t inStride, outStride;

    explicit WarpPlanes(const WarpImages<T> &im)
        : images(im), count(im.threePlanes ? 3 : im.numPlanes),
          inStride(im.threePlanes ? 0 : static_cast<ptrdiff_t>(im.inRows) * im.inCols),
          outStride(im.threePlanes ? 0 : static_cast<ptrdiff_t>(im.outRows) * im.outCols)
    {
    }
    const T *in(int32_t p) const { return images.threePlanes ? images.in[p] : images.in[0] + p * inStride; }
    T *out(int32_t p) const { return images.threePlanes ? images.out[p] : images.out[0] + p * outStride; }
};

// Positions gathered per run of rows, then sampled plane by plane.
constexpr int32_t rowsPerRun = 64;

// Whether this process samples runs with AVX2 gathers.
bool gatherRuns(int32_t inRows, int32_t inCols)
{
#ifdef ORNEX_HAVE_AVX2_PATHS
    return simdLevel() == SimdLevel::avx2 && static_cast<int64_t>(inRows) * inCols < (int64_t(1) << 31);
#else
    (void)inRows;
    (void)inCols;
    return false;
#endif
}

// Packs the gathered path takes, and the scalar kernel for what it leaves.
template <class Taps, class T>
void sampleRunOfPlane(const T *in, int32_t inRows, int32_t inCols, bool gather, const T *ys, const T *xs,
                      int32_t count, T *out)
{
    const auto rows = static_cast<uint32_t>(inRows), cols = static_cast<uint32_t>(inCols);
    // Ask for the source lines of the whole run first, so that their
    // fetches overlap instead of stalling one gather after another.
    // Addresses are formed as integers: a position that is not a number
    // must not make pointer arithmetic overflow.
    const auto columnBytes = static_cast<uintptr_t>(inRows) * sizeof(T);
    for (int32_t k = 0; k < count; k += 8) {
        const ptrdiff_t offset = static_cast<ptrdiff_t>(truncateToInt32(xs[k])) * inRows + truncateToInt32(ys[k]);
        const uintptr_t nearest = reinterpret_cast<uintptr_t>(in) + static_cast<uintptr_t>(offset) * sizeof(T);
        // The columns this run reads and the next one the following output
        // column will read.
        const int firstColumn = std::is_same_v<Taps, BicubicTaps<T>> ? -1 : 0;
        const int lastColumn = std::is_same_v<Taps, BicubicTaps<T>> ? 3 : 2;
        for (int column = firstColumn; column <= lastColumn; ++column) {
            __builtin_prefetch(reinterpret_cast<const void *>(nearest + uintptr_t(column) * columnBytes));
        }
    }
    int32_t i = 0;
    while (i < count) {
#ifdef ORNEX_HAVE_AVX2_PATHS
        if (gather) {
            if constexpr (std::is_same_v<Taps, BilinearTaps<T>>) {
                i += avx2::bilinearRun(in, inRows, inCols, ys + i, xs + i, count - i, out + i);
            } else if constexpr (std::is_same_v<Taps, BicubicTaps<T>>) {
                i += avx2::bicubicRun(in, inRows, inCols, ys + i, xs + i, count - i, out + i);
            }
        }
#else
        (void)gather;
#endif
        // One pack's worth through the scalar kernel before trying again.
        const int32_t stop = std::min(count, i + 32 / int32_t(sizeof(T)));
        for (; i < stop; ++i) {
            out[i] = Taps(ys[i], xs[i], rows, cols).sample(in);
        }
    }
}

template <class Taps, class T>
void sampleRun(const WarpPlanes<T> &planes, const T *ys, const T *xs, int32_t count, uint32_t index)
{
    const WarpImages<T> &images = planes.images;
    const bool gather = gatherRuns(images.inRows, images.inCols);
    for (int32_t p = 0; p < planes.count; ++p) {
        sampleRunOfPlane<Taps>(planes.in(p), images.inRows, images.inCols, gather, ys, xs, count,
                               planes.out(p) + index);
    }
}

// Samples every row of the span that lies in the output window, its
// position clamped first, into each plane.
template <class Taps, class T>
void sampleSpan(const WarpImages<T> &images, const T *matrix, int32_t column, int32_t spanStart, int32_t spanEnd)
{
    const int32_t columnBase = wrapSub(wrapMul(wrapSub(column, images.outColFirst), images.outRows), images.outRowFirst);
    const T rowLower = T(images.rowLowerBound), rowUpper = T(images.inRows - 1);
    const T colLower = T(images.colLowerBound), colUpper = T(images.inCols - 1);
    // Lower bounds are tested first; not-a-number passes both tests.
    auto clamped = [](T value, T lower, T upper) { return value < lower ? lower : (value > upper ? upper : value); };
    const WarpPlanes<T> planes(images);
    const int32_t firstVisited = std::max(spanStart, images.outRowFirst);
    const int32_t lastVisited = std::min(spanEnd, images.outRowLast);

    T ys[rowsPerRun], xs[rowsPerRun];
    int32_t runLength = 0, runFirstRow = firstVisited;
    walkSpan(matrix, column, spanStart, spanEnd, images.exact, firstVisited, lastVisited, [&](int32_t row, T y, T x) {
        ys[runLength] = clamped(y, rowLower, rowUpper);
        xs[runLength] = clamped(x, colLower, colUpper);
        if (++runLength == rowsPerRun || row == lastVisited) {
            sampleRun<Taps>(planes, ys, xs, runLength, static_cast<uint32_t>(wrapAdd(columnBase, runFirstRow)));
            runFirstRow = wrapAdd(row, 1);
            runLength = 0;
        }
    });
}

} // namespace

template <class T>
void computeSpan(const WarpImages<T> &images, const T *matrix, int32_t column, int32_t spanStart, int32_t spanEnd)
{
    if (column < images.outColFirst || column > images.outColLast || spanStart > images.outRowLast ||
        spanEnd < images.outRowFirst) {
        return;
    }
    // A source without pixels has nothing to sample, an output without
    // pixels no room for a sample.
    if (images.inRows < 1 || images.inCols < 1 || images.outRows < 1 || images.outCols < 1) {
        return;
    }
    switch (images.method) {
    case 1: sampleSpan<NearestTaps<T>>(images, matrix, column, spanStart, spanEnd); break;
    case 2: sampleSpan<BilinearTaps<T>>(images, matrix, column, spanStart, spanEnd); break;
    default: sampleSpan<BicubicTaps<T>>(images, matrix, column, spanStart, spanEnd); break;
    }
}

// A cell is convex: one span per column, between the first two active edges.
template <class T>
void transformCell(int32_t *edgeBuffer, int32_t numValues, const int32_t *corners, int32_t *sortScratch,
                   const WarpImages<T> &images, const T *matrix)
{
    draw::sweepPolygonColumns(edgeBuffer, numValues, corners, sortScratch, images.outColFirst, images.outColLast,
                              [&](int32_t column, int32_t, const int32_t *currentRows) {
                                  computeSpan(images, matrix, column, currentRows[0], currentRows[1]);
                              });
}

template void computeSpan(const WarpImages<double> &, const double *, int32_t, int32_t, int32_t);
template void computeSpan(const WarpImages<float> &, const float *, int32_t, int32_t, int32_t);
template void transformCell(int32_t *, int32_t, const int32_t *, int32_t *, const WarpImages<double> &,
                            const double *);
template void transformCell(int32_t *, int32_t, const int32_t *, int32_t *, const WarpImages<float> &, const float *);

} // namespace ornex::geometry

namespace {

template <class T>
void getInPoints(int32_t row, int32_t column, const T *matrix, T *q, T *p, T *w)
{
    const auto mapped = ornex::geometry::mapHomogeneous(row, column, matrix);
    *q = mapped.q;
    *p = mapped.p;
    *w = mapped.w;
}

} // namespace

#define ORNEX_SPAN_ARGS(T) T *out0, T *out1, T *out2, int32_t column, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t spanStart, int32_t spanEnd, int32_t inRows, uint8_t threePlanes, const T *in0, const T *in1, const T *in2, const T *matrix, int32_t inCols, int32_t outRows, int32_t outCols, int32_t method, uint8_t exact, int32_t rowLowerBound, int32_t colLowerBound, int32_t numPlanes
#define ORNEX_SPAN_IMAGES ornex::geometry::warpImages(out0, out1, out2, outRowFirst, outRowLast, outColFirst, outColLast, outRows, outCols, in0, in1, in2, inRows, inCols, threePlanes, numPlanes, method, exact, rowLowerBound, colLowerBound)
#define ORNEX_CELL_ARGS(T) int32_t *edgeBuffer, int32_t numValues, const int32_t *corners, int32_t *sortScratch, T *out0, T *out1, T *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const T *matrix, const T *in0, const T *in1, const T *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t rowLowerBound, int32_t colLowerBound, int32_t numPlanes

extern "C" {
void ORNEX_ProjComputeOutPixel_D(ORNEX_SPAN_ARGS(double)) { ornex::geometry::computeSpan(ORNEX_SPAN_IMAGES, matrix, column, spanStart, spanEnd); }
void ORNEX_ProjComputeOutPixel_R(ORNEX_SPAN_ARGS(float)) { ornex::geometry::computeSpan(ORNEX_SPAN_IMAGES, matrix, column, spanStart, spanEnd); }
void ORNEX_XformOneSubdivision_D(ORNEX_CELL_ARGS(double)) { ornex::geometry::transformCell(edgeBuffer, numValues, corners, sortScratch, ORNEX_SPAN_IMAGES, matrix); }
void ORNEX_XformOneSubdivision_R(ORNEX_CELL_ARGS(float)) { ornex::geometry::transformCell(edgeBuffer, numValues, corners, sortScratch, ORNEX_SPAN_IMAGES, matrix); }
void ORNEX_GetInPtsFrmOutPts_D(int32_t row, int32_t column, const double *matrix, double *q, double *p, double *w) { getInPoints(row, column, matrix, q, p, w); }
void ORNEX_GetInPtsFrmOutPts_R(int32_t row, int32_t column, const float *matrix, float *q, float *p, float *w) { getInPoints(row, column, matrix, q, p, w); }
}

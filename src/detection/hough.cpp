#include "ornex_rt.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "frame/element_traits.hpp"
#include "frame/packed.hpp"
#include "frame/rounding.hpp"
#include "frame/simd_level.hpp"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ornex::detection {
namespace {

// Edge pixels gathered per pass; each pass then votes them one theta column
// at a time, so that the column being counted stays in the first-level
// cache.
constexpr int32_t pixelBlock = 2048;

// Counts kept in the accumulator's own memory while voting, read and written
// bytewise. Counting is order-independent, so an integer count converted
// once at the end equals the same number of additions of 1 in the element
// type: every double up to 2^53 is exact, and a single stops growing at
// 2^24 (2^24 + 1 rounds back to 2^24). With Count = T the votes are such
// additions.
template <class T, class Count>
struct Counter {
    static_assert(sizeof(Count) == sizeof(T));
    unsigned char *cells;

    void increment(ptrdiff_t index) const
    {
        unsigned char *cell = cells + static_cast<size_t>(index) * sizeof(Count);
        Count count;
        std::memcpy(&count, cell, sizeof count);
        count = Count(count + Count(1));
        std::memcpy(cell, &count, sizeof count);
    }

    // The counts of cells [first, end) turned into their values, in place.
    void finish(ptrdiff_t first, ptrdiff_t end) const
    {
        if constexpr (!std::is_same_v<Count, T>) {
            constexpr Count saturation = std::is_same_v<T, float> ? Count(1) << 24 : ~Count(0);
            for (ptrdiff_t i = first; i < end; ++i) {
                Count count;
                unsigned char *cell = cells + static_cast<size_t>(i) * sizeof(Count);
                std::memcpy(&count, cell, sizeof count);
                const T value = T(std::min(count, saturation));
                std::memcpy(cell, &value, sizeof value);
            }
        }
    }
};

// The two table values of theta column t: its value is (s*y - co*x - rho0)
// times the scale. Columns 0 .. T-1 take the sine from table entry t and the
// cosine as minus entry T-1-t; column T+k, 90 degrees above entry 1+k, takes
// the sine as minus entry T-2-k and the cosine as minus entry 1+k.
template <class T>
struct ThetaColumn {
    T s, co;

    ThetaColumn(const T *sines, int32_t numTheta, int32_t t)
        : s(t < numTheta ? sines[t] : -sines[numTheta - 2 - (t - numTheta)]),
          co(t < numTheta ? sines[numTheta - 1 - t] : sines[1 + (t - numTheta)])
    {
    }

    int32_t bin(T x, T y, T rho0, T scale) const { return roundHalfAway((s * y - co * x - rho0) * scale); }
};

#if defined(__SSE2__)
// x truncated toward zero in every lane; a value that does not fit (or NaN)
// gives INT32_MIN, as truncateToInt32 does.
inline void storeTruncated(Pack<float, 16> x, int32_t *out)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm_cvttps_epi32(__m128(x.lanes)));
}
inline void storeTruncated(Pack<double, 16> x, int32_t *out)
{
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out), _mm_cvttpd_epi32(__m128d(x.lanes)));
}
#endif

// The bins of `count` pixels in one theta column, whose value is
// (s*y - co*x - rho0)*scale, rounded half away from zero. The packed loop
// does the same operations on several pixels at once.
template <class T>
void columnBins(const T *__restrict xs, const T *__restrict ys, int32_t count, T s, T co, T rho0, T scale,
                int32_t *__restrict bins, bool packed)
{
    int32_t i = 0;
#if defined(__SSE2__)
    using P = Pack<T, 16>;
    if (packed) {
        const P sines = P::broadcast(s), cosines = P::broadcast(co), first = P::broadcast(rho0);
        const P scales = P::broadcast(scale), half = P::broadcast(T(0.5)), minusZero = P::broadcast(T(-0.0));
        for (; i + P::width <= count; i += P::width) {
            const P value = (sines * P::load(ys + i) - cosines * P::load(xs + i) - first) * scales;
            // The half takes the value's sign: x + (-0.5) is x - 0.5, and
            // +0 and -0 both truncate to bin 0 either way.
            const P signedHalf = P::select(std::bit_cast<typename P::Bits>(minusZero.lanes), value, half);
            storeTruncated(value + signedHalf, bins + i);
        }
    }
#else
    (void)packed;
#endif
    for (; i < count; ++i) {
        bins[i] = roundHalfAway((s * ys[i] - co * xs[i] - rho0) * scale);
    }
}

// Whether every pixel's bin lies inside its own column. Each rounded
// product, difference and scaling of the value is monotone in the row and
// in the column, and so is the rounding to a bin: the extreme bins of a
// column are those of the image's corners.
template <class T>
bool votesStayInColumns(const T *sines, int32_t numRows, int32_t numCols, int32_t numRho, int32_t numTheta, T rho0,
                        T scale)
{
    const T lastRow = T(numRows - 1), lastCol = T(numCols - 1);
    for (int32_t t = 0; t < 2 * numTheta - 2; ++t) {
        const ThetaColumn<T> column(sines, numTheta, t);
        for (const auto &[x, y] : {std::pair{T(0), T(0)}, {T(0), lastRow}, {lastCol, T(0)}, {lastCol, lastRow}}) {
            const int32_t bin = column.bin(x, y, rho0, scale);
            if (bin < 0 || bin >= numRho) {
                return false;
            }
        }
    }
    return true;
}

// How one pass votes its pixels. Confined: every vote lies inside its own
// column, so the first pass clears each column just before counting into it
// and the last converts it just after, while it is in the cache. Otherwise
// the accumulator was cleared beforehand, a vote outside the accumulator
// adds 1 to whatever value lies there, and the counts are converted after
// the last pass.
struct Pass {
    bool confined, first, last;
};

// Votes `count` pixels into every theta column.
template <class T, class Count>
void votePixels(const T *xs, const T *ys, int32_t count, T *accumulator, ptrdiff_t cellCount, const T *sines,
                int32_t numRho, int32_t numTheta, T rho0, T scale, Pass pass)
{
    const Counter<T, Count> counter{reinterpret_cast<unsigned char *>(accumulator)};
    const bool packed = simdLevel() != SimdLevel::scalar;
    int32_t bins[pixelBlock];
    for (int32_t t = 0; t < 2 * numTheta - 2; ++t) {
        const ThetaColumn<T> column(sines, numTheta, t);
        columnBins(xs, ys, count, column.s, column.co, rho0, scale, bins, packed);
        const ptrdiff_t base = static_cast<ptrdiff_t>(t) * numRho;
        if (pass.confined) {
            if (pass.first) {
                std::fill(accumulator + base, accumulator + base + numRho, T(0));
            }
            const Counter<T, Count> cells{counter.cells + static_cast<size_t>(base) * sizeof(Count)};
            int32_t i = 0;
            for (; i + 4 <= count; i += 4) {
                cells.increment(bins[i]);
                cells.increment(bins[i + 1]);
                cells.increment(bins[i + 2]);
                cells.increment(bins[i + 3]);
            }
            for (; i < count; ++i) {
                cells.increment(bins[i]);
            }
            if (pass.last) {
                counter.finish(base, base + numRho);
            }
            continue;
        }
        for (int32_t i = 0; i < count; ++i) {
            const ptrdiff_t index = base + bins[i];
            if (static_cast<size_t>(index) < static_cast<size_t>(cellCount)) {
                counter.increment(index);
            } else {
                accumulator[index] += T(1);
            }
        }
    }
    if (!pass.confined && pass.last) {
        counter.finish(0, cellCount);
    }
}

template <class T, class Count>
void voteImage(const uint8_t *image, T *accumulator, const T *sines, int32_t numRows, int32_t numCols,
               int32_t numRho, int32_t numTheta, T rho0, T scale, ptrdiff_t cellCount, bool confined)
{
    T xs[pixelBlock], ys[pixelBlock];
    int32_t count = 0;
    bool first = true;
    for (int32_t c = 0; c < numCols; ++c) {
        const uint8_t *column = image + static_cast<ptrdiff_t>(c) * numRows;
        for (int32_t r = 0; r < numRows; ++r) {
            // Eight zero pixels are passed over at once.
            uint64_t eight = 1;
            if (numRows - r >= 8) {
                std::memcpy(&eight, column + r, sizeof eight);
            }
            if (eight == 0) {
                r += 7;
                continue;
            }
            if (column[r] == 0) {
                continue;
            }
            xs[count] = T(c);
            ys[count] = T(r);
            if (++count == pixelBlock) {
                votePixels<T, Count>(xs, ys, count, accumulator, cellCount, sines, numRho, numTheta, rho0, scale,
                                     {confined, first, false});
                count = 0;
                first = false;
            }
        }
    }
    votePixels<T, Count>(xs, ys, count, accumulator, cellCount, sines, numRho, numTheta, rho0, scale,
                         {confined, first, true});
}

// Votes every nonzero pixel into the rho bins of each theta column. Theta
// columns 0 .. T-1 use the table's angles (-90 up to 0 degrees), columns
// T .. 2T-3 the angles 90 degrees above table entries 1 .. T-2; the cosine
// of entry t is minus entry T-1-t of the same table.
template <class T>
void houghVote(const uint8_t *image, T *accumulator, const T *sines, const T *rhoFirst, int32_t numRows,
               int32_t numCols, int32_t numRho, int32_t numTheta)
{
    const T rho0 = *rhoFirst;
    const T scale = T(numRho - 1) / (rho0 * T(-2.0));
    const int32_t columns = 2 * numTheta - 2;
    const ptrdiff_t cells = columns > 0 && numRho > 0 ? static_cast<ptrdiff_t>(columns) * numRho : 0;
    if (columns < 1 || numRows < 1 || numCols < 1) {
        std::fill(accumulator, accumulator + cells, T(0));
        return;
    }
    const bool confined = votesStayInColumns(sines, numRows, numCols, numRho, numTheta, rho0, scale);
    if (!confined) {
        std::fill(accumulator, accumulator + cells, T(0));
    }
    // A cell counts at most one vote per pixel and column; 32-bit counts
    // hold that for images of fewer than 2^32 pixels with votes inside their
    // columns. Other single-precision votes add 1.0f directly.
    if constexpr (std::is_same_v<T, double>) {
        voteImage<T, uint64_t>(image, accumulator, sines, numRows, numCols, numRho, numTheta, rho0, scale, cells,
                               confined);
    } else if (confined && static_cast<int64_t>(numRows) * numCols <= int64_t(UINT32_MAX)) {
        voteImage<T, uint32_t>(image, accumulator, sines, numRows, numCols, numRho, numTheta, rho0, scale, cells,
                               confined);
    } else {
        voteImage<T, T>(image, accumulator, sines, numRows, numCols, numRho, numTheta, rho0, scale, cells, confined);
    }
}

// Where a (rho, theta) line crosses the image border: candidates on the
// top, left, right and bottom borders in that order, rounded by
// floor(x + 0.5), the first two inside the border kept (a corner may be
// found twice). Fewer than two gives -1 in all four values.
template <class T, class Point>
void houghLines(const T *theta, const T *rho, Point *endPoints, int32_t numLines, int32_t numRows, int32_t numCols)
{
    const T epsilon = ElementTraits<T>::epsilon;
    const T lastRow = T(numRows - 1), lastCol = T(numCols - 1);
    for (int32_t i = 0; i < numLines; ++i) {
        const T shiftedRho = rho[i] + epsilon;
        const T cosine = T(std::cos(static_cast<double>(theta[i])));
        const T sine = T(std::sin(static_cast<double>(theta[i])));
        const T a = shiftedRho / (cosine + epsilon); // column where the line meets row 0
        const T b = shiftedRho / (sine + epsilon);   // row where it meets column 0
        Point *points = endPoints + 4 * static_cast<ptrdiff_t>(i);
        int found = 0;
        auto offer = [&](T candidate, T limit, bool alongRows, T fixed) {
            if (found >= 2) {
                return;
            }
            const T rounded = nearestHalfUp(candidate);
            if (rounded >= T(0) && rounded <= limit) {
                points[2 * found] = Point(alongRows ? rounded : fixed);
                points[2 * found + 1] = Point(alongRows ? fixed : rounded);
                ++found;
            }
        };
        offer(a, lastCol, false, T(0));                          // top: (0, a)
        offer(b, lastRow, true, T(0));                           // left: (b, 0)
        offer((a - lastCol) * (b / a), lastRow, true, lastCol);  // right
        offer(a - (a / b) * lastRow, lastCol, false, lastRow);   // bottom
        if (found < 2) {
            std::fill(points, points + 4, Point(-1));
        }
    }
}

} // namespace
} // namespace ornex::detection

using ornex::detection::houghLines;
using ornex::detection::houghVote;

extern "C" {
void ORNEX_Hough_D(const uint8_t *image, double *accumulator, const double *sineTable, const double *rhoFirst, int32_t numRows, int32_t numCols, int32_t numRho, int32_t numTheta) { houghVote(image, accumulator, sineTable, rhoFirst, numRows, numCols, numRho, numTheta); }
void ORNEX_Hough_R(const uint8_t *image, float *accumulator, const float *sineTable, const float *rhoFirst, int32_t numRows, int32_t numCols, int32_t numRho, int32_t numTheta) { houghVote(image, accumulator, sineTable, rhoFirst, numRows, numCols, numRho, numTheta); }
void ORNEX_HoughLines_D(const double *theta, const double *rho, int32_t *endPoints, int32_t numLines, int32_t numRows, int32_t numCols) { houghLines(theta, rho, endPoints, numLines, numRows, numCols); }
void ORNEX_HoughLines_DO(const double *theta, const double *rho, double *endPoints, int32_t numLines, int32_t numRows, int32_t numCols) { houghLines(theta, rho, endPoints, numLines, numRows, numCols); }
void ORNEX_HoughLines_R(const float *theta, const float *rho, int32_t *endPoints, int32_t numLines, int32_t numRows, int32_t numCols) { houghLines(theta, rho, endPoints, numLines, numRows, numCols); }
void ORNEX_HoughLines_RO(const float *theta, const float *rho, float *endPoints, int32_t numLines, int32_t numRows, int32_t numCols) { houghLines(theta, rho, endPoints, numLines, numRows, numCols); }
}

#include "ornex_rt.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "frame/element_traits.hpp"
#include "frame/rounding.hpp"

namespace ornex::detection {
namespace {

// Bins of one pixel's votes computed at a time, before they are counted.
constexpr int32_t voteBlock = 256;

// The bins of one pixel for theta columns [first, end), the first half
// reading the table forward for sines and backward for cosines, the second
// half 90 degrees on.
template <class T>
void pixelBins(const T *__restrict sines, int32_t numTheta, T rho0, T scale, T x, T y, int32_t first, int32_t end,
               int32_t *__restrict bins)
{
    const int32_t firstHalfEnd = std::min(end, numTheta);
    for (int32_t t = first; t < firstHalfEnd; ++t) {
        bins[t - first] = roundHalfAway((sines[t] * y - sines[numTheta - 1 - t] * x - rho0) * scale);
    }
    for (int32_t t = std::max(first, numTheta); t < end; ++t) {
        const int32_t k = t - numTheta;
        bins[t - first] = roundHalfAway((-sines[numTheta - 2 - k] * y - sines[1 + k] * x - rho0) * scale);
    }
}

template <class T>
void votePixel(T *accumulator, const T *sines, int32_t numRho, int32_t numTheta, T rho0, T scale, T x, T y)
{
    const int32_t columns = 2 * numTheta - 2;
    int32_t bins[voteBlock];
    for (int32_t first = 0; first < columns; first += voteBlock) {
        const int32_t end = std::min(first + voteBlock, columns);
        pixelBins(sines, numTheta, rho0, scale, x, y, first, end, bins);
        // The bin is not range-checked: the rho range must cover the image.
        for (int32_t t = first; t < end; ++t) {
            accumulator[static_cast<ptrdiff_t>(t) * numRho + bins[t - first]] += T(1);
        }
    }
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
    std::fill(accumulator, accumulator + cells, T(0));
    for (int32_t c = 0; c < numCols; ++c) {
        const uint8_t *column = image + static_cast<ptrdiff_t>(c) * numRows;
        const T x = T(c);
        for (int32_t r = 0; r < numRows; ++r) {
            if (column[r] == 0) {
                continue;
            }
            const T y = T(r);
            votePixel(accumulator, sines, numRho, numTheta, rho0, scale, x, y);
        }
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

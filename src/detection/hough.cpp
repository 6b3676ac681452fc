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
    int32_t bins[voteBlock];
    for (int32_t c = 0; c < numCols; ++c) {
        const uint8_t *column = image + static_cast<ptrdiff_t>(c) * numRows;
        const T x = T(c);
        for (int32_t r = 0; r < numRows; ++r) {
            if (column[r] == 0) {
                continue;
            }
            const T y = T(r);
            for (int32_t first = 0; first < columns; first += voteBlock) {
                const int32_t end = std::min(first + voteBlock, columns);
                for (int32_t t = first; t < end; ++t) {
                    T value;
                    if (t < numTheta) {
                        value = (sines[t] * y - sines[numTheta - 1 - t] * x - rho0) * scale;
                    } else {
                        const int32_t k = t - numTheta;
                        value = (-sines[numTheta - 2 - k] * y - sines[1 + k] * x - rho0) * scale;
                    }
                    bins[t - first] = roundHalfAway(value);
                }
                // The bin is not range-checked: the rho range must cover the
                // image.
                for (int32_t t = first; t < end; ++t) {
                    accumulator[static_cast<ptrdiff_t>(t) * numRho + bins[t - first]] += T(1);
                }
            }
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
            const T rounded = std::floor(candidate + T(0.5));
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

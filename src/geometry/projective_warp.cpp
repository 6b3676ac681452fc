#include "ornex_rt.h"

#include "geometry/projective_warp.hpp"

namespace ornex::geometry {
namespace {

constexpr int32_t cellValues = 8;

// The source rectangle cut into (D + 1) x (D + 1) cells, each mapped through
// block[0..8] and sampled through block[9..17].
template <class T>
int32_t divideRectangle(int32_t *edgeBuffer, const int32_t *rect, int32_t *sortScratch, const WarpImages<T> &images,
                        const T *block, int32_t numDivisions, bool useRect)
{
    // The rectangle's third and fourth values bound the cells as they stand,
    // not counted from its first row and column.
    const int32_t rowMax = wrapSub(useRect ? rect[2] : images.inRows, 1);
    const int32_t colMax = wrapSub(useRect ? rect[3] : images.inCols, 1);
    const double rowStart = useRect ? rect[0] : 0;
    const double colStart = useRect ? rect[1] : 0;
    const double rowStep = double(rowMax) / double(numDivisions + 1);
    const double colStep = double(colMax) / double(numDivisions + 1);
    auto bounded = [](double position, int32_t limit) {
        const int32_t bound = truncateToInt32(position);
        return bound < limit ? bound : limit;
    };

    double rowPosition = rowStart;
    for (int32_t i = 0; i <= numDivisions; ++i) {
        const double nextRowPosition = rowPosition + rowStep;
        const int32_t firstRow = bounded(rowPosition, rowMax);
        const int32_t nextRow = i == numDivisions ? rowMax : bounded(nextRowPosition, rowMax);
        double colPosition = colStart;
        for (int32_t j = 0; j <= numDivisions; ++j) {
            const double nextColPosition = colPosition + colStep;
            const int32_t firstCol = bounded(colPosition, colMax);
            const int32_t nextCol = j == numDivisions ? colMax : bounded(nextColPosition, colMax);
            int32_t corners[cellValues];
            mapCorner(firstRow, firstCol, block, corners);
            mapCorner(firstRow, nextCol, block, corners + 2);
            mapCorner(nextRow, nextCol, block, corners + 4);
            mapCorner(nextRow, firstCol, block, corners + 6);
            transformCell(edgeBuffer, cellValues, corners, sortScratch, images, block + 9);
            colPosition = nextColPosition;
        }
        rowPosition = nextRowPosition;
    }
    return 1;
}

// Point k of D + 1 equal steps from one integer point to another, rounded
// half away from zero; the last point is the end itself.
template <class T>
void pointAlong(const int32_t *from, const int32_t *to, int32_t k, int32_t parts, int32_t *point)
{
    if (k == parts) {
        point[0] = to[0];
        point[1] = to[1];
        return;
    }
    point[0] = wrapAdd(from[0], roundHalfAway(T(k) * T(wrapSub(to[0], from[0])) / T(parts)));
    point[1] = wrapAdd(from[1], roundHalfAway(T(k) * T(wrapSub(to[1], from[1])) / T(parts)));
}

// Point (i, j) of the grid: step i down the sides 0-3 and 1-2, then step j
// across between them.
template <class T>
void gridPoint(const int32_t *quad, int32_t i, int32_t j, int32_t parts, int32_t *point)
{
    int32_t left[2], right[2];
    pointAlong<T>(quad, quad + 6, i, parts, left);
    pointAlong<T>(quad + 2, quad + 4, i, parts, right);
    pointAlong<T>(left, right, j, parts, point);
}

// The source quadrilateral cut into cells along its sides; its cell corners
// go through block[9..17] and samples through block[0..8], the other way
// round from the rectangle driver on purpose: that is the order in which the
// quadrilateral-to-quadrilateral matrices are stored.
template <class T>
int32_t divideQuadrilateral(int32_t *edgeBuffer, const int32_t *quad, int32_t *sortScratch,
                            const WarpImages<T> &images, const T *block, int32_t numDivisions)
{
    const int32_t parts = wrapAdd(numDivisions, 1);
    if (parts < 1) {
        return 1;
    }
    for (int32_t i = 0; i < parts; ++i) {
        for (int32_t j = 0; j < parts; ++j) {
            int32_t cell[cellValues];
            gridPoint<T>(quad, i, j, parts, cell);
            gridPoint<T>(quad, i, j + 1, parts, cell + 2);
            gridPoint<T>(quad, i + 1, j + 1, parts, cell + 4);
            gridPoint<T>(quad, i + 1, j, parts, cell + 6);
            if (ORNEX_Are3PtsCollinear(cell)) {
                return 0;
            }
            int32_t corners[cellValues];
            for (int k = 0; k < 4; ++k) {
                mapCorner(cell[2 * k], cell[2 * k + 1], block + 9, corners + 2 * k);
            }
            transformCell(edgeBuffer, cellValues, corners, sortScratch, images, block);
        }
    }
    return 1;
}

} // namespace
} // namespace ornex::geometry

using ornex::geometry::divideQuadrilateral;
using ornex::geometry::divideRectangle;
using ornex::geometry::warpImages;

#define ORNEX_RECT_ARGS(T) int32_t *edgeBuffer, const int32_t *rect, int32_t *sortScratch, T *out0, T *out1, T *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const T *block, const T *in0, const T *in1, const T *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t rowLowerBound, int32_t colLowerBound, int32_t numDivisions, uint8_t useRect, int32_t numPlanes
#define ORNEX_RECT_IMAGES warpImages(out0, out1, out2, outRowFirst, outRowLast, outColFirst, outColLast, outRows, outCols, in0, in1, in2, inRows, inCols, threePlanes, numPlanes, method, exact, rowLowerBound, colLowerBound)
#define ORNEX_QUAD_ARGS(T) int32_t *edgeBuffer, const int32_t *quad, int32_t *sortScratch, T *out0, T *out1, T *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const T *block, const T *in0, const T *in1, const T *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t numDivisions, int32_t numPlanes
#define ORNEX_QUAD_IMAGES warpImages(out0, out1, out2, outRowFirst, outRowLast, outColFirst, outColLast, outRows, outCols, in0, in1, in2, inRows, inCols, threePlanes, numPlanes, method, exact, 0, 0)

extern "C" {
int32_t ORNEX_DivideRectXform_D(ORNEX_RECT_ARGS(double)) { return divideRectangle(edgeBuffer, rect, sortScratch, ORNEX_RECT_IMAGES, block, numDivisions, useRect != 0); }
int32_t ORNEX_DivideRectXform_R(ORNEX_RECT_ARGS(float)) { return divideRectangle(edgeBuffer, rect, sortScratch, ORNEX_RECT_IMAGES, block, numDivisions, useRect != 0); }
int32_t ORNEX_DivideQuadXform_D(ORNEX_QUAD_ARGS(double)) { return divideQuadrilateral(edgeBuffer, quad, sortScratch, ORNEX_QUAD_IMAGES, block, numDivisions); }
int32_t ORNEX_DivideQuadXform_R(ORNEX_QUAD_ARGS(float)) { return divideQuadrilateral(edgeBuffer, quad, sortScratch, ORNEX_QUAD_IMAGES, block, numDivisions); }
}

#include "ornex_rt.h"

#include <cstddef>
#include <utility>

#include "draw/clip_line.hpp"
#include "draw/element_copy.hpp"
#include "frame/image_planes.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// The general case: `length` + 1 pixels along the major axis, the minor
// coordinate stepping when the error reaches the major delta (exact halves
// step). A falling minor coordinate runs the same error negated, so one loop
// serves both directions.
template <class Writer>
void walkMajorAxis(ptrdiff_t offset, int32_t length, ptrdiff_t majorStep, ptrdiff_t minorStep, int32_t rise,
                   const Writer &write)
{
    int32_t error = 0;
    for (int32_t k = 0; k <= length; ++k, offset += majorStep) {
        write(offset);
        error += 2 * rise;
        // Selected rather than branched on: the steps follow the slope.
        const bool step = error >= length;
        offset += step ? minorStep : 0;
        error -= step ? 2 * length : 0;
    }
}

// The clipped digital line from (r1, c1) to (r2, c2), both end-points
// included, each pixel handed to `write` as a byte offset. The offset runs
// along with the walk: rowStep bytes per row, colStep bytes per column.
template <class Writer>
void walkLine(int32_t r1, int32_t c1, int32_t r2, int32_t c2, const ClipRectangle &rect, ptrdiff_t rowStep,
              ptrdiff_t colStep, const Writer &write)
{
    {
        const int32_t dRow = wrapSub(r2, r1), dCol = wrapSub(c2, c1);
        const int32_t major = wrapAbs(dCol) > wrapAbs(dRow) ? dCol : dRow;
        if (major < 0) {
            std::swap(r1, r2);
            std::swap(c1, c2);
        }
    }
    int32_t p1[2] = {r1, c1}, p2[2] = {r2, c2};
    if (!clipLine(p1, p2, rect)) {
        return;
    }
    r1 = p1[0], c1 = p1[1], r2 = p2[0], c2 = p2[1];
    const int32_t dRow = wrapSub(r2, r1), dCol = wrapSub(c2, c1);
    const int32_t absRow = wrapAbs(dRow), absCol = wrapAbs(dCol);
    ptrdiff_t offset = r1 * rowStep + c1 * colStep;
    if (dRow == 0) {
        for (int32_t c = c1; c <= c2; ++c, offset += colStep) {
            write(offset);
        }
    } else if (dCol == 0) {
        for (int32_t r = r1; r <= r2; ++r, offset += rowStep) {
            write(offset);
        }
    } else if (absRow == absCol) {
        const ptrdiff_t diagonalStep = rowStep + (dCol < dRow ? -colStep : colStep);
        for (int32_t r = r1; r <= r2; ++r, offset += diagonalStep) {
            write(offset);
        }
    } else if (absCol > absRow) {
        walkMajorAxis(offset, absCol, colStep, dRow > 0 ? rowStep : -rowStep, absRow, write);
    } else {
        walkMajorAxis(offset, absRow, rowStep, dCol > 0 ? colStep : -colStep, absCol, write);
    }
}

template <class Planes>
void bresenham(int32_t r1, int32_t c1, int32_t r2, int32_t c2, const Planes &planes, int32_t numRows,
               const void *value, int32_t elemSize, const ClipRectangle &rect)
{
    const ptrdiff_t rowStep = elemSize;
    withValueWriter(static_cast<const uint8_t *>(value), elemSize, [&](const auto &writeValue) {
        walkLine(r1, c1, r2, c2, rect, rowStep, rowStep * numRows,
                 [&](ptrdiff_t offset) { writeValue(planes, offset); });
    });
}

} // namespace
} // namespace ornex::draw

extern "C" {
void ORNEX_Line_Bresenham(int32_t r1, int32_t c1, int32_t r2, int32_t c2, void *dst, int32_t numRows, const void *value, int32_t elemSize, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numPlanes, int32_t planeStride)
{
    const auto planes = ornex::stridedPlanes(static_cast<uint8_t *>(dst), numPlanes, ptrdiff_t(elemSize) * planeStride);
    ornex::draw::bresenham(r1, c1, r2, c2, planes, numRows, value, elemSize, {rowMin, rowMax, colMin, colMax});
}
void ORNEX_Line_Bresenham_RGB(int32_t r1, int32_t c1, int32_t r2, int32_t c2, void *planeR, void *planeG, void *planeB, int32_t numRows, const void *value, int32_t elemSize, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax)
{
    const auto planes = ornex::rgbPlanes(static_cast<uint8_t *>(planeR), static_cast<uint8_t *>(planeG),
                                         static_cast<uint8_t *>(planeB));
    ornex::draw::bresenham(r1, c1, r2, c2, planes, numRows, value, elemSize, {rowMin, rowMax, colMin, colMax});
}
}

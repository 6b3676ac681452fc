#include "ornex_rt.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "draw/clip_line.hpp"
#include "draw/element_copy.hpp"
#include "frame/image_planes.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// One clipped digital line as a walk over byte offsets: `last` + 1 pixels
// from `offset`, each `majorStep` bytes after the one before, plus
// `minorStep` where the error term says so. The error grows by 2*rise per
// pixel and steps the minor coordinate when it reaches `length` (exact halves
// step); straight lines have rise 0 and never step.
struct LineWalk {
    ptrdiff_t offset;
    uint32_t last;
    ptrdiff_t majorStep;
    ptrdiff_t minorStep;
    int32_t rise;
    int32_t length;
};

// The walk of the line from (r1, c1) to (r2, c2) cut to the rectangle, or
// false when nothing is drawn. The offset moves rowStep bytes per row and
// colStep bytes per column.
bool planLine(int32_t r1, int32_t c1, int32_t r2, int32_t c2, const ClipRectangle &rect, ptrdiff_t rowStep,
              ptrdiff_t colStep, LineWalk &walk)
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
        return false;
    }
    r1 = p1[0], c1 = p1[1], r2 = p2[0], c2 = p2[1];
    const int32_t dRow = wrapSub(r2, r1), dCol = wrapSub(c2, c1);
    const int32_t absRow = wrapAbs(dRow), absCol = wrapAbs(dCol);
    walk = {ptrdiff_t(r1) * rowStep + ptrdiff_t(c1) * colStep, 0, 0, 0, 0, 1};
    // Each case runs from the first clipped end-point to the second; one that
    // huge coordinates have left pointing backwards along its axis draws
    // nothing.
    if (dRow == 0) {
        walk.majorStep = colStep;
        walk.last = uint32_t(dCol);
        return c1 <= c2;
    }
    if (dCol == 0) {
        walk.majorStep = rowStep;
        walk.last = uint32_t(dRow);
        return r1 <= r2;
    }
    if (absRow == absCol) {
        walk.majorStep = rowStep + (dCol < dRow ? -colStep : colStep);
        walk.last = uint32_t(dRow);
        return r1 <= r2;
    }
    const bool columnMajor = absCol > absRow;
    const int32_t major = columnMajor ? dCol : dRow, minor = columnMajor ? dRow : dCol;
    const ptrdiff_t minorAxisStep = columnMajor ? rowStep : colStep;
    // A falling minor coordinate runs the same error negated, so the rise is
    // the minor delta's magnitude either way.
    walk.majorStep = columnMajor ? colStep : rowStep;
    walk.minorStep = minor > 0 ? minorAxisStep : -minorAxisStep;
    walk.rise = wrapAbs(minor);
    walk.length = major;
    walk.last = uint32_t(major);
    return major > 0;
}

// The walk one pixel after the other, the error term in 32-bit arithmetic
// that wraps: short lines, and long ones in rectangles beyond 2^29 pixels.
template <class Writer>
void walkOneByOne(const LineWalk &walk, const Writer &write)
{
    const int32_t twoRise = wrapAdd(walk.rise, walk.rise), twoLength = wrapAdd(walk.length, walk.length);
    ptrdiff_t offset = walk.offset;
    int32_t error = 0;
    for (uint32_t k = 0;; ++k) {
        write(offset);
        if (k == walk.last) {
            return;
        }
        error = wrapAdd(error, twoRise);
        offset += walk.majorStep;
        if (error >= walk.length) {
            offset += walk.minorStep;
            error = wrapSub(error, twoLength);
        }
    }
}

// Pixel k of a sloped walk lies floor((2k*rise + length) / (2*length)) minor
// steps from the start, so every `lanes`-th pixel follows from the one
// `lanes` before by a whole number of steps plus a carry. Eight such chains
// side by side know the next pixels' offsets long before they are written,
// which keeps the stores flowing where one chain of selects would stall on
// its own latency and one of branches on mispredictions. The pixels are still
// written in order.
constexpr int lanes = 8;

template <class Writer>
void walkInLanes(const LineWalk &walk, const Writer &write)
{
    // rem = (2k*rise + length) mod 2*length, kept minus 2*length so that the
    // carry is its sign; below 2^29 nothing overflows.
    const int32_t twoRise = 2 * walk.rise, twoLength = 2 * walk.length;
    ptrdiff_t at[lanes];
    int32_t rem[lanes];
    {
        ptrdiff_t offset = walk.offset;
        int32_t error = walk.length;
        for (int j = 0; j < lanes; ++j) {
            at[j] = offset, rem[j] = error - twoLength;
            offset += walk.majorStep, error += twoRise;
            if (error >= twoLength) {
                offset += walk.minorStep, error -= twoLength;
            }
        }
    }
    const int64_t advance = int64_t(2 * lanes) * walk.rise;
    const int32_t wholeSteps = int32_t(advance / twoLength), carryIn = int32_t(advance % twoLength);
    const ptrdiff_t laneStep = lanes * walk.majorStep + wholeSteps * walk.minorStep, minorStep = walk.minorStep;
    uint32_t remaining = walk.last + 1;
    for (; remaining >= lanes; remaining -= lanes) {
        for (int j = 0; j < lanes; ++j) {
            write(at[j]);
        }
        for (int j = 0; j < lanes; ++j) {
            const int32_t next = rem[j] + carryIn;
            const ptrdiff_t carry = ~ptrdiff_t(next >> 31);
            at[j] += laneStep + (minorStep & carry);
            rem[j] = next - (twoLength & int32_t(carry));
        }
    }
    for (uint32_t j = 0; j < remaining; ++j) {
        write(at[j]);
    }
}

// Calls write(offset) for every pixel of the walk, in order.
template <class Writer>
void walkPixels(const LineWalk &walk, const Writer &write)
{
    if (walk.rise == 0) {
        ptrdiff_t offset = walk.offset;
        for (uint32_t k = 0;; ++k, offset += walk.majorStep) {
            write(offset);
            if (k == walk.last) {
                return;
            }
        }
    }
    if (walk.last < 2 * lanes || walk.length >= (int32_t(1) << 29)) {
        walkOneByOne(walk, write);
    } else {
        walkInLanes(walk, write);
    }
}

// One plane of 1, 2, 4 or 8-byte elements: the value is read once and each
// pixel is a single store.
template <class Element>
void drawOnePlane(uint8_t *plane, const void *value, const LineWalk &walk)
{
    Element element;
    std::memcpy(&element, value, sizeof(Element));
    walkPixels(walk, [plane, element](ptrdiff_t offset) { std::memcpy(plane + offset, &element, sizeof(Element)); });
}

template <class Planes>
void bresenham(int32_t r1, int32_t c1, int32_t r2, int32_t c2, const Planes &planes, int32_t numRows,
               const void *value, int32_t elemSize, const ClipRectangle &rect)
{
    const ptrdiff_t rowStep = elemSize;
    LineWalk walk;
    if (planes.count() < 1 || !planLine(r1, c1, r2, c2, rect, rowStep, rowStep * numRows, walk)) {
        return;
    }
    if (planes.count() == 1) {
        uint8_t *plane = planes.plane(0);
        switch (elemSize) {
        case 1: drawOnePlane<uint8_t>(plane, value, walk); return;
        case 2: drawOnePlane<uint16_t>(plane, value, walk); return;
        case 4: drawOnePlane<uint32_t>(plane, value, walk); return;
        case 8: drawOnePlane<uint64_t>(plane, value, walk); return;
        default: break;
        }
    }
    withValueWriter(static_cast<const uint8_t *>(value), elemSize, [&](const auto &writeValue) {
        walkPixels(walk, [&](ptrdiff_t offset) { writeValue(planes, offset); });
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

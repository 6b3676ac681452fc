#include "ornex_rt.h"

#include <cstddef>
#include <utility>

#include "frame/wrap_arithmetic.hpp"

namespace ornex::geometry {
namespace {

// Whether a corner of the quadrilateral joins two parallel edges (or a zero
// edge), by an exact cross product in 32-bit wrap-around arithmetic. Only
// corners 1, 2 and 3 are looked at; corner 0 is left out on purpose.
bool threeCornersCollinear(const int32_t *points)
{
    auto edge = [points](int k) {
        const int next = (k + 1) % 4;
        return std::pair<int32_t, int32_t>{wrapSub(points[2 * k], points[2 * next]),
                                           wrapSub(points[2 * k + 1], points[2 * next + 1])};
    };
    auto previous = edge(0);
    for (int k = 1; k <= 3; ++k) {
        const auto current = edge(k);
        if (wrapMul(current.second, previous.first) == wrapMul(current.first, previous.second)) {
            return true;
        }
        previous = current;
    }
    return false;
}

// Matrix entries in column order: (r, c) at r + 3c.
constexpr int forward = 0, adjugate = 9;

template <class T>
struct Placement {
    bool useColumnOffset, useRowOffset;
    T columnOffset, rowOffset;
    T lastRow, lastColumn; // H and W
};

// The 3x3 matrix taking [x y 1] (x the column, y the row) from the rectangle
// [0, W] x [0, H] onto the quadrilateral, in closed form, and its adjugate.
// Every value is formed and stored in T.
template <class T>
void rectangleToQuadrilateral(const int32_t *points, T W, T H, T *block)
{
    const T x0 = T(points[1]), x1 = T(points[3]), x2 = T(points[5]), x3 = T(points[7]);
    const T y0 = T(points[0]), y1 = T(points[2]), y2 = T(points[4]), y3 = T(points[6]);
    const T sumX = x0 - x1 + x2 - x3, sumY = y0 - y1 + y2 - y3;
    const T dx1 = x1 - x2, dx2 = x3 - x2, dy1 = y1 - y2, dy2 = y3 - y2;
    const T D = dx2 * dy1 - dx1 * dy2;
    T *m = block + forward;
    m[6] = (dx2 * sumY - dy2 * sumX) / (W * D);
    m[7] = (sumX * dy1 - dx1 * sumY) / (H * D);
    m[0] = x1 * m[6] + (x1 - x0) / W;
    m[1] = x3 * m[7] + (x3 - x0) / H;
    m[2] = x0;
    m[3] = y1 * m[6] + (y1 - y0) / W;
    m[4] = y3 * m[7] + (y3 - y0) / H;
    m[5] = y0;
    m[8] = T(1);
    T *a = block + adjugate;
    a[0] = m[4] - m[7] * m[5];
    a[1] = m[7] * m[2] - m[1];
    a[2] = m[5] * m[1] - m[4] * m[2];
    a[3] = m[6] * m[5] - m[3];
    a[4] = m[0] - m[6] * m[2];
    a[5] = m[3] * m[2] - m[5] * m[0];
    a[6] = m[7] * m[3] - m[6] * m[4];
    a[7] = m[6] * m[1] - m[7] * m[0];
    a[8] = m[4] * m[0] - m[3] * m[1];
}

// column `to` of a 3x3 matrix gains `factor` times column `from`.
template <class T>
void addColumnMultiple(T *matrix, int to, int from, T factor)
{
    for (int r = 0; r < 3; ++r) {
        matrix[r + 3 * to] = matrix[r + 3 * to] + factor * matrix[r + 3 * from];
    }
}

// row `to` of a 3x3 matrix gains `factor` times row `from`.
template <class T>
void addRowMultiple(T *matrix, int to, int from, T factor)
{
    for (int c = 0; c < 3; ++c) {
        matrix[to + 3 * c] = matrix[to + 3 * c] + factor * matrix[from + 3 * c];
    }
}

template <class T>
void calculateTransform(const int32_t *points, const int32_t *rect, uint32_t numRows, uint32_t numCols, int32_t mode,
                        int32_t inverseOffset, bool useRect, T *block)
{
    Placement<T> place{false, false, T(0), T(0), T(0), T(0)};
    int32_t rows, cols;
    if (mode == 1 && !useRect) {
        rows = static_cast<int32_t>(numRows);
        cols = static_cast<int32_t>(numCols);
    } else {
        // Mode 1 moves by the origin as given; every other mode by its
        // negation.
        const int32_t sign = mode == 1 ? 1 : -1;
        place.useRowOffset = rect[0] != 0;
        place.useColumnOffset = rect[1] != 0;
        place.rowOffset = T(wrapMul(sign, rect[0]));
        place.columnOffset = T(wrapMul(sign, rect[1]));
        rows = rect[2];
        cols = rect[3];
    }
    const T H = T(wrapSub(rows, 1)), W = T(wrapSub(cols, 1));
    rectangleToQuadrilateral(points, W, H, block);

    T *m = block + forward, *adj = block + adjugate;
    if (mode == 1) {
        // The forward matrix stays; the adjugate takes image coordinates.
        if (place.useColumnOffset) {
            addColumnMultiple(adj, 0, 2, place.columnOffset);
        }
        if (place.useRowOffset) {
            addColumnMultiple(adj, 1, 2, place.rowOffset);
        }
        return;
    }
    // The forward matrix takes image coordinates, the origin subtracted
    // first. Only mode 2 with the inverse-offset switch moves the adjugate to
    // match; other modes keep the adjugate of the unmoved matrix on purpose.
    if (place.useColumnOffset) {
        addRowMultiple(m, 2, 0, place.columnOffset);
    }
    if (place.useRowOffset) {
        addRowMultiple(m, 2, 1, place.rowOffset);
    }
    // Losing f times a column is gaining -f times it, bit for bit.
    if (mode == 2 && inverseOffset >= 1) {
        if (place.useColumnOffset) {
            addColumnMultiple(adj, 0, 2, -place.columnOffset);
        }
        if (place.useRowOffset) {
            addColumnMultiple(adj, 1, 2, -place.rowOffset);
        }
    }
}

// product(r, c) = sum over k of left(r, k) * right(k, c), with right(2, 2)
// taken as 1 without reading it. Not normalised.
template <class T>
void multiplyByForward(const T *left, const T *right, T *product)
{
    for (int c = 0; c < 3; ++c) {
        for (int r = 0; r < 3; ++r) {
            const T last = c == 2 ? T(1) : right[2 + 3 * c];
            product[r + 3 * c] = left[r] * right[3 * c] + left[r + 3] * right[1 + 3 * c] + left[r + 6] * last;
        }
    }
}

template <class T>
void calculateQuadToQuad(const int32_t *first, uint32_t numRows, uint32_t numCols, T *block, const int32_t *second,
                         bool firstToSecond)
{
    const int32_t rect[4] = {0, 0, static_cast<int32_t>(numRows), static_cast<int32_t>(numCols)};
    T *a = block, *b = block + 18;
    calculateTransform(first, rect, numRows, numCols, 3, 0, false, a);
    calculateTransform(second, rect, numRows, numCols, 1, 0, false, b);
    multiplyByForward(b + adjugate, a + forward, block + 36);
    if (firstToSecond) {
        multiplyByForward(a + adjugate, b + forward, block + 45);
    }
}

} // namespace
} // namespace ornex::geometry

using ornex::geometry::calculateQuadToQuad;
using ornex::geometry::calculateTransform;

extern "C" {
uint8_t ORNEX_Are3PtsCollinear(const int32_t *points) { return ornex::geometry::threeCornersCollinear(points) ? 1 : 0; }
void ORNEX_CalculateXformMtrx_D(const int32_t *points, const int32_t *rect, uint32_t numRows, uint32_t numCols, int32_t mode, int32_t inverseOffset, uint8_t useRect, double *block) { calculateTransform(points, rect, numRows, numCols, mode, inverseOffset, useRect != 0, block); }
void ORNEX_CalculateXformMtrx_R(const int32_t *points, const int32_t *rect, uint32_t numRows, uint32_t numCols, int32_t mode, int32_t inverseOffset, uint8_t useRect, float *block) { calculateTransform(points, rect, numRows, numCols, mode, inverseOffset, useRect != 0, block); }
void ORNEX_CalculateQ2QXformMtrx_D(const int32_t *first, uint32_t numRows, uint32_t numCols, double *block, const int32_t *second, uint8_t firstToSecond) { calculateQuadToQuad(first, numRows, numCols, block, second, firstToSecond != 0); }
void ORNEX_CalculateQ2QXformMtrx_R(const int32_t *first, uint32_t numRows, uint32_t numCols, float *block, const int32_t *second, uint8_t firstToSecond) { calculateQuadToQuad(first, numRows, numCols, block, second, firstToSecond != 0); }
}

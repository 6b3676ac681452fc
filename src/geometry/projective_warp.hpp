#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/rounding.hpp"
#include "frame/wrap_arithmetic.hpp"
#include "geometry/interpolation.hpp"

namespace ornex::geometry {

// Everything a warp call passes through from the drivers to each span.
template <class T>
struct WarpImages {
    T *out[3];
    int32_t outRowFirst, outRowLast, outColFirst, outColLast;
    int32_t outRows, outCols;
    const T *in[3];
    int32_t inRows, inCols;
    bool threePlanes;
    int32_t numPlanes;
    int32_t method;
    bool exact;
    int32_t rowLowerBound, colLowerBound;
};

template <class T>
WarpImages<T> warpImages(T *out0, T *out1, T *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst,
                         int32_t outColLast, int32_t outRows, int32_t outCols, const T *in0, const T *in1,
                         const T *in2, int32_t inRows, int32_t inCols, uint8_t threePlanes, int32_t numPlanes,
                         int32_t method, uint8_t exact, int32_t rowLowerBound, int32_t colLowerBound)
{
    return {{out0, out1, out2}, outRowFirst, outRowLast, outColFirst, outColLast, outRows, outCols, {in0, in1, in2},
            inRows, inCols, threePlanes != 0, numPlanes, method, exact != 0, rowLowerBound, colLowerBound};
}

// (q, p, w): the point (x = column, y = row) under a column-order matrix.
template <class T>
struct Homogeneous {
    T q, p, w;
};

template <class T>
Homogeneous<T> mapHomogeneous(int32_t row, int32_t column, const T *m)
{
    const T x = T(column), y = T(row);
    return {x * m[3] + y * m[4] + m[5], x * m[0] + y * m[1] + m[2], x * m[6] + y * m[7] + m[8]};
}

// A cell corner (row, column) carried through the matrix and rounded to the
// nearest pixel, halves away from zero; the scale is a reciprocal that
// multiplies both coordinates.
template <class T>
void mapCorner(int32_t row, int32_t column, const T *m, int32_t *mapped)
{
    const T y = T(row), x = T(column);
    const T scale = T(1) / (y * m[7] + x * m[6] + m[8]);
    mapped[0] = roundHalfAway((y * m[4] + x * m[3] + m[5]) * scale);
    mapped[1] = roundHalfAway((x * m[0] + y * m[1] + m[2]) * scale);
}

template <class T>
void transformCell(int32_t *edgeBuffer, int32_t numValues, const int32_t *corners, int32_t *sortScratch,
                   const WarpImages<T> &images, const T *matrix);

template <class T>
void computeSpan(const WarpImages<T> &images, const T *matrix, int32_t column, int32_t spanStart, int32_t spanEnd);

} // namespace ornex::geometry

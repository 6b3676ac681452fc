#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/rounding.hpp"
#include "geometry/cubic_weights.hpp"

namespace ornex::geometry {

// Where sampled values go: plane p of the result at index + p * stride.
struct PlaneLayout {
    int32_t numPlanes;
    ptrdiff_t sourceStride;
    ptrdiff_t destinationStride;
};

// Each kernel is split into the work that depends only on the position (the
// taps, made once) and the reading of one plane (sample), so that callers
// with several planes or many positions share the first part.

// The source value nearest to (y, x), halves rounded away from zero.
template <class T>
struct NearestTaps {
    ptrdiff_t offset;

    NearestTaps(T y, T x, uint32_t numRows, uint32_t)
        : offset(roundHalfAway(y) + static_cast<ptrdiff_t>(roundHalfAway(x)) * numRows)
    {
    }
    T sample(const T *plane) const { return plane[offset]; }
};

// Bilinear, the far row and column clamped to the image so that the last
// row or column can be sampled.
template <class T>
struct BilinearTaps {
    ptrdiff_t nearColumn, farColumn;
    int32_t nearRow, farRow;
    T fy, fx;

    BilinearTaps(T y, T x, uint32_t numRows, uint32_t numCols)
    {
        const int32_t r0 = truncateToInt32(y), c0 = truncateToInt32(x);
        nearRow = r0;
        farRow = std::min(r0 + 1, static_cast<int32_t>(numRows) - 1);
        const int32_t c1 = std::min(c0 + 1, static_cast<int32_t>(numCols) - 1);
        nearColumn = static_cast<ptrdiff_t>(c0) * numRows;
        farColumn = static_cast<ptrdiff_t>(c1) * numRows;
        fy = y - T(r0);
        fx = x - T(c0);
    }
    T sample(const T *plane) const
    {
        const T s00 = plane[nearRow + nearColumn], s10 = plane[farRow + nearColumn];
        const T s01 = plane[nearRow + farColumn], s11 = plane[farRow + farColumn];
        return (s01 * (T(1) - fy) + s11 * fy) * fx + (s00 * (T(1) - fy) + s10 * fy) * (T(1) - fx);
    }
};

// One axis of the bicubic stencil: at an exact integer position the value
// itself, next to the first and the second-to-last position a linear blend
// (which keeps the stencil inside the image), elsewhere cubic convolution.
template <class T>
struct CubicAxis {
    enum Kind { exact, linear, cubic };
    Kind kind;
    T fraction;
    CubicWeights<T> weights;

    CubicAxis(T position, int32_t index, int32_t count)
        : kind(position == T(index) ? exact : (index == 0 || index == count - 2 ? linear : cubic)),
          fraction(position - T(index)), weights(fraction)
    {
    }
    // value(k) reads position index + k.
    template <class Value>
    T combine(const Value &value) const
    {
        switch (kind) {
        case exact: return value(0);
        case linear: return (T(1) - fraction) * value(0) + fraction * value(1);
        default: return weights.blend(value(-1), value(0), value(1), value(2));
        }
    }
};

// Bicubic cubic convolution (a = -1), separable: down the rows first for each
// column needed, then along the row.
template <class T>
struct BicubicTaps {
    int32_t row, column;
    ptrdiff_t stride;
    CubicAxis<T> down, across;

    BicubicTaps(T y, T x, uint32_t numRows, uint32_t numCols)
        : row(truncateToInt32(y)), column(truncateToInt32(x)), stride(numRows),
          down(y, row, static_cast<int32_t>(numRows)), across(x, column, static_cast<int32_t>(numCols))
    {
    }
    T sample(const T *plane) const
    {
        return across.combine([&](int32_t k) {
            const T *columnTop = plane + (column + k) * stride + row;
            return down.combine([&](int32_t j) { return columnTop[j]; });
        });
    }
};

template <class Taps, class T>
void samplePlanes(const Taps &taps, const T *source, T *destination, uint32_t index, const PlaneLayout &planes)
{
    for (int32_t p = 0; p < planes.numPlanes; ++p) {
        destination[index + p * planes.destinationStride] = taps.sample(source + p * planes.sourceStride);
    }
}

} // namespace ornex::geometry

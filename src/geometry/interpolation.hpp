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

// The source value nearest to (y, x), halves rounded away from zero.
template <class T>
void nearestNeighbour(const T *source, T y, T x, uint32_t numRows, T *destination, uint32_t index,
                      const PlaneLayout &planes)
{
    const ptrdiff_t offset = roundHalfAway(y) + static_cast<ptrdiff_t>(roundHalfAway(x)) * numRows;
    for (int32_t p = 0; p < planes.numPlanes; ++p) {
        destination[index + p * planes.destinationStride] = source[offset + p * planes.sourceStride];
    }
}

// Bilinear, the far row and column clamped to the image so that the last
// row or column can be sampled.
template <class T>
void bilinear(const T *source, T y, T x, uint32_t numRows, uint32_t numCols, T *destination, uint32_t index,
              const PlaneLayout &planes)
{
    const int32_t r0 = truncateToInt32(y), c0 = truncateToInt32(x);
    const int32_t r1 = std::min(r0 + 1, static_cast<int32_t>(numRows) - 1);
    const int32_t c1 = std::min(c0 + 1, static_cast<int32_t>(numCols) - 1);
    const T fy = y - T(r0), fx = x - T(c0);
    const ptrdiff_t stride = numRows;
    for (int32_t p = 0; p < planes.numPlanes; ++p) {
        const T *s = source + p * planes.sourceStride;
        const T s00 = s[r0 + c0 * stride], s10 = s[r1 + c0 * stride];
        const T s01 = s[r0 + c1 * stride], s11 = s[r1 + c1 * stride];
        destination[index + p * planes.destinationStride] =
            (s01 * (T(1) - fy) + s11 * fy) * fx + (s00 * (T(1) - fy) + s10 * fy) * (T(1) - fx);
    }
}

// One axis of the bicubic stencil: at an exact integer position the value
// itself, next to the first and the second-to-last position a linear blend
// (which keeps the stencil inside the image), elsewhere cubic convolution.
// value(k) reads position index + k.
template <class T, class Value>
T cubicAxis(T position, int32_t index, T fraction, int32_t count, const Value &value)
{
    if (position == T(index)) {
        return value(0);
    }
    if (index == 0 || index == count - 2) {
        return (T(1) - fraction) * value(0) + fraction * value(1);
    }
    return cubicBlend(fraction, value(-1), value(0), value(1), value(2));
}

// Bicubic cubic convolution (a = -1), separable: down the rows first for each
// column needed, then along the row.
template <class T>
void bicubic(const T *source, T y, T x, uint32_t numRows, uint32_t numCols, T *destination, uint32_t index,
             const PlaneLayout &planes)
{
    const int32_t r = truncateToInt32(y), c = truncateToInt32(x);
    const T fy = y - T(r), fx = x - T(c);
    const ptrdiff_t stride = numRows;
    const int32_t rows = static_cast<int32_t>(numRows), cols = static_cast<int32_t>(numCols);
    for (int32_t p = 0; p < planes.numPlanes; ++p) {
        const T *s = source + p * planes.sourceStride;
        auto column = [&](int32_t k) {
            const T *columnTop = s + (c + k) * stride;
            return cubicAxis(y, r, fy, rows, [&](int32_t j) { return columnTop[r + j]; });
        };
        destination[index + p * planes.destinationStride] = cubicAxis(x, c, fx, cols, column);
    }
}

} // namespace ornex::geometry

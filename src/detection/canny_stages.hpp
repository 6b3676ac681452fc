#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "frame/element_traits.hpp"
#include "frame/packed.hpp"

namespace ornex::detection {

// Periodic index: the image repeats in both directions.
inline int32_t wrapIndex(int32_t index, int32_t size)
{
    const int32_t remainder = index % size;
    return remainder < 0 ? remainder + size : remainder;
}

// out = a column-wise combination of whole columns of a column-major image:
// out(., c) = first term + sum over k = 1 .. L-1 of the pair term of columns
// c - k and c + k (periodic), each column handled as one vector operation.
template <class T, class Centre, class Pair>
void combineColumns(const T *in, T *out, int32_t numRows, int32_t numCols, int32_t length, const Centre &centre,
                    const Pair &pair)
{
    const ptrdiff_t stride = numRows;
    for (int32_t c = 0; c < numCols; ++c) {
        T *__restrict target = out + c * stride;
        const T *__restrict here = in + c * stride;
        for (int32_t r = 0; r < numRows; ++r) {
            target[r] = centre(here[r]);
        }
        for (int32_t k = 1; k < length; ++k) {
            const T *__restrict before = in + wrapIndex(c - k, numCols) * stride;
            const T *__restrict after = in + wrapIndex(c + k, numCols) * stride;
            for (int32_t r = 0; r < numRows; ++r) {
                target[r] = target[r] + pair(k, before[r], after[r]);
            }
        }
    }
}

// The same down each column: out(r, .) from rows r - k and r + k (periodic).
template <class T, class Centre, class Pair>
void combineRows(const T *in, T *out, int32_t numRows, int32_t numCols, int32_t length, const Centre &centre,
                 const Pair &pair)
{
    const ptrdiff_t stride = numRows;
    const int32_t reach = length - 1;
    for (int32_t c = 0; c < numCols; ++c) {
        const T *__restrict column = in + c * stride;
        T *__restrict target = out + c * stride;
        auto periodic = [&](int32_t r) {
            T sum = centre(column[r]);
            for (int32_t k = 1; k < length; ++k) {
                sum = sum + pair(k, column[wrapIndex(r - k, numRows)], column[wrapIndex(r + k, numRows)]);
            }
            target[r] = sum;
        };
        const int32_t interiorBegin = std::min(reach, numRows);
        const int32_t interiorEnd = std::max(interiorBegin, numRows - reach);
        for (int32_t r = 0; r < interiorBegin; ++r) {
            periodic(r);
        }
        for (int32_t r = interiorBegin; r < interiorEnd; ++r) {
            target[r] = centre(column[r]);
        }
        for (int32_t k = 1; k < length; ++k) {
            for (int32_t r = interiorBegin; r < interiorEnd; ++r) {
                target[r] = target[r] + pair(k, column[r - k], column[r + k]);
            }
        }
        for (int32_t r = interiorEnd; r < numRows; ++r) {
            periodic(r);
        }
    }
}

// g0 I + sum gk (I(+k) + I(-k)), taps in order of k, centre first.
template <class T>
void smoothAcrossColumns(const T *in, const T *kernel, T *out, int32_t numRows, int32_t numCols, int32_t length)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    combineColumns(
        in, out, numRows, numCols, length, [kernel](T value) { return kernel[0] * value; },
        [kernel](int32_t k, T before, T after) { return kernel[k] * (after + before); });
}

template <class T>
void smoothDownRows(const T *in, const T *kernel, T *out, int32_t numRows, int32_t numCols, int32_t length)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    combineRows(
        in, out, numRows, numCols, length, [kernel](T value) { return kernel[0] * value; },
        [kernel](int32_t k, T before, T after) { return kernel[k] * (after + before); });
}

// sum over k >= 1 of dk (I(-k) - I(+k)), from 0; element 0 is never read.
template <class T>
void differentiateAcrossColumns(const T *in, const T *kernel, T *out, int32_t numRows, int32_t numCols,
                                int32_t length)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    combineColumns(
        in, out, numRows, numCols, length, [](T) { return T(0); },
        [kernel](int32_t k, T before, T after) { return kernel[k] * (before - after); });
}

template <class T>
void differentiateDownRows(const T *in, const T *kernel, T *out, int32_t numRows, int32_t numCols, int32_t length)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    combineRows(
        in, out, numRows, numCols, length, [](T) { return T(0); },
        [kernel](int32_t k, T before, T after) { return kernel[k] * (before - after); });
}

// The largest of `count` values, starting from 0; values that are not a
// number are passed over. Several lanes keep their own maximum, which gives
// the same result in any order.
template <class T>
T largestValue(const T *values, ptrdiff_t count)
{
    using P = Pack<T, 16>;
    P lanes = P::broadcast(T(0));
    ptrdiff_t i = 0;
    for (; i + P::width <= count; i += P::width) {
        lanes = largerOf(lanes, P::load(values + i));
    }
    T laneValues[P::width];
    lanes.store(laneValues);
    T largest = 0;
    for (T value : laneValues) {
        largest = value > largest ? value : largest;
    }
    for (; i < count; ++i) {
        largest = values[i] > largest ? values[i] : largest;
    }
    return largest;
}

// Rows of a block of the suppression, with one row of margin on each side.
constexpr int32_t suppressionBlockRows = 256;

// The gradient magnitudes of rows [first, end) of one column into `out`.
template <class T>
void columnMagnitudes(const T *__restrict gradX, const T *__restrict gradY, int32_t first, int32_t end,
                      T *__restrict out)
{
    for (int32_t r = first; r < end; ++r) {
        out[r - first] = std::sqrt(gradX[r] * gradX[r] + gradY[r] * gradY[r]);
    }
}

// The suppression of `count` rows of one column. The magnitude columns hold
// the rows from one above the first to one below the last. The packed loop
// runs several rows at once with every choice made by selection; the scalar
// loop finishes the column with the same operations.
template <class T>
void suppressRows(const T *__restrict gradX, const T *__restrict gradY, const T *__restrict previous,
                  const T *__restrict current, const T *__restrict next, int32_t count, T *__restrict out)
{
    using P = Pack<T, 16>;
    const P zero = P::broadcast(T(0)), one = P::broadcast(T(1));
    int32_t i = 0;
    for (; i + P::width <= count; i += P::width) {
        const int32_t at = i + 1;
        const P gx = P::load(gradX + i), gy = P::load(gradY + i);
        const P m = P::load(current + at);
        const P up = P::load(current + at - 1), down = P::load(current + at + 1);
        const P left = P::load(previous + at), upLeft = P::load(previous + at - 1);
        const P downLeft = P::load(previous + at + 1);
        const P right = P::load(next + at), upRight = P::load(next + at - 1), downRight = P::load(next + at + 1);
        const auto sameSign = gx * gy > zero;
        const P ax = absoluteValue(gx), ay = absoluteValue(gy);
        const auto vertical = ax < ay;
        const P t = P::select(vertical, ax / ay, ay / ax);
        const P near1 = P::select(vertical, up, right);
        const P far1 =
            P::select(vertical, P::select(sameSign, upLeft, upRight), P::select(sameSign, downRight, upRight));
        const P far2 =
            P::select(vertical, P::select(sameSign, downRight, downLeft), P::select(sameSign, upLeft, downLeft));
        const P near2 = P::select(vertical, down, left);
        const P side1 = (one - t) * near1 + t * far1;
        const P side2 = t * far2 + (one - t) * near2;
        P::select((m > side1) & (m > side2), m, zero).store(out + i);
    }
    for (; i < count; ++i) {
        const int32_t at = i + 1;
        const T gx = gradX[i], gy = gradY[i];
        const T m = current[at];
        const bool sameSign = gx * gy > T(0);
        const T ax = std::fabs(gx), ay = std::fabs(gy);
        // Mainly vertical gradient: interpolate between the rows above and
        // below; otherwise (also when unordered) between the columns.
        T side1, side2;
        if (ax < ay) {
            const T t = ax / ay;
            side1 = (T(1) - t) * current[at - 1] + t * (sameSign ? previous[at - 1] : next[at - 1]);
            side2 = t * (sameSign ? next[at + 1] : previous[at + 1]) + (T(1) - t) * current[at + 1];
        } else {
            const T t = ay / ax;
            side1 = (T(1) - t) * next[at] + t * (sameSign ? next[at + 1] : next[at - 1]);
            side2 = t * (sameSign ? previous[at - 1] : previous[at + 1]) + (T(1) - t) * previous[at];
        }
        out[i] = m > side1 && m > side2 ? m : T(0);
    }
}

// Gradient magnitude kept only where it beats both interpolated neighbours
// along the gradient (strictly); the outermost rows and columns keep their
// magnitude unsuppressed. Then everything is divided by the largest value,
// or by the machine epsilon when that is 0.
template <class T>
void nonMaximumSuppression(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    const ptrdiff_t stride = numRows;
    // The outermost rows and columns: plain magnitudes.
    for (int32_t c = 0; c < numCols; ++c) {
        const ptrdiff_t base = c * stride;
        if (c == 0 || c == numCols - 1) {
            columnMagnitudes(gradX + base, gradY + base, 0, numRows, out + base);
        } else {
            columnMagnitudes(gradX + base, gradY + base, 0, 1, out + base);
            columnMagnitudes(gradX + base, gradY + base, numRows - 1, numRows, out + base + numRows - 1);
        }
    }
    // Magnitudes of three neighbouring columns, for rows first - 1 .. end.
    T magnitudes[3][suppressionBlockRows + 2];
    for (int32_t first = 1; numCols > 2 && first < numRows - 1; first += suppressionBlockRows) {
        const int32_t end = std::min(first + suppressionBlockRows, numRows - 1);
        T *previous = magnitudes[0], *current = magnitudes[1], *next = magnitudes[2];
        columnMagnitudes(gradX, gradY, first - 1, end + 1, previous);
        columnMagnitudes(gradX + stride, gradY + stride, first - 1, end + 1, current);
        for (int32_t c = 1; c < numCols - 1; ++c) {
            const ptrdiff_t base = c * stride;
            columnMagnitudes(gradX + base + stride, gradY + base + stride, first - 1, end + 1, next);
            suppressRows(gradX + base + first, gradY + base + first, previous, current, next, end - first,
                         out + base + first);
            T *const oldest = previous;
            previous = current;
            current = next;
            next = oldest;
        }
    }
    const ptrdiff_t pixels = static_cast<ptrdiff_t>(numRows) * numCols;
    const T largest = largestValue(out, pixels);
    const T divisor = largest == T(0) ? ElementTraits<T>::epsilon : largest;
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        out[i] = out[i] / divisor;
    }
}

} // namespace ornex::detection

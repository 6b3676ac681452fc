#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "detection/canny_suppression.hpp"

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

} // namespace ornex::detection

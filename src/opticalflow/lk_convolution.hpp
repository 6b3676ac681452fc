#pragma once

#include <cstddef>
#include <cstdint>

namespace ornex::opticalflow {

// Temporal filter: out[p] = sum over k of taps[k] * frames[numTaps - 1 - k][p]
// (the last frame meets the first tap), summed in order of k.
template <class T>
void convolveFrames(const T *const *frames, T *out, const T *taps, int32_t numPixels, int32_t numTaps)
{
    if (numPixels < 1) {
        return;
    }
    for (int32_t p = 0; p < numPixels; ++p) {
        out[p] = T(0);
    }
    for (int32_t k = 0; k < numTaps; ++k) {
        const T *frame = frames[numTaps - 1 - k];
        const T tap = taps[k];
        for (int32_t p = 0; p < numPixels; ++p) {
            out[p] = out[p] + tap * frame[p];
        }
    }
}

// Correlation with taps centred at h = numTaps / 2, along columns
// (acrossColumns) or down rows. Pixels closer than h to any edge are set to
// 0, on all four sides, whichever direction is filtered.
template <class T, bool acrossColumns>
void correlate(const T *in, T *out, const T *taps, int32_t numRows, int32_t numCols, int32_t numTaps)
{
    const int32_t half = numTaps / 2;
    const ptrdiff_t stride = numRows;
    const ptrdiff_t tapStep = acrossColumns ? stride : 1;
    for (int32_t c = 0; c < numCols; ++c) {
        T *outColumn = out + c * stride;
        const bool columnInside = c >= half && c < numCols - half;
        for (int32_t r = 0; r < numRows; ++r) {
            outColumn[r] = T(0);
        }
        if (!columnInside) {
            continue;
        }
        const int32_t firstRow = half, endRow = numRows - half;
        const T *first = in + c * stride - half * tapStep;
        for (int32_t k = 0; k < numTaps; ++k) {
            const T tap = taps[k];
            const T *source = first + k * tapStep;
            for (int32_t r = firstRow; r < endRow; ++r) {
                outColumn[r] = outColumn[r] + tap * source[r];
            }
        }
    }
}

template <class T>
void correlateAcrossColumns(const T *in, T *out, const T *taps, int32_t numRows, int32_t numCols, int32_t numTaps)
{
    if (numRows >= 1) {
        correlate<T, true>(in, out, taps, numRows, numCols, numTaps);
    }
}

template <class T>
void correlateDownRows(const T *in, T *out, const T *taps, int32_t numRows, int32_t numCols, int32_t numTaps)
{
    if (numCols >= 1) {
        correlate<T, false>(in, out, taps, numRows, numCols, numTaps);
    }
}

} // namespace ornex::opticalflow

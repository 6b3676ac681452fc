#include "ornex_rt.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "opticalflow/flow_forms.hpp"
#include "opticalflow/lk_system.hpp"

namespace ornex::opticalflow {
namespace {

template <class T>
struct FixedFilters {
    // Five-point central difference with the previous-minus-next sign.
    static constexpr T derivative[5] = {T(-1.0) / T(12.0), T(2.0) / T(3.0), T(0), T(-2.0) / T(3.0), T(1.0) / T(12.0)};
    // Binomial 1 4 6 4 1 over 16.
    static constexpr T weight[5] = {T(1.0) / T(16.0), T(1.0) / T(4.0), T(3.0) / T(8.0), T(1.0) / T(4.0),
                                    T(1.0) / T(16.0)};
};

// Five-tap sums of the fixed filters, centred on each output position; terms
// whose position falls outside the image are left out, and so is the zero
// middle tap of the derivative. Every output is summed in tap order from 0.

// out(r, c) = sum over k of taps[k] * value(r, c - 2 + k), for the rows
// [rowBegin, rowEnd) of column c, into out[r - rowBegin].
template <class T, class Value>
void sumAcrossColumns(const T (&taps)[5], int32_t c, int32_t numCols, int32_t rowBegin, int32_t rowEnd, T *out,
                      const Value &value)
{
    for (int32_t r = rowBegin; r < rowEnd; ++r) {
        out[r - rowBegin] = T(0);
    }
    for (int32_t k = 0; k < 5; ++k) {
        const int32_t at = c - 2 + k;
        if (taps[k] == T(0) || at < 0 || at >= numCols) {
            continue;
        }
        const T tap = taps[k];
        for (int32_t r = rowBegin; r < rowEnd; ++r) {
            out[r - rowBegin] = out[r - rowBegin] + tap * value(r, at);
        }
    }
}

// out[r] = sum over k of taps[k] * column[r - 2 + k] for rows [rowBegin,
// rowEnd) of a column whose rows [columnBegin, columnEnd) are held in
// column[0 ..]; rows outside 0 .. numRows-1 are left out.
template <class T>
void sumDownRows(const T (&taps)[5], const T *column, int32_t columnBegin, int32_t numRows, int32_t rowBegin,
                 int32_t rowEnd, T *out)
{
    for (int32_t r = rowBegin; r < rowEnd; ++r) {
        out[r] = T(0);
    }
    for (int32_t k = 0; k < 5; ++k) {
        if (taps[k] == T(0)) {
            continue;
        }
        const T tap = taps[k];
        // Rows r with 0 <= r - 2 + k < numRows.
        const int32_t first = std::max(rowBegin, 2 - k), end = std::min(rowEnd, numRows + 2 - k);
        const T *source = column + (k - 2) - columnBegin;
        for (int32_t r = first; r < end; ++r) {
            out[r] = out[r] + tap * source[r];
        }
    }
}

// Rows are weighed in blocks so that the sums across columns of a block
// (with two rows of margin on each side) fit in a stack buffer.
constexpr int32_t weighBlockRows = 256;

// out = the product image weighed across columns, then down rows, by the
// binomial weights.
template <class T, class Product>
void weigh(T *out, int32_t numRows, int32_t numCols, const Product &product)
{
    const ptrdiff_t stride = numRows;
    T acrossColumns[weighBlockRows + 4];
    for (int32_t c = 0; c < numCols; ++c) {
        for (int32_t rowBegin = 0; rowBegin < numRows; rowBegin += weighBlockRows) {
            const int32_t rowEnd = std::min(rowBegin + weighBlockRows, numRows);
            const int32_t marginBegin = std::max(rowBegin - 2, 0), marginEnd = std::min(rowEnd + 2, numRows);
            sumAcrossColumns(FixedFilters<T>::weight, c, numCols, marginBegin, marginEnd, acrossColumns,
                             [&](int32_t r, int32_t at) { return product(r + at * stride); });
            sumDownRows(FixedFilters<T>::weight, acrossColumns, marginBegin, numRows, rowBegin, rowEnd,
                        out + c * stride);
        }
    }
}

// Ix and Iy of the image by the five-point difference, and It.
template <class T>
void derivatives(const T *image1, const T *image2, T *gradX, T *gradY, T *gradT, int32_t numRows, int32_t numCols)
{
    const ptrdiff_t stride = numRows;
    for (int32_t c = 0; c < numCols; ++c) {
        const ptrdiff_t base = c * stride;
        sumAcrossColumns(FixedFilters<T>::derivative, c, numCols, 0, numRows, gradX + base,
                         [&](int32_t r, int32_t at) { return image1[r + at * stride]; });
        sumDownRows(FixedFilters<T>::derivative, image1 + base, 0, numRows, 0, numRows, gradY + base);
        for (int32_t r = 0; r < numRows; ++r) {
            gradT[base + r] = image2[base + r] - image1[base + r];
        }
    }
}

// Weighted sums a, b, c, d, e into the five working arrays. Ix and Iy wait
// in d and e and It in the result until they are no longer needed.
template <class T>
void weightedSums(const T *image1, const T *image2, T *scratch, T *sums[5], int32_t numRows, int32_t numCols)
{
    T *gradX = sums[3], *gradY = sums[4], *gradT = scratch;
    derivatives(image1, image2, gradX, gradY, gradT, numRows, numCols);
    weigh(sums[0], numRows, numCols, [&](ptrdiff_t i) { return gradX[i] * gradX[i]; });
    weigh(sums[1], numRows, numCols, [&](ptrdiff_t i) { return gradX[i] * gradY[i]; });
    weigh(sums[2], numRows, numCols, [&](ptrdiff_t i) { return gradY[i] * gradY[i]; });
    const ptrdiff_t pixels = static_cast<ptrdiff_t>(numRows) * numCols;
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        gradY[i] = gradY[i] * gradT[i];   // Iy It, weighed last
        scratch[i] = gradX[i] * gradT[i]; // Ix It
    }
    weigh(sums[3], numRows, numCols, [&](ptrdiff_t i) { return scratch[i]; });
    std::copy(gradY, gradY + pixels, scratch);
    weigh(sums[4], numRows, numCols, [&](ptrdiff_t i) { return scratch[i]; });
}

template <class Form, class T>
void lucasKanade(const T *image1, const T *image2, T *result, T *sums[5], T threshold, int32_t numRows,
                 int32_t numCols)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    weightedSums(image1, image2, result, sums, numRows, numCols);
    const ptrdiff_t pixels = static_cast<ptrdiff_t>(numRows) * numCols;
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        const LucasKanadeSystem<T> system(sums[0][i], sums[1][i], sums[2][i], sums[3][i], sums[4][i]);
        if (!system.passes(system.larger, threshold)) {
            Form::storeZero(result, i);
        } else if (!(system.smaller < threshold)) {
            if (std::isnan(system.negDet)) {
                Form::storeZero(result, i);
            } else {
                Form::store(result, i, system.fullU(), system.fullV());
            }
        } else {
            // Only the larger eigenvalue passes: the velocity along the
            // matrix applied to (1, 1), a direction kept as the library
            // defines it.
            const T x = system.a + system.b, y = system.b + system.c;
            const T norm = x * x + y * y;
            if (!(norm < T(0))) {
                const T scale = -(system.d + system.e) / norm;
                Form::store(result, i, x * scale, y * scale);
            } else {
                Form::storeZero(result, i);
            }
        }
    }
}

} // namespace
} // namespace ornex::opticalflow

using ornex::opticalflow::ComplexVelocity;
using ornex::opticalflow::lucasKanade;
using ornex::opticalflow::SquaredSpeed;

#define ORNEX_LK_ARGS(T) const T *image1, const T *image2, T *result, T *sumA, T *sumB, T *sumC, T *sumD, T *sumE, const T *threshold, int32_t numRows, int32_t numCols

#define ORNEX_LK_SUMS(T) T *sums[5] = {sumA, sumB, sumC, sumD, sumE}
#define ORNEX_LK_PASS image1, image2, result, sums, *threshold, numRows, numCols

extern "C" {
void ORNEX_OpticalFlow_LK_D(ORNEX_LK_ARGS(double)) { ORNEX_LK_SUMS(double); lucasKanade<SquaredSpeed<double>>(ORNEX_LK_PASS); }
void ORNEX_OpticalFlow_LK_R(ORNEX_LK_ARGS(float)) { ORNEX_LK_SUMS(float); lucasKanade<SquaredSpeed<float>>(ORNEX_LK_PASS); }
void ORNEX_OpticalFlow_LK_C(ORNEX_LK_ARGS(float)) { ORNEX_LK_SUMS(float); lucasKanade<ComplexVelocity<float>>(ORNEX_LK_PASS); }
void ORNEX_OpticalFlow_LK_Z(ORNEX_LK_ARGS(double)) { ORNEX_LK_SUMS(double); lucasKanade<ComplexVelocity<double>>(ORNEX_LK_PASS); }
}

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

// The value a product image has at index i: one factor, or two multiplied.
template <bool twoFactors, class T>
T productAt(const T *__restrict first, const T *__restrict second, ptrdiff_t i)
{
    if constexpr (twoFactors) {
        return first[i] * second[i];
    } else {
        (void)second;
        return first[i];
    }
}

// out[r - rowBegin] = sum over k of taps[k] * product(r, c - 2 + k) for the
// rows [rowBegin, rowEnd) of column c.
template <bool twoFactors, class T>
void sumAcrossColumns(const T (&taps)[5], const T *__restrict first, const T *__restrict second, int32_t numRows,
                      int32_t numCols, int32_t c, int32_t rowBegin, int32_t rowEnd, T *__restrict out)
{
    const ptrdiff_t stride = numRows;
    if (c >= 2 && c + 2 < numCols) {
        const ptrdiff_t leftmost = (c - 2) * stride;
        for (int32_t r = rowBegin; r < rowEnd; ++r) {
            T sum = 0;
            for (int32_t k = 0; k < 5; ++k) {
                if (taps[k] != T(0)) {
                    sum = sum + taps[k] * productAt<twoFactors>(first, second, leftmost + k * stride + r);
                }
            }
            out[r - rowBegin] = sum;
        }
        return;
    }
    for (int32_t r = rowBegin; r < rowEnd; ++r) {
        out[r - rowBegin] = T(0);
    }
    for (int32_t k = 0; k < 5; ++k) {
        const int32_t at = c - 2 + k;
        if (taps[k] == T(0) || at < 0 || at >= numCols) {
            continue;
        }
        for (int32_t r = rowBegin; r < rowEnd; ++r) {
            out[r - rowBegin] = out[r - rowBegin] + taps[k] * productAt<twoFactors>(first, second, r + at * stride);
        }
    }
}

// out[r] = sum over k of taps[k] * column[r - 2 + k - columnBegin] for rows
// [rowBegin, rowEnd), where column holds the rows [columnBegin, ...) of a
// column of numRows rows; rows outside the column are left out.
template <class T>
void sumDownRows(const T (&taps)[5], const T *__restrict column, int32_t columnBegin, int32_t numRows,
                 int32_t rowBegin, int32_t rowEnd, T *__restrict out)
{
    const T *source = column - columnBegin;
    auto border = [&](int32_t r) {
        T sum = 0;
        for (int32_t k = 0; k < 5; ++k) {
            const int32_t at = r - 2 + k;
            if (taps[k] != T(0) && at >= 0 && at < numRows) {
                sum = sum + taps[k] * source[at];
            }
        }
        out[r] = sum;
    };
    const int32_t interiorBegin = std::max(rowBegin, 2);
    const int32_t interiorEnd = std::max(interiorBegin, std::min(rowEnd, numRows - 2));
    for (int32_t r = rowBegin; r < std::min(interiorBegin, rowEnd); ++r) {
        border(r);
    }
    for (int32_t r = interiorBegin; r < interiorEnd; ++r) {
        T sum = 0;
        for (int32_t k = 0; k < 5; ++k) {
            if (taps[k] != T(0)) {
                sum = sum + taps[k] * source[r - 2 + k];
            }
        }
        out[r] = sum;
    }
    for (int32_t r = std::max(interiorEnd, rowBegin); r < rowEnd; ++r) {
        border(r);
    }
}

// Rows are weighed in blocks so that the sums across columns of a block
// (with two rows of margin on each side) fit in a stack buffer.
constexpr int32_t weighBlockRows = 256;

// out = the product image weighed across columns, then down rows, by the
// binomial weights.
template <bool twoFactors, class T>
void weigh(T *out, const T *first, const T *second, int32_t numRows, int32_t numCols)
{
    const ptrdiff_t stride = numRows;
    T acrossColumns[weighBlockRows + 4];
    for (int32_t c = 0; c < numCols; ++c) {
        for (int32_t rowBegin = 0; rowBegin < numRows; rowBegin += weighBlockRows) {
            const int32_t rowEnd = std::min(rowBegin + weighBlockRows, numRows);
            const int32_t marginBegin = std::max(rowBegin - 2, 0), marginEnd = std::min(rowEnd + 2, numRows);
            sumAcrossColumns<twoFactors>(FixedFilters<T>::weight, first, second, numRows, numCols, c, marginBegin,
                                         marginEnd, acrossColumns);
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
        sumAcrossColumns<false>(FixedFilters<T>::derivative, image1, image1, numRows, numCols, c, 0, numRows,
                                gradX + base);
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
    weigh<true>(sums[0], gradX, gradX, numRows, numCols);
    weigh<true>(sums[1], gradX, gradY, numRows, numCols);
    weigh<true>(sums[2], gradY, gradY, numRows, numCols);
    const ptrdiff_t pixels = static_cast<ptrdiff_t>(numRows) * numCols;
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        gradY[i] = gradY[i] * gradT[i];   // Iy It, weighed last
        scratch[i] = gradX[i] * gradT[i]; // Ix It
    }
    weigh<false>(sums[3], scratch, scratch, numRows, numCols);
    std::copy(gradY, gradY + pixels, scratch);
    weigh<false>(sums[4], scratch, scratch, numRows, numCols);
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

#include "ornex_rt.h"

#include <cmath>
#include <cstddef>
#include <cstring>

#include "opticalflow/flow_forms.hpp"
#include "opticalflow/lk_convolution.hpp"
#include "opticalflow/lk_system.hpp"

namespace ornex::opticalflow {
namespace {

template <class T>
struct Filter {
    const T *taps;
    int32_t length;
};

template <class T>
struct GaussianDerivativeFilters {
    Filter<T> temporalDerivative, spatialDerivative, temporalSmoothing, spatialSmoothing, window;
};

// out = in filtered across columns, then down rows, through `scratch`.
template <class T>
void separable(const T *in, T *out, T *scratch, Filter<T> acrossColumns, Filter<T> downRows, int32_t numRows,
               int32_t numCols)
{
    correlateAcrossColumns(in, scratch, acrossColumns.taps, numRows, numCols, acrossColumns.length);
    correlateDownRows(scratch, out, downRows.taps, numRows, numCols, downRows.length);
}

// Ix, Iy, It of the frame sequence, then the five products weighed by the
// window: sumXX, sumYY, sumXY, sumXT, sumYT end as a, c, b, d, e.
template <class T>
void weightedSums(const T *const *frames, T *scratch, T *sums[5], const GaussianDerivativeFilters<T> &filters,
                  int32_t numRows, int32_t numCols)
{
    T *sumXX = sums[0], *sumYY = sums[1], *sumXY = sums[2], *sumXT = sums[3], *sumYT = sums[4];
    const int32_t pixels = numRows > 0 && numCols > 0 ? numRows * numCols : 0;
    // Both temporal filters are centred on the same frame.
    const int32_t derivativeLength = filters.temporalDerivative.length;
    const int32_t smoothingLength = filters.temporalSmoothing.length;
    const T *const *smoothingFrames = frames, *const *derivativeFrames = frames;
    if (derivativeLength > smoothingLength) {
        smoothingFrames += (derivativeLength - smoothingLength) / 2;
    } else {
        derivativeFrames += (smoothingLength - derivativeLength) / 2;
    }
    convolveFrames(smoothingFrames, sumXX, filters.temporalSmoothing.taps, pixels, smoothingLength);
    if (pixels > 0) {
        std::memcpy(sumYY, sumXX, static_cast<size_t>(pixels) * sizeof(T));
    }
    convolveFrames(derivativeFrames, sumXY, filters.temporalDerivative.taps, pixels, derivativeLength);

    separable(sumXX, sumXX, scratch, filters.spatialDerivative, filters.spatialSmoothing, numRows, numCols);
    separable(sumYY, sumYY, scratch, filters.spatialSmoothing, filters.spatialDerivative, numRows, numCols);
    separable(sumXY, sumXY, scratch, filters.spatialSmoothing, filters.spatialSmoothing, numRows, numCols);

    for (int32_t i = 0; i < pixels; ++i) {
        const T ix = sumXX[i], iy = sumYY[i], it = sumXY[i];
        sumXX[i] = ix * ix;
        sumYY[i] = iy * iy;
        sumXY[i] = ix * iy;
        sumXT[i] = ix * it;
        sumYT[i] = iy * it;
    }
    for (int k = 0; k < 5; ++k) {
        separable(sums[k], sums[k], scratch, filters.window, filters.window, numRows, numCols);
    }
}

// Determinants this small are not trusted for the normal-flow estimate:
// 1e-8 / 255.
template <class T>
constexpr T smallestDeterminant = T(3.9215686274509805e-11);

template <class Form, class T>
void lucasKanadeGder(const T *const *frames, T *result, T *sums[5], T threshold,
                     const GaussianDerivativeFilters<T> &filters, int32_t numRows, int32_t numCols,
                     bool useNormalFlow)
{
    weightedSums(frames, result, sums, filters, numRows, numCols);
    const int32_t half = filters.window.length / 2;
    const ptrdiff_t stride = numRows;
    for (int32_t c = 0; c < numCols; ++c) {
        for (int32_t r = 0; r < numRows; ++r) {
            const ptrdiff_t i = r + c * stride;
            // Only the top and left borders are cleared.
            if (r < half || c < half) {
                Form::storeZero(result, i);
                continue;
            }
            const LucasKanadeSystem<T> system(sums[0][i], sums[2][i], sums[1][i], sums[3][i], sums[4][i]);
            if (!(system.smaller < threshold) && system.negDet < T(0)) {
                Form::store(result, i, system.fullU(), system.fullV());
            } else if (useNormalFlow && !(system.larger < threshold) &&
                       std::fabs(system.negDet) > smallestDeterminant<T>) {
                // The full solution projected on the unit eigenvector of the
                // larger eigenvalue. The minus sign of s and the crossed
                // placement of the two components are the library's
                // definition.
                const T inverseLength = T(1) / std::sqrt((system.a - system.larger) * (system.a - system.larger) +
                                                         system.b * system.b);
                const T n1 = system.b * inverseLength;
                const T n2 = (system.larger - system.a) * inverseLength;
                const T s = -(system.fullU() * n1 + system.fullV() * n2);
                Form::storeNormal(result, i, s, n1, n2);
            } else {
                Form::storeZero(result, i);
            }
        }
    }
}

} // namespace
} // namespace ornex::opticalflow

using ornex::opticalflow::ComplexVelocity;
using ornex::opticalflow::lucasKanadeGder;
using ornex::opticalflow::SquaredSpeed;

#define ORNEX_GDER_ARGS(T) const T *const *frames, T *result, T *sumXX, T *sumYY, T *sumXY, T *sumXT, T *sumYT, const T *threshold, const T *tempDerivTaps, const T *spatDerivTaps, const T *tempSmoothTaps, const T *spatSmoothTaps, const T *windowTaps, int32_t numRows, int32_t numCols, int32_t numTempDerivTaps, int32_t numSpatDerivTaps, int32_t numTempSmoothTaps, int32_t numSpatSmoothTaps, int32_t numWindowTaps, uint8_t useNormalFlow
#define ORNEX_GDER_SUMS(T) T *sums[5] = {sumXX, sumYY, sumXY, sumXT, sumYT}
#define ORNEX_GDER_PASS frames, result, sums, *threshold, {{tempDerivTaps, numTempDerivTaps}, {spatDerivTaps, numSpatDerivTaps}, {tempSmoothTaps, numTempSmoothTaps}, {spatSmoothTaps, numSpatSmoothTaps}, {windowTaps, numWindowTaps}}, numRows, numCols, useNormalFlow != 0

extern "C" {
void ORNEX_OpticalFlow_LK_GDER_D(ORNEX_GDER_ARGS(double)) { ORNEX_GDER_SUMS(double); lucasKanadeGder<SquaredSpeed<double>>(ORNEX_GDER_PASS); }
void ORNEX_OpticalFlow_LK_GDER_R(ORNEX_GDER_ARGS(float)) { ORNEX_GDER_SUMS(float); lucasKanadeGder<SquaredSpeed<float>>(ORNEX_GDER_PASS); }
void ORNEX_OpticalFlow_LK_GDER_C(ORNEX_GDER_ARGS(float)) { ORNEX_GDER_SUMS(float); lucasKanadeGder<ComplexVelocity<float>>(ORNEX_GDER_PASS); }
void ORNEX_OpticalFlow_LK_GDER_Z(ORNEX_GDER_ARGS(double)) { ORNEX_GDER_SUMS(double); lucasKanadeGder<ComplexVelocity<double>>(ORNEX_GDER_PASS); }
}

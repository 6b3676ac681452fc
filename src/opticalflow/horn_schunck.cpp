#include "ornex_rt.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "opticalflow/flow_forms.hpp"

namespace ornex::opticalflow {
namespace {

template <class T>
struct DerivativeProducts {
    T *gradXX, *gradXY, *gradYY, *gradXT, *gradYT, *invDenom;
};

// The caller's working memory of the drivers. The two row-smoothing buffers
// of the interface are not needed: the row pass runs down the columns with
// its three values in registers.
template <class T>
struct HornSchunckWork {
    T *colSmooth1, *colSmooth2;
    DerivativeProducts<T> products;
    T *uColumns[2];
    T *vColumns[2];
};

// S(r) = I(r-1) + 2 I(r) + I(r+1) down one column, rows beyond the edge
// replaced by the edge row.
template <class T>
T columnSmoothed(const T *column, int32_t r, int32_t numRows)
{
    const T above = column[r > 0 ? r - 1 : 0];
    const T below = column[r + 1 < numRows ? r + 1 : numRows - 1];
    return above + T(2) * column[r] + below;
}

template <class T>
void columnSmoothedInto(T *smoothed, const T *column, int32_t numRows)
{
    for (int32_t r = 0; r < numRows; ++r) {
        smoothed[r] = columnSmoothed(column, r, numRows);
    }
}

// Ix and Iy of image1 by smoothed differences with the previous-minus-next
// sign (the opposite of a forward gradient, which the velocity update is
// built on), and the products the iteration reads. Edges are replicated.
template <class T>
void sobelDerivative(const T *image1, const T *image2, T *gradX, T *gradY, T *colSmooth1, T *colSmooth2,
                     const DerivativeProducts<T> &products, T smoothness, int32_t numRows, int32_t numCols)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    const ptrdiff_t stride = numRows;
    // Two smoothed columns: previous holds S(c-1), current S(c); the next one
    // replaces the previous as it is used, then the two swap.
    T *previous = colSmooth1, *current = colSmooth2;
    columnSmoothedInto(previous, image1, numRows);
    std::memcpy(current, previous, static_cast<size_t>(numRows) * sizeof(T));
    for (int32_t c = 0; c < numCols; ++c) {
        const T *left = image1 + std::max(c - 1, 0) * stride;
        const T *centre = image1 + c * stride;
        const T *right = image1 + std::min(c + 1, numCols - 1) * stride;
        const T *second = image2 + c * stride;
        const ptrdiff_t base = c * stride;
        // T(r) = I(r, c-1) + 2 I(r, c) + I(r, c+1), kept for rows r-1 .. r+1.
        auto rowSmoothed = [&](int32_t r) { return left[r] + T(2) * centre[r] + right[r]; };
        T rowAbove = rowSmoothed(0), rowHere = rowAbove;
        for (int32_t r = 0; r < numRows; ++r) {
            const T rowBelow = r + 1 < numRows ? rowSmoothed(r + 1) : rowHere;
            const T next = columnSmoothed(right, r, numRows);
            const T ix = (previous[r] - next) * T(0.125);
            const T iy = (rowAbove - rowBelow) * T(0.125);
            previous[r] = next;
            rowAbove = rowHere;
            rowHere = rowBelow;

            const ptrdiff_t i = base + r;
            const T it = second[r] - centre[r];
            gradX[i] = ix;
            gradY[i] = iy;
            products.gradXX[i] = ix * ix;
            products.gradXY[i] = ix * iy;
            products.gradYY[i] = iy * iy;
            products.gradXT[i] = ix * it;
            products.gradYT[i] = iy * it;
            products.invDenom[i] = T(1) / (ix * ix + smoothness + iy * iy);
        }
        std::swap(previous, current);
    }
}

// The new u and v of one pixel from the means of its neighbours.
template <class T>
struct PixelUpdate {
    T u, v;
};

template <class T>
PixelUpdate<T> updatedVelocity(T uMean, T vMean, T xx, T xy, T yy, T xt, T yt, T invDenom)
{
    return {uMean - (xx * uMean + xy * vMean + xt) * invDenom, vMean - (yy * vMean + xy * uMean + yt) * invDenom};
}

// The rows of a column that have both vertical neighbours, as a function of
// unaliased pointers so that it runs several rows at once. The pointers
// address row 0 of their columns.
template <class T>
void updateInteriorRows(const T *__restrict uHere, const T *__restrict uLeft, const T *__restrict uRight,
                        const T *__restrict vHere, const T *__restrict vLeft, const T *__restrict vRight,
                        const T *__restrict xx, const T *__restrict xy, const T *__restrict yy,
                        const T *__restrict xt, const T *__restrict yt, const T *__restrict invDenom,
                        T *__restrict newU, T *__restrict newV, int32_t numRows)
{
    for (int32_t r = 1; r < numRows - 1; ++r) {
        const T uMean = T(0.25) * (uHere[r + 1] + uHere[r - 1] + uLeft[r] + uRight[r]);
        const T vMean = T(0.25) * (vHere[r + 1] + vHere[r - 1] + vLeft[r] + vRight[r]);
        const PixelUpdate<T> next = updatedVelocity(uMean, vMean, xx[r], xy[r], yy[r], xt[r], yt[r], invDenom[r]);
        newU[r] = next.u;
        newV[r] = next.v;
    }
}

// One Jacobi sweep over the velocity planes: every average reads the previous
// sweep's values. Column c's new values wait in a working column and are
// copied back once column c + 1 has been computed. Returns the largest
// change of u or v when asked to track it (else 0).
template <bool trackChange, class T>
T sweep(T *u, T *v, const HornSchunckWork<T> &work, int32_t numRows, int32_t numCols)
{
    // An image without pixels has nothing to update, and its working
    // columns and velocity planes hold no element to touch.
    if (numRows < 1 || numCols < 1) {
        return 0;
    }
    const DerivativeProducts<T> &products = work.products;
    const ptrdiff_t stride = numRows;
    const size_t columnBytes = static_cast<size_t>(numRows) * sizeof(T);
    T largestChange = 0;
    auto track = [&largestChange](T oldValue, T newValue) {
        const T change = std::fabs(oldValue - newValue);
        largestChange = change > largestChange ? change : largestChange;
    };
    for (int32_t c = 0; c < numCols; ++c) {
        const ptrdiff_t base = c * stride;
        const T *uHere = u + base, *vHere = v + base;
        const T *uLeft = u + (c > 0 ? c - 1 : c) * stride;
        const T *vLeft = v + (c > 0 ? c - 1 : c) * stride;
        const T *uRight = u + (c + 1 < numCols ? c + 1 : c) * stride;
        const T *vRight = v + (c + 1 < numCols ? c + 1 : c) * stride;
        T *newU = work.uColumns[c & 1];
        T *newV = work.vColumns[c & 1];
        const T *xx = products.gradXX + base, *xy = products.gradXY + base, *yy = products.gradYY + base;
        const T *xt = products.gradXT + base, *yt = products.gradYT + base, *invDenom = products.invDenom + base;
        // A missing neighbour at the top or bottom edge is the pixel itself.
        auto edgeRow = [&](int32_t r) {
            const int32_t up = r > 0 ? r - 1 : r, down = r + 1 < numRows ? r + 1 : r;
            const T uMean = T(0.25) * (uHere[down] + uHere[up] + uLeft[r] + uRight[r]);
            const T vMean = T(0.25) * (vHere[down] + vHere[up] + vLeft[r] + vRight[r]);
            const PixelUpdate<T> next =
                updatedVelocity(uMean, vMean, xx[r], xy[r], yy[r], xt[r], yt[r], invDenom[r]);
            newU[r] = next.u;
            newV[r] = next.v;
        };
        edgeRow(0);
        updateInteriorRows(uHere, uLeft, uRight, vHere, vLeft, vRight, xx, xy, yy, xt, yt, invDenom, newU, newV,
                           numRows);
        if (numRows > 1) {
            edgeRow(numRows - 1);
        }
        if constexpr (trackChange) {
            for (int32_t r = 0; r < numRows; ++r) {
                track(uHere[r], newU[r]);
                track(vHere[r], newV[r]);
            }
        }
        if (c > 0) {
            std::memcpy(u + base - stride, work.uColumns[(c - 1) & 1], columnBytes);
            std::memcpy(v + base - stride, work.vColumns[(c - 1) & 1], columnBytes);
        }
    }
    const ptrdiff_t lastBase = static_cast<ptrdiff_t>(numCols - 1) * stride;
    std::memcpy(u + lastBase, work.uColumns[(numCols - 1) & 1], columnBytes);
    std::memcpy(v + lastBase, work.vColumns[(numCols - 1) & 1], columnBytes);
    return largestChange;
}

template <class T>
struct StopRule {
    bool useMaxIterations;
    bool useThreshold;
    int32_t maxIterations;
    T threshold;
};

// Sweeps from zero velocity until a stop rule holds. Without a working stop
// rule this never returns, as documented.
template <class T>
void iterate(T *u, T *v, const HornSchunckWork<T> &work, int32_t numRows, int32_t numCols, const StopRule<T> &stop)
{
    const size_t planeElements = numRows > 0 && numCols > 0 ? static_cast<size_t>(numRows) * numCols : 0;
    std::fill(u, u + planeElements, T(0));
    std::fill(v, v + planeElements, T(0));
    for (int32_t k = 1;; ++k) {
        // The largest change is only needed by the threshold rule; it is
        // the same whichever order the pixels are compared in.
        const T largestChange = stop.useThreshold ? sweep<true>(u, v, work, numRows, numCols)
                                                  : sweep<false>(u, v, work, numRows, numCols);
        if (stop.useMaxIterations && k == stop.maxIterations) {
            return;
        }
        if (stop.useThreshold && stop.threshold > largestChange) {
            return;
        }
    }
}

template <class T>
void hornSchunckSquared(const T *image1, const T *image2, T *velocityOut, T *velocityY, const HornSchunckWork<T> &work,
                        T smoothness, const StopRule<T> &stop, int32_t numRows, int32_t numCols)
{
    sobelDerivative(image1, image2, velocityOut, velocityY, work.colSmooth1, work.colSmooth2, work.products,
                    smoothness, numRows, numCols);
    iterate(velocityOut, velocityY, work, numRows, numCols, stop);
    const ptrdiff_t pixels = numRows > 0 && numCols > 0 ? static_cast<ptrdiff_t>(numRows) * numCols : 0;
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        SquaredSpeed<T>::store(velocityOut, i, velocityOut[i], velocityY[i]);
    }
}

// The complex result's memory serves as the u and v planes during the
// iteration; u and v are then set aside in two product arrays that are no
// longer needed and interleaved.
template <class T>
void hornSchunckComplex(const T *image1, const T *image2, T *velocity, const HornSchunckWork<T> &work, T smoothness,
                        const StopRule<T> &stop, int32_t numRows, int32_t numCols)
{
    const ptrdiff_t pixels = numRows > 0 && numCols > 0 ? static_cast<ptrdiff_t>(numRows) * numCols : 0;
    T *u = velocity, *v = velocity + pixels;
    sobelDerivative(image1, image2, u, v, work.colSmooth1, work.colSmooth2, work.products, smoothness, numRows,
                    numCols);
    iterate(u, v, work, numRows, numCols, stop);
    std::copy(u, u + pixels, work.products.gradXX);
    std::copy(v, v + pixels, work.products.gradYY);
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        ComplexVelocity<T>::store(velocity, i, work.products.gradXX[i], work.products.gradYY[i]);
    }
}

} // namespace
} // namespace ornex::opticalflow

using ornex::opticalflow::hornSchunckComplex;
using ornex::opticalflow::hornSchunckSquared;
using ornex::opticalflow::sobelDerivative;

#define ORNEX_PRODUCT_ARGS(T) T *gradXX, T *gradXY, T *gradYY, T *gradXT, T *gradYT, T *invDenom
#define ORNEX_PRODUCTS {gradXX, gradXY, gradYY, gradXT, gradYT, invDenom}
#define ORNEX_SOBEL_ARGS(T) const T *image1, const T *image2, T *gradX, T *gradY, T *colSmooth1, T *colSmooth2, T *, T *, ORNEX_PRODUCT_ARGS(T), const T *smoothness, int32_t numRows, int32_t numCols
#define ORNEX_SOBEL_PASS image1, image2, gradX, gradY, colSmooth1, colSmooth2, ORNEX_PRODUCTS, *smoothness, numRows, numCols
#define ORNEX_HS_ARGS(T) T *colSmooth1, T *colSmooth2, T *, T *, ORNEX_PRODUCT_ARGS(T), T *uColumnA, T *uColumnB, T *vColumnA, T *vColumnB, const T *smoothness, uint8_t useMaxIterations, uint8_t useThreshold, const int32_t *maxIterations, const T *threshold, int32_t numRows, int32_t numCols
#define ORNEX_HS_PASS {colSmooth1, colSmooth2, ORNEX_PRODUCTS, {uColumnA, uColumnB}, {vColumnA, vColumnB}}, *smoothness, {useMaxIterations != 0, useThreshold != 0, *maxIterations, *threshold}, numRows, numCols

extern "C" {
void ORNEX_SobelDerivative_HS_D(ORNEX_SOBEL_ARGS(double)) { sobelDerivative<double>(ORNEX_SOBEL_PASS); }
void ORNEX_SobelDerivative_HS_R(ORNEX_SOBEL_ARGS(float)) { sobelDerivative<float>(ORNEX_SOBEL_PASS); }
void ORNEX_OpticalFlow_HS_D(const double *image1, const double *image2, double *velocityOut, double *velocityY, ORNEX_HS_ARGS(double)) { hornSchunckSquared<double>(image1, image2, velocityOut, velocityY, ORNEX_HS_PASS); }
void ORNEX_OpticalFlow_HS_R(const float *image1, const float *image2, float *velocityOut, float *velocityY, ORNEX_HS_ARGS(float)) { hornSchunckSquared<float>(image1, image2, velocityOut, velocityY, ORNEX_HS_PASS); }
void ORNEX_OpticalFlow_HS_C(const float *image1, const float *image2, float *velocity, ORNEX_HS_ARGS(float)) { hornSchunckComplex<float>(image1, image2, velocity, ORNEX_HS_PASS); }
void ORNEX_OpticalFlow_HS_Z(const double *image1, const double *image2, double *velocity, ORNEX_HS_ARGS(double)) { hornSchunckComplex<double>(image1, image2, velocity, ORNEX_HS_PASS); }
}

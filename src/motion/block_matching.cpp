#include "ornex_rt.h"

#include <cstddef>
#include <cstring>

#include "frame/wrap_arithmetic.hpp"

namespace ornex::motion {
namespace {

template <class T>
using SearchKernel = void (*)(const T *, const T *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t *,
                              int32_t *);

// Result forms: the displacement (u across columns, v down rows) of block k.
template <class Real>
struct SquaredLength {
    using Element = Real;
    static void write(Real *motion, ptrdiff_t k, int32_t u, int32_t v)
    {
        // Formed in 32-bit integers, which wrap for absurd displacements.
        motion[k] = static_cast<Real>(wrapAdd(wrapMul(u, u), wrapMul(v, v)));
    }
};

template <class Real>
struct ComplexDisplacement {
    using Element = Real;
    static void write(Real *motion, ptrdiff_t k, int32_t u, int32_t v)
    {
        motion[2 * k] = static_cast<Real>(u);
        motion[2 * k + 1] = static_cast<Real>(v);
    }
};

template <class T>
void clearWorkingImage(T *image, int32_t rows, int32_t cols)
{
    if (rows > 0 && cols > 0) {
        std::memset(image, 0, static_cast<size_t>(rows) * static_cast<size_t>(cols) * sizeof(T));
    }
}

// Copies the image column by column into `padded` with its top-left element
// at (top, left).
template <class T>
void placeImage(T *padded, int32_t paddedRows, const T *image, int32_t numRows, int32_t numCols, int32_t top,
                int32_t left)
{
    if (numRows <= 0) {
        return;
    }
    for (int32_t c = 0; c < numCols; ++c) {
        T *destination = padded + top + (static_cast<ptrdiff_t>(c) + left) * paddedRows;
        std::memcpy(destination, image + static_cast<ptrdiff_t>(c) * numRows, static_cast<size_t>(numRows) * sizeof(T));
    }
}

template <class Form, class T>
void blockMatching(SearchKernel<T> search, const T *image1, const T *image2, T *padded1, T *padded2,
                   typename Form::Element *motion, const int32_t *blockSize, const int32_t *overlap,
                   const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows,
                   int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols)
{
    const int32_t blockRows = blockSize[0], blockCols = blockSize[1];
    const int32_t overlapRows = overlap[0], overlapCols = overlap[1];
    const int32_t maxRows = maxDisplacement[0], maxCols = maxDisplacement[1];
    const int32_t stepRows = blockRows - overlapRows;
    const int32_t stepCols = blockCols - overlapCols;
    const int32_t firstRow = maxRows + overlapRows / 2;
    const int32_t firstCol = maxCols + overlapCols / 2;

    // A caller that passes the first image as its own working image has
    // already given it the margin it wants: it is neither cleared nor copied.
    if (padded1 != image1) {
        clearWorkingImage(padded1, padded1Rows, padded1Cols);
        placeImage(padded1, padded1Rows, image1, numRows, numCols, overlapRows / 2, overlapCols / 2);
    }
    clearWorkingImage(padded2, padded2Rows, padded2Cols);
    placeImage(padded2, padded2Rows, image2, numRows, numCols, firstRow, firstCol);

    const int32_t colLimit = padded2Cols - firstCol - stepCols + 1;
    const int32_t rowLimit = padded2Rows - firstRow - stepRows + 1;
    if (firstCol >= colLimit) {
        return;
    }
    const int32_t regionCols = blockCols + 2 * maxCols;
    const int32_t regionRows = blockRows + 2 * maxRows;
    // The offsets outlive each block: a search that writes nothing leaves the
    // previous block's offsets in place.
    int32_t bestCol = 0;
    int32_t bestRow = 0;
    ptrdiff_t k = 0;
    for (int32_t c = firstCol; c < colLimit; c += stepCols) {
        const ptrdiff_t blockCol = c - firstCol;
        for (int32_t r = firstRow; r < rowLimit; r += stepRows) {
            const ptrdiff_t blockRow = r - firstRow;
            search(padded1 + blockRow + blockCol * padded1Rows, padded2 + blockRow + blockCol * padded2Rows,
                   padded1Rows, padded2Rows, blockCols, blockRows, regionCols, regionRows, &bestCol, &bestRow);
            Form::write(motion, k++, bestCol - maxCols, bestRow - maxRows);
        }
    }
}

} // namespace
} // namespace ornex::motion

using ornex::motion::blockMatching;
template <class Real>
using Squared = ornex::motion::SquaredLength<Real>;
template <class Real>
using Complex = ornex::motion::ComplexDisplacement<Real>;

#define ORNEX_MATCHING_ARGS(T, Result)                                                                             \
    const T *image1, const T *image2, T *padded1, T *padded2, Result *motion, const int32_t *blockSize,          \
        const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols,                 \
        int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols
#define ORNEX_MATCHING_PASS image1, image2, padded1, padded2, motion, blockSize, overlap, maxDisplacement, numRows, numCols, padded1Rows, padded1Cols, padded2Rows, padded2Cols

extern "C" {
void ORNEX_BlockMatching_Full_MAD_D(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Squared<double>>(ORNEX_SearchMethod_Full_MAD_D, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_Full_MAD_R(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Squared<float>>(ORNEX_SearchMethod_Full_MAD_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_Full_MAD_C(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Complex<float>>(ORNEX_SearchMethod_Full_MAD_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_Full_MAD_Z(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Complex<double>>(ORNEX_SearchMethod_Full_MAD_D, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_Full_MSE_D(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Squared<double>>(ORNEX_SearchMethod_Full_MSE_D, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_Full_MSE_R(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Squared<float>>(ORNEX_SearchMethod_Full_MSE_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_Full_MSE_C(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Complex<float>>(ORNEX_SearchMethod_Full_MSE_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_Full_MSE_Z(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Complex<double>>(ORNEX_SearchMethod_Full_MSE_D, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MAD_D(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Squared<double>>(ORNEX_SearchMethod_3Step_MAD_D, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MAD_R(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Squared<float>>(ORNEX_SearchMethod_3Step_MAD_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MAD_C(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Complex<float>>(ORNEX_SearchMethod_3Step_MAD_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MAD_Z(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Complex<double>>(ORNEX_SearchMethod_3Step_MAD_D, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MSE_D(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Squared<double>>(ORNEX_SearchMethod_3Step_MSE_D, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MSE_R(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Squared<float>>(ORNEX_SearchMethod_3Step_MSE_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MSE_C(ORNEX_MATCHING_ARGS(float, float)) { blockMatching<Complex<float>>(ORNEX_SearchMethod_3Step_MSE_R, ORNEX_MATCHING_PASS); }
void ORNEX_BlockMatching_3Step_MSE_Z(ORNEX_MATCHING_ARGS(double, double)) { blockMatching<Complex<double>>(ORNEX_SearchMethod_3Step_MSE_D, ORNEX_MATCHING_PASS); }
}

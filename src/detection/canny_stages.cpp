#include "ornex_rt.h"

#include "detection/canny_stages.hpp"
#include "frame/simd_level.hpp"

#define ORNEX_SIMD_NAMESPACE baseline
#define ORNEX_PACK_BYTES 16
#include "detection/canny_suppression_kernels.hpp"
#include "detection/canny_pipeline_kernels.hpp"

namespace ornex::detection {

template <class T>
void nonMaximumSuppression(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols)
{
    switch (simdLevel()) {
    case SimdLevel::avx2:
#ifdef ORNEX_HAVE_AVX2_PATHS
        avx2::suppress(gradX, gradY, out, numRows, numCols, true);
        return;
#endif
    case SimdLevel::packed:
        baseline::suppress(gradX, gradY, out, numRows, numCols, true);
        return;
    case SimdLevel::scalar:
        baseline::suppress(gradX, gradY, out, numRows, numCols, false);
        return;
    }
}

template <class T>
T gradientsAndSuppression(const T *image, const T *smoothing, const T *derivative, T *gradX, T *gradY, T *out,
                          int32_t numRows, int32_t numCols, int32_t length)
{
    switch (simdLevel()) {
    case SimdLevel::avx2:
#ifdef ORNEX_HAVE_AVX2_PATHS
        return avx2::gradientsAndSuppression(image, smoothing, derivative, gradX, gradY, out, numRows, numCols,
                                             length, true);
#endif
    case SimdLevel::packed:
        return baseline::gradientsAndSuppression(image, smoothing, derivative, gradX, gradY, out, numRows, numCols,
                                                 length, true);
    case SimdLevel::scalar:
        break;
    }
    return baseline::gradientsAndSuppression(image, smoothing, derivative, gradX, gradY, out, numRows, numCols, length,
                                             false);
}

template <class T>
void normaliseAndClassify(T *magnitude, T divisor, uint8_t *map, ptrdiff_t count, T low, T high)
{
#ifdef ORNEX_HAVE_AVX2_PATHS
    if (simdLevel() == SimdLevel::avx2) {
        avx2::normaliseAndClassify(magnitude, divisor, map, count, low, high);
        return;
    }
#endif
    baseline::normaliseAndClassify(magnitude, divisor, map, count, low, high);
}

template void normaliseAndClassify(float *, float, uint8_t *, ptrdiff_t, float, float);
template void normaliseAndClassify(double *, double, uint8_t *, ptrdiff_t, double, double);

template double gradientsAndSuppression(const double *, const double *, const double *, double *, double *, double *,
                                        int32_t, int32_t, int32_t);
template float gradientsAndSuppression(const float *, const float *, const float *, float *, float *, float *,
                                       int32_t, int32_t, int32_t);

template void nonMaximumSuppression(const double *, const double *, double *, int32_t, int32_t);
template void nonMaximumSuppression(const float *, const float *, float *, int32_t, int32_t);

} // namespace ornex::detection

using namespace ornex::detection;

extern "C" {
void ORNEX_RC_Gaussian_Smoothing_D(const double *image, const double *kernel, double *smoothedH, double *smoothedV, int32_t numRows, int32_t numCols, int32_t length) { smoothAcrossColumns(image, kernel, smoothedH, numRows, numCols, length); smoothDownRows(image, kernel, smoothedV, numRows, numCols, length); }
void ORNEX_RC_Gaussian_Smoothing_R(const float *image, const float *kernel, float *smoothedH, float *smoothedV, int32_t numRows, int32_t numCols, int32_t length) { smoothAcrossColumns(image, kernel, smoothedH, numRows, numCols, length); smoothDownRows(image, kernel, smoothedV, numRows, numCols, length); }
void ORNEX_C_Derivative_Image_D(const double *image, const double *kernel, double *out, int32_t numRows, int32_t numCols, int32_t length) { differentiateAcrossColumns(image, kernel, out, numRows, numCols, length); }
void ORNEX_C_Derivative_Image_R(const float *image, const float *kernel, float *out, int32_t numRows, int32_t numCols, int32_t length) { differentiateAcrossColumns(image, kernel, out, numRows, numCols, length); }
void ORNEX_R_Derivative_Image_D(const double *image, const double *kernel, double *out, int32_t numRows, int32_t numCols, int32_t length) { differentiateDownRows(image, kernel, out, numRows, numCols, length); }
void ORNEX_R_Derivative_Image_R(const float *image, const float *kernel, float *out, int32_t numRows, int32_t numCols, int32_t length) { differentiateDownRows(image, kernel, out, numRows, numCols, length); }
void ORNEX_NonMaximum_Suppression_D(const double *gradX, const double *gradY, double *out, int32_t numRows, int32_t numCols) { nonMaximumSuppression(gradX, gradY, out, numRows, numCols); }
void ORNEX_NonMaximum_Suppression_R(const float *gradX, const float *gradY, float *out, int32_t numRows, int32_t numCols) { nonMaximumSuppression(gradX, gradY, out, numRows, numCols); }
}

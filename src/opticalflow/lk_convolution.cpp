#include "ornex_rt.h"

#include "opticalflow/lk_convolution.hpp"

using ornex::opticalflow::convolveFrames;
using ornex::opticalflow::correlateAcrossColumns;
using ornex::opticalflow::correlateDownRows;

extern "C" {
void ORNEX_OFLK_ConvT_D(const double *const *frames, double *out, const double *taps, int32_t numPixels, int32_t numTaps) { convolveFrames(frames, out, taps, numPixels, numTaps); }
void ORNEX_OFLK_ConvT_R(const float *const *frames, float *out, const float *taps, int32_t numPixels, int32_t numTaps) { convolveFrames(frames, out, taps, numPixels, numTaps); }
void ORNEX_OFLK_ConvX_D(const double *in, double *out, const double *taps, int32_t numRows, int32_t numCols, int32_t numTaps) { correlateAcrossColumns(in, out, taps, numRows, numCols, numTaps); }
void ORNEX_OFLK_ConvX_R(const float *in, float *out, const float *taps, int32_t numRows, int32_t numCols, int32_t numTaps) { correlateAcrossColumns(in, out, taps, numRows, numCols, numTaps); }
void ORNEX_OFLK_ConvY_D(const double *in, double *out, const double *taps, int32_t numRows, int32_t numCols, int32_t numTaps) { correlateDownRows(in, out, taps, numRows, numCols, numTaps); }
void ORNEX_OFLK_ConvY_R(const float *in, float *out, const float *taps, int32_t numRows, int32_t numCols, int32_t numTaps) { correlateDownRows(in, out, taps, numRows, numCols, numTaps); }
}

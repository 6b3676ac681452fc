#include "ornex_rt.h"

#include "geometry/interpolation.hpp"

using ornex::geometry::BicubicTaps;
using ornex::geometry::BilinearTaps;
using ornex::geometry::NearestTaps;
using ornex::geometry::samplePlanes;

#define ORNEX_PLANES {numPlanes, static_cast<ptrdiff_t>(sourceStride), static_cast<ptrdiff_t>(destinationStride)}

extern "C" {
void ORNEX_NN_Interp_D(const double *source, double y, double x, uint32_t numRows, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { samplePlanes(NearestTaps<double>(y, x, numRows, 0), source, destination, index, ORNEX_PLANES); }
void ORNEX_NN_Interp_R(const float *source, float y, float x, uint32_t numRows, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { samplePlanes(NearestTaps<float>(y, x, numRows, 0), source, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BL_Interp_D(const double *source, double y, double x, uint32_t numRows, uint32_t numCols, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { samplePlanes(BilinearTaps<double>(y, x, numRows, numCols), source, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BL_Interp_R(const float *source, float y, float x, uint32_t numRows, uint32_t numCols, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { samplePlanes(BilinearTaps<float>(y, x, numRows, numCols), source, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BC_Interp_D(const double *source, double y, double x, uint32_t numRows, uint32_t numCols, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { samplePlanes(BicubicTaps<double>(y, x, numRows, numCols), source, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BC_Interp_R(const float *source, float y, float x, uint32_t numRows, uint32_t numCols, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { samplePlanes(BicubicTaps<float>(y, x, numRows, numCols), source, destination, index, ORNEX_PLANES); }
}

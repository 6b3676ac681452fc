#include "ornex_rt.h"

#include "geometry/interpolation.hpp"

using ornex::geometry::bicubic;
using ornex::geometry::bilinear;
using ornex::geometry::nearestNeighbour;

#define ORNEX_PLANES {numPlanes, sourceStride, destinationStride}

extern "C" {
void ORNEX_NN_Interp_D(const double *source, double y, double x, uint32_t numRows, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { nearestNeighbour(source, y, x, numRows, destination, index, ORNEX_PLANES); }
void ORNEX_NN_Interp_R(const float *source, float y, float x, uint32_t numRows, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { nearestNeighbour(source, y, x, numRows, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BL_Interp_D(const double *source, double y, double x, uint32_t numRows, uint32_t numCols, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { bilinear(source, y, x, numRows, numCols, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BL_Interp_R(const float *source, float y, float x, uint32_t numRows, uint32_t numCols, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { bilinear(source, y, x, numRows, numCols, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BC_Interp_D(const double *source, double y, double x, uint32_t numRows, uint32_t numCols, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { bicubic(source, y, x, numRows, numCols, destination, index, ORNEX_PLANES); }
void ORNEX_PosVal_BC_Interp_R(const float *source, float y, float x, uint32_t numRows, uint32_t numCols, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride) { bicubic(source, y, x, numRows, numCols, destination, index, ORNEX_PLANES); }
}

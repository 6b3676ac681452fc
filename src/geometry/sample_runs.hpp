#pragma once

#include <cstdint>

namespace ornex::geometry {

// Runs of samples of one plane at given (already clamped) positions into
// consecutive destination elements, eight (single) or four (double) lanes at
// a time with AVX2 gathers; each lane does the scalar kernel's arithmetic in
// the scalar order. They return how many leading positions they handled, a
// whole number of packs (bicubic stops at the first pack that is not in the
// image's interior at fractional positions); the caller samples the rest.
// The source must have fewer than 2^31 elements per plane.
namespace avx2 {
int32_t bilinearRun(const float *plane, int32_t numRows, int32_t numCols, const float *ys, const float *xs,
                    int32_t count, float *destination);
int32_t bilinearRun(const double *plane, int32_t numRows, int32_t numCols, const double *ys, const double *xs,
                    int32_t count, double *destination);
int32_t bicubicRun(const float *plane, int32_t numRows, int32_t numCols, const float *ys, const float *xs,
                   int32_t count, float *destination);
int32_t bicubicRun(const double *plane, int32_t numRows, int32_t numCols, const double *ys, const double *xs,
                   int32_t count, double *destination);
} // namespace avx2

} // namespace ornex::geometry

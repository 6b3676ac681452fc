/*
 * ornex_rt: image- and video-processing kernels behind a flat C interface.
 *
 * Conventions shared by every family:
 * - One exported function per operation and element type. The suffix names
 *   the element type: _D double, _R float, _C complex float, _Z complex
 *   double, _UI8/_I8/_UI16/_I16/_UI32/_I32 integers, _Bool one byte (zero is
 *   false). Drawing families put I (one plane) or RGB (three planes) in
 *   front of the suffix.
 * - Images are column-major: element (r, c) of an image with M rows lies at
 *   index r + c*M. RGB images are three separate planes of the same shape.
 *   Complex arrays are interleaved (real, imaginary) pairs.
 * - Every buffer belongs to the caller and must be large enough for what the
 *   function writes. Nothing is validated and nothing is reported; sizes of
 *   zero or below mean there is nothing to do.
 * - The library keeps no state: any number of threads may call it at once as
 *   long as they do not share output or working buffers.
 */
#ifndef ORNEX_RT_H
#define ORNEX_RT_H

#include <stdint.h>

#if defined(_WIN32)
#  if defined(ORNEX_RT_BUILDING)
#    define ORNEX_API __declspec(dllexport)
#  else
#    define ORNEX_API __declspec(dllimport)
#  endif
#elif defined(__GNUC__)
#  define ORNEX_API __attribute__((visibility("default")))
#else
#  define ORNEX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------
 * Library frame
 *
 * ornex_rt_version: "major.minor.patch.build", four decimal numbers.
 * ornex_rt_build_date: "Mon D YYYY" (English month abbreviation, day of the
 * month without padding, four-digit year), in UTC.
 * ---------------------------------------------------------------------- */
ORNEX_API extern const char *const ornex_rt_version;
ORNEX_API extern const char *const ornex_rt_build_date;

/* ------------------------------------------------------------------------
 * Motion estimation: block search
 *
 * Finds where one block of the first image best matches inside a search
 * region of the second. Block and region are given by their top-left element
 * and the row count (column stride) of the image holding them; the region is
 * at least as large as the block. Candidate (i, j) lays the block over the
 * region's rows i .. i+blockRows-1 and columns j .. j+blockCols-1.
 *
 * Cost of a candidate, summed column by column, top row down within a
 * column: MAD the sum of |region - block|, MSE the sum of squared
 * differences (plain sums, not means). _R members round every difference,
 * term and partial sum to single precision.
 *
 * Full: every candidate, columns outer and rows inner; the first strictly
 * smallest cost wins, so ties go to the lowest column, then the lowest row.
 * Writes (0, 0) first; writes nothing more when no column offset fits.
 *
 * 3Step: a 3x3 grid of candidates around the best so far, starting from the
 * region's centre with step min(nR/2, nC/2)/2 + 1 and shrinking the step by
 * one per round. Grids are moved inward at the top and left edges and
 * clamped at the bottom and right edges. Writes nothing when the step would
 * be below 1.
 *
 * The best column offset goes to *bestCol, the best row offset to *bestRow.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_SearchMethod_Full_MAD_D(const double *block, const double *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);
ORNEX_API void ORNEX_SearchMethod_Full_MAD_R(const float *block, const float *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);
ORNEX_API void ORNEX_SearchMethod_Full_MSE_D(const double *block, const double *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);
ORNEX_API void ORNEX_SearchMethod_Full_MSE_R(const float *block, const float *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);
ORNEX_API void ORNEX_SearchMethod_3Step_MAD_D(const double *block, const double *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);
ORNEX_API void ORNEX_SearchMethod_3Step_MAD_R(const float *block, const float *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);
ORNEX_API void ORNEX_SearchMethod_3Step_MSE_D(const double *block, const double *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);
ORNEX_API void ORNEX_SearchMethod_3Step_MSE_R(const float *block, const float *region, int32_t blockStride, int32_t regionStride, int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow);

#ifdef __cplusplus
}
#endif

#endif /* ORNEX_RT_H */

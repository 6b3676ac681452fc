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

/* ------------------------------------------------------------------------
 * Motion estimation: block matching
 *
 * Motion between two numRows x numCols images, one result per block of the
 * first image. blockSize, overlap and maxDisplacement are (rows, columns)
 * pairs: blocks bR x bC, overlap oR x oC (steps bR - oR, bC - oC; the
 * overlap must stay below the block size), displacements up to dR, dC.
 *
 * Working images, sized by the caller:
 * - padded1 (padded1Rows x padded1Cols): cleared, then image1 copied in at
 *   (oR/2, oC/2). Pass padded1 == image1 to use the image itself, neither
 *   cleared nor copied; padded1Rows is then its row count.
 * - padded2 (padded2Rows x padded2Cols): cleared, then image2 copied in at
 *   (dR + oR/2, dC + oC/2). The natural size is the image plus that margin on
 *   every side: (numRows + 2*(dR + oR/2)) x (numCols + 2*(dC + oC/2)).
 *
 * Blocks: with r0 = dR + oR/2 and c0 = dC + oC/2, block positions c = c0,
 * c0 + sC, ... while c < padded2Cols - c0 - sC + 1, and r likewise down the
 * rows; blocks that do not fit whole at the right and bottom edges are not
 * searched. Results are stored in column-major order of the block grid (a
 * block column top to bottom, then the next). A grid with no block writes
 * nothing to motion (the working images are still filled).
 *
 * Each block is searched with the matching ORNEX_SearchMethod kernel over
 * its own position widened by dR rows and dC columns on every side; the
 * displacement is u = column offset - dC, v = row offset - dR. Results:
 * _D, _R: u*u + v*v (double, float) from double, float images;
 * _C, _Z: the complex u + v*i (float pairs from float images, double pairs
 * from double images).
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_BlockMatching_Full_MAD_D(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_Full_MAD_R(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_Full_MAD_C(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_Full_MAD_Z(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_Full_MSE_D(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_Full_MSE_R(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_Full_MSE_C(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_Full_MSE_Z(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MAD_D(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MAD_R(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MAD_C(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MAD_Z(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MSE_D(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MSE_R(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MSE_C(const float *image1, const float *image2, float *padded1, float *padded2, float *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);
ORNEX_API void ORNEX_BlockMatching_3Step_MSE_Z(const double *image1, const double *image2, double *padded1, double *padded2, double *motion, const int32_t *blockSize, const int32_t *overlap, const int32_t *maxDisplacement, int32_t numRows, int32_t numCols, int32_t padded1Rows, int32_t padded1Cols, int32_t padded2Rows, int32_t padded2Cols);

/* ------------------------------------------------------------------------
 * Line drawing: clipping and plain lines
 *
 * Points are (row, column) pairs; a clip rectangle is rowMin, rowMax,
 * colMin, colMax, all inclusive.
 *
 * ORNEX_ClipLine cuts the segment p1-p2 to the rectangle rect[4] in 32-bit
 * integer arithmetic (Cohen-Sutherland, every intersection taken from the
 * end-point as given, n/d rounded halves away from zero). Returns 1 and
 * leaves both end-points inside when part of the segment remains; returns 0
 * when it misses, the end-points then holding whatever clipping gave them.
 *
 * ORNEX_Line_Bresenham, ORNEX_Line_Bresenham_RGB draw the clipped digital
 * line, both end-points included, by copying elemSize bytes per pixel and
 * plane (any element type; no conversion, blending or saturation). The
 * intensity form writes numPlanes planes planeStride elements apart, plane k
 * taking the bytes at value + k*elemSize; the RGB form takes three separate
 * planes and three consecutive values. A clipped line restarts its walk at
 * the clipped start point.
 * ---------------------------------------------------------------------- */
ORNEX_API int32_t ORNEX_ClipLine(int32_t *p1, int32_t *p2, const int32_t *rect);
ORNEX_API void ORNEX_Line_Bresenham(int32_t r1, int32_t c1, int32_t r2, int32_t c2, void *dst, int32_t numRows, const void *value, int32_t elemSize, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Line_Bresenham_RGB(int32_t r1, int32_t c1, int32_t r2, int32_t c2, void *planeR, void *planeG, void *planeB, int32_t numRows, const void *value, int32_t elemSize, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax);

/* ------------------------------------------------------------------------
 * Line drawing: anti-aliased lines
 *
 * A one-pixel line blended by a three-pixel brush across its minor axis,
 * after clipping to the rectangle. The caller's weight table holds rows of 25
 * entries, entry d standing for a perpendicular distance of d/16 pixel: row 0
 * the factor kept of the old pixel, row level + k the term added for plane k
 * (colour times coverage and opacity). A pixel at distance index d becomes
 * row0[d] * old + rowk[d]; integer members compute ((row0[d] * old) >> 10) +
 * rowk[d] in 32-bit arithmetic and store the low bits (no saturation).
 * Tables: double for _D, float for _R, uint16 for _UI16, int16 otherwise.
 *
 * Horizontal lines and single points blend the centre with index 0 and the
 * rows above and below with index 16 (inside the rectangle only); vertical
 * lines likewise across columns, but a vertical line given bottom-up
 * (r1 > r2) draws nothing. Other lines walk the major axis and blend the
 * centre and its two minor-axis neighbours by their distances from the
 * ideal line; a pixel reached twice is blended twice.
 * The intensity form writes numPlanes planes planeStride elements apart; the
 * RGB form three separate planes with rows level, level+1, level+2.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_Draw_AA_Line_I_D(int32_t r1, int32_t c1, int32_t r2, int32_t c2, double *dst, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const double *table, int32_t level, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Line_RGB_D(int32_t r1, int32_t c1, int32_t r2, int32_t c2, double *planeR, double *planeG, double *planeB, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const double *table, int32_t level);
ORNEX_API void ORNEX_Draw_AA_Line_I_R(int32_t r1, int32_t c1, int32_t r2, int32_t c2, float *dst, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const float *table, int32_t level, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Line_RGB_R(int32_t r1, int32_t c1, int32_t r2, int32_t c2, float *planeR, float *planeG, float *planeB, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const float *table, int32_t level);
ORNEX_API void ORNEX_Draw_AA_Line_I_UI8(int32_t r1, int32_t c1, int32_t r2, int32_t c2, uint8_t *dst, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const int16_t *table, int32_t level, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Line_RGB_UI8(int32_t r1, int32_t c1, int32_t r2, int32_t c2, uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const int16_t *table, int32_t level);
ORNEX_API void ORNEX_Draw_AA_Line_I_I8(int32_t r1, int32_t c1, int32_t r2, int32_t c2, int8_t *dst, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const int16_t *table, int32_t level, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Line_RGB_I8(int32_t r1, int32_t c1, int32_t r2, int32_t c2, int8_t *planeR, int8_t *planeG, int8_t *planeB, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const int16_t *table, int32_t level);
ORNEX_API void ORNEX_Draw_AA_Line_I_UI16(int32_t r1, int32_t c1, int32_t r2, int32_t c2, uint16_t *dst, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const uint16_t *table, int32_t level, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Line_RGB_UI16(int32_t r1, int32_t c1, int32_t r2, int32_t c2, uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const uint16_t *table, int32_t level);
ORNEX_API void ORNEX_Draw_AA_Line_I_I16(int32_t r1, int32_t c1, int32_t r2, int32_t c2, int16_t *dst, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const int16_t *table, int32_t level, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Line_RGB_I16(int32_t r1, int32_t c1, int32_t r2, int32_t c2, int16_t *planeR, int16_t *planeG, int16_t *planeB, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const int16_t *table, int32_t level);

#ifdef __cplusplus
}
#endif

#endif /* ORNEX_RT_H */

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
 * - Results are the same bits on every build and processor (32- and 64-bit,
 *   x86 at every SIMD level, ARM, Linux and Windows), with the one freedom
 *   IEEE 754 leaves each processor: a NaN that an operation makes has the
 *   processor's own sign and payload (negative on x86, positive on ARM). A
 *   result that is NaN on one is NaN on all.
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

/* Element type codes of the members that serve several element types
 * through one entry point (row sorter, coordinate conversion, text and
 * number formatting). Those members take the code as an int32_t. */
typedef enum ORNEX_TypeCode {
    ORNEX_TYPE_DOUBLE = 0,
    ORNEX_TYPE_SINGLE = 1,
    ORNEX_TYPE_INT8 = 2,
    ORNEX_TYPE_UINT8 = 3,
    ORNEX_TYPE_INT16 = 4,
    ORNEX_TYPE_UINT16 = 5,
    ORNEX_TYPE_INT32 = 6,
    ORNEX_TYPE_UINT32 = 7,
    ORNEX_TYPE_LOGICAL = 8
} ORNEX_TypeCode;

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
 *   (dR + oR/2, dC + oC/2). Its natural size is the image plus that margin
 *   on every side: (numRows + 2*(dR + oR/2)) x (numCols + 2*(dC + oC/2)).
 *   The block grid follows from padded2Rows and padded2Cols: at that size it
 *   is (numRows / (bR - oR)) x (numCols / (bC - oC)) blocks.
 * Room that the blocks and search regions read, with padded2 at that size:
 * - padded1: (numRows + oR) x (numCols + oC), a whole overlap more than the
 *   image, since the last blocks reach oR - oR/2 rows and oC - oC/2 columns
 *   past it.
 * - padded2: padded2Rows * (padded2Cols + oC%2) + oR%2 elements. With an
 *   odd oC the last search regions reach one column past padded2Cols, with
 *   an odd oR one row past padded2Rows (the element after a column's last
 *   row is the next column's first, and after the last column a spare
 *   one). The spare elements are read but neither cleared nor written: pass
 *   them as zero.
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
 * Where wrapped products would make the cuts repeat for ever (end-points
 * far outside, beyond about 2^15), the segment counts as missing: 0.
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

/* ------------------------------------------------------------------------
 * Optical flow: Horn-Schunck
 *
 * Velocity u (across columns) and v (down rows) between two numRows x
 * numCols images, all arithmetic in the image type.
 *
 * ORNEX_SobelDerivative_HS_*: Ix = (S(c-1) - S(c+1))/8 with S the column
 * smoothing I(r-1) + 2I(r) + I(r+1), Iy likewise across rows, both of image1
 * with edges replicated and the previous-minus-next sign; It = image2 -
 * image1. Writes Ix, Iy and the products Ix^2, IxIy, Iy^2, IxIt, IyIt and
 * 1/(Ix^2 + smoothness + Iy^2). colSmooth1/2 are M-element working buffers;
 * rowSmooth1/2 (N elements) are accepted but not used.
 *
 * ORNEX_OpticalFlow_HS_*: derivatives, then Jacobi sweeps from zero velocity:
 * each pixel moves to the mean of its four neighbours (edge pixels count
 * themselves for missing ones) corrected by the brightness constraint.
 * Stops after *maxIterations sweeps (useMaxIterations) or when the largest
 * change of a sweep falls below *threshold (useThreshold); with no working
 * stop rule it never returns. Working memory: the six product arrays
 * (M x N) and four M-element columns. Results: _D/_R write u^2 + v^2 to
 * velocityOut and leave v in velocityY; _C/_Z write u + v*i to velocity
 * (M x N complex, also used as the u and v planes while iterating) and
 * leave u in gradXX and v in gradYY.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_SobelDerivative_HS_D(const double *image1, const double *image2, double *gradX, double *gradY, double *colSmooth1, double *colSmooth2, double *rowSmooth1, double *rowSmooth2, double *gradXX, double *gradXY, double *gradYY, double *gradXT, double *gradYT, double *invDenom, const double *smoothness, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_SobelDerivative_HS_R(const float *image1, const float *image2, float *gradX, float *gradY, float *colSmooth1, float *colSmooth2, float *rowSmooth1, float *rowSmooth2, float *gradXX, float *gradXY, float *gradYY, float *gradXT, float *gradYT, float *invDenom, const float *smoothness, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_HS_D(const double *image1, const double *image2, double *velocityOut, double *velocityY, double *colSmooth1, double *colSmooth2, double *rowSmooth1, double *rowSmooth2, double *gradXX, double *gradXY, double *gradYY, double *gradXT, double *gradYT, double *invDenom, double *uColumnA, double *uColumnB, double *vColumnA, double *vColumnB, const double *smoothness, uint8_t useMaxIterations, uint8_t useThreshold, const int32_t *maxIterations, const double *threshold, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_HS_R(const float *image1, const float *image2, float *velocityOut, float *velocityY, float *colSmooth1, float *colSmooth2, float *rowSmooth1, float *rowSmooth2, float *gradXX, float *gradXY, float *gradYY, float *gradXT, float *gradYT, float *invDenom, float *uColumnA, float *uColumnB, float *vColumnA, float *vColumnB, const float *smoothness, uint8_t useMaxIterations, uint8_t useThreshold, const int32_t *maxIterations, const float *threshold, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_HS_C(const float *image1, const float *image2, float *velocity, float *colSmooth1, float *colSmooth2, float *rowSmooth1, float *rowSmooth2, float *gradXX, float *gradXY, float *gradYY, float *gradXT, float *gradYT, float *invDenom, float *uColumnA, float *uColumnB, float *vColumnA, float *vColumnB, const float *smoothness, uint8_t useMaxIterations, uint8_t useThreshold, const int32_t *maxIterations, const float *threshold, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_HS_Z(const double *image1, const double *image2, double *velocity, double *colSmooth1, double *colSmooth2, double *rowSmooth1, double *rowSmooth2, double *gradXX, double *gradXY, double *gradYY, double *gradXT, double *gradYT, double *invDenom, double *uColumnA, double *uColumnB, double *vColumnA, double *vColumnB, const double *smoothness, uint8_t useMaxIterations, uint8_t useThreshold, const int32_t *maxIterations, const double *threshold, int32_t numRows, int32_t numCols);

/* ------------------------------------------------------------------------
 * Optical flow: Lucas-Kanade
 *
 * Per pixel, the weighted sums a = sum w Ix^2, b = sum w IxIy, c = sum w Iy^2,
 * d = sum w IxIt, e = sum w IyIt form [[a, b], [b, c]] (u, v) = -(d, e); its
 * eigenvalues l1 >= l2 are tested against *threshold (equal passes).
 * Results: _D/_R u^2 + v^2, _C/_Z the complex u + v*i (M x N complex).
 *
 * ORNEX_OFLK_ConvT_*: out[p] = sum_k taps[k] * frames[numTaps-1-k][p].
 * ORNEX_OFLK_ConvX_*, ORNEX_OFLK_ConvY_*: correlation across columns / down
 * rows with the taps centred at h = numTaps/2; every pixel closer than h to
 * any edge is set to 0.
 *
 * ORNEX_OpticalFlow_LK_*: Ix, Iy of image1 by the five-point difference
 * (-1/12, 2/3, 0, -2/3, 1/12, previous-minus-next sign), It = image2 -
 * image1, weights 1 4 6 4 1 / 16 across columns then down rows. Near the
 * edges, terms that fall outside the image are left out of every sum (the
 * image is not extended). sumA..sumE (M x N) receive a..e; result (real part
 * of it for _C/_Z) serves as scratch first. l1 below the threshold gives 0;
 * l2 passing too gives the full solution (a zero determinant divides by
 * zero); otherwise the flow along (a + b, b + c).
 *
 * ORNEX_OpticalFlow_LK_GDER_*: frames filtered in time (the two temporal
 * filters centred on the same frame), then in space with the caller's
 * derivative and smoothing filters, products weighed by windowTaps across
 * columns then down rows; sumXX, sumYY, sumXY, sumXT, sumYT end as a, c, b,
 * d, e, and result is the scratch of every pass. Pixels in the first
 * numWindowTaps/2 rows or columns give 0; a positive determinant with l2
 * passing gives the full solution; with useNormalFlow, l1 passing and
 * |det| > 1e-8/255 the flow is projected on l1's eigenvector (n1, n2):
 * s = -(u n1 + v n2), real part s n2, imaginary part s n1.
 * No member allocates.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_OFLK_ConvT_D(const double *const *frames, double *out, const double *taps, int32_t numPixels, int32_t numTaps);
ORNEX_API void ORNEX_OFLK_ConvT_R(const float *const *frames, float *out, const float *taps, int32_t numPixels, int32_t numTaps);
ORNEX_API void ORNEX_OFLK_ConvX_D(const double *in, double *out, const double *taps, int32_t numRows, int32_t numCols, int32_t numTaps);
ORNEX_API void ORNEX_OFLK_ConvX_R(const float *in, float *out, const float *taps, int32_t numRows, int32_t numCols, int32_t numTaps);
ORNEX_API void ORNEX_OFLK_ConvY_D(const double *in, double *out, const double *taps, int32_t numRows, int32_t numCols, int32_t numTaps);
ORNEX_API void ORNEX_OFLK_ConvY_R(const float *in, float *out, const float *taps, int32_t numRows, int32_t numCols, int32_t numTaps);
ORNEX_API void ORNEX_OpticalFlow_LK_D(const double *image1, const double *image2, double *result, double *sumA, double *sumB, double *sumC, double *sumD, double *sumE, const double *threshold, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_LK_R(const float *image1, const float *image2, float *result, float *sumA, float *sumB, float *sumC, float *sumD, float *sumE, const float *threshold, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_LK_C(const float *image1, const float *image2, float *result, float *sumA, float *sumB, float *sumC, float *sumD, float *sumE, const float *threshold, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_LK_Z(const double *image1, const double *image2, double *result, double *sumA, double *sumB, double *sumC, double *sumD, double *sumE, const double *threshold, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_OpticalFlow_LK_GDER_D(const double *const *frames, double *result, double *sumXX, double *sumYY, double *sumXY, double *sumXT, double *sumYT, const double *threshold, const double *tempDerivTaps, const double *spatDerivTaps, const double *tempSmoothTaps, const double *spatSmoothTaps, const double *windowTaps, int32_t numRows, int32_t numCols, int32_t numTempDerivTaps, int32_t numSpatDerivTaps, int32_t numTempSmoothTaps, int32_t numSpatSmoothTaps, int32_t numWindowTaps, uint8_t useNormalFlow);
ORNEX_API void ORNEX_OpticalFlow_LK_GDER_R(const float *const *frames, float *result, float *sumXX, float *sumYY, float *sumXY, float *sumXT, float *sumYT, const float *threshold, const float *tempDerivTaps, const float *spatDerivTaps, const float *tempSmoothTaps, const float *spatSmoothTaps, const float *windowTaps, int32_t numRows, int32_t numCols, int32_t numTempDerivTaps, int32_t numSpatDerivTaps, int32_t numTempSmoothTaps, int32_t numSpatSmoothTaps, int32_t numWindowTaps, uint8_t useNormalFlow);
ORNEX_API void ORNEX_OpticalFlow_LK_GDER_C(const float *const *frames, float *result, float *sumXX, float *sumYY, float *sumXY, float *sumXT, float *sumYT, const float *threshold, const float *tempDerivTaps, const float *spatDerivTaps, const float *tempSmoothTaps, const float *spatSmoothTaps, const float *windowTaps, int32_t numRows, int32_t numCols, int32_t numTempDerivTaps, int32_t numSpatDerivTaps, int32_t numTempSmoothTaps, int32_t numSpatSmoothTaps, int32_t numWindowTaps, uint8_t useNormalFlow);
ORNEX_API void ORNEX_OpticalFlow_LK_GDER_Z(const double *const *frames, double *result, double *sumXX, double *sumYY, double *sumXY, double *sumXT, double *sumYT, const double *threshold, const double *tempDerivTaps, const double *spatDerivTaps, const double *tempSmoothTaps, const double *spatSmoothTaps, const double *windowTaps, int32_t numRows, int32_t numCols, int32_t numTempDerivTaps, int32_t numSpatDerivTaps, int32_t numTempSmoothTaps, int32_t numSpatSmoothTaps, int32_t numWindowTaps, uint8_t useNormalFlow);

/* ------------------------------------------------------------------------
 * Geometric transforms: projective matrices
 *
 * Corner points: four (row, column) int32 pairs going round a rectangle from
 * its first row and column (corner 0) through first row, last column (1),
 * last row and column (2) to last row, first column (3). A rectangle is
 * first row, first column, rows, columns. A matrix is nine values in column
 * order ((r, c) at r + 3c) mapping the row vector [x y 1] (x the column) to
 * [p q w], the point (column p/w, row q/w).
 *
 * ORNEX_Are3PtsCollinear: 1 when corner 1, 2 or 3 joins two parallel (or
 * zero) edges, exactly, in 32-bit wrap-around arithmetic; corner 0 is not
 * tested.
 * ORNEX_CalculateXformMtrx_*: block[0..8] the closed-form matrix from the
 * rectangle [0, W] x [0, H] onto the quadrilateral, block[9..17] its
 * adjugate (unnormalised). mode 1 takes the rectangle (useRect) or numRows x
 * numCols without origin, and moves only the adjugate by the origin; other
 * modes take the rectangle and move the forward matrix by minus the origin,
 * the adjugate too only in mode 2 with inverseOffset >= 1.
 * ORNEX_CalculateQ2QXformMtrx_*: block[0..17] the first quadrilateral
 * (mode 3), [18..35] the second (mode 1), [36..44] adj(B) A, and with
 * firstToSecond [45..53] adj(A) B (left alone otherwise). Not normalised.
 * ---------------------------------------------------------------------- */
ORNEX_API uint8_t ORNEX_Are3PtsCollinear(const int32_t *points);
ORNEX_API void ORNEX_CalculateXformMtrx_D(const int32_t *points, const int32_t *rect, uint32_t numRows, uint32_t numCols, int32_t mode, int32_t inverseOffset, uint8_t useRect, double *block);
ORNEX_API void ORNEX_CalculateXformMtrx_R(const int32_t *points, const int32_t *rect, uint32_t numRows, uint32_t numCols, int32_t mode, int32_t inverseOffset, uint8_t useRect, float *block);
ORNEX_API void ORNEX_CalculateQ2QXformMtrx_D(const int32_t *first, uint32_t numRows, uint32_t numCols, double *block, const int32_t *second, uint8_t firstToSecond);
ORNEX_API void ORNEX_CalculateQ2QXformMtrx_R(const int32_t *first, uint32_t numRows, uint32_t numCols, float *block, const int32_t *second, uint8_t firstToSecond);

/* ------------------------------------------------------------------------
 * Geometric transforms: interpolation at a real position
 *
 * Samples a column-major numRows x numCols source at row y, column x and
 * writes plane p at destination[index + p*destinationStride] (source plane
 * p at p*sourceStride). Positions are not checked: keep them inside the
 * image (y <= numRows - 1, x <= numCols - 1).
 * NN: halves rounded away from zero. BL: bilinear, the far row and column
 * clamped to the image. BC: cubic convolution (a = -1), rows first; exact
 * integer positions return the source value and the first and
 * second-to-last row or column blend linearly. No allocation.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_NN_Interp_D(const double *source, double y, double x, uint32_t numRows, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride);
ORNEX_API void ORNEX_NN_Interp_R(const float *source, float y, float x, uint32_t numRows, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride);
ORNEX_API void ORNEX_PosVal_BL_Interp_D(const double *source, double y, double x, uint32_t numRows, uint32_t numCols, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride);
ORNEX_API void ORNEX_PosVal_BL_Interp_R(const float *source, float y, float x, uint32_t numRows, uint32_t numCols, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride);
ORNEX_API void ORNEX_PosVal_BC_Interp_D(const double *source, double y, double x, uint32_t numRows, uint32_t numCols, double *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride);
ORNEX_API void ORNEX_PosVal_BC_Interp_R(const float *source, float y, float x, uint32_t numRows, uint32_t numCols, float *destination, uint32_t index, int32_t numPlanes, uint32_t sourceStride, uint32_t destinationStride);

/* ------------------------------------------------------------------------
 * Geometric transforms: shear of one line
 *
 * Output position k (0 .. outputLength-1) shows source position k - offset
 * of a line of sourceLength values sourceStride apart, the background
 * beyond the line. Values are stored destinationStride apart from position
 * firstWritten on (earlier positions are skipped without advancing).
 * NNI: offset rounded, halves up. BLI: linear, one value blended with the
 * background at each end of a fractionally shifted line; an integer offset
 * copies. BCI: cubic convolution (a = -1), taps outside the line take the
 * background; positions whose taps all lie outside are the background.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_Skew_NNI_D(const double *source, int32_t sourceLength, int32_t outputLength, double offset, uint32_t sourceStride, uint32_t destinationStride, double *destination, int32_t firstWritten, const double *background);
ORNEX_API void ORNEX_Skew_NNI_R(const float *source, int32_t sourceLength, int32_t outputLength, float offset, uint32_t sourceStride, uint32_t destinationStride, float *destination, int32_t firstWritten, const float *background);
ORNEX_API void ORNEX_Skew_BLI_D(const double *source, int32_t sourceLength, int32_t outputLength, double offset, uint32_t sourceStride, uint32_t destinationStride, double *destination, int32_t firstWritten, const double *background);
ORNEX_API void ORNEX_Skew_BLI_R(const float *source, int32_t sourceLength, int32_t outputLength, float offset, uint32_t sourceStride, uint32_t destinationStride, float *destination, int32_t firstWritten, const float *background);
ORNEX_API void ORNEX_Skew_BCI_D(const double *source, int32_t sourceLength, int32_t outputLength, double offset, uint32_t sourceStride, uint32_t destinationStride, double *destination, int32_t firstWritten, const double *background);
ORNEX_API void ORNEX_Skew_BCI_R(const float *source, int32_t sourceLength, int32_t outputLength, float offset, uint32_t sourceStride, uint32_t destinationStride, float *destination, int32_t firstWritten, const float *background);

/* ------------------------------------------------------------------------
 * Edge detection: Canny
 *
 * Kernels are halves of length L: the smoothing kernel's element 0 is the
 * centre weight and element k the weight of both neighbours at distance k;
 * the derivative kernel's element k weighs I(-k) - I(+k) (element 0 unused).
 * Borders are periodic. B = L/2.
 * ORNEX_RC_Gaussian_Smoothing_*: H smoothed across columns, V down rows.
 * ORNEX_C_Derivative_Image_*, ORNEX_R_Derivative_Image_*: across columns,
 * down rows. ORNEX_NonMaximum_Suppression_*: the gradient magnitude where it
 * beats both neighbours interpolated along the gradient, the outermost rows
 * and columns unsuppressed, divided by the largest value (or by epsilon).
 * ORNEX_EdgeCanny_userTh_* (thresholds[0] low, [1] high, on 0..1) and
 * ORNEX_EdgeCanny_autoTh_* (thresholds[0] the percentage of non-edge
 * pixels; high = k/256 from the histogram, low = 0.4 high): Gx of the image
 * smoothed across columns, Gy of the image smoothed down rows, suppression
 * into magnitude, hysteresis into edges (1 edge, 0 not) following one chain
 * per seed, then rows 0..B-1 and M-B..M-1 and columns 0..B-1 and N-B-1..N-1
 * cleared. workA, workB (M x N values) end holding the tracing stacks.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_RC_Gaussian_Smoothing_D(const double *image, const double *kernel, double *smoothedH, double *smoothedV, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_RC_Gaussian_Smoothing_R(const float *image, const float *kernel, float *smoothedH, float *smoothedV, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_C_Derivative_Image_D(const double *image, const double *kernel, double *out, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_C_Derivative_Image_R(const float *image, const float *kernel, float *out, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_R_Derivative_Image_D(const double *image, const double *kernel, double *out, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_R_Derivative_Image_R(const float *image, const float *kernel, float *out, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_NonMaximum_Suppression_D(const double *gradX, const double *gradY, double *out, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_NonMaximum_Suppression_R(const float *gradX, const float *gradY, float *out, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_EdgeCanny_userTh_D(const double *image, const double *smoothing, const double *derivative, double *workA, double *workB, uint8_t *edges, double *magnitude, const double *thresholds, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_EdgeCanny_userTh_R(const float *image, const float *smoothing, const float *derivative, float *workA, float *workB, uint8_t *edges, float *magnitude, const float *thresholds, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_EdgeCanny_autoTh_D(const double *image, const double *smoothing, const double *derivative, double *workA, double *workB, uint8_t *edges, double *magnitude, const double *thresholds, int32_t numRows, int32_t numCols, int32_t length);
ORNEX_API void ORNEX_EdgeCanny_autoTh_R(const float *image, const float *smoothing, const float *derivative, float *workA, float *workB, uint8_t *edges, float *magnitude, const float *thresholds, int32_t numRows, int32_t numCols, int32_t length);

/* ------------------------------------------------------------------------
 * Line detection: Hough transform
 *
 * ORNEX_Hough_*: votes every nonzero byte of the numRows x numCols image
 * into accumulator, numRho rows by 2*numTheta - 2 theta columns (cleared
 * first): rho = column cos(theta) + row sin(theta), sineTable holding
 * sin(theta) from -90 degrees (entry 0) to 0 degrees (entry numTheta-1),
 * columns numTheta.. the angles 90 degrees above entries 1..numTheta-2. Rho
 * bin 0 is at *rhoFirst (negative), the last at -*rhoFirst; bins are not
 * range-checked.
 * ORNEX_HoughLines_*: for each (theta, rho) the two points (row, column,
 * row, column) where the line crosses the image border, tried on the top,
 * left, right and bottom borders in that order; -1 in all four when fewer
 * than two are found. _D/_R give int32 points, _DO/_RO floating ones.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_Hough_D(const uint8_t *image, double *accumulator, const double *sineTable, const double *rhoFirst, int32_t numRows, int32_t numCols, int32_t numRho, int32_t numTheta);
ORNEX_API void ORNEX_Hough_R(const uint8_t *image, float *accumulator, const float *sineTable, const float *rhoFirst, int32_t numRows, int32_t numCols, int32_t numRho, int32_t numTheta);
ORNEX_API void ORNEX_HoughLines_D(const double *theta, const double *rho, int32_t *endPoints, int32_t numLines, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_HoughLines_DO(const double *theta, const double *rho, double *endPoints, int32_t numLines, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_HoughLines_R(const float *theta, const float *rho, int32_t *endPoints, int32_t numLines, int32_t numRows, int32_t numCols);
ORNEX_API void ORNEX_HoughLines_RO(const float *theta, const float *rho, float *endPoints, int32_t numLines, int32_t numRows, int32_t numCols);

/* ------------------------------------------------------------------------
 * Polygon filling: edge table and row sorter
 *
 * Vertices are (row, column) int32 pairs; numValues counts the integers
 * (twice the vertices, an odd last one ignored); the last vertex joins
 * vertex 0. N = numValues / 2 edges, each oriented toward larger columns
 * (equal columns: the second vertex starts). The edge table is N x 8
 * column-major (field f of edge e at f*N + e): scan start and end column,
 * current row (at the start), row delta (end - start), scan length, row step
 * |delta| / length (left as the buffer held it for a zero length), error
 * term 0, and with wantNormalWeight 1024 * length / edge length truncated.
 * ORNEX_CreateEdgesTable (and its twin _Int) fill workTable (8N) at the
 * fieldOffsets 0, N, ..., 7N, sort it and copy it into sortedTable (8N),
 * ascending by scan start, scan end, current row, equal edges in input
 * order. sortRecords: 6N int32 of scratch.
 *
 * ORNEX_SortRows orders the numRows rows of a column-major matrix (type
 * codes 0 double, 1 single, 2 int8, 3 uint8, 4 int16, 5 uint16, 6 int32,
 * 7 uint32; other codes leave the records unsorted) by their first three
 * fields, ties by input order; NaN compares as smaller. It fills numRows
 * records of six 32-bit words (24 bytes on every build, only 4-byte
 * alignment needed) and sorts them; the matrix is not moved. The sort
 * merges halves as glibc's qsort does, on every platform, so that rows with
 * NaN come out in the same order everywhere.
 * Record layout: word 0 the number of compared fields (3), word 1 the field
 * stride (numRows), word 2 the tie-break selector (1: row index), word 3 the
 * row's index before sorting, words 4-5 a pointer to the row's first
 * element (its bytes as memcpy writes them, the rest zero). After the call
 * word 3 of record k is the index of the row that comes k-th; only that
 * word is meant for the caller.
 *
 * ORNEX_DetectIfCornerPixel_FillPoly: 1 when one of numVertices pairs
 * equals (row, column).
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_CreateEdgesTable(const int32_t *vertices, int32_t numValues, int32_t *workTable, int32_t *sortedTable, int32_t *sortRecords, const int32_t *fieldOffsets, uint8_t wantNormalWeight);
ORNEX_API void ORNEX_CreateEdgesTable_Int(const int32_t *vertices, int32_t numValues, int32_t *workTable, int32_t *sortedTable, int32_t *sortRecords, const int32_t *fieldOffsets, uint8_t wantNormalWeight);
ORNEX_API void ORNEX_SortRows(const void *matrix, int32_t numRows, int32_t typeCode, int32_t *sortRecords);
ORNEX_API uint8_t ORNEX_DetectIfCornerPixel_FillPoly(const int32_t *vertices, int32_t numVertices, int32_t row, int32_t column);

/* ------------------------------------------------------------------------
 * Polygon filling
 *
 * ORNEX_FillOnePolygon_*: fills a closed polygon (vertices as for the edge
 * table) column by column with the even-odd rule. On each column the rows
 * between consecutive active edges are filled, both ends included, each
 * pixel at most once; an edge's row moves to the nearer row of its exact
 * crossing (halves toward larger rows). Edges are active from their scan
 * start column up to, not including, their scan end column; the edges that
 * end where the last edge of the sorted table ends are drawn on that column
 * too. Clipping: columns colMin .. colMax, rows rowMin .. rowMax
 * (inclusive); vertices may lie outside. edgeBuffer: 16N int32 (active list,
 * then the sorted table); sortRecords: 6N int32. The returned value has no
 * meaning.
 * Intensity members fill numPlanes planes planeStride elements apart with
 * fillValue[p]; RGB members fill three planes with three values.
 * ORNEX_FillVerticalScanLine_*: one column, numActive active edges whose
 * current rows are activeEdges[rowFieldOffset ..] in ascending order.
 * ORNEX_FillPolygon_InterpFlt_* / _InterpFix_*: blend rows firstRow ..
 * lastRow of one column, starting at element startIndex.
 * Blending: _D and _R new = fill*a + old*(1 - a), a in [0, 1] (_R summed in
 * double, stored as single); integer and logical members take a Q10
 * opacity (1024 opaque): new = (fill*a + old*(1024 - a)) >> 10, stored
 * truncated to the element width, no saturation.
 * ORNEX_GetIntCoordinates: count values of source, starting at element
 * count*block, into int32 destination; floating values rounded half away
 * from zero (NaN gives INT32_MIN), integers widened; type codes as for
 * ORNEX_SortRows, others do nothing. The returned value has no meaning.
 * ---------------------------------------------------------------------- */
ORNEX_API int32_t ORNEX_FillOnePolygon_I_D(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, double *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *fillValue, double opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_I_R(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, float *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *fillValue, float opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_I_Bool(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_I_UI8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_I_I8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int8_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *fillValue, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_I_UI16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint16_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *fillValue, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_I_I16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int16_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *fillValue, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_RGB_D(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, double *red, double *green, double *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *fillValue, double opacity);
ORNEX_API int32_t ORNEX_FillOnePolygon_RGB_R(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, float *red, float *green, float *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *fillValue, float opacity);
ORNEX_API int32_t ORNEX_FillOnePolygon_RGB_Bool(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *red, uint8_t *green, uint8_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity);
ORNEX_API int32_t ORNEX_FillOnePolygon_RGB_UI8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *red, uint8_t *green, uint8_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity);
ORNEX_API int32_t ORNEX_FillOnePolygon_RGB_I8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int8_t *red, int8_t *green, int8_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *fillValue, int16_t opacity);
ORNEX_API int32_t ORNEX_FillOnePolygon_RGB_UI16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint16_t *red, uint16_t *green, uint16_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *fillValue, int16_t opacity);
ORNEX_API int32_t ORNEX_FillOnePolygon_RGB_I16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int16_t *red, int16_t *green, int16_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *fillValue, int16_t opacity);
ORNEX_API void ORNEX_FillVerticalScanLine_I_D(double *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const double *fillValue, double opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_I_R(float *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const float *fillValue, float opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_I_Bool(uint8_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_I_UI8(uint8_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_I_I8(int8_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int8_t *fillValue, int16_t opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_I_UI16(uint16_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint16_t *fillValue, int16_t opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_I_I16(int16_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int16_t *fillValue, int16_t opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_RGB_D(double *red, double *green, double *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const double *fillValue, double opacity, int32_t rowFieldOffset);
ORNEX_API void ORNEX_FillVerticalScanLine_RGB_R(float *red, float *green, float *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const float *fillValue, float opacity, int32_t rowFieldOffset);
ORNEX_API void ORNEX_FillVerticalScanLine_RGB_Bool(uint8_t *red, uint8_t *green, uint8_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, int32_t rowFieldOffset);
ORNEX_API void ORNEX_FillVerticalScanLine_RGB_UI8(uint8_t *red, uint8_t *green, uint8_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, int32_t rowFieldOffset);
ORNEX_API void ORNEX_FillVerticalScanLine_RGB_I8(int8_t *red, int8_t *green, int8_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int8_t *fillValue, int16_t opacity, int32_t rowFieldOffset);
ORNEX_API void ORNEX_FillVerticalScanLine_RGB_UI16(uint16_t *red, uint16_t *green, uint16_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint16_t *fillValue, int16_t opacity, int32_t rowFieldOffset);
ORNEX_API void ORNEX_FillVerticalScanLine_RGB_I16(int16_t *red, int16_t *green, int16_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int16_t *fillValue, int16_t opacity, int32_t rowFieldOffset);
ORNEX_API void ORNEX_FillPolygon_InterpFlt_I_D(double *image, const double *fillValue, int32_t startIndex, double opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillPolygon_InterpFlt_I_R(float *image, const float *fillValue, int32_t startIndex, float opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillPolygon_InterpFlt_RGB_D(double *red, const double *fillValue, int32_t startIndex, double opacity, double *green, double *blue, int32_t firstRow, int32_t lastRow);
ORNEX_API void ORNEX_FillPolygon_InterpFlt_RGB_R(float *red, const float *fillValue, int32_t startIndex, float opacity, float *green, float *blue, int32_t firstRow, int32_t lastRow);
ORNEX_API void ORNEX_FillPolygon_InterpFix_I_UI8(uint8_t *image, const uint8_t *fillValue, int32_t startIndex, int16_t opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillPolygon_InterpFix_I_I8(int8_t *image, const int8_t *fillValue, int32_t startIndex, int16_t opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillPolygon_InterpFix_I_UI16(uint16_t *image, const uint16_t *fillValue, int32_t startIndex, int16_t opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillPolygon_InterpFix_I_I16(int16_t *image, const int16_t *fillValue, int32_t startIndex, int16_t opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillPolygon_InterpFix_I_Bool(uint8_t *image, const uint8_t *fillValue, int32_t startIndex, int16_t opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillPolygon_InterpFix_RGB_UI8(uint8_t *red, const uint8_t *fillValue, int32_t startIndex, int16_t opacity, uint8_t *green, uint8_t *blue, int32_t firstRow, int32_t lastRow);
ORNEX_API void ORNEX_FillPolygon_InterpFix_RGB_I8(int8_t *red, const int8_t *fillValue, int32_t startIndex, int16_t opacity, int8_t *green, int8_t *blue, int32_t firstRow, int32_t lastRow);
ORNEX_API void ORNEX_FillPolygon_InterpFix_RGB_UI16(uint16_t *red, const uint16_t *fillValue, int32_t startIndex, int16_t opacity, uint16_t *green, uint16_t *blue, int32_t firstRow, int32_t lastRow);
ORNEX_API void ORNEX_FillPolygon_InterpFix_RGB_I16(int16_t *red, const int16_t *fillValue, int32_t startIndex, int16_t opacity, int16_t *green, int16_t *blue, int32_t firstRow, int32_t lastRow);
ORNEX_API void ORNEX_FillPolygon_InterpFix_RGB_Bool(uint8_t *red, const uint8_t *fillValue, int32_t startIndex, int16_t opacity, uint8_t *green, uint8_t *blue, int32_t firstRow, int32_t lastRow);
ORNEX_API int32_t ORNEX_GetIntCoordinates(const void *source, int32_t typeCode, int32_t *destination, int32_t count, int32_t block);

/* ------------------------------------------------------------------------
 * Polygon filling: anti-aliased
 *
 * ORNEX_FillOnePolygon_AA_*: fills a closed polygon (vertices, edgeBuffer
 * 16N and sortRecords 6N as for ORNEX_FillOnePolygon_*) with the even-odd
 * rule, anti-aliased; each pixel is blended at most once, with opacity *
 * cov, through ORNEX_FillPolygon_InterpFlt_* / _InterpFix_* (integer and
 * logical members: effective opacity (opacity * cov) >> 10). cov comes from
 * the signed perpendicular distance between the pixel centre and each edge
 * crossing its column (row offset times the edge table's normal weight,
 * clamped to 1 .. 1024), looked up in weightTable: 49 entries, entry i the
 * coverage at (i - 24)/16 pixel, positive inside (double, float, or int16
 * Q10 for the integer and logical members; entries 0 and 48 are not read
 * and stand for none and full). The box profile clamp(1/2 + (i - 24)/16,
 * 0, 1) gives edges at the vertex centres. The two edges of a span give
 * max(0, wUpper + wLower - full), spans add, the sum is capped at full; in
 * a column where an edge starts or ends, samples a quarter column to the
 * left and right are averaged. Edges are kept in order of their Q10
 * crossing and stay active through their last column. Rows rowMin ..
 * rowMax and columns colMin .. colMax (inclusive) bound what is written;
 * vertices may lie outside. Intended range: vertex rows and row bounds
 * within +-524287, edges at most 32767 long in each direction. The
 * returned value has no meaning.
 * ORNEX_FillVerticalScanLine_AA_*: one column; numActive active edges, field
 * f of edge k at activeEdges[f*fieldStride + k], in the sweep's order
 * (ascending Q10 crossing), each with a scan length above 0. It only reads
 * the list.
 * ---------------------------------------------------------------------- */
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_I_D(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, double *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *fillValue, double opacity, const double *weightTable, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_I_R(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, float *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *fillValue, float opacity, const float *weightTable, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_I_Bool(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_I_UI8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_I_I8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int8_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_I_UI16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint16_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_I_I16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int16_t *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t numPlanes, int32_t planeStride);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_RGB_D(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, double *red, double *green, double *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *fillValue, double opacity, const double *weightTable);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_RGB_R(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, float *red, float *green, float *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *fillValue, float opacity, const float *weightTable);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_RGB_Bool(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *red, uint8_t *green, uint8_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_RGB_UI8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint8_t *red, uint8_t *green, uint8_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_RGB_I8(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int8_t *red, int8_t *green, int8_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *fillValue, int16_t opacity, const int16_t *weightTable);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_RGB_UI16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, uint16_t *red, uint16_t *green, uint16_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *fillValue, int16_t opacity, const int16_t *weightTable);
ORNEX_API int32_t ORNEX_FillOnePolygon_AA_RGB_I16(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, int16_t *red, int16_t *green, int16_t *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *fillValue, int16_t opacity, const int16_t *weightTable);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_I_D(double *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const double *fillValue, double opacity, const double *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_I_R(float *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const float *fillValue, float opacity, const float *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_I_Bool(uint8_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_I_UI8(uint8_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_I_I8(int8_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_I_UI16(uint16_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint16_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_I_I16(int16_t *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int16_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_RGB_D(double *red, double *green, double *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const double *fillValue, double opacity, const double *weightTable, int32_t fieldStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_RGB_R(float *red, float *green, float *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const float *fillValue, float opacity, const float *weightTable, int32_t fieldStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_RGB_Bool(uint8_t *red, uint8_t *green, uint8_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_RGB_UI8(uint8_t *red, uint8_t *green, uint8_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_RGB_I8(int8_t *red, int8_t *green, int8_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int8_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_RGB_UI16(uint16_t *red, uint16_t *green, uint16_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const uint16_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride);
ORNEX_API void ORNEX_FillVerticalScanLine_AA_RGB_I16(int16_t *red, int16_t *green, int16_t *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const int16_t *fillValue, int16_t opacity, const int16_t *weightTable, int32_t fieldStride);

/* ------------------------------------------------------------------------
 * Geometric transforms: subdivided projective warp
 *
 * Warps a column-major source (inRows x inCols per plane) onto an output
 * buffer (outRows x outCols per plane) through a projective transform. The
 * source region is cut into (D + 1) x (D + 1) cells; each cell's corners are
 * mapped into the output, rounded half away from zero, and the mapped
 * quadrilateral is filled column by column (one span per column, ends
 * included); each output pixel samples the source at its inverse-mapped
 * position, divided exactly (exact != 0) or on a quadratic through the ends
 * and the middle of the span (two additions per coordinate and pixel).
 * Output pixel (r, c) is element (c - outColFirst)*outRows - outRowFirst + r
 * of each output plane; only pixels inside the window outRowFirst ..
 * outRowLast, outColFirst .. outColLast are written. Sample positions are
 * clamped to [rowLowerBound, inRows - 1] and [colLowerBound, inCols - 1]
 * (lower bound tested first; NaN passes). method: 1 nearest neighbour, 2
 * bilinear, others bicubic. threePlanes: three separate planes in and out;
 * otherwise numPlanes planes in plane 0 at strides inRows*inCols and
 * outRows*outCols. edgeBuffer: 64 int32, sortScratch: 24 int32 of scratch.
 * A block is 18 values, two column-order 3x3 matrices on [x y 1] (x the
 * column): p = x m0 + y m1 + m2 (column), q = x m3 + y m4 + m5 (row),
 * w = x m6 + y m7 + m8.
 * The samplers trust their positions, and one that is not a number reads
 * outside the source: keep each matrix's w one-signed wherever it is used,
 * the sampling matrix's over every output pixel a cell can cover (spans
 * reach half a pixel past the rounded corners). The quadrilateral driver
 * rounds its division points to whole pixels, so with D > 0 its cell
 * corners can lie a pixel outside the quadrilateral, a thin one especially.
 *
 * ORNEX_DivideRectXform_*: cells of the image (or, with useRect, of rows
 * rect[0] .. rect[2] - 1 and columns rect[1] .. rect[3] - 1: the third and
 * fourth values are limits, not sizes), corners through block[0..8],
 * samples through block[9..17]; nothing when D < 0. Returns 1.
 * ORNEX_DivideQuadXform_*: cells of the quadrilateral quad (four (row,
 * column) corners), corners through block[9..17], samples through
 * block[0..8] (the order of the last 18 values of the quadrilateral-to-
 * quadrilateral block), lower bounds 0. Returns 0 at the first cell whose
 * corners are collinear (cells drawn so far stay), else 1.
 * ORNEX_XformOneSubdivision_*: one cell with output corners (numValues 8).
 * ORNEX_ProjComputeOutPixel_*: rows spanStart .. spanEnd of one column.
 * ORNEX_GetInPtsFrmOutPts_*: q, p and w of the point (column, row).
 * ORNEX_FillBackgroundValues_*: plane k gets background[k] (threePlanes: the
 * three planes, background[0..2]); with oneValueForAll every plane gets
 * background[0]. Zero backgrounds of the one-value and the three-plane
 * forms are written as zero bytes.
 * ---------------------------------------------------------------------- */
ORNEX_API int32_t ORNEX_DivideRectXform_D(int32_t *edgeBuffer, const int32_t *rect, int32_t *sortScratch, double *out0, double *out1, double *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const double *block, const double *in0, const double *in1, const double *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t rowLowerBound, int32_t colLowerBound, int32_t numDivisions, uint8_t useRect, int32_t numPlanes);
ORNEX_API int32_t ORNEX_DivideRectXform_R(int32_t *edgeBuffer, const int32_t *rect, int32_t *sortScratch, float *out0, float *out1, float *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const float *block, const float *in0, const float *in1, const float *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t rowLowerBound, int32_t colLowerBound, int32_t numDivisions, uint8_t useRect, int32_t numPlanes);
ORNEX_API int32_t ORNEX_DivideQuadXform_D(int32_t *edgeBuffer, const int32_t *quad, int32_t *sortScratch, double *out0, double *out1, double *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const double *block, const double *in0, const double *in1, const double *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t numDivisions, int32_t numPlanes);
ORNEX_API int32_t ORNEX_DivideQuadXform_R(int32_t *edgeBuffer, const int32_t *quad, int32_t *sortScratch, float *out0, float *out1, float *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const float *block, const float *in0, const float *in1, const float *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t numDivisions, int32_t numPlanes);
ORNEX_API void ORNEX_XformOneSubdivision_D(int32_t *edgeBuffer, int32_t numValues, const int32_t *corners, int32_t *sortScratch, double *out0, double *out1, double *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const double *matrix, const double *in0, const double *in1, const double *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t rowLowerBound, int32_t colLowerBound, int32_t numPlanes);
ORNEX_API void ORNEX_XformOneSubdivision_R(int32_t *edgeBuffer, int32_t numValues, const int32_t *corners, int32_t *sortScratch, float *out0, float *out1, float *out2, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t inRows, uint8_t threePlanes, const float *matrix, const float *in0, const float *in1, const float *in2, uint8_t exact, int32_t outRows, int32_t outCols, int32_t inCols, int32_t method, int32_t rowLowerBound, int32_t colLowerBound, int32_t numPlanes);
ORNEX_API void ORNEX_ProjComputeOutPixel_D(double *out0, double *out1, double *out2, int32_t column, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t spanStart, int32_t spanEnd, int32_t inRows, uint8_t threePlanes, const double *in0, const double *in1, const double *in2, const double *matrix, int32_t inCols, int32_t outRows, int32_t outCols, int32_t method, uint8_t exact, int32_t rowLowerBound, int32_t colLowerBound, int32_t numPlanes);
ORNEX_API void ORNEX_ProjComputeOutPixel_R(float *out0, float *out1, float *out2, int32_t column, int32_t outRowFirst, int32_t outRowLast, int32_t outColFirst, int32_t outColLast, int32_t spanStart, int32_t spanEnd, int32_t inRows, uint8_t threePlanes, const float *in0, const float *in1, const float *in2, const float *matrix, int32_t inCols, int32_t outRows, int32_t outCols, int32_t method, uint8_t exact, int32_t rowLowerBound, int32_t colLowerBound, int32_t numPlanes);
ORNEX_API void ORNEX_GetInPtsFrmOutPts_D(int32_t row, int32_t column, const double *matrix, double *q, double *p, double *w);
ORNEX_API void ORNEX_GetInPtsFrmOutPts_R(int32_t row, int32_t column, const float *matrix, float *q, float *p, float *w);
ORNEX_API void ORNEX_FillBackgroundValues_D(const double *background, double *out0, double *out1, double *out2, int32_t outRows, int32_t outCols, uint8_t threePlanes, uint8_t oneValueForAll, int32_t numPlanes);
ORNEX_API void ORNEX_FillBackgroundValues_R(const float *background, float *out0, float *out1, float *out2, int32_t outRows, int32_t outCols, uint8_t threePlanes, uint8_t oneValueForAll, int32_t numPlanes);

/* ------------------------------------------------------------------------
 * Circles: outline points and anti-aliased outlines
 *
 * ORNEX_Circle_SymOctantPts[_RGB]: the eight points (cr +- a, cc +- b) and
 * (cr +- b, cc +- a) that one first-octant point stands for, each inside
 * the clip rectangle getting a byte copy of elemSize bytes per plane (as
 * ORNEX_Line_Bresenham writes them); coincident points are written again.
 *
 * Anti-aliased outlines walk one octant from (x0, y0) (offsets from the
 * centre, x0 down the rows; a whole circle starts at x0 = 0, y0 = radius)
 * with the midpoint rule. Each step blends the walked pixel and its
 * neighbour across the exact circle (inward when the walked pixel is on or
 * outside it, outward otherwise) into all eight octants: the pixel whose
 * distance from the exact crossing is f keeps a share f of its background
 * and adds (1 - f) of the colour. The start point is written with the full
 * colour; an octant ending on the diagonal writes the four diagonal pixels
 * with the larger of the two weights, replacing the background.
 * _D/_R find the crossing with a square root; the integer members read it
 * from sqrtTable (at least 3224 int16 entries, entry t =
 * 4096 sqrt(1 - (t/4096)^2)) through ORNEX_DrawAACircle_Delta and blend in
 * Q10 (1024 = 1): new = ((old * keep) >> 10) + term, stored truncated (no
 * saturation). Intensity members draw numPlanes planes planeStride elements
 * apart (with two numPlanes-value scratch arrays from the heap); RGB
 * members three planes (no allocation). Steps whose points cannot reach
 * the clip rectangle are skipped in closed form while the walk's values fit
 * in 32 bits (radius below about 2^29); beyond that its decision value
 * wraps, and every step before the first that can draw is walked (about
 * 0.5 ns each).
 * Kernels: ORNEX_AACircle_SymQuadPts*: the four points (cr +- a, cc +- b),
 * or with a = 0 the four axis points at distance b, replaced by values.
 * ORNEX_AACircle_SymOctantPts*: the eight points of (a, b) blended with
 * keep w (flag set) or 1 - w and termsA, then those of the partner
 * (b - 1 with flag set, b + 1 otherwise) with the other keep and termsB.
 * ORNEX_DrawAACircle_Delta: Q10 distance from the exact crossing at row
 * offset x up to the next whole pixel (1024, not 0, on a whole pixel);
 * *flagOut = 1 when column offset y is on or outside the circle. r != 0.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_Circle_SymOctantPts(void *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const void *value, int32_t elemSize, int32_t numRows, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Circle_SymOctantPts_RGB(void *planeR, void *planeG, void *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const void *value, int32_t elemSize, int32_t numRows);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_D(double *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_R(float *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_UI8(uint8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_I8(int8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_UI16(uint16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_I16(int16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_UI32(uint32_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint32_t *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsI_I32(int32_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int32_t *values, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_D(double *planeR, double *planeG, double *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, double valueR, double valueG, double valueB);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_R(float *planeR, float *planeG, float *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, float valueR, float valueG, float valueB);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_UI8(uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, uint8_t valueR, uint8_t valueG, uint8_t valueB);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_I8(int8_t *planeR, int8_t *planeG, int8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int8_t valueR, int8_t valueG, int8_t valueB);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_UI16(uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, uint16_t valueR, uint16_t valueG, uint16_t valueB);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_I16(int16_t *planeR, int16_t *planeG, int16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int16_t valueR, int16_t valueG, int16_t valueB);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_UI32(uint32_t *planeR, uint32_t *planeG, uint32_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, uint32_t valueR, uint32_t valueG, uint32_t valueB);
ORNEX_API void ORNEX_AACircle_SymQuadPtsRGB_I32(int32_t *planeR, int32_t *planeG, int32_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t valueR, int32_t valueG, int32_t valueB);
ORNEX_API void ORNEX_AACircle_SymOctantPtsI_D(double *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *termsA, const double *termsB, double w, int32_t flag, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymOctantPtsI_R(float *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *termsA, const float *termsB, float w, int32_t flag, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymOctantPtsI_UI8(uint8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *termsA, const uint8_t *termsB, uint32_t w, int32_t flag, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymOctantPtsI_I8(int8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *termsA, const int8_t *termsB, uint32_t w, int32_t flag, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymOctantPtsI_UI16(uint16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *termsA, const uint16_t *termsB, uint32_t w, int32_t flag, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymOctantPtsI_I16(int16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *termsA, const int16_t *termsB, uint32_t w, int32_t flag, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_SymOctantPtsRGB_D(double *planeR, double *planeG, double *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, double termAR, double termAG, double termAB, double termBR, double termBG, double termBB, double w, int32_t flag);
ORNEX_API void ORNEX_AACircle_SymOctantPtsRGB_R(float *planeR, float *planeG, float *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, float termAR, float termAG, float termAB, float termBR, float termBG, float termBB, float w, int32_t flag);
ORNEX_API void ORNEX_AACircle_SymOctantPtsRGB_UI8(uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, uint8_t termAR, uint8_t termAG, uint8_t termAB, uint8_t termBR, uint8_t termBG, uint8_t termBB, uint32_t w, int32_t flag);
ORNEX_API void ORNEX_AACircle_SymOctantPtsRGB_I8(int8_t *planeR, int8_t *planeG, int8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int8_t termAR, int8_t termAG, int8_t termAB, int8_t termBR, int8_t termBG, int8_t termBB, uint32_t w, int32_t flag);
ORNEX_API void ORNEX_AACircle_SymOctantPtsRGB_UI16(uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, uint16_t termAR, uint16_t termAG, uint16_t termAB, uint16_t termBR, uint16_t termBG, uint16_t termBB, uint32_t w, int32_t flag);
ORNEX_API void ORNEX_AACircle_SymOctantPtsRGB_I16(int16_t *planeR, int16_t *planeG, int16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int16_t termAR, int16_t termAG, int16_t termAB, int16_t termBR, int16_t termBG, int16_t termBB, uint32_t w, int32_t flag);
ORNEX_API int32_t ORNEX_DrawAACircle_Delta(int32_t x, int32_t y, int32_t r, const int16_t *sqrtTable, uint8_t *flagOut);
ORNEX_API void ORNEX_Draw_AA_Circle_I_D(double *dst, const double *value, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Circle_I_R(float *dst, const float *value, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Circle_I_UI8(uint8_t *dst, const uint8_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Circle_I_I8(int8_t *dst, const int8_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Circle_I_UI16(uint16_t *dst, const uint16_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Circle_I_I16(int16_t *dst, const int16_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_Circle_RGB_D(double *planeR, double *planeG, double *planeB, const double *value, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius);
ORNEX_API void ORNEX_Draw_AA_Circle_RGB_R(float *planeR, float *planeG, float *planeB, const float *value, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius);
ORNEX_API void ORNEX_Draw_AA_Circle_RGB_UI8(uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, const uint8_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius);
ORNEX_API void ORNEX_Draw_AA_Circle_RGB_I8(int8_t *planeR, int8_t *planeG, int8_t *planeB, const int8_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius);
ORNEX_API void ORNEX_Draw_AA_Circle_RGB_UI16(uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, const uint16_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius);
ORNEX_API void ORNEX_Draw_AA_Circle_RGB_I16(int16_t *planeR, int16_t *planeG, int16_t *planeB, const int16_t *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius);

/* ------------------------------------------------------------------------
 * Circles: anti-aliased filled discs
 *
 * ORNEX_Draw_AA_FilledCircle_*: fills the disc of radius R about pixel
 * (cr, cc) with the colour (numPlanes values, or three for RGB; copied at
 * entry, so it may point into the image) and an opacity (double/float in
 * [0, 1]; int16 Q10, 1024 opaque, for the integer members). Pixel (a, b)
 * from the centre, Q = R*R - a*a - b*b: Q >= R is blended with the opacity,
 * Q <= -R is left alone, otherwise it is blended with opacity * cov, cov =
 * (Q + R) / (2R) (_D, _R, in their own precision) or ((Q + R) * 512) / R
 * (integer members, Q10, the effective opacity (opacity * cov) >> 10; a cov
 * of 0 skips the pixel). Every pixel is blended at most once, as
 * ORNEX_FillPolygon_InterpFlt_* / _InterpFix_* blend. Only pixels inside
 * rowMin .. rowMax, colMin .. colMax (inclusive) are written; a rectangle
 * reaching beyond the image is not guarded. radius < 1 draws nothing.
 * Intended range: 1 <= radius <= 32767 with cr, cc +- (radius + 1) in int32;
 * beyond it the arithmetic wraps. Intensity members copy the colour into
 * numPlanes values of heap scratch; radius < 1 or numPlanes < 1 writes and
 * allocates nothing, and a failed allocation draws nothing.
 * ORNEX_AACircle_4PtsLines*: blends rows cr - a .. cr + a of columns cc + b
 * and cc - b (one column when b = 0), each clipped with ORNEX_ClipLine;
 * a < 0 blends nothing. ORNEX_AACircle_8PtsLines*: the same for (a, b) and,
 * when a != b, for (b, a). The kernels take the colour through values and
 * blend every pixel of every span with opacity.
 * ---------------------------------------------------------------------- */
ORNEX_API void ORNEX_Draw_AA_FilledCircle_I_D(double *dst, const double *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, double opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_I_R(float *dst, const float *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, float opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_I_UI8(uint8_t *dst, const uint8_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_I_I8(int8_t *dst, const int8_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_I_UI16(uint16_t *dst, const uint16_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_I_I16(int16_t *dst, const int16_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_RGB_D(double *planeR, double *planeG, double *planeB, const double *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, double opacity);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_RGB_R(float *planeR, float *planeG, float *planeB, const float *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, float opacity);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_RGB_UI8(uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, const uint8_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_RGB_I8(int8_t *planeR, int8_t *planeG, int8_t *planeB, const int8_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_RGB_UI16(uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, const uint16_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity);
ORNEX_API void ORNEX_Draw_AA_FilledCircle_RGB_I16(int16_t *planeR, int16_t *planeG, int16_t *planeB, const int16_t *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, int16_t opacity);
ORNEX_API void ORNEX_AACircle_4PtsLinesI_D(double *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *values, double opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_4PtsLinesI_R(float *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *values, float opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_4PtsLinesI_UI8(uint8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_4PtsLinesI_I8(int8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_4PtsLinesI_UI16(uint16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_4PtsLinesI_I16(int16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_4PtsLinesRGB_D(double *planeR, double *planeG, double *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *values, double opacity);
ORNEX_API void ORNEX_AACircle_4PtsLinesRGB_R(float *planeR, float *planeG, float *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *values, float opacity);
ORNEX_API void ORNEX_AACircle_4PtsLinesRGB_UI8(uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *values, int16_t opacity);
ORNEX_API void ORNEX_AACircle_4PtsLinesRGB_I8(int8_t *planeR, int8_t *planeG, int8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *values, int16_t opacity);
ORNEX_API void ORNEX_AACircle_4PtsLinesRGB_UI16(uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *values, int16_t opacity);
ORNEX_API void ORNEX_AACircle_4PtsLinesRGB_I16(int16_t *planeR, int16_t *planeG, int16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *values, int16_t opacity);
ORNEX_API void ORNEX_AACircle_8PtsLinesI_D(double *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *values, double opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_8PtsLinesI_R(float *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *values, float opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_8PtsLinesI_UI8(uint8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_8PtsLinesI_I8(int8_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_8PtsLinesI_UI16(uint16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_8PtsLinesI_I16(int16_t *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *values, int16_t opacity, int32_t numPlanes, int32_t planeStride);
ORNEX_API void ORNEX_AACircle_8PtsLinesRGB_D(double *planeR, double *planeG, double *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const double *values, double opacity);
ORNEX_API void ORNEX_AACircle_8PtsLinesRGB_R(float *planeR, float *planeG, float *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const float *values, float opacity);
ORNEX_API void ORNEX_AACircle_8PtsLinesRGB_UI8(uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint8_t *values, int16_t opacity);
ORNEX_API void ORNEX_AACircle_8PtsLinesRGB_I8(int8_t *planeR, int8_t *planeG, int8_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int8_t *values, int16_t opacity);
ORNEX_API void ORNEX_AACircle_8PtsLinesRGB_UI16(uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const uint16_t *values, int16_t opacity);
ORNEX_API void ORNEX_AACircle_8PtsLinesRGB_I16(int16_t *planeR, int16_t *planeG, int16_t *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const int16_t *values, int16_t opacity);

/* ------------------------------------------------------------------------
 * Text: glyph blending, number formatting, value conversion
 *
 * ORNEX_DrawText_*: blends one glyph bitmap (glyphWidth x glyphHeight
 * bytes, row-major, 0 empty .. 255 full) into a double or single image of
 * numRows x numCols (intensity: one plane; RGB: three). Glyph column c, row
 * r lands on image column x + xOffset + c, row y - yOffset + r; transposed,
 * on column y - yOffset + r, row x + xOffset + c. Pixels outside the image
 * are skipped; a zero glyph byte leaves its pixel alone. With a = byte/255:
 * _AA value = colour where a = 1, else a (colour - old) + old; plain
 * members value = colour. With the opacity o: new = value when o >= 1,
 * else (1 - o) old + value o. Single members round every step to single.
 * colour (one or three values) and opacity point to values of the image's
 * type. ORNEX_GetDrawTextFcn_I / _RGB: the blender for a type code (0
 * double, 1 single; null for the integer and logical codes 2..8 and for
 * codes or switches out of range), plain (0) or anti-aliased (1).
 *
 * ORNEX_snprintf: text mode (isText): for type code 3 the characters in
 * values, ended at index valueLimit - 1, formatted with format (no size
 * limit); other codes copy format. Number mode: format without '%' is
 * copied (no size limit); otherwise the text before the first '%', then
 * each piece from one '%' to the next formatted with the next value
 * (widened: single to double, smaller integers and logical to int), values
 * 0 .. valueLimit; "%%" writes '%' and takes no value; a count conversion
 * (%n) writes nothing and takes a value's place. At most destinationSize
 * bytes; a piece that does not fit, or fills the room exactly, ends the
 * output (always terminated). format is cut in place while a piece is
 * formatted and always restored. Nothing happens for null destination,
 * format or values or a type code above 8. ORNEX_snprintf_wrapper forwards.
 * ORNEX_DrawText_copyDT1ToUint32 (codes 0..7; floating values truncated
 * through a 64-bit integer, low 32 bits kept) and _copyDT1ToInt32 (codes
 * 0..8, from source[startIndex]; floating values truncated, INT32_MIN when
 * out of range): integers are sign- or zero-extended.
 * ORNEX_DrawText_SatFltpt*: copies values (code 0 double, 1 single) clamped
 * to [0, 1], NaN kept. The no* functions do nothing. ORNEX_strlen: bytes
 * before the terminating zero.
 * ---------------------------------------------------------------------- */
typedef int32_t (*ORNEX_DrawTextFcn_I)(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *image, const void *colour, const void *opacity, uint8_t transposed);
typedef int32_t (*ORNEX_DrawTextFcn_RGB)(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *red, void *green, void *blue, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_I_double_AA(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *image, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_I_double(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *image, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_I_single_AA(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *image, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_I_single(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *image, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_RGB_double_AA(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *red, void *green, void *blue, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_RGB_double(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *red, void *green, void *blue, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_RGB_single_AA(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *red, void *green, void *blue, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API int32_t ORNEX_DrawText_RGB_single(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *red, void *green, void *blue, const void *colour, const void *opacity, uint8_t transposed);
ORNEX_API ORNEX_DrawTextFcn_I ORNEX_GetDrawTextFcn_I(int32_t typeCode, uint8_t antiAliased);
ORNEX_API ORNEX_DrawTextFcn_RGB ORNEX_GetDrawTextFcn_RGB(int32_t typeCode, uint8_t antiAliased);
ORNEX_API int32_t ORNEX_snprintf(char *destination, char *format, void *values, int32_t valueLimit, int32_t typeCode, uint8_t isText, int32_t destinationSize);
ORNEX_API int32_t ORNEX_snprintf_wrapper(char *destination, char *format, void *values, int32_t valueLimit, int32_t typeCode, uint8_t isText, int32_t destinationSize);
ORNEX_API void ORNEX_DrawText_copyDT1ToUint32(int32_t typeCode, int32_t count, const void *source, uint32_t *destination);
ORNEX_API void ORNEX_DrawText_copyDT1ToInt32(int32_t typeCode, int32_t count, const void *source, int32_t *destination, int32_t startIndex);
ORNEX_API void ORNEX_DrawText_noCopyNeeded(void);
ORNEX_API void ORNEX_DrawText_SatFltptRGBVals(int32_t typeCode, const void *source, void *destination);
ORNEX_API void ORNEX_DrawText_SatFltptIntensityVals(int32_t typeCode, const void *source, void *destination, int32_t count);
ORNEX_API void ORNEX_DrawText_noFltSaturationNeeded(void);
ORNEX_API int32_t ORNEX_strlen(const char *text);

#ifdef __cplusplus
}
#endif

#endif /* ORNEX_RT_H */

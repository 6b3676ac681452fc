#include "ornex_rt.h"

#include "draw/column_sweep.hpp"
#include "draw/polygon_blend.hpp"
#include "frame/clip_rectangle.hpp"
#include "frame/element_traits.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// Even-odd spans between consecutive active edges, both end rows included;
// a span that touches or overlaps the one before starts after it, so no
// pixel of the column is blended twice.
template <class T, class Planes>
[[gnu::always_inline]] inline void fillColumn(const Planes &planes, int32_t column, const ClipRectangle &bounds,
                                              int32_t numRows, int32_t numActive, const int32_t *currentRows,
                                              const T *fillValue, OpacityOf<T> opacity)
{
    if (!bounds.containsColumn(column) || numActive < 2) {
        return;
    }
    const int32_t columnStart = wrapMul(column, numRows);
    int32_t previousEnd = -1;
    for (int32_t k = 0; k + 1 < numActive; k += 2) {
        int32_t start = currentRows[k];
        int32_t end = currentRows[k + 1];
        if (start <= previousEnd) {
            start = wrapAdd(previousEnd, 1);
        }
        previousEnd = end;
        if (start <= bounds.rowMax && end >= bounds.rowMin) {
            start = start > bounds.rowMin ? start : bounds.rowMin;
            end = end < bounds.rowMax ? end : bounds.rowMax;
            blendRun(planes, fillValue, wrapAdd(columnStart, start), opacity, start, end);
        }
    }
}

template <class T, class Planes>
void fillPolygon(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords,
                 const Planes &planes, const ClipRectangle &bounds, int32_t numRows, const T *fillValue,
                 OpacityOf<T> opacity)
{
    sweepPolygonColumns(edgeBuffer, numValues, vertices, sortRecords, bounds.colMin, bounds.colMax,
                        [&](int32_t column, int32_t numActive, const int32_t *currentRows) {
                            fillColumn(planes, column, bounds, numRows, numActive, currentRows, fillValue, opacity);
                        });
}

template <class T, class Raw, class Opacity>
int32_t fillIntensity(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords,
                      Raw *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows,
                      const Raw *fillValue, Opacity opacity, int32_t numPlanes, int32_t planeStride)
{
    fillPolygon(edgeBuffer, numValues, vertices, sortRecords,
                stridedPlanes(reinterpret_cast<T *>(image), numPlanes, planeStride),
                ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, reinterpret_cast<const T *>(fillValue),
                opacity);
    return 0;
}

template <class T, class Raw, class Opacity>
int32_t fillRgb(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, Raw *red,
                Raw *green, Raw *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax,
                int32_t numRows, const Raw *fillValue, Opacity opacity)
{
    fillPolygon(edgeBuffer, numValues, vertices, sortRecords,
                rgbPlanes(reinterpret_cast<T *>(red), reinterpret_cast<T *>(green), reinterpret_cast<T *>(blue)),
                ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, reinterpret_cast<const T *>(fillValue),
                opacity);
    return 0;
}

template <class T, class Raw, class Opacity>
void scanLineIntensity(Raw *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax,
                       int32_t numRows, int32_t numActive, const int32_t *activeEdges, const Raw *fillValue,
                       Opacity opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride)
{
    fillColumn(stridedPlanes(reinterpret_cast<T *>(image), numPlanes, planeStride), column,
               ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, numActive, activeEdges + rowFieldOffset,
               reinterpret_cast<const T *>(fillValue), opacity);
}

template <class T, class Raw, class Opacity>
void scanLineRgb(Raw *red, Raw *green, Raw *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin,
                 int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges,
                 const Raw *fillValue, Opacity opacity, int32_t rowFieldOffset)
{
    fillColumn(rgbPlanes(reinterpret_cast<T *>(red), reinterpret_cast<T *>(green), reinterpret_cast<T *>(blue)),
               column, ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, numActive,
               activeEdges + rowFieldOffset, reinterpret_cast<const T *>(fillValue), opacity);
}

} // namespace
} // namespace ornex::draw

using ornex::LogicalByte;
using namespace ornex::draw;

#define ORNEX_POLY_I_ARGS(T, O) int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, T *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *fillValue, O opacity, int32_t numPlanes, int32_t planeStride
#define ORNEX_POLY_I_PASS edgeBuffer, numValues, vertices, sortRecords, image, rowMin, rowMax, colMin, colMax, numRows, fillValue, opacity, numPlanes, planeStride
#define ORNEX_POLY_RGB_ARGS(T, O) int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, T *red, T *green, T *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *fillValue, O opacity
#define ORNEX_POLY_RGB_PASS edgeBuffer, numValues, vertices, sortRecords, red, green, blue, rowMin, rowMax, colMin, colMax, numRows, fillValue, opacity
#define ORNEX_SCAN_I_ARGS(T, O) T *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const T *fillValue, O opacity, int32_t rowFieldOffset, int32_t numPlanes, int32_t planeStride
#define ORNEX_SCAN_I_PASS image, column, rowMin, rowMax, colMin, colMax, numRows, numActive, activeEdges, fillValue, opacity, rowFieldOffset, numPlanes, planeStride
#define ORNEX_SCAN_RGB_ARGS(T, O) T *red, T *green, T *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const T *fillValue, O opacity, int32_t rowFieldOffset
#define ORNEX_SCAN_RGB_PASS red, green, blue, column, rowMin, rowMax, colMin, colMax, numRows, numActive, activeEdges, fillValue, opacity, rowFieldOffset

extern "C" {
int32_t ORNEX_FillOnePolygon_I_D(ORNEX_POLY_I_ARGS(double, double)) { return fillIntensity<double>(ORNEX_POLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_I_R(ORNEX_POLY_I_ARGS(float, float)) { return fillIntensity<float>(ORNEX_POLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_I_Bool(ORNEX_POLY_I_ARGS(uint8_t, int16_t)) { return fillIntensity<LogicalByte>(ORNEX_POLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_I_UI8(ORNEX_POLY_I_ARGS(uint8_t, int16_t)) { return fillIntensity<uint8_t>(ORNEX_POLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_I_I8(ORNEX_POLY_I_ARGS(int8_t, int16_t)) { return fillIntensity<int8_t>(ORNEX_POLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_I_UI16(ORNEX_POLY_I_ARGS(uint16_t, int16_t)) { return fillIntensity<uint16_t>(ORNEX_POLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_I_I16(ORNEX_POLY_I_ARGS(int16_t, int16_t)) { return fillIntensity<int16_t>(ORNEX_POLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_RGB_D(ORNEX_POLY_RGB_ARGS(double, double)) { return fillRgb<double>(ORNEX_POLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_RGB_R(ORNEX_POLY_RGB_ARGS(float, float)) { return fillRgb<float>(ORNEX_POLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_RGB_Bool(ORNEX_POLY_RGB_ARGS(uint8_t, int16_t)) { return fillRgb<LogicalByte>(ORNEX_POLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_RGB_UI8(ORNEX_POLY_RGB_ARGS(uint8_t, int16_t)) { return fillRgb<uint8_t>(ORNEX_POLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_RGB_I8(ORNEX_POLY_RGB_ARGS(int8_t, int16_t)) { return fillRgb<int8_t>(ORNEX_POLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_RGB_UI16(ORNEX_POLY_RGB_ARGS(uint16_t, int16_t)) { return fillRgb<uint16_t>(ORNEX_POLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_RGB_I16(ORNEX_POLY_RGB_ARGS(int16_t, int16_t)) { return fillRgb<int16_t>(ORNEX_POLY_RGB_PASS); }

void ORNEX_FillVerticalScanLine_I_D(ORNEX_SCAN_I_ARGS(double, double)) { scanLineIntensity<double>(ORNEX_SCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_I_R(ORNEX_SCAN_I_ARGS(float, float)) { scanLineIntensity<float>(ORNEX_SCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_I_Bool(ORNEX_SCAN_I_ARGS(uint8_t, int16_t)) { scanLineIntensity<LogicalByte>(ORNEX_SCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_I_UI8(ORNEX_SCAN_I_ARGS(uint8_t, int16_t)) { scanLineIntensity<uint8_t>(ORNEX_SCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_I_I8(ORNEX_SCAN_I_ARGS(int8_t, int16_t)) { scanLineIntensity<int8_t>(ORNEX_SCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_I_UI16(ORNEX_SCAN_I_ARGS(uint16_t, int16_t)) { scanLineIntensity<uint16_t>(ORNEX_SCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_I_I16(ORNEX_SCAN_I_ARGS(int16_t, int16_t)) { scanLineIntensity<int16_t>(ORNEX_SCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_RGB_D(ORNEX_SCAN_RGB_ARGS(double, double)) { scanLineRgb<double>(ORNEX_SCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_RGB_R(ORNEX_SCAN_RGB_ARGS(float, float)) { scanLineRgb<float>(ORNEX_SCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_RGB_Bool(ORNEX_SCAN_RGB_ARGS(uint8_t, int16_t)) { scanLineRgb<LogicalByte>(ORNEX_SCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_RGB_UI8(ORNEX_SCAN_RGB_ARGS(uint8_t, int16_t)) { scanLineRgb<uint8_t>(ORNEX_SCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_RGB_I8(ORNEX_SCAN_RGB_ARGS(int8_t, int16_t)) { scanLineRgb<int8_t>(ORNEX_SCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_RGB_UI16(ORNEX_SCAN_RGB_ARGS(uint16_t, int16_t)) { scanLineRgb<uint16_t>(ORNEX_SCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_RGB_I16(ORNEX_SCAN_RGB_ARGS(int16_t, int16_t)) { scanLineRgb<int16_t>(ORNEX_SCAN_RGB_PASS); }
}

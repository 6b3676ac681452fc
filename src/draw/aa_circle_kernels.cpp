#include "ornex_rt.h"

#include "draw/aa_circle.hpp"

using namespace ornex;
using namespace ornex::draw;

namespace {

template <class T>
using Weight = typename CoverageOf<T>::Weight;

template <class T>
void quadIntensity(T *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax,
                   int32_t colMin, int32_t colMax, int32_t numRows, const T *values, int32_t numPlanes,
                   int32_t planeStride)
{
    writeQuadPoints(stridedPlanes(dst, numPlanes, planeStride), cr, cc, a, b,
                    ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, values);
}

template <class T>
void quadRgb(T *planeR, T *planeG, T *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin,
             int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, T valueR, T valueG, T valueB)
{
    const T values[3] = {valueR, valueG, valueB};
    writeQuadPoints(rgbPlanes(planeR, planeG, planeB), cr, cc, a, b, ClipRectangle{rowMin, rowMax, colMin, colMax},
                    numRows, values);
}

template <class T>
void octantIntensity(T *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax,
                     int32_t colMin, int32_t colMax, int32_t numRows, const T *termsA, const T *termsB, Weight<T> w,
                     int32_t flag, int32_t numPlanes, int32_t planeStride)
{
    blendOctantPairs(stridedPlanes(dst, numPlanes, planeStride), cr, cc, a, b,
                     ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, termsA, termsB, w, flag != 0);
}

template <class T>
void octantRgb(T *planeR, T *planeG, T *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin,
               int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, T termAR, T termAG, T termAB, T termBR,
               T termBG, T termBB, Weight<T> w, int32_t flag)
{
    const T termsA[3] = {termAR, termAG, termAB}, termsB[3] = {termBR, termBG, termBB};
    blendOctantPairs(rgbPlanes(planeR, planeG, planeB), cr, cc, a, b, ClipRectangle{rowMin, rowMax, colMin, colMax},
                     numRows, termsA, termsB, w, flag != 0);
}

} // namespace

#define ORNEX_QUAD_I_ARGS(T) T *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *values, int32_t numPlanes, int32_t planeStride
#define ORNEX_QUAD_I_PASS dst, cr, cc, a, b, rowMin, rowMax, colMin, colMax, numRows, values, numPlanes, planeStride
#define ORNEX_QUAD_RGB_ARGS(T) T *planeR, T *planeG, T *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, T valueR, T valueG, T valueB
#define ORNEX_QUAD_RGB_PASS planeR, planeG, planeB, cr, cc, a, b, rowMin, rowMax, colMin, colMax, numRows, valueR, valueG, valueB
#define ORNEX_OCTANT_I_ARGS(T, W) T *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *termsA, const T *termsB, W w, int32_t flag, int32_t numPlanes, int32_t planeStride
#define ORNEX_OCTANT_I_PASS dst, cr, cc, a, b, rowMin, rowMax, colMin, colMax, numRows, termsA, termsB, w, flag, numPlanes, planeStride
#define ORNEX_OCTANT_RGB_ARGS(T, W) T *planeR, T *planeG, T *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, T termAR, T termAG, T termAB, T termBR, T termBG, T termBB, W w, int32_t flag
#define ORNEX_OCTANT_RGB_PASS planeR, planeG, planeB, cr, cc, a, b, rowMin, rowMax, colMin, colMax, numRows, termAR, termAG, termAB, termBR, termBG, termBB, w, flag

extern "C" {
void ORNEX_AACircle_SymQuadPtsI_D(ORNEX_QUAD_I_ARGS(double)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsI_R(ORNEX_QUAD_I_ARGS(float)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsI_UI8(ORNEX_QUAD_I_ARGS(uint8_t)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsI_I8(ORNEX_QUAD_I_ARGS(int8_t)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsI_UI16(ORNEX_QUAD_I_ARGS(uint16_t)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsI_I16(ORNEX_QUAD_I_ARGS(int16_t)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsI_UI32(ORNEX_QUAD_I_ARGS(uint32_t)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsI_I32(ORNEX_QUAD_I_ARGS(int32_t)) { quadIntensity(ORNEX_QUAD_I_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_D(ORNEX_QUAD_RGB_ARGS(double)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_R(ORNEX_QUAD_RGB_ARGS(float)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_UI8(ORNEX_QUAD_RGB_ARGS(uint8_t)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_I8(ORNEX_QUAD_RGB_ARGS(int8_t)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_UI16(ORNEX_QUAD_RGB_ARGS(uint16_t)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_I16(ORNEX_QUAD_RGB_ARGS(int16_t)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_UI32(ORNEX_QUAD_RGB_ARGS(uint32_t)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymQuadPtsRGB_I32(ORNEX_QUAD_RGB_ARGS(int32_t)) { quadRgb(ORNEX_QUAD_RGB_PASS); }
void ORNEX_AACircle_SymOctantPtsI_D(ORNEX_OCTANT_I_ARGS(double, double)) { octantIntensity(ORNEX_OCTANT_I_PASS); }
void ORNEX_AACircle_SymOctantPtsI_R(ORNEX_OCTANT_I_ARGS(float, float)) { octantIntensity(ORNEX_OCTANT_I_PASS); }
void ORNEX_AACircle_SymOctantPtsI_UI8(ORNEX_OCTANT_I_ARGS(uint8_t, uint32_t)) { octantIntensity(ORNEX_OCTANT_I_PASS); }
void ORNEX_AACircle_SymOctantPtsI_I8(ORNEX_OCTANT_I_ARGS(int8_t, uint32_t)) { octantIntensity(ORNEX_OCTANT_I_PASS); }
void ORNEX_AACircle_SymOctantPtsI_UI16(ORNEX_OCTANT_I_ARGS(uint16_t, uint32_t)) { octantIntensity(ORNEX_OCTANT_I_PASS); }
void ORNEX_AACircle_SymOctantPtsI_I16(ORNEX_OCTANT_I_ARGS(int16_t, uint32_t)) { octantIntensity(ORNEX_OCTANT_I_PASS); }
void ORNEX_AACircle_SymOctantPtsRGB_D(ORNEX_OCTANT_RGB_ARGS(double, double)) { octantRgb(ORNEX_OCTANT_RGB_PASS); }
void ORNEX_AACircle_SymOctantPtsRGB_R(ORNEX_OCTANT_RGB_ARGS(float, float)) { octantRgb(ORNEX_OCTANT_RGB_PASS); }
void ORNEX_AACircle_SymOctantPtsRGB_UI8(ORNEX_OCTANT_RGB_ARGS(uint8_t, uint32_t)) { octantRgb(ORNEX_OCTANT_RGB_PASS); }
void ORNEX_AACircle_SymOctantPtsRGB_I8(ORNEX_OCTANT_RGB_ARGS(int8_t, uint32_t)) { octantRgb(ORNEX_OCTANT_RGB_PASS); }
void ORNEX_AACircle_SymOctantPtsRGB_UI16(ORNEX_OCTANT_RGB_ARGS(uint16_t, uint32_t)) { octantRgb(ORNEX_OCTANT_RGB_PASS); }
void ORNEX_AACircle_SymOctantPtsRGB_I16(ORNEX_OCTANT_RGB_ARGS(int16_t, uint32_t)) { octantRgb(ORNEX_OCTANT_RGB_PASS); }
int32_t ORNEX_DrawAACircle_Delta(int32_t x, int32_t y, int32_t r, const int16_t *sqrtTable, uint8_t *flagOut) { return circleDelta(x, y, r, sqrtTable, flagOut); }
}

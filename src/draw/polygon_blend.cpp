#include "ornex_rt.h"

#include "draw/polygon_blend.hpp"
#include "frame/element_traits.hpp"

using ornex::LogicalByte;
using ornex::draw::blendRun;
using ornex::rgbPlanes;
using ornex::stridedPlanes;

namespace {

template <class T, class Raw, class Opacity>
void blendIntensity(Raw *image, const Raw *fillValue, int32_t startIndex, Opacity opacity, int32_t firstRow,
                    int32_t lastRow, int32_t numPlanes, int32_t planeStride)
{
    blendRun(stridedPlanes(reinterpret_cast<T *>(image), numPlanes, planeStride),
             reinterpret_cast<const T *>(fillValue), startIndex, opacity, firstRow, lastRow);
}

template <class T, class Raw, class Opacity>
void blendRgb(Raw *red, const Raw *fillValue, int32_t startIndex, Opacity opacity, Raw *green, Raw *blue,
              int32_t firstRow, int32_t lastRow)
{
    blendRun(rgbPlanes(reinterpret_cast<T *>(red), reinterpret_cast<T *>(green), reinterpret_cast<T *>(blue)),
             reinterpret_cast<const T *>(fillValue), startIndex, opacity, firstRow, lastRow);
}

} // namespace

#define ORNEX_BLEND_I_ARGS(T, O) T *image, const T *fillValue, int32_t startIndex, O opacity, int32_t firstRow, int32_t lastRow, int32_t numPlanes, int32_t planeStride
#define ORNEX_BLEND_I_PASS image, fillValue, startIndex, opacity, firstRow, lastRow, numPlanes, planeStride
#define ORNEX_BLEND_RGB_ARGS(T, O) T *red, const T *fillValue, int32_t startIndex, O opacity, T *green, T *blue, int32_t firstRow, int32_t lastRow
#define ORNEX_BLEND_RGB_PASS red, fillValue, startIndex, opacity, green, blue, firstRow, lastRow

extern "C" {
void ORNEX_FillPolygon_InterpFlt_I_D(ORNEX_BLEND_I_ARGS(double, double)) { blendIntensity<double>(ORNEX_BLEND_I_PASS); }
void ORNEX_FillPolygon_InterpFlt_I_R(ORNEX_BLEND_I_ARGS(float, float)) { blendIntensity<float>(ORNEX_BLEND_I_PASS); }
void ORNEX_FillPolygon_InterpFlt_RGB_D(ORNEX_BLEND_RGB_ARGS(double, double)) { blendRgb<double>(ORNEX_BLEND_RGB_PASS); }
void ORNEX_FillPolygon_InterpFlt_RGB_R(ORNEX_BLEND_RGB_ARGS(float, float)) { blendRgb<float>(ORNEX_BLEND_RGB_PASS); }
void ORNEX_FillPolygon_InterpFix_I_UI8(ORNEX_BLEND_I_ARGS(uint8_t, int16_t)) { blendIntensity<uint8_t>(ORNEX_BLEND_I_PASS); }
void ORNEX_FillPolygon_InterpFix_I_I8(ORNEX_BLEND_I_ARGS(int8_t, int16_t)) { blendIntensity<int8_t>(ORNEX_BLEND_I_PASS); }
void ORNEX_FillPolygon_InterpFix_I_UI16(ORNEX_BLEND_I_ARGS(uint16_t, int16_t)) { blendIntensity<uint16_t>(ORNEX_BLEND_I_PASS); }
void ORNEX_FillPolygon_InterpFix_I_I16(ORNEX_BLEND_I_ARGS(int16_t, int16_t)) { blendIntensity<int16_t>(ORNEX_BLEND_I_PASS); }
void ORNEX_FillPolygon_InterpFix_I_Bool(ORNEX_BLEND_I_ARGS(uint8_t, int16_t)) { blendIntensity<LogicalByte>(ORNEX_BLEND_I_PASS); }
void ORNEX_FillPolygon_InterpFix_RGB_UI8(ORNEX_BLEND_RGB_ARGS(uint8_t, int16_t)) { blendRgb<uint8_t>(ORNEX_BLEND_RGB_PASS); }
void ORNEX_FillPolygon_InterpFix_RGB_I8(ORNEX_BLEND_RGB_ARGS(int8_t, int16_t)) { blendRgb<int8_t>(ORNEX_BLEND_RGB_PASS); }
void ORNEX_FillPolygon_InterpFix_RGB_UI16(ORNEX_BLEND_RGB_ARGS(uint16_t, int16_t)) { blendRgb<uint16_t>(ORNEX_BLEND_RGB_PASS); }
void ORNEX_FillPolygon_InterpFix_RGB_I16(ORNEX_BLEND_RGB_ARGS(int16_t, int16_t)) { blendRgb<int16_t>(ORNEX_BLEND_RGB_PASS); }
void ORNEX_FillPolygon_InterpFix_RGB_Bool(ORNEX_BLEND_RGB_ARGS(uint8_t, int16_t)) { blendRgb<LogicalByte>(ORNEX_BLEND_RGB_PASS); }
}

#pragma once

// The exported kernels of each element type, in one table per type. The
// layer's calls pick their kernel here and nowhere else, and the element
// types a call takes are the types whose table lists its kernel: adding a
// type or an operation touches this file only.

#include <cstdint>

#include "ornex_rt.h"

namespace ornex::detail {

template <class T>
struct Kernels {};

// Floating types. Motion and flow take the complex members (u + v*i).
template <>
struct Kernels<double> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_DOUBLE;
    static constexpr auto blockMatchingFullMad = ORNEX_BlockMatching_Full_MAD_Z;
    static constexpr auto blockMatchingFullMse = ORNEX_BlockMatching_Full_MSE_Z;
    static constexpr auto blockMatchingThreeStepMad = ORNEX_BlockMatching_3Step_MAD_Z;
    static constexpr auto blockMatchingThreeStepMse = ORNEX_BlockMatching_3Step_MSE_Z;
    static constexpr auto hornSchunck = ORNEX_OpticalFlow_HS_Z;
    static constexpr auto lucasKanade = ORNEX_OpticalFlow_LK_Z;
    static constexpr auto lucasKanadeGder = ORNEX_OpticalFlow_LK_GDER_Z;
    static constexpr auto bilinearSample = ORNEX_PosVal_BL_Interp_D;
    static constexpr auto cannyUserThresholds = ORNEX_EdgeCanny_userTh_D;
    static constexpr auto cannyAutoThresholds = ORNEX_EdgeCanny_autoTh_D;
    static constexpr auto hough = ORNEX_Hough_D;
    static constexpr auto houghLines = ORNEX_HoughLines_D;
    static constexpr auto rectTransform = ORNEX_CalculateXformMtrx_D;
    static constexpr auto quadTransform = ORNEX_CalculateQ2QXformMtrx_D;
    static constexpr auto fillBackground = ORNEX_FillBackgroundValues_D;
    static constexpr auto warpRect = ORNEX_DivideRectXform_D;
    static constexpr auto warpQuad = ORNEX_DivideQuadXform_D;
    static constexpr auto shearNearest = ORNEX_Skew_NNI_D;
    static constexpr auto shearBilinear = ORNEX_Skew_BLI_D;
    static constexpr auto shearBicubic = ORNEX_Skew_BCI_D;
    static constexpr auto antialiasedLine = ORNEX_Draw_AA_Line_I_D;
    static constexpr auto antialiasedLineRgb = ORNEX_Draw_AA_Line_RGB_D;
    static constexpr auto antialiasedCircle = ORNEX_Draw_AA_Circle_I_D;
    static constexpr auto antialiasedCircleRgb = ORNEX_Draw_AA_Circle_RGB_D;
    static constexpr auto fillPolygon = ORNEX_FillOnePolygon_I_D;
    static constexpr auto fillPolygonRgb = ORNEX_FillOnePolygon_RGB_D;
    static constexpr auto fillAntialiasedCircle = ORNEX_Draw_AA_FilledCircle_I_D;
    static constexpr auto fillAntialiasedCircleRgb = ORNEX_Draw_AA_FilledCircle_RGB_D;
    static constexpr auto fillAntialiasedPolygon = ORNEX_FillOnePolygon_AA_I_D;
    static constexpr auto fillAntialiasedPolygonRgb = ORNEX_FillOnePolygon_AA_RGB_D;
};

template <>
struct Kernels<float> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_SINGLE;
    static constexpr auto blockMatchingFullMad = ORNEX_BlockMatching_Full_MAD_C;
    static constexpr auto blockMatchingFullMse = ORNEX_BlockMatching_Full_MSE_C;
    static constexpr auto blockMatchingThreeStepMad = ORNEX_BlockMatching_3Step_MAD_C;
    static constexpr auto blockMatchingThreeStepMse = ORNEX_BlockMatching_3Step_MSE_C;
    static constexpr auto hornSchunck = ORNEX_OpticalFlow_HS_C;
    static constexpr auto lucasKanade = ORNEX_OpticalFlow_LK_C;
    static constexpr auto lucasKanadeGder = ORNEX_OpticalFlow_LK_GDER_C;
    static constexpr auto bilinearSample = ORNEX_PosVal_BL_Interp_R;
    static constexpr auto cannyUserThresholds = ORNEX_EdgeCanny_userTh_R;
    static constexpr auto cannyAutoThresholds = ORNEX_EdgeCanny_autoTh_R;
    static constexpr auto hough = ORNEX_Hough_R;
    static constexpr auto houghLines = ORNEX_HoughLines_R;
    static constexpr auto rectTransform = ORNEX_CalculateXformMtrx_R;
    static constexpr auto quadTransform = ORNEX_CalculateQ2QXformMtrx_R;
    static constexpr auto fillBackground = ORNEX_FillBackgroundValues_R;
    static constexpr auto warpRect = ORNEX_DivideRectXform_R;
    static constexpr auto warpQuad = ORNEX_DivideQuadXform_R;
    static constexpr auto shearNearest = ORNEX_Skew_NNI_R;
    static constexpr auto shearBilinear = ORNEX_Skew_BLI_R;
    static constexpr auto shearBicubic = ORNEX_Skew_BCI_R;
    static constexpr auto antialiasedLine = ORNEX_Draw_AA_Line_I_R;
    static constexpr auto antialiasedLineRgb = ORNEX_Draw_AA_Line_RGB_R;
    static constexpr auto antialiasedCircle = ORNEX_Draw_AA_Circle_I_R;
    static constexpr auto antialiasedCircleRgb = ORNEX_Draw_AA_Circle_RGB_R;
    static constexpr auto fillPolygon = ORNEX_FillOnePolygon_I_R;
    static constexpr auto fillPolygonRgb = ORNEX_FillOnePolygon_RGB_R;
    static constexpr auto fillAntialiasedCircle = ORNEX_Draw_AA_FilledCircle_I_R;
    static constexpr auto fillAntialiasedCircleRgb = ORNEX_Draw_AA_FilledCircle_RGB_R;
    static constexpr auto fillAntialiasedPolygon = ORNEX_FillOnePolygon_AA_I_R;
    static constexpr auto fillAntialiasedPolygonRgb = ORNEX_FillOnePolygon_AA_RGB_R;
};

// Integer types: the blending drawers, then the formatter's code only.
template <>
struct Kernels<uint8_t> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_UINT8;
    static constexpr auto antialiasedLine = ORNEX_Draw_AA_Line_I_UI8;
    static constexpr auto antialiasedLineRgb = ORNEX_Draw_AA_Line_RGB_UI8;
    static constexpr auto antialiasedCircle = ORNEX_Draw_AA_Circle_I_UI8;
    static constexpr auto antialiasedCircleRgb = ORNEX_Draw_AA_Circle_RGB_UI8;
    static constexpr auto fillPolygon = ORNEX_FillOnePolygon_I_UI8;
    static constexpr auto fillPolygonRgb = ORNEX_FillOnePolygon_RGB_UI8;
    static constexpr auto fillAntialiasedCircle = ORNEX_Draw_AA_FilledCircle_I_UI8;
    static constexpr auto fillAntialiasedCircleRgb = ORNEX_Draw_AA_FilledCircle_RGB_UI8;
    static constexpr auto fillAntialiasedPolygon = ORNEX_FillOnePolygon_AA_I_UI8;
    static constexpr auto fillAntialiasedPolygonRgb = ORNEX_FillOnePolygon_AA_RGB_UI8;
};

template <>
struct Kernels<int8_t> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_INT8;
    static constexpr auto antialiasedLine = ORNEX_Draw_AA_Line_I_I8;
    static constexpr auto antialiasedLineRgb = ORNEX_Draw_AA_Line_RGB_I8;
    static constexpr auto antialiasedCircle = ORNEX_Draw_AA_Circle_I_I8;
    static constexpr auto antialiasedCircleRgb = ORNEX_Draw_AA_Circle_RGB_I8;
    static constexpr auto fillPolygon = ORNEX_FillOnePolygon_I_I8;
    static constexpr auto fillPolygonRgb = ORNEX_FillOnePolygon_RGB_I8;
    static constexpr auto fillAntialiasedCircle = ORNEX_Draw_AA_FilledCircle_I_I8;
    static constexpr auto fillAntialiasedCircleRgb = ORNEX_Draw_AA_FilledCircle_RGB_I8;
    static constexpr auto fillAntialiasedPolygon = ORNEX_FillOnePolygon_AA_I_I8;
    static constexpr auto fillAntialiasedPolygonRgb = ORNEX_FillOnePolygon_AA_RGB_I8;
};

template <>
struct Kernels<uint16_t> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_UINT16;
    static constexpr auto antialiasedLine = ORNEX_Draw_AA_Line_I_UI16;
    static constexpr auto antialiasedLineRgb = ORNEX_Draw_AA_Line_RGB_UI16;
    static constexpr auto antialiasedCircle = ORNEX_Draw_AA_Circle_I_UI16;
    static constexpr auto antialiasedCircleRgb = ORNEX_Draw_AA_Circle_RGB_UI16;
    static constexpr auto fillPolygon = ORNEX_FillOnePolygon_I_UI16;
    static constexpr auto fillPolygonRgb = ORNEX_FillOnePolygon_RGB_UI16;
    static constexpr auto fillAntialiasedCircle = ORNEX_Draw_AA_FilledCircle_I_UI16;
    static constexpr auto fillAntialiasedCircleRgb = ORNEX_Draw_AA_FilledCircle_RGB_UI16;
    static constexpr auto fillAntialiasedPolygon = ORNEX_FillOnePolygon_AA_I_UI16;
    static constexpr auto fillAntialiasedPolygonRgb = ORNEX_FillOnePolygon_AA_RGB_UI16;
};

template <>
struct Kernels<int16_t> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_INT16;
    static constexpr auto antialiasedLine = ORNEX_Draw_AA_Line_I_I16;
    static constexpr auto antialiasedLineRgb = ORNEX_Draw_AA_Line_RGB_I16;
    static constexpr auto antialiasedCircle = ORNEX_Draw_AA_Circle_I_I16;
    static constexpr auto antialiasedCircleRgb = ORNEX_Draw_AA_Circle_RGB_I16;
    static constexpr auto fillPolygon = ORNEX_FillOnePolygon_I_I16;
    static constexpr auto fillPolygonRgb = ORNEX_FillOnePolygon_RGB_I16;
    static constexpr auto fillAntialiasedCircle = ORNEX_Draw_AA_FilledCircle_I_I16;
    static constexpr auto fillAntialiasedCircleRgb = ORNEX_Draw_AA_FilledCircle_RGB_I16;
    static constexpr auto fillAntialiasedPolygon = ORNEX_FillOnePolygon_AA_I_I16;
    static constexpr auto fillAntialiasedPolygonRgb = ORNEX_FillOnePolygon_AA_RGB_I16;
};

template <>
struct Kernels<int32_t> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_INT32;
};

template <>
struct Kernels<uint32_t> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_UINT32;
};

// Logical images: one byte per pixel, filled through the byte members.
template <>
struct Kernels<bool> {
    static constexpr ORNEX_TypeCode typeCode = ORNEX_TYPE_LOGICAL;
    static constexpr auto fillPolygon = ORNEX_FillOnePolygon_I_Bool;
    static constexpr auto fillPolygonRgb = ORNEX_FillOnePolygon_RGB_Bool;
    static constexpr auto fillAntialiasedPolygon = ORNEX_FillOnePolygon_AA_I_Bool;
    static constexpr auto fillAntialiasedPolygonRgb = ORNEX_FillOnePolygon_AA_RGB_Bool;
};

} // namespace ornex::detail

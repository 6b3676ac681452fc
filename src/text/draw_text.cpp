#include "ornex_rt.h"

#include <cstddef>

#include "frame/clip_rectangle.hpp"
#include "frame/image_planes.hpp"

namespace ornex::text {
namespace {

// new = value when the opacity is 1 or more, else (1 - o) old + value o;
// with the anti-aliased rule value = a (colour - old) + old (colour itself
// where a = 1). In single precision every step rounds to single.
template <class T, bool antiAliased>
T blendGlyphPixel(T old, T colour, T coverage, T opacity)
{
    const T value = !antiAliased || coverage == T(1) ? colour : coverage * (colour - old) + old;
    return opacity < T(1) ? (T(1) - opacity) * old + value * opacity : value;
}

// Glyph column c, row r at image column x + xOffset + c, row y - yOffset + r
// (transposed: column y - yOffset + r, row x + xOffset + c), walked in the
// image's storage order; the glyph byte of every position is read in turn,
// whether the position is inside the image or not.
template <class T, bool antiAliased, class Planes>
void blendGlyph(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth,
                uint16_t glyphHeight, int32_t numCols, int32_t numRows, const Planes &planes, const T *colour,
                const T *opacity, bool transposed)
{
    const ClipRectangle image = ClipRectangle::wholeImage(numRows, numCols);
    const int64_t left = int64_t(x) + xOffset, top = int64_t(y) - yOffset;
    const int outer = transposed ? glyphHeight : glyphWidth;
    const int inner = transposed ? glyphWidth : glyphHeight;
    for (int i = 0; i < outer; ++i) {
        const int64_t column = transposed ? top + i : left + i;
        if (!image.containsColumn(column)) {
            continue;
        }
        for (int j = 0; j < inner; ++j) {
            const int64_t row = transposed ? left + j : top + j;
            if (!image.containsRow(row)) {
                continue;
            }
            const size_t glyphIndex = transposed ? size_t(i) * glyphWidth + j : size_t(j) * glyphWidth + i;
            const T coverage = T(glyph[glyphIndex] / 255.0);
            if (coverage == T(0)) {
                continue;
            }
            // The colour and the opacity are read at every pixel: they may
            // lie in the image.
            planes.forEachAt(static_cast<ptrdiff_t>(row + column * numRows), [&](T &old, int32_t p) {
                old = blendGlyphPixel<T, antiAliased>(old, colour[p], coverage, *opacity);
            });
        }
    }
}

template <class T, bool antiAliased>
int32_t drawIntensity(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset,
                      uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *image,
                      const void *colour, const void *opacity, uint8_t transposed)
{
    blendGlyph<T, antiAliased>(glyph, x, y, xOffset, yOffset, glyphWidth, glyphHeight, numCols, numRows,
                               onePlane(static_cast<T *>(image)), static_cast<const T *>(colour),
                               static_cast<const T *>(opacity), transposed != 0);
    return 0;
}

template <class T, bool antiAliased>
int32_t drawRgb(const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth,
                uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *red, void *green, void *blue,
                const void *colour, const void *opacity, uint8_t transposed)
{
    blendGlyph<T, antiAliased>(glyph, x, y, xOffset, yOffset, glyphWidth, glyphHeight, numCols, numRows,
                               rgbPlanes(static_cast<T *>(red), static_cast<T *>(green), static_cast<T *>(blue)),
                               static_cast<const T *>(colour), static_cast<const T *>(opacity), transposed != 0);
    return 0;
}

} // namespace
} // namespace ornex::text

using ornex::text::drawIntensity;
using ornex::text::drawRgb;

#define ORNEX_GLYPH_I_ARGS const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *image, const void *colour, const void *opacity, uint8_t transposed
#define ORNEX_GLYPH_I_PASS glyph, x, y, xOffset, yOffset, glyphWidth, glyphHeight, numCols, numRows, image, colour, opacity, transposed
#define ORNEX_GLYPH_RGB_ARGS const uint8_t *glyph, int32_t x, int32_t y, int32_t xOffset, int32_t yOffset, uint16_t glyphWidth, uint16_t glyphHeight, int32_t numCols, int32_t numRows, void *red, void *green, void *blue, const void *colour, const void *opacity, uint8_t transposed
#define ORNEX_GLYPH_RGB_PASS glyph, x, y, xOffset, yOffset, glyphWidth, glyphHeight, numCols, numRows, red, green, blue, colour, opacity, transposed

extern "C" {
int32_t ORNEX_DrawText_I_double_AA(ORNEX_GLYPH_I_ARGS) { return drawIntensity<double, true>(ORNEX_GLYPH_I_PASS); }
int32_t ORNEX_DrawText_I_double(ORNEX_GLYPH_I_ARGS) { return drawIntensity<double, false>(ORNEX_GLYPH_I_PASS); }
int32_t ORNEX_DrawText_I_single_AA(ORNEX_GLYPH_I_ARGS) { return drawIntensity<float, true>(ORNEX_GLYPH_I_PASS); }
int32_t ORNEX_DrawText_I_single(ORNEX_GLYPH_I_ARGS) { return drawIntensity<float, false>(ORNEX_GLYPH_I_PASS); }
int32_t ORNEX_DrawText_RGB_double_AA(ORNEX_GLYPH_RGB_ARGS) { return drawRgb<double, true>(ORNEX_GLYPH_RGB_PASS); }
int32_t ORNEX_DrawText_RGB_double(ORNEX_GLYPH_RGB_ARGS) { return drawRgb<double, false>(ORNEX_GLYPH_RGB_PASS); }
int32_t ORNEX_DrawText_RGB_single_AA(ORNEX_GLYPH_RGB_ARGS) { return drawRgb<float, true>(ORNEX_GLYPH_RGB_PASS); }
int32_t ORNEX_DrawText_RGB_single(ORNEX_GLYPH_RGB_ARGS) { return drawRgb<float, false>(ORNEX_GLYPH_RGB_PASS); }
}

namespace {

// One entry per type code; only the floating types have blenders.
constexpr ORNEX_DrawTextFcn_I intensityBlenders[2][ORNEX_TYPE_LOGICAL + 1] = {
    {ORNEX_DrawText_I_double, ORNEX_DrawText_I_single},
    {ORNEX_DrawText_I_double_AA, ORNEX_DrawText_I_single_AA},
};
constexpr ORNEX_DrawTextFcn_RGB rgbBlenders[2][ORNEX_TYPE_LOGICAL + 1] = {
    {ORNEX_DrawText_RGB_double, ORNEX_DrawText_RGB_single},
    {ORNEX_DrawText_RGB_double_AA, ORNEX_DrawText_RGB_single_AA},
};

} // namespace

extern "C" {
ORNEX_DrawTextFcn_I ORNEX_GetDrawTextFcn_I(int32_t typeCode, uint8_t antiAliased)
{
    return typeCode >= ORNEX_TYPE_DOUBLE && typeCode <= ORNEX_TYPE_LOGICAL && antiAliased < 2
               ? intensityBlenders[antiAliased][typeCode]
               : nullptr;
}
ORNEX_DrawTextFcn_RGB ORNEX_GetDrawTextFcn_RGB(int32_t typeCode, uint8_t antiAliased)
{
    return typeCode >= ORNEX_TYPE_DOUBLE && typeCode <= ORNEX_TYPE_LOGICAL && antiAliased < 2
               ? rgbBlenders[antiAliased][typeCode]
               : nullptr;
}
}

#include "ornex_rt.h"

#include <cstddef>

#include "draw/element_copy.hpp"
#include "frame/clip_rectangle.hpp"
#include "frame/image_planes.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// The eight points one first-octant point (a, b) stands for, mirrored on
// both axes and the diagonal, each written when inside the rectangle.
// Coincident points (a = 0, b = 0 or a = b) are simply written again.
template <class Planes>
void plotOctantPoints(const Planes &planes, int32_t cr, int32_t cc, int32_t a, int32_t b, const ClipRectangle &rect,
                      int32_t numRows, const void *value, int32_t elemSize)
{
    const ptrdiff_t rowStep = elemSize, colStep = rowStep * numRows;
    const int32_t rows[8] = {wrapAdd(cr, a), wrapSub(cr, a), wrapAdd(cr, a), wrapSub(cr, a),
                             wrapAdd(cr, b), wrapSub(cr, b), wrapAdd(cr, b), wrapSub(cr, b)};
    const int32_t cols[8] = {wrapAdd(cc, b), wrapAdd(cc, b), wrapSub(cc, b), wrapSub(cc, b),
                             wrapAdd(cc, a), wrapAdd(cc, a), wrapSub(cc, a), wrapSub(cc, a)};
    withValueWriter(static_cast<const uint8_t *>(value), elemSize, [&](const auto &writeValue) {
        for (int k = 0; k < 8; ++k) {
            if (rect.contains(rows[k], cols[k])) {
                writeValue(planes, rows[k] * rowStep + cols[k] * colStep);
            }
        }
    });
}

} // namespace
} // namespace ornex::draw

using namespace ornex;
using namespace ornex::draw;

extern "C" {
void ORNEX_Circle_SymOctantPts(void *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const void *value, int32_t elemSize, int32_t numRows, int32_t numPlanes, int32_t planeStride)
{
    const auto planes = stridedPlanes(static_cast<uint8_t *>(dst), numPlanes, ptrdiff_t(elemSize) * planeStride);
    plotOctantPoints(planes, cr, cc, a, b, {rowMin, rowMax, colMin, colMax}, numRows, value, elemSize);
}

void ORNEX_Circle_SymOctantPts_RGB(void *planeR, void *planeG, void *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const void *value, int32_t elemSize, int32_t numRows)
{
    const auto planes = rgbPlanes(static_cast<uint8_t *>(planeR), static_cast<uint8_t *>(planeG),
                                  static_cast<uint8_t *>(planeB));
    plotOctantPoints(planes, cr, cc, a, b, {rowMin, rowMax, colMin, colMax}, numRows, value, elemSize);
}
}

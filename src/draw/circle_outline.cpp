#include "ornex_rt.h"

#include <array>
#include <cstddef>

#include "draw/byte_planes.hpp"
#include "draw/clip_rectangle.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// The eight points one first-octant point (a, b) stands for, mirrored on
// both axes and the diagonal, each written when inside the rectangle.
// Coincident points (a = 0, b = 0 or a = b) are simply written again.
template <class Writer>
void plotOctantPoints(int32_t cr, int32_t cc, int32_t a, int32_t b, const ClipRectangle &rect, ptrdiff_t rowStep,
                      ptrdiff_t colStep, const Writer &write)
{
    const int32_t rows[8] = {wrapAdd(cr, a), wrapSub(cr, a), wrapAdd(cr, a), wrapSub(cr, a),
                             wrapAdd(cr, b), wrapSub(cr, b), wrapAdd(cr, b), wrapSub(cr, b)};
    const int32_t cols[8] = {wrapAdd(cc, b), wrapAdd(cc, b), wrapSub(cc, b), wrapSub(cc, b),
                             wrapAdd(cc, a), wrapAdd(cc, a), wrapSub(cc, a), wrapSub(cc, a)};
    for (int k = 0; k < 8; ++k) {
        if (rect.contains(rows[k], cols[k])) {
            write(rows[k] * rowStep + cols[k] * colStep);
        }
    }
}

} // namespace
} // namespace ornex::draw

using namespace ornex::draw;

extern "C" {
void ORNEX_Circle_SymOctantPts(void *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const void *value, int32_t elemSize, int32_t numRows, int32_t numPlanes, int32_t planeStride)
{
    const ClipRectangle rect{rowMin, rowMax, colMin, colMax};
    const ptrdiff_t rowStep = elemSize;
    withByteWriter<StridedPlanes>(
        elemSize, [&](const auto &write) { plotOctantPoints(cr, cc, a, b, rect, rowStep, rowStep * numRows, write); },
        static_cast<uint8_t *>(dst), static_cast<const uint8_t *>(value), elemSize, numPlanes, rowStep * planeStride);
}

void ORNEX_Circle_SymOctantPts_RGB(void *planeR, void *planeG, void *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const void *value, int32_t elemSize, int32_t numRows)
{
    const ClipRectangle rect{rowMin, rowMax, colMin, colMax};
    const ptrdiff_t rowStep = elemSize;
    const std::array<uint8_t *, 3> planes{static_cast<uint8_t *>(planeR), static_cast<uint8_t *>(planeG),
                                          static_cast<uint8_t *>(planeB)};
    withByteWriter<SeparatePlanes>(
        elemSize, [&](const auto &write) { plotOctantPoints(cr, cc, a, b, rect, rowStep, rowStep * numRows, write); },
        planes, static_cast<const uint8_t *>(value), elemSize);
}
}

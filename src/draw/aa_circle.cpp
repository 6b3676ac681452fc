#include "ornex_rt.h"

#include "draw/aa_circle.hpp"
#include "draw/aa_circle_walk.hpp"
#include "frame/heap_scratch.hpp"

namespace ornex::draw {
namespace {

// The anti-aliased outline: a midpoint walk of one octant from (x0, y0),
// each step blending the walked pixel and its neighbour across the exact
// circle with complementary weights into all eight octants.
template <class T, class Planes>
void drawCircle(const Planes &planes, const T *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr,
                int32_t cc, const ClipRectangle &rect, int32_t numRows, int32_t radius, T *termsA, T *termsB)
{
    using Coverage = CoverageOf<T>;
    writeQuadPoints(planes, cr, cc, x0, y0, rect, numRows, value);

    OctantWalk walk{wrapAdd(x0, 1), y0, wrapSub(3, wrapMul(2, radius))};
    if (walk.d >= 0) {
        walk.d = wrapAdd(walk.d, wrapAdd(wrapMul(4, wrapSub(x0, y0)), 10));
        walk.y = wrapSub(y0, 1);
    } else {
        walk.d = wrapAdd(walk.d, wrapAdd(wrapMul(4, x0), 6));
    }
    // Steps whose points all miss the rectangle are jumped, not walked; the
    // walk after a jump is the one every step would have given.
    const VisibleSteps visible(cr, cc, rect);
    while (walk.x < walk.y) {
        const auto next = visible.from(walk.x);
        if (next.first > walk.x) {
            // The walk ends at an x no later than its y: past that nothing
            // more can be drawn, the diagonal included.
            if (next.first > walk.y || !walk.advanceTo(next.first)) {
                return;
            }
            continue;
        }
        // The run of steps that can draw, walked on a copy the compiler can
        // keep in registers.
        OctantWalk run = walk;
        const int32_t runEnd = next.lastOfRun < run.y ? static_cast<int32_t>(next.lastOfRun) + 1 : run.y;
        while (run.x < run.y && run.x < runEnd) {
            const int32_t x = run.x, y = run.y;
            const auto crossing = Coverage::crossing(x, y, radius, sqrtTable);
            const auto other = Coverage::complement(crossing.weight);
            for (int32_t p = 0; p < planes.count(); ++p) {
                termsA[p] = Coverage::term(value[p], crossing.outside ? other : crossing.weight);
                termsB[p] = Coverage::term(value[p], crossing.outside ? crossing.weight : other);
            }
            blendOctantPairs(planes, cr, cc, x, y, rect, numRows, termsA, termsB, crossing.weight, crossing.outside);
            run.step();
        }
        walk = run;
    }
    const int32_t x = walk.x, y = walk.y;
    if (x == y) {
        // The diagonal pixels replace the background with the larger weight
        // instead of being blended like the pairs before them.
        const auto weight = Coverage::atLeastHalf(Coverage::crossing(x, y, radius, sqrtTable).weight);
        for (int32_t p = 0; p < planes.count(); ++p) {
            termsA[p] = Coverage::term(value[p], weight);
        }
        writeQuadPoints(planes, cr, cc, x, y, rect, numRows, termsA);
    }
}

template <class T>
void drawIntensity(T *dst, const T *value, const int16_t *sqrtTable, int32_t x0, int32_t y0, int32_t cr, int32_t cc,
                   int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius,
                   int32_t numPlanes, int32_t planeStride)
{
    const size_t terms = numPlanes > 0 ? static_cast<size_t>(numPlanes) : 0;
    const HeapScratch<T> termsA = takeHeapScratch<T>(terms * sizeof(T) + 1);
    const HeapScratch<T> termsB = takeHeapScratch<T>(terms * sizeof(T) + 1);
    if (!termsA || !termsB) {
        return;
    }
    drawCircle(stridedPlanes(dst, numPlanes, planeStride), value, sqrtTable, x0, y0, cr, cc,
               ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, radius, termsA.get(), termsB.get());
}

template <class T>
void drawRgb(T *planeR, T *planeG, T *planeB, const T *value, const int16_t *sqrtTable, int32_t x0, int32_t y0,
             int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows,
             int32_t radius)
{
    T termsA[3], termsB[3];
    drawCircle(rgbPlanes(planeR, planeG, planeB), value, sqrtTable, x0, y0, cr, cc,
               ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, radius, termsA, termsB);
}

} // namespace
} // namespace ornex::draw

using ornex::draw::drawIntensity;
using ornex::draw::drawRgb;

#define ORNEX_CIRCLE_WALK int32_t x0, int32_t y0, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius
#define ORNEX_CIRCLE_WALK_PASS x0, y0, cr, cc, rowMin, rowMax, colMin, colMax, numRows, radius

extern "C" {
void ORNEX_Draw_AA_Circle_I_D(double *dst, const double *value, ORNEX_CIRCLE_WALK, int32_t numPlanes, int32_t planeStride) { drawIntensity(dst, value, nullptr, ORNEX_CIRCLE_WALK_PASS, numPlanes, planeStride); }
void ORNEX_Draw_AA_Circle_I_R(float *dst, const float *value, ORNEX_CIRCLE_WALK, int32_t numPlanes, int32_t planeStride) { drawIntensity(dst, value, nullptr, ORNEX_CIRCLE_WALK_PASS, numPlanes, planeStride); }
void ORNEX_Draw_AA_Circle_I_UI8(uint8_t *dst, const uint8_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK, int32_t numPlanes, int32_t planeStride) { drawIntensity(dst, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS, numPlanes, planeStride); }
void ORNEX_Draw_AA_Circle_I_I8(int8_t *dst, const int8_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK, int32_t numPlanes, int32_t planeStride) { drawIntensity(dst, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS, numPlanes, planeStride); }
void ORNEX_Draw_AA_Circle_I_UI16(uint16_t *dst, const uint16_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK, int32_t numPlanes, int32_t planeStride) { drawIntensity(dst, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS, numPlanes, planeStride); }
void ORNEX_Draw_AA_Circle_I_I16(int16_t *dst, const int16_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK, int32_t numPlanes, int32_t planeStride) { drawIntensity(dst, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS, numPlanes, planeStride); }
void ORNEX_Draw_AA_Circle_RGB_D(double *planeR, double *planeG, double *planeB, const double *value, ORNEX_CIRCLE_WALK) { drawRgb(planeR, planeG, planeB, value, nullptr, ORNEX_CIRCLE_WALK_PASS); }
void ORNEX_Draw_AA_Circle_RGB_R(float *planeR, float *planeG, float *planeB, const float *value, ORNEX_CIRCLE_WALK) { drawRgb(planeR, planeG, planeB, value, nullptr, ORNEX_CIRCLE_WALK_PASS); }
void ORNEX_Draw_AA_Circle_RGB_UI8(uint8_t *planeR, uint8_t *planeG, uint8_t *planeB, const uint8_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK) { drawRgb(planeR, planeG, planeB, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS); }
void ORNEX_Draw_AA_Circle_RGB_I8(int8_t *planeR, int8_t *planeG, int8_t *planeB, const int8_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK) { drawRgb(planeR, planeG, planeB, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS); }
void ORNEX_Draw_AA_Circle_RGB_UI16(uint16_t *planeR, uint16_t *planeG, uint16_t *planeB, const uint16_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK) { drawRgb(planeR, planeG, planeB, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS); }
void ORNEX_Draw_AA_Circle_RGB_I16(int16_t *planeR, int16_t *planeG, int16_t *planeB, const int16_t *value, const int16_t *sqrtTable, ORNEX_CIRCLE_WALK) { drawRgb(planeR, planeG, planeB, value, sqrtTable, ORNEX_CIRCLE_WALK_PASS); }
}

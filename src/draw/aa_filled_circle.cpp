#include "ornex_rt.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "draw/aa_circle_walk.hpp"
#include "draw/clip_line.hpp"
#include "draw/polygon_blend.hpp"
#include "frame/blending.hpp"
#include "frame/clip_rectangle.hpp"
#include "frame/heap_scratch.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// Rows cr - a .. cr + a of columns cc + b and cc - b (once when b = 0),
// each span clipped as a vertical line, so its column never moves.
template <class T, class Planes>
void blendFourPointLines(const Planes &planes, int32_t cr, int32_t cc, int32_t a, int32_t b, const ClipRectangle &clip,
                         int32_t numRows, const T *values, OpacityOf<T> opacity)
{
    // Tested before clipping: a reversed span could collapse onto one row.
    if (a < 0) {
        return;
    }
    auto blendColumn = [&](int32_t column) {
        int32_t top[2] = {wrapSub(cr, a), column};
        int32_t bottom[2] = {wrapAdd(cr, a), column};
        if (clipLine(top, bottom, clip) != 0) {
            blendRun(planes, values, wrapAdd(wrapMul(column, numRows), top[0]), opacity, top[0], bottom[0]);
        }
    };
    blendColumn(wrapAdd(cc, b));
    if (b != 0) {
        blendColumn(wrapSub(cc, b));
    }
}

template <class T, class Planes>
void blendEightPointLines(const Planes &planes, int32_t cr, int32_t cc, int32_t a, int32_t b,
                          const ClipRectangle &clip, int32_t numRows, const T *values, OpacityOf<T> opacity)
{
    blendFourPointLines(planes, cr, cc, a, b, clip, numRows, values, opacity);
    if (a != b) {
        blendFourPointLines(planes, cr, cc, b, a, clip, numRows, values, opacity);
    }
}

// Coverage of a ring pixel from Q = R*R - a*a - b*b (-R < Q < R):
// (Q + R) / (2R), one division in the image's precision, or in Q10 with
// the division truncating.
template <class T>
auto ringCoverage(int32_t q, int32_t radius)
{
    if constexpr (std::is_floating_point_v<T>) {
        return T(wrapAdd(q, radius)) / T(wrapAdd(radius, radius));
    } else {
        return wrapDiv(wrapMul(wrapAdd(q, radius), 512), radius);
    }
}

// Largest a >= 0 (or -1) with a*a + x*x <= limit, stepping down from the
// value for the previous column offset.
inline int32_t lowerExtent(int32_t extent, int32_t x, int32_t limit)
{
    const int32_t xSquared = wrapMul(x, x);
    while (extent >= 0 && wrapAdd(wrapMul(extent, extent), xSquared) > limit) {
        --extent;
    }
    return extent;
}

template <class T, class Planes>
void blendRingPixel(const Planes &planes, int32_t row, int32_t column, const ClipRectangle &clip, int32_t numRows,
                    const T *values, OpacityOf<T> opacity)
{
    if (clip.contains(row, column)) {
        blendRun(planes, values, wrapAdd(wrapMul(column, numRows), row), opacity, row, row);
    }
}

// Every position of the canonical ring offset (a, x), a >= x >= 0, once.
template <class T, class Planes>
void blendRingSet(const Planes &planes, int32_t cr, int32_t cc, int32_t a, int32_t x, const ClipRectangle &clip,
                  int32_t numRows, const T *values, OpacityOf<T> opacity)
{
    auto blendAt = [&](int32_t row, int32_t column) __attribute__((always_inline)) {
        blendRingPixel(planes, row, column, clip, numRows, values, opacity);
    };
    if (x == 0) {
        blendAt(wrapAdd(cr, a), cc);
        blendAt(wrapSub(cr, a), cc);
        blendAt(cr, wrapAdd(cc, a));
        blendAt(cr, wrapSub(cc, a));
        return;
    }
    blendAt(wrapAdd(cr, a), wrapAdd(cc, x));
    blendAt(wrapSub(cr, a), wrapAdd(cc, x));
    blendAt(wrapSub(cr, a), wrapSub(cc, x));
    blendAt(wrapAdd(cr, a), wrapSub(cc, x));
    if (a == x) {
        return;
    }
    blendAt(wrapAdd(cr, x), wrapAdd(cc, a));
    blendAt(wrapSub(cr, x), wrapAdd(cc, a));
    blendAt(wrapSub(cr, x), wrapSub(cc, a));
    blendAt(wrapAdd(cr, x), wrapSub(cc, a));
}

// The ring offsets (a, x) for a = max(x, A(x) + 1) .. P(x), as the walk
// below blends them.
template <class T, class Planes>
[[gnu::always_inline]] inline void blendRingOffsets(const Planes &planes, int32_t cr, int32_t cc, int32_t x,
                                                    int32_t full, int32_t ring, const ClipRectangle &clip,
                                                    int32_t numRows, int32_t radius, const T *colour,
                                                    OpacityOf<T> opacity)
{
    const int32_t radiusSquared = wrapMul(radius, radius);
    const int32_t xSquared = wrapMul(x, x);
    for (int32_t a = full + 1 > x ? full + 1 : x; a <= ring; ++a) {
        const int32_t q = wrapSub(wrapSub(radiusSquared, wrapMul(a, a)), xSquared);
        const auto coverage = ringCoverage<T>(q, radius);
        if constexpr (!std::is_floating_point_v<T>) {
            if (coverage == 0) {
                continue;
            }
        }
        blendRingSet(planes, cr, cc, a, x, clip, numRows, colour, scaledOpacity(opacity, coverage));
    }
}

// The disc as first written: full pixels (Q >= R) as column runs through the
// span kernels, one call per column offset x with x <= A(x); ring pixels
// (-R < Q < R) one by one with the opacity scaled by their coverage. Every
// column offset up to about 0.71 R is visited.
template <class T, class Planes>
void fillDiscByWalking(const Planes &planes, const T *colour, int32_t cr, int32_t cc, const ClipRectangle &clip,
                       int32_t numRows, int32_t radius, OpacityOf<T> opacity)
{
    const int32_t radiusSquared = wrapMul(radius, radius);
    const int32_t fullLimit = wrapSub(radiusSquared, radius);
    const int32_t ringLimit = wrapSub(wrapAdd(radiusSquared, radius), 1);

    int32_t full = wrapSub(radius, 1);
    for (int32_t x = 0; x <= full;) {
        const int32_t nextFull = lowerExtent(full, x + 1, fullLimit);
        if (nextFull < full && x < full) {
            blendEightPointLines(planes, cr, cc, full, x, clip, numRows, colour, opacity);
        } else {
            blendFourPointLines(planes, cr, cc, full, x, clip, numRows, colour, opacity);
        }
        ++x;
        full = nextFull;
    }

    full = wrapSub(radius, 1);
    int32_t ring = radius;
    for (int32_t x = 0;; ++x) {
        full = lowerExtent(full, x, fullLimit);
        ring = lowerExtent(ring, x, ringLimit);
        if (x > ring) {
            break;
        }
        blendRingOffsets(planes, cr, cc, x, full, ring, clip, numRows, radius, colour, opacity);
    }
}

// Largest a >= 0 with a*a + x*x <= limit, or -1, in exact arithmetic.
inline int64_t extentAt(int64_t limit, int64_t x)
{
    const int64_t room = limit - x * x;
    if (room < 0) {
        return -1;
    }
    auto a = static_cast<int64_t>(std::sqrt(static_cast<double>(room)));
    while (a * a > room) {
        --a;
    }
    while ((a + 1) * (a + 1) <= room) {
        ++a;
    }
    return a;
}

// Calls visit(x) for first <= x <= last where a window of visible holds x.
template <class Visit>
void forEachVisible(const VisibleSteps &visible, int64_t first, int64_t last, const Visit &visit)
{
    for (int64_t x = first; x <= last;) {
        const auto next = visible.from(x);
        if (next.first > x) {
            x = next.first;
            continue;
        }
        for (const int64_t end = next.lastOfRun < last ? next.lastOfRun : last; x <= end; ++x) {
            visit(x);
        }
    }
}

// Radii and centres for which nothing wraps: R*R + 3R and every position
// cr -+ (R + 1), cc -+ (R + 1) fit in 32 bits.
inline bool discFitsExactly(int32_t cr, int32_t cc, int32_t radius)
{
    const int64_t reach = int64_t(radius) + 1;
    auto fits = [&](int64_t centre) { return centre - reach >= INT32_MIN && centre + reach <= INT32_MAX; };
    return radius <= 46000 && fits(cr) && fits(cc);
}

// The same calls as the walk for the column offsets that can reach the
// rectangle only, with A(x) and P(x) in closed form. Every pixel is blended
// once, so the order of the calls changes nothing. A call at x writes into
// columns cc -+ x or rows cr -+ x, except the second half of an eight-point
// call, which writes columns cc -+ A(x): that column offset j is not flat and
// the call is the one at x = A(j).
template <class T, class Planes>
[[gnu::noinline]] void fillDiscFromExtents(const Planes &planes, const T *colour, int32_t cr, int32_t cc,
                                           const ClipRectangle &clip, int32_t numRows, int32_t radius,
                                           OpacityOf<T> opacity)
{
    const int64_t squared = int64_t(radius) * radius;
    const int64_t fullLimit = squared - radius, ringLimit = squared + radius - 1;
    auto full = [&](int64_t x) { return extentAt(fullLimit, x); };
    const VisibleSteps visible(cr, cc, clip);
    const VisibleSteps visibleColumns(cr, cc, ClipRectangle{1, 0, clip.colMin, clip.colMax});

    const int64_t lastFlat = extentAt(fullLimit / 2, 0);
    forEachVisible(visible, 0, lastFlat, [&](int64_t x) {
        blendFourPointLines(planes, cr, cc, int32_t(full(x)), int32_t(x), clip, numRows, colour, opacity);
    });
    forEachVisible(visibleColumns, lastFlat + 1, radius - 1, [&](int64_t j) {
        const int64_t x = full(j);
        if (x >= 0 && x <= lastFlat && full(x) == j && full(x + 1) < j && x < j) {
            blendFourPointLines(planes, cr, cc, int32_t(x), int32_t(j), clip, numRows, colour, opacity);
        }
    });
    const int64_t lastRing = extentAt(ringLimit / 2, 0);
    forEachVisible(visible, 0, lastRing, [&](int64_t x) {
        blendRingOffsets(planes, cr, cc, int32_t(x), int32_t(full(x)), int32_t(extentAt(ringLimit, x)), clip,
                         numRows, radius, colour, opacity);
    });
}

// A disc no larger than the rectangle is walked: the steps cost less than
// finding each extent by square root.
template <class T, class Planes>
void fillDisc(const Planes &planes, const T *colour, int32_t cr, int32_t cc, const ClipRectangle &clip,
              int32_t numRows, int32_t radius, OpacityOf<T> opacity)
{
    const int64_t clipSpan = int64_t(clip.rowMax) - clip.rowMin + int64_t(clip.colMax) - clip.colMin;
    if (!discFitsExactly(cr, cc, radius) || radius <= 2 * clipSpan + 64) {
        fillDiscByWalking(planes, colour, cr, cc, clip, numRows, radius, opacity);
    } else {
        fillDiscFromExtents(planes, colour, cr, cc, clip, numRows, radius, opacity);
    }
}

template <class T>
void fillDiscIntensity(T *dst, const T *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax,
                       int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, OpacityOf<T> opacity,
                       int32_t numPlanes, int32_t planeStride)
{
    if (radius < 1 || numPlanes <= 0) {
        return;
    }
    // The colour is copied first: value may point into the image.
    const HeapScratch<T> colour = takeHeapScratch<T>(sizeof(T) * size_t(numPlanes));
    if (!colour) {
        return;
    }
    std::copy_n(value, numPlanes, colour.get());
    fillDisc(stridedPlanes(dst, numPlanes, planeStride), colour.get(), cr, cc,
             ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, radius, opacity);
}

template <class T>
void fillDiscRgb(T *planeR, T *planeG, T *planeB, const T *value, int32_t cr, int32_t cc, int32_t rowMin,
                 int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius,
                 OpacityOf<T> opacity)
{
    if (radius < 1) {
        return;
    }
    const T colour[3] = {value[0], value[1], value[2]};
    fillDisc(rgbPlanes(planeR, planeG, planeB), colour, cr, cc, ClipRectangle{rowMin, rowMax, colMin, colMax},
             numRows, radius, opacity);
}

template <bool eightPoints, class T>
void spanKernelIntensity(T *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax,
                         int32_t colMin, int32_t colMax, int32_t numRows, const T *values, OpacityOf<T> opacity,
                         int32_t numPlanes, int32_t planeStride)
{
    const auto planes = stridedPlanes(dst, numPlanes, planeStride);
    const ClipRectangle clip{rowMin, rowMax, colMin, colMax};
    if constexpr (eightPoints) {
        blendEightPointLines(planes, cr, cc, a, b, clip, numRows, values, opacity);
    } else {
        blendFourPointLines(planes, cr, cc, a, b, clip, numRows, values, opacity);
    }
}

template <bool eightPoints, class T>
void spanKernelRgb(T *planeR, T *planeG, T *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin,
                   int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *values,
                   OpacityOf<T> opacity)
{
    const auto planes = rgbPlanes(planeR, planeG, planeB);
    const ClipRectangle clip{rowMin, rowMax, colMin, colMax};
    if constexpr (eightPoints) {
        blendEightPointLines(planes, cr, cc, a, b, clip, numRows, values, opacity);
    } else {
        blendFourPointLines(planes, cr, cc, a, b, clip, numRows, values, opacity);
    }
}

} // namespace
} // namespace ornex::draw

using namespace ornex::draw;

#define ORNEX_DISC_I_ARGS(T, O) T *dst, const T *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, O opacity, int32_t numPlanes, int32_t planeStride
#define ORNEX_DISC_I_PASS dst, value, cr, cc, rowMin, rowMax, colMin, colMax, numRows, radius, opacity, numPlanes, planeStride
#define ORNEX_DISC_RGB_ARGS(T, O) T *planeR, T *planeG, T *planeB, const T *value, int32_t cr, int32_t cc, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t radius, O opacity
#define ORNEX_DISC_RGB_PASS planeR, planeG, planeB, value, cr, cc, rowMin, rowMax, colMin, colMax, numRows, radius, opacity
#define ORNEX_SPAN_I_ARGS(T, O) T *dst, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *values, O opacity, int32_t numPlanes, int32_t planeStride
#define ORNEX_SPAN_I_PASS dst, cr, cc, a, b, rowMin, rowMax, colMin, colMax, numRows, values, opacity, numPlanes, planeStride
#define ORNEX_SPAN_RGB_ARGS(T, O) T *planeR, T *planeG, T *planeB, int32_t cr, int32_t cc, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *values, O opacity
#define ORNEX_SPAN_RGB_PASS planeR, planeG, planeB, cr, cc, a, b, rowMin, rowMax, colMin, colMax, numRows, values, opacity

extern "C" {
void ORNEX_Draw_AA_FilledCircle_I_D(ORNEX_DISC_I_ARGS(double, double)) { fillDiscIntensity(ORNEX_DISC_I_PASS); }
void ORNEX_Draw_AA_FilledCircle_I_R(ORNEX_DISC_I_ARGS(float, float)) { fillDiscIntensity(ORNEX_DISC_I_PASS); }
void ORNEX_Draw_AA_FilledCircle_I_UI8(ORNEX_DISC_I_ARGS(uint8_t, int16_t)) { fillDiscIntensity(ORNEX_DISC_I_PASS); }
void ORNEX_Draw_AA_FilledCircle_I_I8(ORNEX_DISC_I_ARGS(int8_t, int16_t)) { fillDiscIntensity(ORNEX_DISC_I_PASS); }
void ORNEX_Draw_AA_FilledCircle_I_UI16(ORNEX_DISC_I_ARGS(uint16_t, int16_t)) { fillDiscIntensity(ORNEX_DISC_I_PASS); }
void ORNEX_Draw_AA_FilledCircle_I_I16(ORNEX_DISC_I_ARGS(int16_t, int16_t)) { fillDiscIntensity(ORNEX_DISC_I_PASS); }
void ORNEX_Draw_AA_FilledCircle_RGB_D(ORNEX_DISC_RGB_ARGS(double, double)) { fillDiscRgb(ORNEX_DISC_RGB_PASS); }
void ORNEX_Draw_AA_FilledCircle_RGB_R(ORNEX_DISC_RGB_ARGS(float, float)) { fillDiscRgb(ORNEX_DISC_RGB_PASS); }
void ORNEX_Draw_AA_FilledCircle_RGB_UI8(ORNEX_DISC_RGB_ARGS(uint8_t, int16_t)) { fillDiscRgb(ORNEX_DISC_RGB_PASS); }
void ORNEX_Draw_AA_FilledCircle_RGB_I8(ORNEX_DISC_RGB_ARGS(int8_t, int16_t)) { fillDiscRgb(ORNEX_DISC_RGB_PASS); }
void ORNEX_Draw_AA_FilledCircle_RGB_UI16(ORNEX_DISC_RGB_ARGS(uint16_t, int16_t)) { fillDiscRgb(ORNEX_DISC_RGB_PASS); }
void ORNEX_Draw_AA_FilledCircle_RGB_I16(ORNEX_DISC_RGB_ARGS(int16_t, int16_t)) { fillDiscRgb(ORNEX_DISC_RGB_PASS); }

void ORNEX_AACircle_4PtsLinesI_D(ORNEX_SPAN_I_ARGS(double, double)) { spanKernelIntensity<false>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_4PtsLinesI_R(ORNEX_SPAN_I_ARGS(float, float)) { spanKernelIntensity<false>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_4PtsLinesI_UI8(ORNEX_SPAN_I_ARGS(uint8_t, int16_t)) { spanKernelIntensity<false>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_4PtsLinesI_I8(ORNEX_SPAN_I_ARGS(int8_t, int16_t)) { spanKernelIntensity<false>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_4PtsLinesI_UI16(ORNEX_SPAN_I_ARGS(uint16_t, int16_t)) { spanKernelIntensity<false>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_4PtsLinesI_I16(ORNEX_SPAN_I_ARGS(int16_t, int16_t)) { spanKernelIntensity<false>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_4PtsLinesRGB_D(ORNEX_SPAN_RGB_ARGS(double, double)) { spanKernelRgb<false>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_4PtsLinesRGB_R(ORNEX_SPAN_RGB_ARGS(float, float)) { spanKernelRgb<false>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_4PtsLinesRGB_UI8(ORNEX_SPAN_RGB_ARGS(uint8_t, int16_t)) { spanKernelRgb<false>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_4PtsLinesRGB_I8(ORNEX_SPAN_RGB_ARGS(int8_t, int16_t)) { spanKernelRgb<false>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_4PtsLinesRGB_UI16(ORNEX_SPAN_RGB_ARGS(uint16_t, int16_t)) { spanKernelRgb<false>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_4PtsLinesRGB_I16(ORNEX_SPAN_RGB_ARGS(int16_t, int16_t)) { spanKernelRgb<false>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_8PtsLinesI_D(ORNEX_SPAN_I_ARGS(double, double)) { spanKernelIntensity<true>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_8PtsLinesI_R(ORNEX_SPAN_I_ARGS(float, float)) { spanKernelIntensity<true>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_8PtsLinesI_UI8(ORNEX_SPAN_I_ARGS(uint8_t, int16_t)) { spanKernelIntensity<true>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_8PtsLinesI_I8(ORNEX_SPAN_I_ARGS(int8_t, int16_t)) { spanKernelIntensity<true>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_8PtsLinesI_UI16(ORNEX_SPAN_I_ARGS(uint16_t, int16_t)) { spanKernelIntensity<true>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_8PtsLinesI_I16(ORNEX_SPAN_I_ARGS(int16_t, int16_t)) { spanKernelIntensity<true>(ORNEX_SPAN_I_PASS); }
void ORNEX_AACircle_8PtsLinesRGB_D(ORNEX_SPAN_RGB_ARGS(double, double)) { spanKernelRgb<true>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_8PtsLinesRGB_R(ORNEX_SPAN_RGB_ARGS(float, float)) { spanKernelRgb<true>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_8PtsLinesRGB_UI8(ORNEX_SPAN_RGB_ARGS(uint8_t, int16_t)) { spanKernelRgb<true>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_8PtsLinesRGB_I8(ORNEX_SPAN_RGB_ARGS(int8_t, int16_t)) { spanKernelRgb<true>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_8PtsLinesRGB_UI16(ORNEX_SPAN_RGB_ARGS(uint16_t, int16_t)) { spanKernelRgb<true>(ORNEX_SPAN_RGB_PASS); }
void ORNEX_AACircle_8PtsLinesRGB_I16(ORNEX_SPAN_RGB_ARGS(int16_t, int16_t)) { spanKernelRgb<true>(ORNEX_SPAN_RGB_PASS); }
}

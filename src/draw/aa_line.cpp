#include "ornex_rt.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "draw/clip_line.hpp"
#include "frame/blending.hpp"
#include "frame/image_planes.hpp"
#include "frame/rounding.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// Entries per weight-table row: distances 0, 1/16, ..., 24/16 pixel.
constexpr int32_t tableRowLength = 25;
constexpr int32_t centreIndex = 0;
constexpr int32_t unitDistanceIndex = 16;

// Floating members: slope, cosine and distances computed exactly in Real.
template <class Real>
struct FloatingBrush {
    using Distance = Real;
    struct Slope {
        Real m;
        Real cosine;
        Real threshold;
    };

    static Slope slope(int32_t minor, int32_t major)
    {
        const Real m = Real(wrapAbs(minor)) / Real(wrapAbs(major));
        const Real cosine = Real(1) / std::sqrt(Real(1) + m * m);
        return {m, cosine, (Real(0.5) - m) * cosine};
    }
    static Real add(Real a, Real b) { return a + b; }
    static Real subtract(Real a, Real b) { return a - b; }
    static int32_t index(Real distance)
    {
        const Real scaled = nearestHalfUp(std::fabs(distance) * Real(16));
        return scaled < Real(24) ? static_cast<int32_t>(scaled) : 24;
    }
    static bool rowMajorSteps(Real distance, Real threshold) { return distance - threshold > Real(-0.0001); }
    static Real advanceWithoutStep(const Slope &s) { return s.cosine * s.m; }
    static Real advanceWithStep(const Slope &s) { return (s.m - Real(1)) * s.cosine; }

    template <class T, class W>
    static T blend(T old, W keep, W term)
    {
        return static_cast<T>(keep * old + term);
    }
};

// Integer members: Q10 fixed point (1024 = 1.0) in 32-bit arithmetic, shifts
// arithmetic, divisions truncating, no saturation.
struct FixedBrush {
    using Distance = int32_t;
    struct Slope {
        int32_t m;
        int32_t cosine;
        int32_t threshold;
    };

    // The cosine is a cubic fit of 1/sqrt(1 + m*m) on [0, 1]; m = 1024
    // gives 725.
    static Slope slope(int32_t minor, int32_t major)
    {
        const int32_t m = wrapDiv(wrapMul(wrapAbs(minor), 1024), wrapAbs(major));
        const int32_t square = wrapMul(m, m);
        const int32_t cubic = wrapMul(q10Product(square, m), 263) >> 20;
        const int32_t quadratic = wrapMul(square, -560) >> 20;
        const int32_t linear = q10Product(-2, m);
        const int32_t cosine = wrapAdd(wrapAdd(wrapAdd(cubic, quadratic), linear), 1024);
        return {m, cosine, q10Product(wrapSub(512, m), cosine)};
    }
    static int32_t add(int32_t a, int32_t b) { return wrapAdd(a, b); }
    static int32_t subtract(int32_t a, int32_t b) { return wrapSub(a, b); }
    static int32_t index(int32_t distance)
    {
        const int32_t scaled = q10Product(wrapAbs(distance), 16);
        return static_cast<uint32_t>(scaled) < 24u ? scaled : 24;
    }
    // A difference of -1 still steps: the row-major walk has a tolerance
    // of one unit that the column-major walk lacks, on purpose.
    static bool rowMajorSteps(int32_t distance, int32_t threshold) { return wrapSub(distance, threshold) >= -1; }
    static int32_t advanceWithoutStep(const Slope &s) { return q10Product(s.cosine, s.m); }
    static int32_t advanceWithStep(const Slope &s) { return q10Product(wrapSub(s.m, 1024), s.cosine); }

    // The table entries widen with their own signedness.
    template <class T, class W>
    static T blend(T old, W keep, W term)
    {
        return keepQ10AndAdd(old, static_cast<int32_t>(keep), static_cast<int32_t>(term));
    }
};

// The walk along the major axis: `steps` + 1 centre pixels from `offset`,
// each with its two neighbours across the minor axis where the rectangle
// allows, the signed distance D of the centre from the ideal line deciding
// the minor steps.
template <class Brush, class StepsWhen, class BlendAt>
void walkBrush(ptrdiff_t offset, int32_t steps, ptrdiff_t majorStep, ptrdiff_t neighbourStep, int32_t minor,
               int32_t minorSign, int32_t minorMin, int32_t minorMax, const typename Brush::Slope &slope,
               StepsWhen stepsWhen, BlendAt blendAt)
{
    const ptrdiff_t minorStep = minorSign * neighbourStep;
    const auto withoutStep = Brush::advanceWithoutStep(slope);
    const auto withStep = Brush::advanceWithStep(slope);
    // The neighbour on the lower side lies at D + cos when the minor
    // coordinate rises, at D - cos when it falls; the upper one opposite.
    const auto lowerShift = minorSign > 0 ? slope.cosine : Brush::subtract(0, slope.cosine);
    typename Brush::Distance distance = 0;
    for (uint32_t step = 0; step <= uint32_t(steps); ++step, offset += majorStep) {
        blendAt(offset, Brush::index(distance));
        if (minor > minorMin) {
            blendAt(offset - neighbourStep, Brush::index(Brush::add(distance, lowerShift)));
        }
        if (minor < minorMax) {
            blendAt(offset + neighbourStep, Brush::index(Brush::subtract(distance, lowerShift)));
        }
        // Selected rather than branched on: the pattern of steps is as
        // irregular as the slope.
        const bool stepMinor = stepsWhen(distance, slope.threshold);
        minor = wrapAdd(minor, stepMinor ? minorSign : 0);
        offset += stepMinor ? minorStep : 0;
        distance = Brush::add(distance, stepMinor ? withStep : withoutStep);
    }
}

template <class Brush, class T, class W, class Planes>
void drawAntialiasedLine(int32_t r1, int32_t c1, int32_t r2, int32_t c2, const Planes &planes, int32_t numRows,
                         const ClipRectangle &rect, const W *table, int32_t level)
{
    if (c2 < c1) {
        std::swap(r1, r2);
        std::swap(c1, c2);
    }
    int32_t p1[2] = {r1, c1}, p2[2] = {r2, c2};
    if (!clipLine(p1, p2, rect)) {
        return;
    }
    r1 = p1[0], c1 = p1[1], r2 = p2[0], c2 = p2[1];
    const int32_t rowMin = rect.rowMin, rowMax = rect.rowMax, colMin = rect.colMin, colMax = rect.colMax;

    const W *keep = table;
    const W *terms = table + static_cast<ptrdiff_t>(level) * tableRowLength;
    // Everything the blend needs is captured by value: stores into byte
    // images may alias any memory, which would force reloads otherwise.
    auto blendAt = [planes, keep, terms](ptrdiff_t offset, int32_t index) {
        planes.forEachAt(offset, [keep, terms, index](T &pixel, int32_t plane) {
            pixel = Brush::blend(pixel, keep[index], terms[plane * tableRowLength + index]);
        });
    };

    const ptrdiff_t colStep = numRows;
    const int32_t dRow = wrapSub(r2, r1), dCol = wrapSub(c2, c1);
    if (dRow == 0) {
        ptrdiff_t offset = r1 + c1 * colStep;
        for (uint32_t c = 0; c1 <= c2 && c <= uint32_t(wrapSub(c2, c1)); ++c, offset += colStep) {
            blendAt(offset, centreIndex);
            if (r1 > rowMin) {
                blendAt(offset - 1, unitDistanceIndex);
            }
            if (r1 < rowMax) {
                blendAt(offset + 1, unitDistanceIndex);
            }
        }
        return;
    }
    if (dCol == 0) {
        // Only the column is ever ordered, so a vertical line given bottom-up
        // stays invisible; this is the library's defined behaviour.
        ptrdiff_t offset = r1 + c1 * colStep;
        for (uint32_t r = 0; r1 <= r2 && r <= uint32_t(wrapSub(r2, r1)); ++r, ++offset) {
            blendAt(offset, centreIndex);
            if (c1 > colMin) {
                blendAt(offset - colStep, unitDistanceIndex);
            }
            if (c1 < colMax) {
                blendAt(offset + colStep, unitDistanceIndex);
            }
        }
        return;
    }

    const bool columnMajor = wrapAbs(dRow) <= dCol;
    const int32_t minorSign = dRow > 0 ? 1 : -1;
    int32_t minor, steps, minorMin, minorMax;
    ptrdiff_t offset, majorStep, neighbourStep;
    typename Brush::Slope slope;
    if (columnMajor) {
        slope = Brush::slope(dRow, dCol);
        offset = r1 + c1 * colStep;
        minor = r1, minorMin = rowMin, minorMax = rowMax;
        steps = dCol;
        majorStep = colStep, neighbourStep = 1;
    } else {
        slope = Brush::slope(dCol, dRow);
        const bool fromFirst = dRow >= 0;
        offset = (fromFirst ? r1 : r2) + (fromFirst ? c1 : c2) * colStep;
        minor = fromFirst ? c1 : c2, minorMin = colMin, minorMax = colMax;
        steps = wrapAbs(dRow);
        majorStep = 1, neighbourStep = colStep;
    }
    const auto walk = [&](auto stepsWhen) {
        walkBrush<Brush>(offset, steps, majorStep, neighbourStep, minor, minorSign, minorMin, minorMax, slope,
                         stepsWhen, blendAt);
    };
    if (columnMajor) {
        walk([](auto distance, auto threshold) { return distance >= threshold; });
    } else {
        walk([](auto distance, auto threshold) { return Brush::rowMajorSteps(distance, threshold); });
    }
}

template <class Brush, class T, class W>
void drawIntensity(int32_t r1, int32_t c1, int32_t r2, int32_t c2, T *dst, int32_t numRows, int32_t rowMin,
                   int32_t rowMax, int32_t colMin, int32_t colMax, const W *table, int32_t level, int32_t numPlanes,
                   int32_t planeStride)
{
    const ClipRectangle rect{rowMin, rowMax, colMin, colMax};
    if (numPlanes == 1) {
        drawAntialiasedLine<Brush, T>(r1, c1, r2, c2, onePlane(dst), numRows, rect, table, level);
    } else {
        drawAntialiasedLine<Brush, T>(r1, c1, r2, c2, stridedPlanes(dst, numPlanes, planeStride), numRows, rect,
                                      table, level);
    }
}

template <class Brush, class T, class W>
void drawRgb(int32_t r1, int32_t c1, int32_t r2, int32_t c2, T *planeR, T *planeG, T *planeB, int32_t numRows,
             int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const W *table, int32_t level)
{
    drawAntialiasedLine<Brush, T>(r1, c1, r2, c2, rgbPlanes(planeR, planeG, planeB), numRows,
                                  ClipRectangle{rowMin, rowMax, colMin, colMax}, table, level);
}

} // namespace
} // namespace ornex::draw

using ornex::draw::drawIntensity;
using ornex::draw::drawRgb;
using ornex::draw::FixedBrush;
template <class Real>
using Floating = ornex::draw::FloatingBrush<Real>;

#define ORNEX_AA_I_ARGS(T, W) int32_t r1, int32_t c1, int32_t r2, int32_t c2, T *dst, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const W *table, int32_t level, int32_t numPlanes, int32_t planeStride
#define ORNEX_AA_I_PASS r1, c1, r2, c2, dst, numRows, rowMin, rowMax, colMin, colMax, table, level, numPlanes, planeStride
#define ORNEX_AA_RGB_ARGS(T, W) int32_t r1, int32_t c1, int32_t r2, int32_t c2, T *planeR, T *planeG, T *planeB, int32_t numRows, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, const W *table, int32_t level
#define ORNEX_AA_RGB_PASS r1, c1, r2, c2, planeR, planeG, planeB, numRows, rowMin, rowMax, colMin, colMax, table, level

extern "C" {
void ORNEX_Draw_AA_Line_I_D(ORNEX_AA_I_ARGS(double, double)) { drawIntensity<Floating<double>>(ORNEX_AA_I_PASS); }
void ORNEX_Draw_AA_Line_RGB_D(ORNEX_AA_RGB_ARGS(double, double)) { drawRgb<Floating<double>>(ORNEX_AA_RGB_PASS); }
void ORNEX_Draw_AA_Line_I_R(ORNEX_AA_I_ARGS(float, float)) { drawIntensity<Floating<float>>(ORNEX_AA_I_PASS); }
void ORNEX_Draw_AA_Line_RGB_R(ORNEX_AA_RGB_ARGS(float, float)) { drawRgb<Floating<float>>(ORNEX_AA_RGB_PASS); }
void ORNEX_Draw_AA_Line_I_UI8(ORNEX_AA_I_ARGS(uint8_t, int16_t)) { drawIntensity<FixedBrush>(ORNEX_AA_I_PASS); }
void ORNEX_Draw_AA_Line_RGB_UI8(ORNEX_AA_RGB_ARGS(uint8_t, int16_t)) { drawRgb<FixedBrush>(ORNEX_AA_RGB_PASS); }
void ORNEX_Draw_AA_Line_I_I8(ORNEX_AA_I_ARGS(int8_t, int16_t)) { drawIntensity<FixedBrush>(ORNEX_AA_I_PASS); }
void ORNEX_Draw_AA_Line_RGB_I8(ORNEX_AA_RGB_ARGS(int8_t, int16_t)) { drawRgb<FixedBrush>(ORNEX_AA_RGB_PASS); }
void ORNEX_Draw_AA_Line_I_UI16(ORNEX_AA_I_ARGS(uint16_t, uint16_t)) { drawIntensity<FixedBrush>(ORNEX_AA_I_PASS); }
void ORNEX_Draw_AA_Line_RGB_UI16(ORNEX_AA_RGB_ARGS(uint16_t, uint16_t)) { drawRgb<FixedBrush>(ORNEX_AA_RGB_PASS); }
void ORNEX_Draw_AA_Line_I_I16(ORNEX_AA_I_ARGS(int16_t, int16_t)) { drawIntensity<FixedBrush>(ORNEX_AA_I_PASS); }
void ORNEX_Draw_AA_Line_RGB_I16(ORNEX_AA_RGB_ARGS(int16_t, int16_t)) { drawRgb<FixedBrush>(ORNEX_AA_RGB_PASS); }
}

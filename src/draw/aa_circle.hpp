#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/blending.hpp"
#include "frame/clip_rectangle.hpp"
#include "frame/element_traits.hpp"
#include "frame/image_planes.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {

// Where the exact circle lies between the walked pixel and its neighbour:
// the weight (Q10 or a fraction) and whether the walked pixel lies on or
// outside the exact circle.
template <class Weight>
struct Crossing {
    Weight weight;
    bool outside;
};

// Q10 coverage from the caller's square-root table, entry t standing for
// 4096 sqrt(1 - (t/4096)^2). A crossing on a whole pixel gives 1024, not 0,
// on purpose: the walked pixel then gets full weight.
inline int32_t circleDelta(int32_t x, int32_t y, int32_t r, const int16_t *sqrtTable, uint8_t *flagOut)
{
    int32_t t = wrapDiv(wrapMul(x, 4096), r);
    // Compared unsigned on purpose: past x = 2^19 the product wraps below
    // zero, and such an index is capped like any other past the table's end
    // instead of reading before its start.
    t = static_cast<uint32_t>(t) > 3223u ? 3223 : t;
    const int32_t s = wrapMul(sqrtTable[t], r);
    *flagOut = wrapSub(wrapMul(y, 4096), s) >= 0 ? 1 : 0;
    return wrapAdd(wrapSub(static_cast<int32_t>(static_cast<uint32_t>(s) & ~0xFFFu), s), 4096) >> 2;
}

// Floating members: fractions in the image's own precision.
template <class T>
struct FloatingCoverage {
    using Weight = T;

    static Weight complement(Weight w) { return T(1) - w; }
    static T term(T value, Weight w) { return w * value; }
    static T blend(T old, Weight keep, T term) { return old * keep + term; }
    static Weight atLeastHalf(Weight w) { return w <= T(0.5) ? T(1) - w : w; }
    static Crossing<Weight> crossing(int32_t x, int32_t y, int32_t radius, const int16_t *)
    {
        const T exact = std::sqrt(T(wrapSub(wrapMul(radius, radius), wrapMul(x, x))));
        return {std::ceil(exact) - exact, T(y) >= exact};
    }
};

// Integer members: Q10 weights in 32-bit arithmetic, results stored
// truncated to the element width (no saturation).
template <class T>
struct FixedCoverage {
    using Weight = uint32_t;
    using Traits = ElementTraits<T>;

    static Weight complement(Weight w) { return 1024u - w; }
    static T term(T value, Weight w)
    {
        return Traits::storeTruncated(q10Product(Traits::toInt32(value), static_cast<int32_t>(w)));
    }
    static T blend(T old, Weight keep, T term)
    {
        return keepQ10AndAdd(old, static_cast<int32_t>(keep), Traits::toInt32(term));
    }
    static Weight atLeastHalf(Weight w) { return w < 513u ? 1024u - w : w; }
    static Crossing<Weight> crossing(int32_t x, int32_t y, int32_t radius, const int16_t *sqrtTable)
    {
        uint8_t outside = 0;
        const int32_t w = circleDelta(x, y, radius, sqrtTable, &outside);
        return {static_cast<Weight>(w), outside != 0};
    }
};

template <class T>
using CoverageOf = std::conditional_t<std::is_floating_point_v<T>, FloatingCoverage<T>, FixedCoverage<T>>;

// Visits the four points one axis or diagonal point stands for: with a = 0
// the four axis points, each once.
template <class Visit>
void visitQuadPoints(int32_t cr, int32_t cc, int32_t a, int32_t b, const Visit &visit)
{
    if (a != 0) {
        visit(wrapAdd(cr, a), wrapAdd(cc, b));
        visit(wrapSub(cr, a), wrapAdd(cc, b));
        visit(wrapSub(cr, a), wrapSub(cc, b));
        visit(wrapAdd(cr, a), wrapSub(cc, b));
    } else {
        visit(cr, wrapAdd(cc, b));
        visit(cr, wrapSub(cc, b));
        visit(wrapSub(cr, b), cc);
        visit(wrapAdd(cr, b), cc);
    }
}

// The eight mirror images of (a, b), in blending order.
template <class Visit>
void visitOctantPoints(int32_t cr, int32_t cc, int32_t a, int32_t b, const Visit &visit)
{
    visit(wrapAdd(cr, a), wrapAdd(cc, b));
    visit(wrapSub(cr, a), wrapAdd(cc, b));
    visit(wrapSub(cr, a), wrapSub(cc, b));
    visit(wrapAdd(cr, a), wrapSub(cc, b));
    visit(wrapAdd(cr, b), wrapAdd(cc, a));
    visit(wrapSub(cr, b), wrapAdd(cc, a));
    visit(wrapSub(cr, b), wrapSub(cc, a));
    visit(wrapAdd(cr, b), wrapSub(cc, a));
}

template <class T, class Planes>
void writeQuadPoints(const Planes &planes, int32_t cr, int32_t cc, int32_t a, int32_t b, const ClipRectangle &rect,
                     int32_t numRows, const T *values)
{
    visitQuadPoints(cr, cc, a, b, [&](int32_t row, int32_t column) {
        if (rect.contains(row, column)) {
            planes.forEachAt(row + static_cast<ptrdiff_t>(column) * numRows,
                             [&](T &pixel, int32_t p) { pixel = values[p]; });
        }
    });
}

// Blends the pair: the walked pixels at b with termsA, their neighbours
// across the circle (inward at b - 1 when the walked pixel is outside,
// outward at b + 1 otherwise) with termsB, each keeping its complementary
// share of the background.
template <class T, class Planes>
void blendOctantPairs(const Planes &planes, int32_t cr, int32_t cc, int32_t a, int32_t b, const ClipRectangle &rect,
                      int32_t numRows, const T *termsA, const T *termsB, typename CoverageOf<T>::Weight w,
                      bool outside)
{
    using Coverage = CoverageOf<T>;
    const auto keepA = outside ? w : Coverage::complement(w);
    const auto keepB = outside ? Coverage::complement(w) : w;
    const int32_t partner = outside ? wrapSub(b, 1) : wrapAdd(b, 1);
    auto blendSet = [&](int32_t column, typename Coverage::Weight keep, const T *terms) {
        visitOctantPoints(cr, cc, a, column, [&](int32_t row, int32_t col) {
            if (rect.contains(row, col)) {
                planes.forEachAt(row + static_cast<ptrdiff_t>(col) * numRows,
                                 [&](T &pixel, int32_t p) { pixel = Coverage::blend(pixel, keep, terms[p]); });
            }
        });
    };
    blendSet(b, keepA, termsA);
    blendSet(partner, keepB, termsB);
}

} // namespace ornex::draw

#pragma once

#include <cstdint>

#include "frame/element_traits.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex {

// Opacity blending of a fill value into a pixel.
//
// Floating images: new = fill*a + old*(1 - a), a in [0, 1], summed in Sum
// (double for single-precision images too: the operands are widened first).
// Integer and logical images: Q10 fixed point, a signed 16-bit with 1024 for
// opaque, new = (fill*a + old*(1024 - a)) >> 10 in 32-bit arithmetic, the
// keep weight truncated to 16 bits, the shift by type, the store truncated
// to the element width. There is no saturation.

// A Q10 product: a*b in 32-bit arithmetic that wraps, shifted back
// arithmetically (negative products go toward minus infinity).
inline int32_t q10Product(int32_t a, int32_t b)
{
    return wrapMul(a, b) >> 10;
}

// A pixel of an integer image keeping a Q10 share of itself and adding a
// term: ((old*keep) >> 10) + term in 32-bit arithmetic, the shift
// arithmetic for every element type (unlike the opacity blend below), the
// sum stored truncated to the element width.
template <class T>
inline T keepQ10AndAdd(T old, int32_t keep, int32_t term)
{
    using Traits = ElementTraits<T>;
    return Traits::storeTruncated(wrapAdd(q10Product(Traits::toInt32(old), keep), term));
}

template <class T, class Sum = double>
struct FloatingOpacityBlend {
    Sum fillTerm;
    Sum keep;

    FloatingOpacityBlend(T fill, Sum opacity) : fillTerm(Sum(fill) * opacity), keep(Sum(1) - opacity) {}
    T operator()(T old) const { return static_cast<T>(fillTerm + Sum(old) * keep); }
};

template <class T>
struct Q10OpacityBlend {
    using Traits = ElementTraits<T>;
    int32_t fillTerm;
    int32_t keep;

    Q10OpacityBlend(T fill, int16_t opacity)
        : fillTerm(wrapMul(Traits::toInt32(fill), opacity)),
          keep(static_cast<int16_t>(1024 - int32_t(opacity)))
    {
    }
    // With nothing of the old value kept every pixel gets the same value.
    bool replaces() const { return keep == 0; }
    T replacement() const { return Traits::storeTruncated(Traits::shiftOutQ10(fillTerm)); }
    T operator()(T old) const
    {
        return Traits::storeTruncated(Traits::shiftOutQ10(wrapAdd(fillTerm, wrapMul(Traits::toInt32(old), keep))));
    }
};

// The opacity of a partly covered pixel: opacity * coverage in the
// opacity's own precision for floating images; for Q10 images a 32-bit
// product shifted back arithmetically and taken as a signed 16-bit opacity.
template <class Real>
inline Real scaledOpacity(Real opacity, Real coverage)
{
    return opacity * coverage;
}

inline int16_t scaledOpacity(int16_t opacity, int32_t coverage)
{
    return static_cast<int16_t>(q10Product(opacity, coverage));
}

} // namespace ornex

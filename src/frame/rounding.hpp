#pragma once

#include <cmath>
#include <cstdint>

#include "frame/wrap_arithmetic.hpp"

namespace ornex {

// Real to 32-bit integer, truncating toward zero. Values that do not fit
// (and NaN) give INT32_MIN, as the x86 conversion instructions do, instead
// of undefined behaviour.
template <class Real>
inline int32_t truncateToInt32(Real x)
{
    if (!(x > Real(-2147483649.0) && x < Real(2147483648.0))) {
        return INT32_MIN;
    }
    return static_cast<int32_t>(x);
}

// Real to 64-bit integer, truncating; values that do not fit (and NaN) give
// INT64_MIN, as the x86 conversion does.
template <class Real>
inline int64_t truncateToInt64(Real x)
{
    if (!(x > Real(-9223372036854775808.0) && x < Real(9223372036854775808.0))) {
        return INT64_MIN;
    }
    return static_cast<int64_t>(x);
}

// Halves round away from zero: 2.5 gives 3, -2.5 gives -3. The half is added
// in the value's own precision.
template <class Real>
inline int32_t roundHalfAway(Real x)
{
    return truncateToInt32(x > Real(0) ? x + Real(0.5) : x - Real(0.5));
}

// floor(x + 0.5) in the value's own type: halves round up, so -2.5 gives
// -2. The half is added in the value's own precision.
template <class Real>
inline Real nearestHalfUp(Real x)
{
    return std::floor(x + Real(0.5));
}

// nearestHalfUp as a 32-bit integer.
template <class Real>
inline int32_t roundHalfUp(Real x)
{
    return truncateToInt32(nearestHalfUp(x));
}

// n / d for d > 0, halves away from zero, by (|n| + d/2) / d in 32 bits
// (no wrap-around: n must stay d/2 clear of the int32 limits).
inline int32_t divideHalfAway(int32_t n, int32_t d)
{
    return n >= 0 ? (n + d / 2) / d : -((d / 2 - n) / d);
}

// n / d for any d != 0, halves away from zero, through the truncated 2n / d
// in 32-bit arithmetic where the doubling wraps: the line clipper's rule.
inline int32_t wrapDivideHalfAway(int32_t n, int32_t d)
{
    const int32_t q = wrapDiv(wrapAdd(n, n), d);
    const bool sameSign = (n >= 0 && d >= 0) || (n < 0 && d < 0);
    return sameSign ? wrapAdd(q, 1) / 2 : wrapSub(q, 1) / 2;
}

} // namespace ornex

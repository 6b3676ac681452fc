#pragma once

#include <cmath>
#include <cstdint>

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

} // namespace ornex

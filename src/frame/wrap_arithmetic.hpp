#pragma once

#include <cstdint>

namespace ornex {

// 32-bit two's-complement arithmetic that wraps on overflow, computed in
// unsigned arithmetic so that no signed overflow ever happens.

inline int32_t wrapAdd(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t wrapSub(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

inline int32_t wrapMul(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

inline int32_t wrapNeg(int32_t a)
{
    return static_cast<int32_t>(0u - static_cast<uint32_t>(a));
}

// |a|, with |INT32_MIN| wrapping to INT32_MIN.
inline int32_t wrapAbs(int32_t a)
{
    return a < 0 ? wrapNeg(a) : a;
}

// Division truncating toward zero; INT32_MIN / -1 wraps to INT32_MIN instead
// of trapping. The divisor must not be zero.
inline int32_t wrapDiv(int32_t n, int32_t d)
{
    return d == -1 ? wrapNeg(n) : n / d;
}

} // namespace ornex

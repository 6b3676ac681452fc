#pragma once

#include <cstdint>
#include <utility>

namespace ornex::draw::edge_steps {

// Counting on a circle of m points turned by a fixed amount per step.

constexpr uint64_t circle = uint64_t(1) << 31;

constexpr uint64_t none = ~uint64_t(0);

// Smallest x >= 0 with (a*x) mod m in [lo, hi], 0 <= lo <= hi < m, or none
// (Euclid's descent on the moduli).
inline uint64_t firstMultipleIn(uint64_t a, uint64_t m, uint64_t lo, uint64_t hi)
{
    if (lo == 0) {
        return 0;
    }
    a %= m;
    if (a == 0) {
        return none;
    }
    if (2 * a > m) {
        return firstMultipleIn(m - a, m, m - hi, m - lo);
    }
    const uint64_t k = (lo + a - 1) / a;
    if (a * k <= hi) {
        return k;
    }
    const uint64_t over = (a - lo % a) % a;
    const uint64_t y = firstMultipleIn(m % a, a, over - (hi - lo), over);
    return y == none ? none : (lo + m * y + a - 1) / a;
}

// Smallest k >= 0 with (b + k*a) mod m <= r, b below m.
inline uint64_t firstAtMost(uint64_t a, uint64_t b, uint64_t r, uint64_t m = circle)
{
    return b <= r ? 0 : firstMultipleIn(a, m, m - b, m - b + r);
}

// Sum of floor((a*k + b) / m) over k = 0 .. n-1, modulo 2^64; n at most
// 2^32, a and b below 2^32, m from 1 to 2^32. Differences of two such sums
// that fit in 64 bits are exact.
inline uint64_t floorSum(uint64_t n, uint64_t m, uint64_t a, uint64_t b)
{
    uint64_t sum = 0;
    while (n > 0) {
        if (a >= m) {
            sum += n * (n - 1) / 2 * (a / m);
            a %= m;
        }
        if (b >= m) {
            sum += n * (b / m);
            b %= m;
        }
        const uint64_t top = a * n + b;
        if (top < m) {
            break;
        }
        n = top / m;
        b = top % m;
        std::swap(m, a);
    }
    return sum;
}

// How many of c, c + r, ..., c + (count-1)*r fall below u modulo length;
// c and r below length, u at most length, length at most 2^31, count at
// most 2^32.
inline uint64_t rotationHitsBelow(uint64_t c, uint64_t r, uint64_t u, uint64_t length, uint64_t count)
{
    if (u >= length) {
        return count;
    }
    // x mod length >= u exactly when floor((x + length - u) / length) exceeds floor(x / length).
    return count - (floorSum(count, length, r, c + length - u) - floorSum(count, length, r, c));
}

} // namespace ornex::draw::edge_steps

#pragma once

#include <algorithm>
#include <cstdint>

#include "geometry/repeated_sum.hpp"

namespace ornex::geometry {

#if defined(__SIZEOF_INT128__)

// Quotient and remainder, in 64 bits when both fit.
inline void divide128(unsigned __int128 x, unsigned __int128 m, unsigned __int128 &quotient, unsigned __int128 &remainder)
{
    if ((x >> 64) == 0 && (m >> 64) == 0) {
        quotient = uint64_t(x) / uint64_t(m);
        remainder = uint64_t(x) % uint64_t(m);
    } else {
        quotient = x / m;
        remainder = x % m;
    }
}

// Sum of floor((a*k + b) / m) over k = 0 .. n-1; a, b >= 0, m > 0, with
// a*n + b below 2^127.
inline unsigned __int128 floorSum128(unsigned __int128 n, unsigned __int128 m, unsigned __int128 a,
                                     unsigned __int128 b)
{
    unsigned __int128 sum = 0, quotient = 0;
    while (n > 0) {
        if (a >= m) {
            divide128(a, m, quotient, a);
            sum += (n % 2 == 0 ? n / 2 * (n - 1) : (n - 1) / 2 * n) * quotient;
        }
        if (b >= m) {
            divide128(b, m, quotient, b);
            sum += n * quotient;
        }
        const unsigned __int128 top = a * n + b;
        if (top < m) {
            break;
        }
        divide128(top, m, n, b);
        std::swap(m, a);
    }
    return sum;
}

// The smallest j >= 0 with (start + j*increment) mod modulus equal to
// target, modulus a power of two; ~0 when there is none.
inline uint64_t firstCongruent(uint64_t start, uint64_t increment, uint64_t target, uint64_t modulus)
{
    const uint64_t mask = modulus - 1, wanted = (target - start) & mask;
    increment &= mask;
    if (increment == 0) {
        return wanted == 0 ? 0 : ~uint64_t(0);
    }
    const int twos = __builtin_ctzll(increment);
    if ((wanted & ((uint64_t(1) << twos) - 1)) != 0) {
        return ~uint64_t(0);
    }
    const uint64_t odd = increment >> twos, reducedMask = mask >> twos;
    uint64_t inverse = odd; // Newton's iteration doubles the correct low bits each time
    for (int i = 0; i < 6; ++i) {
        inverse *= 2 - odd * inverse;
    }
    return ((wanted >> twos) * inverse) & reducedMask;
}

// With the step on a grid of one sign and stepping by a fixed number of its
// units, and the value inside a grid of its own whose unit is at least twice
// the step's: how many more steps can be taken at once before the value or
// the step leaves its grid or a sum falls halfway between two values (whose
// rounding would depend on the value's last bit). Moves value and step on.
template <class T>
uint64_t jumpInsideGrids(T &value, T &step, int64_t stepIncrement, uint64_t count)
{
    const RoundingGrid<T> valueGrid(value), stepGrid(step);
    const int scale = stepGrid.shift - valueGrid.shift; // the value's unit is 2^scale step units
    if (scale < 1) {
        return 0;
    }
    const int64_t start = stepGrid.units(step), at = valueGrid.units(value);
    const uint64_t stepRoom = stepIncrement > 0   ? uint64_t((stepGrid.highest - start) / stepIncrement)
                              : stepIncrement < 0 ? uint64_t((start - stepGrid.lowest) / -stepIncrement)
                                                  : ~uint64_t(0);
    uint64_t most = std::min(count, stepRoom);
    if (scale > RoundingGrid<T>::digits + 1) {
        // Every step is under half a unit of the value: it stays put.
        step = stepGrid.value(start + int64_t(most) * stepIncrement);
        return most;
    }
    // Step units are positive here: a negative step is handled mirrored.
    const uint64_t ratio = uint64_t(1) << scale;
    most = std::min(most, firstCongruent(uint64_t(start), uint64_t(stepIncrement), ratio / 2, ratio));
    // Units the value gains over the first n steps: each step rounds to the
    // nearest whole unit of the value.
    auto gained = [&](uint64_t n) -> unsigned __int128 {
        if (n == 0) {
            return 0;
        }
        const int64_t lowest = stepIncrement >= 0 ? start : start + int64_t(n - 1) * stepIncrement;
        const uint64_t increment = uint64_t(stepIncrement >= 0 ? stepIncrement : -stepIncrement);
        return floorSum128(n, 2 * ratio, 2 * increment, 2 * uint64_t(lowest) + ratio);
    };
    const auto room = static_cast<unsigned __int128>(valueGrid.highest - at);
    // Most jumps end at the next halfway sum, well inside the value's grid.
    uint64_t fewest = gained(most) <= room ? most : 0, beyond = most + 1; // beyond: out of room or out of reach
    while (beyond - fewest > 1) {
        const uint64_t n = fewest + (beyond - fewest) / 2;
        (gained(n) <= room ? fewest : beyond) = n;
    }
    value = valueGrid.value(at + int64_t(gained(fewest)));
    step = stepGrid.value(start + int64_t(fewest) * stepIncrement);
    return fewest;
}

#endif

// `value` and `step` after `count` repetitions of value = value + step,
// step = step + change, bit for bit. Once three consecutive steps lie inside
// one rounding grid the step moves by a fixed number of units, and while the
// value's unit is coarser than the step's each sum rounds to a whole number
// of the value's units: a floor sum counts them. Without 128-bit integers
// every row is stepped.
template <class T>
void secondOrderSum(T &value, T &step, T change, uint64_t count)
{
    [[maybe_unused]] T previousStep = step;
    int stepRun = 0; // consecutive steps inside the grid of `step`
    while (count > 0) {
        const T nextValue = value + step, nextStep = step + change;
        --count;
        if (sameBits(nextValue, value) && sameBits(nextStep, step)) {
            return; // a fixed point
        }
        const RoundingGrid<T> stepGrid(nextStep);
        const bool finite = std::isfinite(nextValue) && std::isfinite(nextStep);
        stepRun = finite && stepGrid.interior(nextStep) && stepGrid.interior(step) ? (stepRun > 0 ? stepRun + 1 : 2) : 0;
        previousStep = step;
        value = nextValue;
        step = nextStep;
#if defined(__SIZEOF_INT128__)
        const bool normal = std::fabs(step) >= std::numeric_limits<T>::min() && std::fabs(value) >= std::numeric_limits<T>::min();
        if (stepRun >= 3 && count > 0 && normal && RoundingGrid<T>(value).interior(value)) {
            // Rounding to nearest is symmetric: a negative step is walked mirrored.
            const T sign = step < 0 ? T(-1) : T(1);
            T mirroredValue = sign * value, mirroredStep = sign * step;
            const int64_t increment = stepGrid.units(step) - stepGrid.units(previousStep);
            const uint64_t taken = jumpInsideGrids(mirroredValue, mirroredStep, step < 0 ? -increment : increment, count);
            value = sign * mirroredValue;
            step = sign * mirroredStep;
            count -= taken;
            stepRun = taken > 0 ? 0 : stepRun;
        }
#endif
    }
}

} // namespace ornex::geometry

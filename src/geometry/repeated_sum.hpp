#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace ornex::geometry {

// The stretch of floating-point numbers that x belongs to, within which
// representable values are the multiples of one unit: a binade of one sign,
// or all subnormal numbers and zero. Values are handled as integer counts of
// that unit; the interior keeps one unit away from either end, so that any
// sum rounding to an interior value was rounded on this grid.
template <class T>
struct RoundingGrid {
    static constexpr int digits = std::numeric_limits<T>::digits;
    int key = 0;    // which stretch
    int shift = 0;  // x * 2^shift counts units
    int64_t lowest = 0, highest = 0; // interior, in units

    explicit RoundingGrid(T x)
    {
        constexpr int64_t half = int64_t(1) << (digits - 1), full = int64_t(1) << digits;
        if (std::fabs(x) < std::numeric_limits<T>::min()) {
            key = std::numeric_limits<int>::min();
            shift = digits - std::numeric_limits<T>::min_exponent;
            lowest = -(half - 1);
            highest = half - 1;
            return;
        }
        int exponent = 0;
        std::frexp(x, &exponent);
        shift = digits - exponent;
        key = 2 * exponent + (x < 0 ? 1 : 0);
        lowest = x < 0 ? -(full - 1) : half + 1;
        highest = x < 0 ? -(half + 1) : full - 1;
    }

    int64_t units(T x) const { return static_cast<int64_t>(std::ldexp(x, shift)); }
    T value(int64_t units) const { return std::ldexp(static_cast<T>(units), -shift); }
    bool interior(T x) const
    {
        if (!(RoundingGrid(x).key == key)) {
            return false;
        }
        const int64_t u = units(x);
        return u >= lowest && u <= highest;
    }
};

template <class T>
bool sameBits(T a, T b)
{
    using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

// `value` after `count` repetitions of value = value + step, bit for bit.
// While three consecutive values lie inside one rounding grid, every
// further step adds the same number of units (a halfway sum rounds to an
// even count, and from the second such step on the count it leaves is even
// again), so the steps that stay inside are taken at once.
template <class T>
T repeatedSum(T value, T step, uint64_t count)
{
    T previous = value;
    int insideRun = 0; // values up to `value` inside the grid of `value`
    while (count > 0) {
        const T next = value + step;
        --count;
        if (sameBits(next, value)) {
            return value; // a fixed point: the step no longer moves it
        }
        if (!std::isfinite(next)) {
            // Infinite or not a number: fixed after a step or two.
            value = next;
            for (; count > 0; --count) {
                const T again = value + step;
                if (sameBits(again, value)) {
                    return value;
                }
                value = again;
            }
            return value;
        }
        const RoundingGrid<T> grid(next);
        insideRun = grid.interior(next) && grid.interior(value) ? (insideRun > 0 ? insideRun + 1 : 2) : 0;
        previous = value;
        value = next;
        if (insideRun >= 3 && count > 0) {
            const int64_t at = grid.units(value), increment = grid.units(value) - grid.units(previous);
            const int64_t room = increment > 0 ? (grid.highest - at) / increment : (at - grid.lowest) / -increment;
            const uint64_t jump = std::min<uint64_t>(count, uint64_t(room));
            value = grid.value(at + int64_t(jump) * increment);
            count -= jump;
            insideRun = 0;
        }
    }
    return value;
}

} // namespace ornex::geometry

#pragma once

#include <cstdint>

#include "draw/orbit_returns.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {

// Many error-term steps of one edge at once. After the addition the carry
// test reads twice the error in 32 bits, so it depends on the error modulo
// 2^31 only: the error modulo 2^31 moves by one amount below a threshold
// and by another at or above it, and how often it carries decides the row.
namespace edge_steps {

// Of the n points g, F(g), ..., F^(n-1)(g) of F(g) = g + lowShift below
// split and g + highShift from split on (modulo 2^31), counts those at or
// above split and leaves g at F^n(g). Runs on one side are found in closed
// form, an orbit that has settled into a rotation of an interval about
// either break point is counted in closed form, and a periodic orbit is
// found (Brent) and its whole periods counted at once. Orbits that do none
// of these (both sides visited often, off an interval rotation: spans and
// row deltas beyond 2^30 with unrelated remainders) are counted through
// their returns to the intervals they settle onto.
inline uint64_t highVisits(uint64_t &g, uint64_t split, uint64_t lowShift, uint64_t highShift, uint64_t n)
{
    const uint64_t m = circle;
    lowShift %= m;
    highShift %= m;
    uint64_t visits = 0;
    uint64_t mark = g, markSteps = 0, markVisits = 0, markEvents = 0, power = 1, shortRuns = 0, events = 0;
    while (n > 0) {
        {
            // [split - x, split + y) turned by y within its length.
            const uint64_t y = lowShift, x = highShift == 0 ? m : m - highShift, length = x + y;
            const uint64_t z = (g + x + m - split) % m;
            if (y > 0 && y <= m - split && x <= split && length <= m && z < length) {
                const uint64_t moved = z + n * y;
                visits += moved / length;
                g = (split + m - x + moved % length) % m;
                return visits;
            }
        }
        {
            // [m - x, m + y) turned by y within its length.
            const uint64_t y = highShift, x = lowShift == 0 ? m : m - lowShift, length = x + y;
            const uint64_t z = (g + x) % m;
            if (y > 0 && x <= m - split && y <= split && length <= m && z < length) {
                const uint64_t moved = z + n * y;
                visits += n - moved / length;
                g = (m - x + moved % length) % m;
                return visits;
            }
        }
        const bool high = g >= split;
        const uint64_t shift = high ? highShift : lowShift;
        uint64_t run = none;
        if (shift != 0 && (high ? split > 0 : split < m)) {
            const uint64_t first = high ? firstAtMost(shift, (g + shift) % m, split - 1)
                                        : firstAtMost(shift, (g + shift + m - split) % m, m - 1 - split);
            run = first == none ? none : first + 1;
        }
        if (run == none || run >= n) {
            g = (g + n % m * shift) % m;
            return high ? visits + n : visits;
        }
        g = (g + run % m * shift) % m;
        n -= run;
        visits += high ? run : 0;
        // An orbit still switching sides after many runs is counted on the
        // structure it settles onto, or else stepped one point at a time
        // when its runs are short.
        shortRuns += run < 64 ? 1 : 0;
        if (++events == 256 && n > 0 && n <= (uint64_t(1) << 32)) {
            Progress progress{g, 0, visits};
            const bool counted = advanceOnReturns(edgeOrbitMap(split, lowShift, highShift), progress, n);
            g = progress.x;
            n -= progress.used;
            visits = progress.visits;
            if (counted) {
                return visits;
            }
            mark = g;
            markSteps = markVisits = markEvents = 0;
            power = 1;
            continue;
        }
        if (shortRuns > 256) {
            for (; n > 0; --n) {
                const bool above = g >= split;
                visits += above ? 1 : 0;
                g = (g + (above ? highShift : lowShift)) & (m - 1);
            }
            return visits;
        }
        markSteps += run;
        markVisits += high ? run : 0;
        if (g == mark) {
            const uint64_t periods = n / markSteps;
            visits += periods * markVisits;
            n -= periods * markSteps;
            markSteps = markVisits = 0;
            power = none;
        } else if (++markEvents == power) {
            mark = g;
            markSteps = markVisits = markEvents = 0;
            power *= 2;
        }
    }
    return visits;
}

inline int64_t ceilHalf(int64_t v) { return (v + 1) >> 1; }

} // namespace edge_steps

// The row and error term of an edge after `steps` error-term steps, with
// the 32-bit wrap-around of stepping one column at a time.
// The map an edge's error term follows from column to column, on the
// first tested value moved so that its doubled 32-bit value is ordered like
// the position on [0, 2^31). Rising edges carry where twice the error is at
// least the scan length, the others where it is below minus the scan
// length: for those the points at or above the split are the ones that do
// not carry.
struct EdgeErrorMap {
    bool rising;
    int32_t added;
    uint64_t split, lowShift, highShift;
};

inline EdgeErrorMap edgeErrorMap(int32_t rowDelta, int32_t scanLength, int32_t rowStep)
{
    using edge_steps::ceilHalf;
    const bool rising = rowDelta > 0;
    const int32_t stepped = wrapMul(rowStep, scanLength);
    const int32_t added = rising ? wrapSub(rowDelta, stepped) : wrapAdd(stepped, rowDelta);
    if (rising) {
        return {true, added, uint64_t(ceilHalf(scanLength) + (int64_t(1) << 30)), uint32_t(added),
                uint32_t(wrapSub(added, scanLength))};
    }
    return {false, added, uint64_t(ceilHalf(wrapNeg(scanLength)) + (int64_t(1) << 30)),
            uint32_t(wrapAdd(added, scanLength)), uint32_t(added)};
}

inline void advanceEdgeBy(int32_t rowDelta, int32_t scanLength, int32_t rowStep, int32_t &row, int32_t &error,
                          uint64_t steps)
{
    using namespace edge_steps;
    const EdgeErrorMap map = edgeErrorMap(rowDelta, scanLength, rowStep);
    const int32_t added = map.added;
    uint64_t g = (uint64_t(uint32_t(wrapAdd(error, added))) + (uint64_t(1) << 30)) % circle;
    const uint64_t visits = highVisits(g, map.split, map.lowShift, map.highShift, steps);
    const uint64_t carries = map.rising ? visits : steps - visits;
    const auto n32 = int32_t(uint32_t(steps)), c32 = int32_t(uint32_t(carries));
    const int32_t direction = map.rising ? 1 : -1;
    error = wrapSub(wrapAdd(error, wrapMul(n32, added)), wrapMul(wrapMul(c32, direction), scanLength));
    row = wrapAdd(wrapAdd(row, wrapMul(n32, wrapMul(direction, rowStep))), wrapMul(c32, direction));
}

} // namespace ornex::draw

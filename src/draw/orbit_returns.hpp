#pragma once

#include <algorithm>
#include <cstdint>

#include "draw/arc_map.hpp"

namespace ornex::draw::edge_steps {

// Orbits of maps that move each point of a circle by the amount of the arc
// it lies in. An edge's error term follows one with two arcs on a circle of
// 2^31 points; when the map is not one-to-one it sends the whole circle,
// after a few steps, onto a union of intervals that it permutes, and every
// one of those intervals comes back to itself as a rotation. Where that
// union is too fragmented, the first return to the shortest arc is again
// such a map, on a shorter circle, and the search repeats there. A step of
// a derived map stands for several steps of the edge's map: it carries
// their count (its weight) and how many of them were at or above the split.

// Progress along an orbit: the point, the edge-map steps taken and how many
// of them were at or above the split.
struct Progress {
    uint64_t x, used, visits;
};

// Takes steps of the map while their weight fits the budget, at most `most`
// of them and stopping early at a point inside `stop` when one is given, or
// after `mostRuns` runs along one arc, each taken at once. Returns how many
// steps it took.
inline uint64_t stepWhileFits(const ArcMap &map, Progress &p, uint64_t budget, uint64_t most,
                              const Interval *stop = nullptr, uint64_t mostRuns = ~uint64_t(0))
{
    uint64_t taken = 0;
    for (uint64_t runs = 0; taken < most && runs < mostRuns && (stop == nullptr || p.x < stop->lo || p.x >= stop->hi);
         ++runs) {
        const Arc &arc = map.at(p.x);
        const uint64_t run = std::min({map.runFrom(p.x, arc), most - taken, (budget - p.used) / arc.weight});
        if (run == 0) {
            break;
        }
        p.used += run * arc.weight;
        p.visits += run * arc.visits;
        p.x = (p.x + run % map.length * arc.shift) % map.length;
        taken += run;
    }
    return taken;
}

// Whole returns of a map whose first return to an interval is a rotation
// by one turn, taken in closed form while they fit the budget.
inline void countRotationReturns(const ArcMap &rotation, uint64_t baseLo, Progress &p, uint64_t budget)
{
    const uint64_t length = rotation.length, turn = rotation.arcs[0].shift, start = p.x - baseLo;
    auto returnsBelow = [&](uint64_t u, uint64_t k) { return rotationHitsBelow(start, turn, u, length, k); };
    // The weight and visits of the first k returns; none when the weight
    // passes the budget.
    auto total = [&](uint64_t k, uint64_t &visits) {
        uint64_t weight = 0;
        visits = 0;
        for (int i = 0; i < rotation.count; ++i) {
            const Arc &arc = rotation.arcs[size_t(i)];
            const uint64_t hits = returnsBelow(arc.hi, k) - returnsBelow(arc.lo, k);
            uint64_t part = 0;
            if (__builtin_mul_overflow(hits, arc.weight, &part) || __builtin_add_overflow(weight, part, &weight)) {
                return ~uint64_t(0);
            }
            visits += hits * arc.visits;
        }
        return weight;
    };
    uint64_t lightest = ~uint64_t(0);
    for (int i = 0; i < rotation.count; ++i) {
        lightest = std::min(lightest, rotation.arcs[size_t(i)].weight);
    }
    const uint64_t room = budget - p.used;
    uint64_t fewest = 0, most = std::min<uint64_t>(room / lightest + 1, uint64_t(1) << 32); // total(most) > room
    uint64_t visits = 0;
    while (most - fewest > 1) {
        const uint64_t k = fewest + (most - fewest) / 2;
        (total(k, visits) <= room ? fewest : most) = k;
    }
    p.used += total(fewest, visits);
    p.visits += visits;
    p.x = baseLo + (start + fewest % length * turn) % length;
}

// The settled union and its rotation, when found: steps into the union and
// counts the returns; true when the budget is spent. Kept apart so that its
// interval sets leave the stack before any deeper search.
[[gnu::noinline]] inline bool countOnSettledTower(const ArcMap &map, Progress &p, uint64_t budget, int64_t maxWork)
{
    IntervalSet settled;
    int settlingSteps = 0;
    if (!settle(map, settled, settlingSteps, maxWork)) {
        return false;
    }
    if (stepWhileFits(map, p, budget, uint64_t(settlingSteps)) < uint64_t(settlingSteps)) {
        return true;
    }
    const Interval *base = settled.find(p.x);
    ArcMap rotation;
    uint64_t longest = 0;
    if (base == nullptr || !firstReturn(map, *base, rotation, longest) ||
        !std::all_of(rotation.arcs.begin(), rotation.arcs.begin() + rotation.count,
                     [&](const Arc &arc) { return arc.shift == rotation.arcs[0].shift; })) {
        return false;
    }
    countRotationReturns(rotation, base->lo, p, budget);
    // What is left is less than one return.
    return stepWhileFits(map, p, budget, longest + 1) <= longest;
}

// On a short circle every orbit soon runs round a cycle: found (Brent), it is
// gone round as often as the budget allows at once.
constexpr uint64_t shortCircle = 4096;
inline void countOnCycle(const ArcMap &map, Progress &p, uint64_t budget)
{
    auto stepOnce = [&](Progress &q) {
        const Arc &arc = map.at(q.x);
        q.used += arc.weight;
        q.visits += arc.visits;
        q.x = map.move(q.x, arc);
    };
    Progress mark = p, walker = p;
    uint64_t power = 1, cycle = 0;
    do {
        if (cycle == power) {
            mark = walker;
            power *= 2;
            cycle = 0;
        }
        stepOnce(walker);
        ++cycle;
    } while (walker.x != mark.x);
    // Onto the cycle, round it, and the rest of the way.
    while (p.x != mark.x && map.at(p.x).weight <= budget - p.used) {
        stepOnce(p);
    }
    if (p.x == mark.x) {
        const uint64_t weight = walker.used - mark.used, visits = walker.visits - mark.visits;
        const uint64_t rounds = (budget - p.used) / weight;
        p.used += rounds * weight;
        p.visits += rounds * visits;
    }
    stepWhileFits(map, p, budget, cycle);
}

// The first return to the shortest arc not yet tried (marked in `tried`)
// that every point comes back to; false when none is left.
inline bool returnToAnArc(const ArcMap &map, uint32_t &tried, Interval &base, ArcMap &induced, uint64_t &longest)
{
    for (;;) {
        int shortest = -1;
        for (int i = 0; i < map.count; ++i) {
            const Arc &arc = map.arcs[size_t(i)];
            if ((tried >> i & 1) == 0 &&
                (shortest < 0 || arc.hi - arc.lo < map.arcs[size_t(shortest)].hi - map.arcs[size_t(shortest)].lo)) {
                shortest = i;
            }
        }
        if (shortest < 0) {
            return false;
        }
        tried |= uint32_t(1) << shortest;
        base = {map.arcs[size_t(shortest)].lo, map.arcs[size_t(shortest)].hi};
        if (firstReturn(map, base, induced, longest)) {
            return true;
        }
    }
}

// Steps from p into `base`, one of the map's arcs; false when that takes
// too long (the orbit may settle elsewhere).
inline bool enterArc(const ArcMap &map, Progress &p, uint64_t budget, const Interval &base)
{
    if (map.count == 2 && (p.x < base.lo || p.x >= base.hi)) {
        // Off the base the map is one turn: the way in has a closed form.
        const Arc &other = map.arcs[map.arcs[0].lo == base.lo ? 1 : 0];
        const uint64_t first = firstAtMost(other.shift, (p.x + other.shift + map.length - base.lo) % map.length,
                                           base.hi - base.lo - 1, map.length);
        const uint64_t room = (budget - p.used) / other.weight;
        const uint64_t steps = first == none ? room : std::min(first + 1, room);
        p.used += steps * other.weight;
        p.visits += steps * other.visits;
        p.x = (p.x + steps % map.length * other.shift) % map.length;
    }
    stepWhileFits(map, p, budget, ~uint64_t(0), &base, 4096);
    return p.x >= base.lo && p.x < base.hi;
}

// Takes as many steps of the map from p as fit the budget, in closed form
// through the structures above; false when none was found (p may have moved
// on consistently).
inline bool advanceOnReturns(const ArcMap &map, Progress &p, uint64_t budget, int depth = 0)
{
    constexpr int maxDepth = 48;
    // A union that settles quickly is used at once; a fragmented one is
    // better left to the search on a shorter circle, and tried at length
    // only where that search fails.
    constexpr int64_t quickWork = int64_t(1) << 10, longWork = int64_t(1) << 18;
    if (map.length <= shortCircle) {
        countOnCycle(map, p, budget);
        return true;
    }
    if (countOnSettledTower(map, p, budget, quickWork)) {
        return true;
    }
    Interval base{};
    ArcMap induced;
    uint64_t longest = 0;
    uint32_t tried = 0;
    while (depth < maxDepth && returnToAnArc(map, tried, base, induced, longest)) {
        const bool entered = enterArc(map, p, budget, base);
        if (map.at(p.x).weight > budget - p.used) {
            return true; // the budget ran out first
        }
        if (!entered) {
            continue;
        }
        Progress inside{p.x - base.lo, p.used, p.visits};
        const bool counted = advanceOnReturns(induced, inside, budget, depth + 1);
        p = {base.lo + inside.x, inside.used, inside.visits};
        if (counted) {
            return stepWhileFits(map, p, budget, longest + 1) <= longest;
        }
        break;
    }
    return countOnSettledTower(map, p, budget, longWork);
}

} // namespace ornex::draw::edge_steps

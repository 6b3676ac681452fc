#pragma once

#include <algorithm>
#include <array>
#include <cstdint>




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

// An arc [lo, hi) moved by shift (modulo the circle); a step from it stands
// for `weight` steps of the edge's map, `visits` of them at or above the
// split, and for `hops` steps of the map it belongs to before inducing.
struct Arc {
    uint64_t lo, hi, shift, weight, visits;
};

constexpr int maxArcs = 16;

struct ArcMap {
    uint64_t length = 0;
    int count = 0;
    std::array<Arc, maxArcs> arcs{};

    const Arc &at(uint64_t x) const
    {
        int i = 0;
        while (arcs[size_t(i)].hi <= x) {
            ++i;
        }
        return arcs[size_t(i)];
    }
    uint64_t move(uint64_t x, const Arc &arc) const { return (x + arc.shift) % length; }

    // How many steps in a row, from x on, start inside x's arc: a small
    // move up or down stays in it for many steps without wrapping.
    uint64_t runFrom(uint64_t x, const Arc &arc) const
    {
        if (arc.shift == 0) {
            return ~uint64_t(0);
        }
        const uint64_t down = length - arc.shift;
        uint64_t run = 1;
        if (x + arc.shift < arc.hi) {
            run = (arc.hi - 1 - x) / arc.shift + 1;
        }
        if (down <= x - arc.lo) {
            run = std::max(run, (x - arc.lo) / down + 1);
        }
        return run;
    }
};

// The edge's map: g + lowShift below split, g + highShift from split on.
inline ArcMap edgeOrbitMap(uint64_t split, uint64_t lowShift, uint64_t highShift)
{
    ArcMap map;
    map.length = circle;
    if (split > 0) {
        map.arcs[size_t(map.count++)] = {0, split, lowShift % circle, 1, 0};
    }
    if (split < circle) {
        map.arcs[size_t(map.count++)] = {split, circle, highShift % circle, 1, 1};
    }
    return map;
}

struct Interval {
    uint64_t lo, hi; // [lo, hi)
    bool operator==(const Interval &) const = default;
};

// A union of disjoint intervals in increasing order, of bounded count.
class IntervalSet {
public:
    static constexpr int capacity = 1024;

    IntervalSet() = default;
    // Only the intervals in use are copied.
    IntervalSet(const IntervalSet &other) { *this = other; }
    IntervalSet &operator=(const IntervalSet &other)
    {
        count_ = other.count_;
        std::copy_n(other.intervals_.begin(), count_, intervals_.begin());
        return *this;
    }

    int count() const { return count_; }
    const Interval &operator[](int i) const { return intervals_[size_t(i)]; }
    bool operator==(const IntervalSet &other) const
    {
        return count_ == other.count_ && std::equal(intervals_.begin(), intervals_.begin() + count_, other.intervals_.begin());
    }

    void setWhole(uint64_t length)
    {
        count_ = 1;
        intervals_[0] = {0, length};
    }

    // The image under the map, or false when it would need more intervals.
    bool imageOf(const IntervalSet &from, const ArcMap &map)
    {
        // Each interval gives one piece per arc it meets, and the image of
        // each arc wraps at most once.
        std::array<Interval, capacity + 2 * maxArcs> pieces;
        int numPieces = 0;
        for (int i = 0; i < from.count_; ++i) {
            const Interval &v = from[i];
            for (int a = 0; a < map.count; ++a) {
                const Arc &arc = map.arcs[size_t(a)];
                const uint64_t lo = std::max(v.lo, arc.lo), hi = std::min(v.hi, arc.hi);
                if (lo >= hi) {
                    continue;
                }
                const uint64_t start = map.move(lo, arc), end = start + (hi - lo);
                if (numPieces + 2 > int(pieces.size())) {
                    return false;
                }
                if (end <= map.length) {
                    pieces[size_t(numPieces++)] = {start, end};
                } else {
                    pieces[size_t(numPieces++)] = {start, map.length};
                    pieces[size_t(numPieces++)] = {0, end - map.length};
                }
            }
        }
        std::sort(pieces.begin(), pieces.begin() + numPieces, [](const Interval &x, const Interval &y) { return x.lo < y.lo; });
        count_ = 0;
        for (int i = 0; i < numPieces; ++i) {
            if (count_ > 0 && pieces[size_t(i)].lo <= intervals_[size_t(count_ - 1)].hi) {
                intervals_[size_t(count_ - 1)].hi = std::max(intervals_[size_t(count_ - 1)].hi, pieces[size_t(i)].hi);
            } else if (count_ == capacity) {
                return false;
            } else {
                intervals_[size_t(count_++)] = pieces[size_t(i)];
            }
        }
        return true;
    }

    const Interval *find(uint64_t g) const
    {
        const auto it = std::upper_bound(intervals_.begin(), intervals_.begin() + count_, g,
                                         [](uint64_t x, const Interval &v) { return x < v.lo; });
        if (it == intervals_.begin() || g >= (it - 1)->hi) {
            return nullptr;
        }
        return &*(it - 1);
    }

private:
    std::array<Interval, capacity> intervals_; // the first count_ in use
    int count_ = 0;
};

// Shrinks `settled` from the whole circle to the union of intervals the map
// sends onto itself; `settlingSteps` steps bring every point into it.
// False when that takes too many steps or intervals.
// Gives up after about maxWork interval images.
inline bool settle(const ArcMap &map, IntervalSet &settled, int &settlingSteps, int64_t maxWork)
{
    IntervalSet next;
    settled.setWhole(map.length);
    int64_t work = 0;
    for (settlingSteps = 0; work < maxWork; ++settlingSteps) {
        if (!next.imageOf(settled, map)) {
            return false;
        }
        if (next == settled) {
            return true;
        }
        work += next.count();
        settled = next;
    }
    return false;
}

// The first return of the map to `base`, as a map on a circle of its length
// (positions from base.lo), the hops of its longest return in `longest`.
// False when some point takes too long to return or the return needs too
// many arcs.
inline bool firstReturn(const ArcMap &map, const Interval &base, ArcMap &induced, uint64_t &longest)
{
    struct Piece {
        uint64_t from, length, at, weight, visits, hops; // source start, length, current start
    };
    constexpr int maxPieces = 64;
    constexpr uint64_t maxWork = uint64_t(1) << 10;
    std::array<Piece, maxPieces> travelling, returned;
    int numTravelling = 1, numReturned = 0;
    travelling[0] = {base.lo, base.hi - base.lo, base.lo, 0, 0, 0};
    for (uint64_t work = 0; numTravelling > 0; ++work) {
        if (work == maxWork) {
            return false;
        }
        Piece piece = travelling[size_t(--numTravelling)];
        const Arc &arc = map.at(piece.at);
        if (arc.shift != 0 && piece.hops > 0 && piece.at + piece.length <= arc.hi) {
            // Whole steps that keep a piece lying inside one arc there, and
            // short of the base, at once (it is outside the base after its
            // first step).
            const uint64_t down = map.length - arc.shift, top = piece.at + piece.length;
            const uint64_t upTo = base.lo >= top ? std::min(arc.hi, base.lo) : arc.hi;
            const uint64_t downTo = base.hi <= piece.at ? std::max(arc.lo, base.hi) : arc.lo;
            uint64_t run = top + arc.shift <= upTo ? (upTo - top) / arc.shift : 0;
            run = std::max(run, down <= piece.at - downTo ? (piece.at - downTo) / down : 0);
            if (run > 0) {
                piece.at = (piece.at + run % map.length * arc.shift) % map.length;
                piece.weight += run * arc.weight;
                piece.visits += run * arc.visits;
                piece.hops += run;
            }
        }
        // Cut where the arc ends, and where the image wraps or leaves the base.
        const uint64_t start = map.move(piece.at, arc);
        uint64_t length = std::min({piece.length, arc.hi - piece.at, map.length - start});
        const bool inBase = start >= base.lo && start < base.hi;
        length = std::min(length, inBase ? base.hi - start : (start < base.lo ? base.lo - start : length));
        if (piece.length > length) {
            if (numTravelling == maxPieces) {
                return false;
            }
            travelling[size_t(numTravelling++)] = {piece.from + length, piece.length - length, piece.at + length,
                                                   piece.weight, piece.visits, piece.hops};
        }
        const Piece moved{piece.from,          length, start, piece.weight + arc.weight, piece.visits + arc.visits,
                          piece.hops + 1};
        Piece *list = inBase ? returned.data() : travelling.data();
        int &count = inBase ? numReturned : numTravelling;
        if (count == maxPieces) {
            return false;
        }
        list[size_t(count++)] = moved;
    }
    std::sort(returned.begin(), returned.begin() + numReturned, [](const Piece &x, const Piece &y) { return x.from < y.from; });
    const uint64_t length = base.hi - base.lo;
    induced = ArcMap{};
    induced.length = length;
    longest = 0;
    for (int i = 0; i < numReturned; ++i) {
        const Piece &p = returned[size_t(i)];
        const uint64_t lo = p.from - base.lo, shift = (p.at - p.from + length) % length;
        longest = std::max(longest, p.hops);
        Arc *last = induced.count > 0 ? &induced.arcs[size_t(induced.count - 1)] : nullptr;
        // Neighbours that moved alike are one arc.
        if (last != nullptr && last->shift == shift && last->weight == p.weight && last->visits == p.visits) {
            last->hi = lo + p.length;
            continue;
        }
        if (induced.count == maxArcs) {
            return false;
        }
        induced.arcs[size_t(induced.count++)] = {lo, lo + p.length, shift, p.weight, p.visits};
    }
    return true;
}

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

// Takes as many steps of the map from p as fit the budget, in closed form
// through the structures above; false when none was found (p may have moved
// on consistently).
// The settled union and its rotation, when found: steps into the union and
// counts the returns. Kept apart so that its interval sets leave the stack
// before any deeper search.
enum class Tower { counted, notFound };
[[gnu::noinline]] inline Tower countOnSettledTower(const ArcMap &map, Progress &p, uint64_t budget, int64_t maxWork)
{
    IntervalSet settled;
    int settlingSteps = 0;
    if (!settle(map, settled, settlingSteps, maxWork)) {
        return Tower::notFound;
    }
    if (stepWhileFits(map, p, budget, uint64_t(settlingSteps)) < uint64_t(settlingSteps)) {
        return Tower::counted;
    }
    const Interval *base = settled.find(p.x);
    ArcMap rotation;
    uint64_t longest = 0;
    if (base == nullptr || !firstReturn(map, *base, rotation, longest) ||
        !std::all_of(rotation.arcs.begin(), rotation.arcs.begin() + rotation.count,
                     [&](const Arc &arc) { return arc.shift == rotation.arcs[0].shift; })) {
        return Tower::notFound;
    }
    countRotationReturns(rotation, base->lo, p, budget);
    // What is left is less than one return.
    return stepWhileFits(map, p, budget, longest + 1) <= longest ? Tower::counted : Tower::notFound;
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

inline bool advanceOnReturns(const ArcMap &map, Progress &p, uint64_t budget, int depth = 0)
{
    constexpr int maxDepth = 6;
    // A union that settles quickly is used at once; a fragmented one is
    // better left to the search on a shorter circle, and tried at length
    // only where that search fails.
    constexpr int64_t quickWork = int64_t(1) << 10, longWork = int64_t(1) << 18;
    if (map.length <= shortCircle) {
        countOnCycle(map, p, budget);
        return true;
    }
    if (countOnSettledTower(map, p, budget, quickWork) == Tower::counted) {
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
    return countOnSettledTower(map, p, budget, longWork) == Tower::counted;
}

} // namespace ornex::draw::edge_steps

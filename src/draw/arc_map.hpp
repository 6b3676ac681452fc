#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "draw/orbit_arithmetic.hpp"

namespace ornex::draw::edge_steps {

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
// False when that needs too many intervals or more than about maxWork
// interval images.
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

} // namespace ornex::draw::edge_steps

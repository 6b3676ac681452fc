#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace ornex::draw::edge_steps {

// The maps here take g to g + lowShift below split and to g + highShift
// from split on, modulo 2^31. A map of this kind that is not one-to-one
// sends the whole circle, after a few steps, onto a union of intervals that
// it permutes; on that union every point comes back to the interval it
// started in after one of two numbers of steps, rotated within it. That is
// what lets an orbit that switches sides at nearly every step be counted in
// closed form.

constexpr uint64_t circle = uint64_t(1) << 31;

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
// c, r, u below length, length at most 2^31, count at most 2^32.
inline uint64_t rotationHitsBelow(uint64_t c, uint64_t r, uint64_t u, uint64_t length, uint64_t count)
{
    // x mod length >= u exactly when floor((x + length - u) / length) exceeds floor(x / length).
    const uint64_t atOrAbove = floorSum(count, length, r, c + length - u) - floorSum(count, length, r, c);
    return count - atOrAbove;
}

struct OrbitMap {
    uint64_t split, lowShift, highShift;

    bool high(uint64_t g) const { return g >= split; }
    uint64_t operator()(uint64_t g) const { return (g + (high(g) ? highShift : lowShift)) & (circle - 1); }
};

struct Interval {
    uint64_t lo, hi; // [lo, hi), 0 <= lo < hi <= 2^31
    bool operator==(const Interval &) const = default;
};

// A union of disjoint intervals in increasing order, of bounded count.
class IntervalSet {
public:
    static constexpr int capacity = 1024;

    int count() const { return count_; }
    const Interval &operator[](int i) const { return intervals_[size_t(i)]; }
    bool operator==(const IntervalSet &other) const
    {
        return count_ == other.count_ && std::equal(intervals_.begin(), intervals_.begin() + count_, other.intervals_.begin());
    }

    // The image under the map, or false when it would need more intervals.
    bool imageOf(const IntervalSet &from, const OrbitMap &map)
    {
        // Each interval gives one piece per side of the split, and one piece
        // on either side may wrap.
        std::array<Interval, capacity + 4> pieces;
        int numPieces = 0;
        auto translated = [&](uint64_t lo, uint64_t hi, uint64_t shift) {
            const uint64_t start = (lo + shift) % circle, end = start + (hi - lo);
            if (end <= circle) {
                pieces[size_t(numPieces++)] = {start, end};
            } else {
                pieces[size_t(numPieces++)] = {start, circle};
                pieces[size_t(numPieces++)] = {0, end - circle};
            }
        };
        for (int i = 0; i < from.count_; ++i) {
            const Interval &v = from[i];
            if (v.lo < map.split) {
                translated(v.lo, std::min(v.hi, map.split), map.lowShift);
            }
            if (v.hi > map.split) {
                translated(std::max(v.lo, map.split), v.hi, map.highShift);
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

    void setWhole()
    {
        count_ = 1;
        intervals_[0] = {0, circle};
    }

    const Interval *find(uint64_t g) const
    {
        for (int i = 0; i < count_; ++i) {
            if (g >= intervals_[size_t(i)].lo && g < intervals_[size_t(i)].hi) {
                return &intervals_[size_t(i)];
            }
        }
        return nullptr;
    }

private:
    std::array<Interval, capacity> intervals_{};
    int count_ = 0;
};

// The first return of an interval to itself as a rotation: points below
// base + belowSplit come back after lowSteps steps with lowVisits of them
// at or above split and land belowSplit further on, cyclically; the others
// after highSteps with highVisits.
struct ReturnRotation {
    uint64_t base, length, belowSplit;
    uint64_t lowSteps, lowVisits, highSteps, highVisits;
};

// Follows the pieces of `base` until each is back in it, or returns false
// when the return is not a rotation of at most two pieces or takes too long.
inline bool returnRotation(const OrbitMap &map, const Interval &base, ReturnRotation &rotation)
{
    struct Piece {
        uint64_t from, length, at, steps, visits; // source start, length, current start
    };
    constexpr int maxPieces = 64;
    constexpr uint64_t maxWork = uint64_t(1) << 15;
    std::array<Piece, maxPieces> travelling, returned;
    int numTravelling = 0, numReturned = 0;
    travelling[0] = {base.lo, base.hi - base.lo, base.lo, 0, 0};
    numTravelling = 1;
    for (uint64_t work = 0; numTravelling > 0; ++work) {
        if (work == maxWork) {
            return false;
        }
        Piece piece = travelling[size_t(--numTravelling)];
        // Cut where the map changes and where the image wraps or leaves the base.
        uint64_t cut = piece.at + piece.length;
        if (piece.at < map.split && cut > map.split) {
            cut = map.split;
        }
        const uint64_t shift = map.high(piece.at) ? map.highShift : map.lowShift;
        const uint64_t start = (piece.at + shift) % circle;
        uint64_t length = std::min(cut - piece.at, circle - start);
        const bool inBase = start >= base.lo && start < base.hi;
        length = std::min(length, inBase ? base.hi - start : (start < base.lo ? base.lo - start : length));
        if (piece.length > length) {
            if (numTravelling == maxPieces) {
                return false;
            }
            travelling[size_t(numTravelling++)] = {piece.from + length, piece.length - length, piece.at + length,
                                                   piece.steps, piece.visits};
        }
        const Piece moved{piece.from, length, start, piece.steps + 1, piece.visits + (map.high(piece.at) ? 1 : 0)};
        Piece *list = inBase ? returned.data() : travelling.data();
        int &count = inBase ? numReturned : numTravelling;
        if (count == maxPieces) {
            return false;
        }
        list[size_t(count++)] = moved;
    }
    std::sort(returned.begin(), returned.begin() + numReturned, [](const Piece &x, const Piece &y) { return x.from < y.from; });
    // Neighbours that moved alike are one piece.
    int merged = 0;
    for (int i = 0; i < numReturned; ++i) {
        const Piece &p = returned[size_t(i)];
        Piece &last = returned[size_t(merged > 0 ? merged - 1 : 0)];
        if (merged > 0 && last.steps == p.steps && last.visits == p.visits && last.at + last.length == p.at) {
            last.length += p.length;
        } else {
            returned[size_t(merged++)] = p;
        }
    }
    const uint64_t length = base.hi - base.lo;
    rotation.base = base.lo;
    rotation.length = length;
    if (merged == 1 && returned[0].at == base.lo) {
        rotation.belowSplit = length;
        rotation.lowSteps = rotation.highSteps = returned[0].steps;
        rotation.lowVisits = rotation.highVisits = returned[0].visits;
        return true;
    }
    if (merged != 2) {
        return false;
    }
    const Piece &first = returned[0], &second = returned[1];
    if (first.at != base.lo + second.length || second.at != base.lo) {
        return false;
    }
    rotation.belowSplit = first.length;
    rotation.lowSteps = first.steps;
    rotation.lowVisits = first.visits;
    rotation.highSteps = second.steps;
    rotation.highVisits = second.visits;
    return true;
}

// Shrinks `settled` from the whole circle to the union of intervals the map
// sends onto itself; `settlingSteps` steps bring every point into it.
// False when that takes too many steps or intervals.
inline bool settle(const OrbitMap &map, IntervalSet &settled, int &settlingSteps, int maxSettlingSteps = 1 << 14)
{
    IntervalSet next;
    settled.setWhole();
    for (settlingSteps = 0; settlingSteps < maxSettlingSteps; ++settlingSteps) {
        if (!next.imageOf(settled, map)) {
            return false;
        }
        if (next == settled) {
            return true;
        }
        settled = next;
    }
    return false;
}

// Counts the points at or above split among the n points g, F(g), ...,
// F^(n-1)(g) and leaves g at F^n(g), stepping only a bounded number of
// points when the map settles onto a union of intervals returning as a
// rotation; otherwise every point is stepped.
inline uint64_t settledHighVisits(uint64_t &g, const OrbitMap &map, uint64_t n)
{
    uint64_t visits = 0;
    auto step = [&](uint64_t count) {
        for (; count > 0; --count, --n) {
            visits += map.high(g) ? 1 : 0;
            g = map(g);
        }
    };
    IntervalSet settled;
    int settlingSteps = 0;
    ReturnRotation r{};
    if (n > (uint64_t(1) << 32) || !settle(map, settled, settlingSteps) || n <= uint64_t(settlingSteps)) {
        step(n);
        return visits;
    }
    step(uint64_t(settlingSteps));
    const Interval *base = settled.find(g);
    if (base == nullptr || !returnRotation(map, *base, r)) {
        step(n);
        return visits;
    }
    const uint64_t start = g - r.base, turn = (r.length - r.belowSplit) % r.length;
    // Steps taken by the first k returns, increasing in k.
    auto stepsOf = [&](uint64_t k, uint64_t lowReturns) { return lowReturns * r.lowSteps + (k - lowReturns) * r.highSteps; };
    uint64_t fewest = 0, most = n / std::min(r.lowSteps, r.highSteps) + 1; // stepsOf(most) > n
    while (most - fewest > 1) {
        const uint64_t k = fewest + (most - fewest) / 2;
        (stepsOf(k, rotationHitsBelow(start, turn, r.belowSplit, r.length, k)) <= n ? fewest : most) = k;
    }
    const uint64_t lowReturns = rotationHitsBelow(start, turn, r.belowSplit, r.length, fewest);
    visits += lowReturns * r.lowVisits + (fewest - lowReturns) * r.highVisits;
    n -= stepsOf(fewest, lowReturns);
    g = r.base + (start + fewest % r.length * turn) % r.length;
    step(n);
    return visits;
}

} // namespace ornex::draw::edge_steps

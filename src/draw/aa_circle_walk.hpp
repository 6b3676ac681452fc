#pragma once

#include <cstdint>

#include "frame/clip_rectangle.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {

// The midpoint walk of one octant: x goes to rows and y to columns, x grows
// by one per step and y drops by one when the decision value d is not
// negative. Every value wraps in 32 bits.
struct OctantWalk {
    int32_t x, y, d;

    void step()
    {
        if (d >= 0) {
            d = wrapAdd(d, wrapAdd(wrapMul(4, wrapSub(x, y)), 10));
            y = wrapSub(y, 1);
        } else {
            d = wrapAdd(d, wrapAdd(wrapMul(4, x), 6));
        }
        x = wrapAdd(x, 1);
    }

    // Steps while x < y and x < target, drawing nothing. Returns whether the
    // walk reached target (false: it ended before).
    bool advanceTo(int64_t target)
    {
        if (x >= 1 && y <= exactLimit && target - x > 16) {
            advanceExactly(target);
        }
        while (x < y && x < target) {
            step();
        }
        return x == target;
    }

private:
    // Below this y no value of the walk wraps: |d| stays under 4y + 10.
    static constexpr int32_t exactLimit = (1 << 29) - 64;

    // d - D(x, y) stays constant along the walk, D(x, y) = 2(x + 1)^2 +
    // y^2 + (y - 1)^2: a step right adds 4x + 6, a step down-right
    // 4(x - y) + 10. With 1 <= x < y <= exactLimit no sum wraps, so the walk
    // is the exact one and its runs and its track have closed forms.
    static int64_t shape(int64_t x, int64_t y) { return 2 * (x + 1) * (x + 1) + y * y + (y - 1) * (y - 1); }

    // The smallest k in [1, most] with done(k), or most + 1 if none; done
    // must be monotone.
    template <class Done>
    static int64_t firstStep(int64_t most, const Done &done)
    {
        int64_t lo = 1, hi = most + 1;
        while (lo < hi) {
            const int64_t mid = lo + (hi - lo) / 2;
            if (done(mid)) {
                hi = mid;
            } else {
                lo = mid + 1;
            }
        }
        return lo;
    }

    // Jumps the whole runs and the stretch where the walk follows its track,
    // stopping at target or a few steps before the walk ends; the caller
    // steps the rest.
    void advanceExactly(int64_t target)
    {
        int64_t cx = x, cy = y, cd = d;
        if (cd < 0) {
            // Right steps until d turns non-negative: k of them add
            // 2k^2 + (4x + 4)k. The walk then lies on its track.
            const int64_t most = (target < cy ? target : cy) - cx;
            const int64_t k = firstStep(most, [&](int64_t n) { return cd + 2 * n * n + (4 * cx + 4) * n >= 0; });
            const int64_t taken = k > most ? most : k;
            cd += 2 * taken * taken + (4 * cx + 4) * taken;
            cx += taken;
            if (k > most) {
                store(cx, cy, cd);
                return;
            }
        } else {
            // Down-right steps until d turns negative: k of them add
            // 4k^2 + (4(x - y) + 6)k, each step falling while y - x >= 3.
            // The walk then lies on its track.
            const int64_t falling = cy - cx >= 3 ? (cy - cx - 3) / 2 + 1 : 0;
            const int64_t most = target - cx < falling ? target - cx : falling;
            const int64_t k =
                firstStep(most, [&](int64_t n) { return cd + 4 * n * n + (4 * (cx - cy) + 6) * n < 0; });
            const int64_t taken = k > most ? most : k;
            cd += 4 * taken * taken + (4 * (cx - cy) + 6) * taken;
            cx += taken;
            cy -= taken;
            if (k > most) {
                store(cx, cy, cd);
                return;
            }
        }
        if (cx >= target || cx >= cy) {
            store(cx, cy, cd);
            return;
        }
        // On the track: y at x is the largest y' >= 1 with
        // C + D(x - 1, y') < 0, as long as each step starts two or more
        // below the diagonal (y >= x + 2), where a step down-right cannot
        // leave the track.
        const int64_t c = cd - shape(cx, cy);
        const int64_t top = cy;
        auto track = [&](int64_t at) {
            const int64_t fromTop = firstStep(top, [&](int64_t n) { return c + shape(at - 1, top + 1 - n) < 0; });
            return top + 1 - fromTop;
        };
        const int64_t most = target - cx;
        const int64_t beyond = firstStep(most, [&](int64_t n) { return track(cx + n - 1) < cx + n + 1; });
        const int64_t reach = cx + beyond - 1;
        if (reach > cx) {
            const int64_t ty = track(reach);
            store(reach, ty, c + shape(reach, ty));
        } else {
            store(cx, cy, cd);
        }
    }

    void store(int64_t nx, int64_t ny, int64_t nd)
    {
        x = int32_t(nx);
        y = int32_t(ny);
        d = int32_t(nd);
    }
};

// The steps whose points can reach the rectangle. Every point a step at x
// writes has its row at cr + x or cr - x, or its column at cc + x or
// cc - x (wrapped), so only x inside one of those four windows can draw.
class VisibleSteps {
public:
    VisibleSteps(int32_t cr, int32_t cc, const ClipRectangle &rect)
        : windows_{{cr, rect.rowMin, rect.rowMax}, {cc, rect.colMin, rect.colMax}}
    {
    }

    // The first x' >= x that some window holds, and, when that is x itself,
    // the last x'' such that x .. x'' all lie in one window.
    struct Next {
        int64_t first, lastOfRun;
    };
    Next from(int64_t x) const
    {
        Next next{INT64_MAX, x};
        for (const Window &w : windows_) {
            if (w.low > w.high) {
                continue;
            }
            const uint32_t span = uint32_t(w.high) - uint32_t(w.low);
            // cc + x - low, growing with x; cc - x - low, falling with x.
            const uint32_t up = uint32_t(w.centre) + uint32_t(x) - uint32_t(w.low);
            const uint32_t down = uint32_t(w.centre) - uint32_t(x) - uint32_t(w.low);
            const int64_t upFirst = up <= span ? x : x + (int64_t(1) << 32) - up;
            const int64_t downFirst = down <= span ? x : x + down - span;
            if (upFirst == x && x + int64_t(span - up) > next.lastOfRun) {
                next.lastOfRun = x + int64_t(span - up);
            }
            if (downFirst == x && x + int64_t(down) > next.lastOfRun) {
                next.lastOfRun = x + int64_t(down);
            }
            next.first = upFirst < next.first ? upFirst : next.first;
            next.first = downFirst < next.first ? downFirst : next.first;
        }
        return next;
    }

private:
    struct Window {
        int32_t centre, low, high;
    };
    Window windows_[2];
};

} // namespace ornex::draw

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "draw/column_sweep.hpp"

namespace {

using namespace ornex::draw;
using namespace ornex::draw::edge_steps;

int64_t uniform64(std::mt19937 &rng, int64_t low, int64_t high)
{
    return std::uniform_int_distribution<int64_t>(low, high)(rng);
}

// The map an edge's error term follows, as the fillers build it.
ArcMap edgeMap(int32_t rowDelta, int32_t scanLength, int32_t rowStep)
{
    const EdgeErrorMap map = edgeErrorMap(rowDelta, scanLength, rowStep);
    return edgeOrbitMap(map.split, map.lowShift, map.highShift);
}

// Row deltas and spans from a few columns to all of 32 bits, most of them
// beyond 2^30, where doubling the error term wraps.
void randomEdge(std::mt19937 &rng, int32_t &rowDelta, int32_t &scanLength, int32_t &rowStep)
{
    const int64_t reach = rng() % 4 == 0 ? int64_t(1) << uniform64(rng, 4, 30) : INT32_MAX;
    scanLength = int32_t(uniform64(rng, rng() % 4 == 0 ? 1 : reach / 2, reach));
    rowDelta = int32_t(uniform64(rng, -reach, reach));
    rowStep = int32_t((rowDelta < 0 ? -int64_t(rowDelta) : rowDelta) / scanLength);
    if (rng() % 8 == 0) { // a column span past 2^31 wraps negative and keeps a stale row step
        scanLength = int32_t(rng());
        rowStep = int32_t(rng());
    }
}

// Many columns at once against one column at a time, edge by edge.
TEST(EdgeSteps, FarEdgesJumpToTheRowOfTheColumnWalk)
{
    std::mt19937 rng(31);
    for (int trial = 0; trial < 160; ++trial) {
        int32_t record[edgeFieldCount] = {};
        randomEdge(rng, record[rowDeltaField], record[scanLengthField], record[rowStepField]);
        record[errorTermField] = int32_t(rng());
        record[currentRowField] = int32_t(rng());
        int32_t jumped[edgeFieldCount];
        std::copy(record, record + edgeFieldCount, jumped);
        ActiveEdges<> walk(record, 1, nullptr, 1), jump(jumped, 1, nullptr, 1);
        const auto steps = uint64_t(uniform64(rng, 0, trial % 8 == 0 ? 1 << 22 : 1 << 18));
        for (uint64_t k = 0; k < steps; ++k) {
            walk.advance();
        }
        jump.advanceBy(steps);
        ASSERT_EQ(jumped[currentRowField], record[currentRowField]) << "trial " << trial << " steps " << steps;
        ASSERT_EQ(jumped[errorTermField], record[errorTermField]) << "trial " << trial;
    }
}

// Maps of every kind (one-to-one or not, shifts and splits at the ends of the
// circle), counted through their returns and by the whole jump, against
// stepping point by point.
TEST(EdgeSteps, ReturnsCountLikeStepping)
{
    std::mt19937 rng(32);
    int counted = 0, farEdges = 0;
    for (int trial = 0; trial < 400; ++trial) {
        uint64_t split = 0, lowShift = 0, highShift = 0;
        int32_t rowDelta = 0, scanLength = 0, rowStep = 0;
        if (trial % 2 == 0) {
            randomEdge(rng, rowDelta, scanLength, rowStep);
            const ArcMap edge = edgeMap(rowDelta, scanLength, rowStep);
            split = edge.count == 2 ? edge.arcs[0].hi : edge.arcs[0].visits ? 0 : circle;
            lowShift = edge.arcs[0].shift;
            highShift = edge.arcs[edge.count - 1].shift;
        } else {
            const uint64_t ends[4] = {0, 1, circle - 1, circle};
            split = trial % 7 == 1 ? ends[rng() % 4] : rng() % circle;
            lowShift = trial % 5 == 1 ? ends[rng() % 3] : rng() % circle;
            highShift = trial % 9 == 1 ? lowShift : rng() % circle;
        }
        const uint64_t start = rng() % circle, n = uint64_t(uniform64(rng, 0, 1 << 19));
        uint64_t stepped = start, steppedVisits = 0;
        for (uint64_t k = 0; k < n; ++k) {
            const bool above = stepped >= split;
            steppedVisits += above ? 1 : 0;
            stepped = (stepped + (above ? highShift : lowShift)) % circle;
        }
        uint64_t g = start;
        ASSERT_EQ(highVisits(g, split, lowShift, highShift, n), steppedVisits) << "trial " << trial;
        ASSERT_EQ(g, stepped) << "trial " << trial;

        Progress progress{start, 0, 0};
        const bool found = advanceOnReturns(edgeOrbitMap(split, lowShift, highShift), progress, n);
        const bool farEdge = scanLength >= int32_t(1) << 30;
        farEdges += farEdge ? 1 : 0;
        counted += farEdge && found ? 1 : 0;
        if (found) {
            ASSERT_EQ(progress.used, n) << "trial " << trial;
            ASSERT_EQ(progress.visits, steppedVisits) << "trial " << trial;
            ASSERT_EQ(progress.x, stepped) << "trial " << trial;
        }
    }
    // The closed forms must carry the far edges, not the stepping behind them.
    EXPECT_GT(counted, farEdges * 9 / 10) << counted << " of " << farEdges;
}

// First returns to an arc or to a piece of the settled union, point by point.
TEST(EdgeSteps, FirstReturnsMatchPointByPoint)
{
    std::mt19937 rng(33);
    int checked = 0;
    for (int trial = 0; trial < 300; ++trial) {
        int32_t rowDelta, scanLength, rowStep;
        randomEdge(rng, rowDelta, scanLength, rowStep);
        const ArcMap map = edgeMap(rowDelta, scanLength, rowStep);
        IntervalSet settled;
        int settlingSteps = 0;
        Interval base{map.arcs[0].lo, map.arcs[0].hi};
        if (trial % 2 == 0 && settle(map, settled, settlingSteps, 1 << 12)) {
            base = settled[int(rng() % uint32_t(settled.count()))];
        }
        ArcMap induced;
        uint64_t longest = 0;
        if (!firstReturn(map, base, induced, longest)) {
            continue;
        }
        ++checked;
        for (int k = 0; k < 20; ++k) {
            const uint64_t x = base.lo + rng() % (base.hi - base.lo);
            uint64_t at = x, steps = 0, visits = 0;
            do {
                const Arc &arc = map.at(at);
                visits += arc.visits;
                at = map.move(at, arc);
                ++steps;
            } while (at < base.lo || at >= base.hi);
            const Arc &arc = induced.at(x - base.lo);
            ASSERT_EQ(arc.weight, steps) << "trial " << trial << " x " << x;
            ASSERT_EQ(arc.visits, visits) << "trial " << trial << " x " << x;
            ASSERT_EQ(induced.move(x - base.lo, arc), at - base.lo) << "trial " << trial << " x " << x;
            ASSERT_LE(steps, longest);
        }
    }
    EXPECT_GT(checked, 200);
}

} // namespace

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
OrbitMap edgeMap(int32_t rowDelta, int32_t scanLength, int32_t rowStep)
{
    const int32_t stepped = ornex::wrapMul(rowStep, scanLength);
    if (rowDelta > 0) {
        const int32_t added = ornex::wrapSub(rowDelta, stepped);
        return {uint64_t(ceilHalf(scanLength) + (int64_t(1) << 30)), uint32_t(added) % circle,
                uint32_t(ornex::wrapSub(added, scanLength)) % circle};
    }
    const int32_t added = ornex::wrapAdd(stepped, rowDelta);
    return {uint64_t(ceilHalf(ornex::wrapNeg(scanLength)) + (int64_t(1) << 30)),
            uint32_t(ornex::wrapAdd(added, scanLength)) % circle, uint32_t(added) % circle};
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
// circle), counted on the set they settle onto or stepped, against stepping.
TEST(EdgeSteps, SettledOrbitsCountLikeStepping)
{
    std::mt19937 rng(32);
    int settledAsRotation = 0, edgeMaps = 0;
    for (int trial = 0; trial < 400; ++trial) {
        OrbitMap map{};
        int32_t rowDelta = 0, scanLength = 0, rowStep = 0;
        if (trial % 2 == 0) {
            randomEdge(rng, rowDelta, scanLength, rowStep);
            map = edgeMap(rowDelta, scanLength, rowStep);
        } else {
            const uint64_t ends[4] = {0, 1, circle - 1, circle};
            map.split = trial % 7 == 1 ? ends[rng() % 4] : rng() % circle;
            map.lowShift = trial % 5 == 1 ? ends[rng() % 3] : rng() % circle;
            map.highShift = trial % 9 == 1 ? map.lowShift : rng() % circle;
        }
        IntervalSet settled;
        int settlingSteps = 0;
        ReturnRotation rotation{};
        const bool counted = settle(map, settled, settlingSteps) && returnRotation(map, settled[0], rotation);
        const bool farEdge = scanLength >= int32_t(1) << 30;
        edgeMaps += farEdge ? 1 : 0;
        settledAsRotation += farEdge && counted ? 1 : 0;

        uint64_t start = rng() % circle, g = start, stepped = start, steppedVisits = 0;
        const auto n = uint64_t(uniform64(rng, 0, 1 << 19));
        for (uint64_t k = 0; k < n; ++k) {
            steppedVisits += map.high(stepped) ? 1 : 0;
            stepped = map(stepped);
        }
        ASSERT_EQ(settledHighVisits(g, map, n), steppedVisits) << "trial " << trial << " start " << start;
        ASSERT_EQ(g, stepped) << "trial " << trial;
    }
    // The closed form must carry the far edges, not the stepping behind it.
    EXPECT_GT(settledAsRotation, edgeMaps * 8 / 10) << settledAsRotation << " of " << edgeMaps;
}

} // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T>
using SearchFunction = void (*)(const T *, const T *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                int32_t *, int32_t *);

template <class Element, bool isSquared, SearchFunction<Element> function>
struct Member {
    using T = Element;
    static constexpr bool squared = isSquared;
    static constexpr SearchFunction<Element> search = function;
};

using FullMembers = ::testing::Types<Member<double, false, ORNEX_SearchMethod_Full_MAD_D>,
                                     Member<float, false, ORNEX_SearchMethod_Full_MAD_R>,
                                     Member<double, true, ORNEX_SearchMethod_Full_MSE_D>,
                                     Member<float, true, ORNEX_SearchMethod_Full_MSE_R>>;
using ThreeStepMembers = ::testing::Types<Member<double, false, ORNEX_SearchMethod_3Step_MAD_D>,
                                          Member<float, false, ORNEX_SearchMethod_3Step_MAD_R>,
                                          Member<double, true, ORNEX_SearchMethod_3Step_MSE_D>,
                                          Member<float, true, ORNEX_SearchMethod_3Step_MSE_R>>;

// A column-major plane.
template <class T>
struct Plane {
    int32_t rows;
    int32_t cols;
    std::vector<T> values;

    Plane(int32_t rowCount, int32_t colCount, T fill = T(0))
        : rows(rowCount), cols(colCount), values(static_cast<size_t>(rowCount) * colCount, fill)
    {
    }
    T &at(int32_t r, int32_t c) { return values[r + static_cast<size_t>(c) * rows]; }
    const T *pointerTo(int32_t r, int32_t c) const { return values.data() + r + static_cast<size_t>(c) * rows; }
};

struct Offset {
    int32_t col;
    int32_t row;
    bool operator==(const Offset &) const = default;
};

void PrintTo(const Offset &offset, std::ostream *out)
{
    *out << "(col " << offset.col << ", row " << offset.row << ")";
}

// Where a search sits: the block and region windows inside larger planes, so
// that strides differ from the window heights.
struct Window {
    int32_t top;
    int32_t left;
    int32_t rows;
    int32_t cols;
};

template <class M>
Offset runSearch(const Plane<typename M::T> &blockPlane, Window block, const Plane<typename M::T> &regionPlane,
                 Window region, Offset initial = {-77, -77})
{
    Offset best = initial;
    M::search(blockPlane.pointerTo(block.top, block.left), regionPlane.pointerTo(region.top, region.left),
              blockPlane.rows, regionPlane.rows, block.cols, block.rows, region.cols, region.rows, &best.col,
              &best.row);
    return best;
}

// The cost written out plainly: columns outer, rows inner, each step in T.
template <class T>
T slowCost(bool squared, const Plane<T> &blockPlane, Window block, const Plane<T> &regionPlane, Window region,
           int32_t row, int32_t col)
{
    T sum = 0;
    for (int32_t c = 0; c < block.cols; ++c) {
        for (int32_t r = 0; r < block.rows; ++r) {
            const T regionValue = *regionPlane.pointerTo(region.top + row + r, region.left + col + c);
            const T blockValue = *blockPlane.pointerTo(block.top + r, block.left + c);
            const T difference = regionValue - blockValue;
            const T term = squared ? difference * difference : std::fabs(difference);
            sum = sum + term;
        }
    }
    return sum;
}

// A 1x1 zero block over a region whose values are the costs themselves, so a
// test can lay out the cost of every candidate by hand.
template <class M>
Offset searchLandscape(const Plane<typename M::T> &costs)
{
    const Plane<typename M::T> block(1, 1);
    return runSearch<M>(block, {0, 0, 1, 1}, costs, {0, 0, costs.rows, costs.cols});
}

template <class T>
void fillRandom(Plane<T> &plane, std::mt19937 &random, bool smallIntegers)
{
    std::uniform_int_distribution<int> small(0, 3);
    std::uniform_real_distribution<double> real(-1000.0, 1000.0);
    for (T &value : plane.values) {
        value = smallIntegers ? T(small(random)) : T(real(random));
    }
}

template <class M>
class FullSearch : public ::testing::Test {};
TYPED_TEST_SUITE(FullSearch, FullMembers);

template <class M>
class ThreeStepSearch : public ::testing::Test {};
TYPED_TEST_SUITE(ThreeStepSearch, ThreeStepMembers);

TYPED_TEST(FullSearch, AgreesWithSlowScanOverManySizes)
{
    using T = typename TypeParam::T;
    std::mt19937 random(1234);
    for (bool smallIntegers : {true, false}) {
        for (int32_t blockRows = 1; blockRows <= 4; ++blockRows) {
            for (int32_t blockCols = 1; blockCols <= 3; ++blockCols) {
                // Every remainder of the pack widths, and columns taller
                // than the kernels keep costs for at once.
                for (int32_t candidateRows : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
                                              20, 25, 31, 33, 64, 129, 150}) {
                    const int32_t candidateCols = 1 + (candidateRows + blockCols) % 4;
                    const Window block{2, 1, blockRows, blockCols};
                    const Window region{3, 2, blockRows + candidateRows - 1, blockCols + candidateCols - 1};
                    Plane<T> blockPlane(blockRows + 5, blockCols + 2);
                    Plane<T> regionPlane(region.rows + 4, region.cols + 3);
                    fillRandom(blockPlane, random, smallIntegers);
                    fillRandom(regionPlane, random, smallIntegers);

                    Offset expected{0, 0};
                    T bestCost = std::numeric_limits<T>::max();
                    for (int32_t col = 0; col < candidateCols; ++col) {
                        for (int32_t row = 0; row < candidateRows; ++row) {
                            const T cost = slowCost(TypeParam::squared, blockPlane, block, regionPlane, region, row, col);
                            if (cost < bestCost) {
                                bestCost = cost;
                                expected = {col, row};
                            }
                        }
                    }
                    ASSERT_EQ(runSearch<TypeParam>(blockPlane, block, regionPlane, region), expected)
                        << "block " << blockRows << "x" << blockCols << ", candidates " << candidateRows << "x"
                        << candidateCols << (smallIntegers ? ", small integers" : ", reals");
                }
            }
        }
    }
}

TYPED_TEST(FullSearch, TiesGoToLowestColumnThenLowestRow)
{
    using T = typename TypeParam::T;
    // A 2x2 block planted three times in a region that matches it nowhere
    // else: at (row 6, col 1), (row 4, col 1) and (row 1, col 2).
    Plane<T> block(2, 2);
    block.at(0, 0) = 1;
    block.at(1, 0) = 2;
    block.at(0, 1) = 3;
    block.at(1, 1) = 4;
    Plane<T> region(10, 6, T(50));
    for (Offset plant : {Offset{1, 6}, Offset{1, 4}, Offset{2, 1}}) {
        for (int32_t c = 0; c < 2; ++c) {
            for (int32_t r = 0; r < 2; ++r) {
                region.at(plant.row + r, plant.col + c) = block.at(r, c);
            }
        }
    }
    EXPECT_EQ(runSearch<TypeParam>(block, {0, 0, 2, 2}, region, {0, 0, 10, 6}), (Offset{1, 4}));

    // Everything equal: the very first candidate.
    const Plane<T> flat(10, 6, T(7));
    const Plane<T> flatBlock(2, 2, T(7));
    EXPECT_EQ(runSearch<TypeParam>(flatBlock, {0, 0, 2, 2}, flat, {0, 0, 10, 6}), (Offset{0, 0}));
}

TYPED_TEST(FullSearch, OnlyStrictlySmallerFiniteCostsReplaceTheBest)
{
    using T = typename TypeParam::T;
    const T nan = std::numeric_limits<T>::quiet_NaN();
    const T infinity = std::numeric_limits<T>::infinity();

    Plane<T> costs(3, 1);
    costs.values = {T(5), T(1), nan};
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{0, 1}));

    costs.values = {nan, nan, nan};
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{0, 0}));

    // An infinite cost is not below the largest finite value.
    costs.values = {infinity, infinity, T(3)};
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{0, 2}));
    costs.values = {infinity, infinity, infinity};
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{0, 0}));
}

TYPED_TEST(FullSearch, WritesZerosWhenNothingFits)
{
    using T = typename TypeParam::T;
    const Plane<T> block(4, 4, T(1));
    const Plane<T> region(6, 6, T(2));
    // Region narrower than the block: no column offset at all.
    EXPECT_EQ(runSearch<TypeParam>(block, {0, 0, 4, 4}, region, {0, 0, 6, 3}), (Offset{0, 0}));
    // Region shorter than the block: columns fit, rows do not, nothing scored.
    EXPECT_EQ(runSearch<TypeParam>(block, {0, 0, 4, 4}, region, {0, 0, 3, 6}), (Offset{0, 0}));
    // Region exactly the block.
    EXPECT_EQ(runSearch<TypeParam>(block, {0, 0, 4, 4}, region, {1, 1, 4, 4}), (Offset{0, 0}));
}

// The running sum is rounded to the member's precision after every addition.
// Candidate 0 covers rows 0..2 of a one-column region, candidate 1 rows 1..3,
// against a zero block; in single precision 2^24 + 1 + 1 stays at 2^24, so
// candidate 0 ties candidate 1 and wins, while exact sums prefer candidate 1.
TYPED_TEST(FullSearch, SumsRoundInTheMembersPrecision)
{
    using T = typename TypeParam::T;
    const double last = TypeParam::squared ? 4095.999755859375 : 16777215.0;
    const double first = TypeParam::squared ? 4096.0 : 16777216.0;
    Plane<T> region(4, 1);
    region.values = {T(first), T(1), T(1), T(last)};
    const Plane<T> block(3, 1);

    auto pick = [&](auto zero) {
        using Sum = decltype(zero);
        Sum cost[2] = {0, 0};
        for (int32_t candidate = 0; candidate < 2; ++candidate) {
            for (int32_t r = 0; r < 3; ++r) {
                const Sum value = Sum(region.values[candidate + r]);
                cost[candidate] = cost[candidate] + (TypeParam::squared ? value * value : value);
            }
        }
        return cost[1] < cost[0] ? 1 : 0;
    };
    ASSERT_EQ(pick(0.0f), 0);
    ASSERT_EQ(pick(0.0), 1);
    EXPECT_EQ(runSearch<TypeParam>(block, {0, 0, 3, 1}, region, {0, 0, 4, 1}).row, pick(T(0)));
}

TYPED_TEST(ThreeStepSearch, FlatRegionKeepsTheFirstGridCorner)
{
    using T = typename TypeParam::T;
    // 15x15 candidates: the first grid is rows and columns 3, 7, 11, and its
    // top-left corner is scored first. Equal costs never replace it.
    EXPECT_EQ(searchLandscape<TypeParam>(Plane<T>(15, 15, T(8))), (Offset{3, 3}));
    // 15 rows, 5 columns: step min(7, 2)/2 + 1 = 2 around (7, 2).
    EXPECT_EQ(searchLandscape<TypeParam>(Plane<T>(15, 5, T(8))), (Offset{0, 5}));
}

TYPED_TEST(ThreeStepSearch, StepShrinksByOneAndGridMovesInwardAtTopLeft)
{
    using T = typename TypeParam::T;
    Plane<T> costs(15, 15, T(50));
    // Steps 4, 3, 2, 1. Round 1 grid {3,7,11}^2 finds (3,3); round 2 around
    // it with step 3 is {0,3,6}^2 and finds (0,6); round 3 with step 2 has
    // rows {0,2,4} (moved inward) and columns {4,6,8}, finding (4,8); round
    // 4 with step 1 finds (5,9).
    costs.at(3, 3) = 40;
    costs.at(0, 6) = 30;
    costs.at(4, 8) = 20;
    costs.at(5, 9) = 10;
    // Never visited by that schedule: lower costs a halving step or a
    // centred, cut grid would find.
    costs.at(1, 1) = 0;
    costs.at(5, 5) = 0;
    costs.at(2, 10) = 0;
    costs.at(14, 0) = 0;
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{9, 5}));
}

TYPED_TEST(ThreeStepSearch, GridIsClampedAtBottomRight)
{
    using T = typename TypeParam::T;
    Plane<T> costs(15, 15, T(50));
    // Round 1 finds (11,11); round 2 grid {8,11,14}^2 finds (14,14); round 3
    // grid {12,14,14}^2 finds (12,14); round 4 rows {11,12,13}, columns
    // {13,14,14} finds (13,13).
    costs.at(11, 11) = 40;
    costs.at(14, 14) = 30;
    costs.at(12, 14) = 20;
    costs.at(13, 13) = 10;
    costs.at(10, 14) = 0;
    costs.at(14, 10) = 0;
    costs.at(0, 0) = 0;
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{13, 13}));

    // 15 rows by 5 columns, steps 2 and 1: rows {5,7,9} by columns {0,2,4}
    // find (9,4); then rows {8,9,10} by columns {3,4,4} find (10,3).
    Plane<T> narrow(15, 5, T(50));
    narrow.at(9, 4) = 30;
    narrow.at(10, 3) = 10;
    narrow.at(11, 4) = 0;
    narrow.at(0, 0) = 0;
    EXPECT_EQ(searchLandscape<TypeParam>(narrow), (Offset{3, 10}));
}

TYPED_TEST(ThreeStepSearch, FirstScoredCandidateIsTakenWhateverItsCost)
{
    using T = typename TypeParam::T;
    Plane<T> costs(15, 15, T(50));
    costs.at(3, 3) = std::numeric_limits<T>::quiet_NaN();
    costs.at(7, 7) = 0;
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{3, 3}));

    // A cost above the largest finite value still becomes the first best.
    costs.at(3, 3) = std::numeric_limits<T>::infinity();
    EXPECT_EQ(searchLandscape<TypeParam>(costs), (Offset{7, 7}));
}

TYPED_TEST(ThreeStepSearch, SmallRegions)
{
    using T = typename TypeParam::T;
    // Region equal to the block: step 1, only (0,0).
    const Plane<T> block(3, 3, T(1));
    const Plane<T> region(3, 3, T(4));
    EXPECT_EQ(runSearch<TypeParam>(block, {0, 0, 3, 3}, region, {0, 0, 3, 3}), (Offset{0, 0}));

    // A block four rows taller than the region: nR = -4 gives step 0, and
    // nothing is written.
    const Plane<T> tall(6, 1, T(1));
    const Plane<T> single(1, 1, T(4));
    EXPECT_EQ(runSearch<TypeParam>(tall, {0, 0, 6, 1}, single, {0, 0, 1, 1}), (Offset{-77, -77}));
}

TYPED_TEST(ThreeStepSearch, FindsShiftsOnTheFirstGrid)
{
    using T = typename TypeParam::T;
    // An exact match (cost zero) on the first round's grid is kept against
    // every later candidate, which can only tie it. With 15x15 candidates
    // the grid is rows and columns 3, 7, 11; 7 is no motion.
    std::mt19937 random(99);
    Plane<T> image(50, 50);
    fillRandom(image, random, false);
    for (int32_t row : {3, 7, 11}) {
        for (int32_t col : {3, 7, 11}) {
            const Window region{17 - row, 21 - col, 30, 30};
            EXPECT_EQ(runSearch<TypeParam>(image, {17, 21, 16, 16}, image, region), (Offset{col, row}));
        }
    }
}

// The three-step search written plainly from its description, candidate by
// candidate, to check the cost sums and the comparison order on data where
// rounding and ties matter.
template <class M>
Offset slowThreeStep(const Plane<typename M::T> &blockPlane, Window block, const Plane<typename M::T> &regionPlane,
                     Window region)
{
    using T = typename M::T;
    const int32_t nR = region.rows - block.rows + 1;
    const int32_t nC = region.cols - block.cols + 1;
    int32_t centreRow = nR / 2;
    int32_t centreCol = nC / 2;
    Offset best{-77, -77};
    bool scored = false;
    T bestCost = 0;
    for (int32_t step = std::min(nR / 2, nC / 2) / 2 + 1; step >= 1; --step) {
        int32_t col = std::max(0, centreCol - step);
        for (int32_t k = 0; k < 3; ++k) {
            int32_t row = std::max(0, centreRow - step);
            for (int32_t l = 0; l < 3; ++l) {
                const T cost = slowCost(M::squared, blockPlane, block, regionPlane, region, row, col);
                if (!scored || cost < bestCost) {
                    scored = true;
                    bestCost = cost;
                    best = {col, row};
                }
                row = std::min(row + step, nR - 1);
            }
            col = std::min(col + step, nC - 1);
        }
        centreRow = best.row;
        centreCol = best.col;
    }
    return best;
}

TYPED_TEST(ThreeStepSearch, AgreesWithSlowSearchOnRandomInputs)
{
    using T = typename TypeParam::T;
    std::mt19937 random(4321);
    std::uniform_int_distribution<int32_t> blockSize(1, 9);
    std::uniform_int_distribution<int32_t> candidates(1, 24);
    for (int trial = 0; trial < 300; ++trial) {
        const bool smallIntegers = trial % 2 == 0;
        const Window block{1, 2, blockSize(random), blockSize(random)};
        const Window region{2, 1, block.rows + candidates(random) - 1, block.cols + candidates(random) - 1};
        Plane<T> blockPlane(block.rows + 3, block.cols + 4);
        Plane<T> regionPlane(region.rows + 5, region.cols + 2);
        fillRandom(blockPlane, random, smallIntegers);
        fillRandom(regionPlane, random, smallIntegers);
        ASSERT_EQ(runSearch<TypeParam>(blockPlane, block, regionPlane, region),
                  slowThreeStep<TypeParam>(blockPlane, block, regionPlane, region))
            << "trial " << trial;
    }
}

} // namespace

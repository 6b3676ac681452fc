#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class Element, bool isFull, bool isSquared, auto function>
struct Member {
    using T = Element;
    static constexpr bool full = isFull, squared = isSquared;
    static constexpr auto search = function;
};
#define ORNEX_MEMBERS(S, full)                                                                                     \
    Member<double, full, false, ORNEX_SearchMethod_##S##_MAD_D>, Member<float, full, false, ORNEX_SearchMethod_##S##_MAD_R>, \
        Member<double, full, true, ORNEX_SearchMethod_##S##_MSE_D>, Member<float, full, true, ORNEX_SearchMethod_##S##_MSE_R>
using Members = ::testing::Types<ORNEX_MEMBERS(Full, true), ORNEX_MEMBERS(3Step, false)>;
template <class M>
class BlockSearch : public ::testing::Test {};
TYPED_TEST_SUITE(BlockSearch, Members);

using Offset = std::array<int32_t, 2>; // column, row

template <class T> // rows x cols elements from `first` in a column-major plane of `stride` rows
struct Window { const T *first; int32_t stride, rows, cols; };

template <class M, class T = typename M::T>
Offset search(const Window<T> &b, const Window<T> &r, Offset best = {-77, -77})
{
    return M::search(b.first, r.first, b.stride, r.stride, b.cols, b.rows, r.cols, r.rows, &best[0], &best[1]), best;
}

// Both searches written plainly: each cost summed in T, columns outer and rows inner; a strictly smaller cost
// replaces the best (so a NaN never does, but the three-step search takes its first candidate whatever its cost).
template <class M, class T = typename M::T>
Offset slowSearch(const Window<T> &block, const Window<T> &region)
{
    const int32_t nR = region.rows - block.rows + 1, nC = region.cols - block.cols + 1;
    bool scored = M::full;
    T bestCost = std::numeric_limits<T>::max();
    Offset best = M::full ? Offset{0, 0} : Offset{-77, -77}, centre{nC / 2, nR / 2};
    auto offer = [&](int32_t i, int32_t j) {
        T cost = 0;
        for (int32_t p = 0, r = 0, c = 0; p < block.rows * block.cols; r = ++p % block.rows, c = p / block.rows) {
            const T d = region.first[i + r + (j + c) * region.stride] - block.first[r + c * block.stride];
            cost = cost + (M::squared ? d * d : std::fabs(d));
        }
        if (!scored || cost < bestCost) { scored = true, bestCost = cost, best = {j, i}; }
    };
    for (int32_t p = 0; M::full && nR > 0 && p < nR * std::max(nC, 0); ++p) { offer(p % nR, p / nR); }
    // The step drops by one per round; grids move inward at the top and left, are clamped at the bottom and right.
    for (int32_t step = M::full ? 0 : std::min(nR / 2, nC / 2) / 2 + 1; step >= 1; --step, centre = best) {
        for (int32_t k = 0, j = std::max(0, centre[0] - step); k < 3; ++k, j = std::min(j + step, nC - 1)) {
            for (int32_t l = 0, i = std::max(0, centre[1] - step); l < 3; ++l, i = std::min(i + step, nR - 1)) { offer(i, j); }
        }
    }
    return best;
}

TYPED_TEST(BlockSearch, AgreesWithSlowSearch)
{
    using T = typename TypeParam::T;
    std::mt19937 random(2024);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    // Candidate rows around the pack widths and past the tile height; regions up to four smaller than the block
    // (the three-step search then scores clamped candidates outside the region, inside a margin of 5).
    const int32_t candidateRows[] = {-3, -2, -1, 0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 129, 150};
    for (int trial = 0; trial < 640; ++trial) {
        const int32_t bR = pick(0, 5), bC = pick(0, 4), nR = candidateRows[trial % 20], nC = pick(-3, 24);
        const int32_t rows = bR + nR - 1, cols = bC + nC - 1, blockStride = bR + pick(1, 4), mode = trial / 20 % 4;
        const size_t blockPlane = size_t(blockStride) * (bC + 2);
        std::vector<T> planes(blockPlane + size_t(rows + 11) * (cols + 10));
        // Small integers that tie; reals; reals with NaN and infinity; large values whose single sums round.
        for (T &v : planes) {
            v = mode == 0 ? T(pick(-2, 2)) : T(std::uniform_real_distribution<double>(-1000, 1000)(random));
            v = mode == 2 && pick(0, 40) == 0 ? (pick(0, 1) ? T(NAN) : T(INFINITY)) : v;
            v = mode == 3 ? T(pick(-4, 4) * 4194304 + pick(-3, 3)) : v;
        }
        const Window<T> block{&planes[1 + blockStride], blockStride, bR, bC};
        const Window<T> region{&planes[blockPlane + 5 + 5 * (rows + 11)], rows + 11, rows, cols};
        ASSERT_EQ(search<TypeParam>(block, region), slowSearch<TypeParam>(block, region))
            << "trial " << trial << ": block " << bR << "x" << bC << ", candidates " << nR << "x" << nC;
    }
}

TYPED_TEST(BlockSearch, RoundedSumsAndRecoveredShifts)
{
    using T = typename TypeParam::T;
    // Two candidates of a 3x1 zero block down one column: in single precision 2^24 + 1 + 1 and 4096^2 + 1 + 1 stay
    // 2^24, so candidate 0 ties candidate 1 and is kept; exact sums prefer candidate 1.
    const T zeros[3] = {}, column[2][4] = {{16777216, 1, 1, 16777215}, {4096, 1, 1, T(4095.999755859375)}};
    EXPECT_EQ(search<TypeParam>({zeros, 3, 3, 1}, {column[TypeParam::squared], 4, 4, 1}), (Offset{0, sizeof(T) == 8}));
    // A 16x16 block found on the three-step search's first grid: rows and columns 3, 7, 11 of 15x15 candidates.
    std::vector<T> image(50 * 51);
    std::generate(image.begin(), image.end(), [random = std::mt19937(99)]() mutable { return T(random() % 1000); });
    for (const auto &[row, col] : {std::pair{3, 3}, {7, 11}, {11, 7}, {3, 11}, {11, 3}, {7, 7}}) {
        const Window<T> block{&image[17 + 21 * 50], 50, 16, 16}, region{&image[17 - row + (21 - col) * 50], 50, 30, 30};
        EXPECT_EQ(search<TypeParam>(block, region), (Offset{col, row}));
    }
}

} // namespace

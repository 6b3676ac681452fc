#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

// A search kernel, or a block-matching driver (its result complex or squared lengths) with the search it uses.
template <class Element, bool isFull, bool isSquared, auto function, bool isComplex = false>
struct Member {
    using T = Element;
    static constexpr bool full = isFull, squared = isSquared, complexResult = isComplex;
    static constexpr auto call = function;
};
#define ORNEX_MEMBERS(F, S, C, full, sq)                                                                           \
    Member<double, full, sq, ORNEX_##F##_##S##_##C##_D>, Member<float, full, sq, ORNEX_##F##_##S##_##C##_R>
#define ORNEX_DRIVERS(S, C, full, sq)                                                                              \
    ORNEX_MEMBERS(BlockMatching, S, C, full, sq), Member<float, full, sq, ORNEX_BlockMatching_##S##_##C##_C, true>, \
        Member<double, full, sq, ORNEX_BlockMatching_##S##_##C##_Z, true>
using Searches = ::testing::Types<ORNEX_MEMBERS(SearchMethod, Full, MAD, true, false),
                                  ORNEX_MEMBERS(SearchMethod, Full, MSE, true, true),
                                  ORNEX_MEMBERS(SearchMethod, 3Step, MAD, false, false),
                                  ORNEX_MEMBERS(SearchMethod, 3Step, MSE, false, true)>;
using Drivers = ::testing::Types<ORNEX_DRIVERS(Full, MAD, true, false), ORNEX_DRIVERS(Full, MSE, true, true),
                                 ORNEX_DRIVERS(3Step, MAD, false, false), ORNEX_DRIVERS(3Step, MSE, false, true)>;
template <class M> struct BlockSearch : ::testing::Test {};
TYPED_TEST_SUITE(BlockSearch, Searches);
template <class M> struct BlockMatching : ::testing::Test {};
TYPED_TEST_SUITE(BlockMatching, Drivers);

using Offset = std::array<int32_t, 2>; // column, row

template <class T> // rows x cols elements from `first` in a column-major plane of `stride` rows
struct Window { const T *first; int32_t stride, rows, cols; };

template <class M, class T = typename M::T>
Offset search(const Window<T> &b, const Window<T> &r, Offset best = {-77, -77})
{
    return M::call(b.first, r.first, b.stride, r.stride, b.cols, b.rows, r.cols, r.rows, &best[0], &best[1]), best;
}

// Costs summed in T, columns outer and rows inner; a strictly smaller cost replaces the best (so a NaN never
// does, but the three-step search takes its first candidate whatever its cost).
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
            for (int32_t l = 0, i = std::max(0, centre[1] - step); l < 3; ++l, i = std::min(i + step, nR - 1)) {
                offer(i, j);
            }
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

TYPED_TEST(BlockSearch, SingleSumsRound)
{
    using T = typename TypeParam::T;
    // Two candidates of a 3x1 zero block down one column: in single precision 2^24 + 1 + 1 and 4096^2 + 1 + 1 stay
    // 2^24, so candidate 0 ties candidate 1 and is kept; exact sums prefer candidate 1.
    const T zeros[3] = {}, column[2][4] = {{16777216, 1, 1, 16777215}, {4096, 1, 1, T(4095.999755859375)}};
    EXPECT_EQ(search<TypeParam>({zeros, 3, 3, 1}, {column[TypeParam::squared], 4, 4, 1}), (Offset{0, sizeof(T) == 8}));
}

TYPED_TEST(BlockMatching, AgreesWithSlowDriver)
{
    using T = typename TypeParam::T;
    std::mt19937 random(7);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int trial = 0; trial < 400; ++trial) {
        const bool own = trial % 4 == 0; // image1 passed as its own working image (no overlap then)
        const int32_t bR = pick(1, 5), bC = pick(1, 5), oR = own ? 0 : pick(0, bR - 1), oC = own ? 0 : pick(0, bC - 1);
        const int32_t dR = pick(0, 3), dC = pick(0, 3), rows = pick(0, 14), cols = pick(0, 14);
        const int32_t blockSize[2] = {bR, bC}, overlap[2] = {oR, oC}, maxDisplacement[2] = {dR, dC};
        const int32_t r0 = dR + oR / 2, c0 = dC + oC / 2, sR = bR - oR, sC = bC - oC;
        // padded2 from the image plus its top-left margin (often no block at all) to the image plus both margins.
        const int32_t p1Rows = own ? rows : rows + oR + pick(0, 2), p1Cols = own ? cols : cols + oC;
        const int32_t p2Rows = rows + r0 + pick(0, r0), p2Cols = cols + c0 + pick(0, c0);
        std::vector<T> image1(size_t(rows) * cols), image2(image1.size()), motion(1000, T(-12345)), want = motion;
        std::generate(image1.begin(), image1.end(), [&] { return T(trial % 3 ? pick(-3, 3) : pick(-999, 999) / 9.0); });
        std::transform(image1.rbegin(), image1.rend(), image2.begin(), [&](T x) { return T(x + T(pick(-1, 1))); });
        // The spare elements past padded2 that odd overlaps read are given as zero.
        std::vector<T> padded1(size_t(p1Rows) * p1Cols, T(77)), want1(padded1.size(), T(0));
        std::vector<T> padded2(size_t(p2Rows) * (p2Cols + oC % 2) + oR % 2, T(77)), want2(padded2.size(), T(0));
        std::fill(padded2.begin() + ptrdiff_t(p2Rows) * p2Cols, padded2.end(), T(0));
        for (int32_t p = 0; p < rows * cols; ++p) {
            want1[oR / 2 + p % rows + size_t(oC / 2 + p / rows) * p1Rows] = image1[p];
            want2[r0 + p % rows + size_t(c0 + p / rows) * p2Rows] = image2[p];
        }
        const T *blocks = own ? image1.data() : want1.data();
        for (int32_t k = 0, c = c0; c < p2Cols - c0 - sC + 1; c += sC) {
            for (int32_t r = r0; r < p2Rows - r0 - sR + 1; r += sR, ++k) {
                const Window<T> block{blocks + (r - r0) + size_t(c - c0) * p1Rows, p1Rows, bR, bC};
                const Window<T> region{&want2[(r - r0) + size_t(c - c0) * p2Rows], p2Rows, bR + 2 * dR, bC + 2 * dC};
                const Offset found = slowSearch<TypeParam>(block, region);
                const int32_t u = found[0] - dC, v = found[1] - dR; // across columns, down rows
                TypeParam::complexResult ? (want[2 * k] = T(u), want[2 * k + 1] = T(v)) : want[k] = T(u * u + v * v);
            }
        }
        const std::vector<T> original1 = image1;
        TypeParam::call(image1.data(), image2.data(), own ? image1.data() : padded1.data(), padded2.data(),
                        motion.data(), blockSize, overlap, maxDisplacement, rows, cols, p1Rows, p1Cols, p2Rows, p2Cols);
        ASSERT_EQ(motion, want) << "trial " << trial;
        ASSERT_EQ(padded2, want2) << "trial " << trial;
        ASSERT_EQ(own ? image1 : padded1, own ? original1 : want1) << "trial " << trial;
    }
}

} // namespace

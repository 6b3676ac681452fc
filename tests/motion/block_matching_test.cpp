#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T, bool isComplex, bool isFull, auto function, auto kernel>
struct Member {
    using Image = T;
    static constexpr bool complexResult = isComplex, full = isFull;
    static constexpr auto match = function, search = kernel;
};
// Each driver with the search kernel that it is defined to call.
#define ORNEX_MEMBERS(S, C, full)                                                                                  \
    Member<double, false, full, ORNEX_BlockMatching_##S##_##C##_D, ORNEX_SearchMethod_##S##_##C##_D>,             \
        Member<float, false, full, ORNEX_BlockMatching_##S##_##C##_R, ORNEX_SearchMethod_##S##_##C##_R>,          \
        Member<float, true, full, ORNEX_BlockMatching_##S##_##C##_C, ORNEX_SearchMethod_##S##_##C##_R>,           \
        Member<double, true, full, ORNEX_BlockMatching_##S##_##C##_Z, ORNEX_SearchMethod_##S##_##C##_D>
using Members = ::testing::Types<ORNEX_MEMBERS(Full, MAD, true), ORNEX_MEMBERS(Full, MSE, true),
                                 ORNEX_MEMBERS(3Step, MAD, false), ORNEX_MEMBERS(3Step, MSE, false)>;
template <class M>
class BlockMatching : public ::testing::Test {};
TYPED_TEST_SUITE(BlockMatching, Members);

// The driver written out: working images cleared and filled, the block grid walked columns outer, each block
// searched by the member's kernel over its own position widened by the displacement, results in grid order.
TYPED_TEST(BlockMatching, AgreesWithSlowDriver)
{
    using T = typename TypeParam::Image;
    std::mt19937 random(7);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int trial = 0; trial < 400; ++trial) {
        // Every fourth trial passes image1 as its own working image (no overlap then).
        const bool own = trial % 4 == 0;
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
        int32_t j = 0, i = 0;
        for (int32_t k = 0, c = c0; c < p2Cols - c0 - sC + 1; c += sC) {
            for (int32_t r = r0; r < p2Rows - r0 - sR + 1; r += sR) {
                TypeParam::search(blocks + (r - r0) + size_t(c - c0) * p1Rows, &want2[(r - r0) + size_t(c - c0) * p2Rows],
                                  p1Rows, p2Rows, bC, bR, bC + 2 * dC, bR + 2 * dR, &j, &i);
                const int32_t u = j - dC, v = i - dR; // across columns, down rows
                TypeParam::complexResult ? (want[2 * k] = T(u), want[2 * k + 1] = T(v)) : want[k] = T(u * u + v * v), ++k;
            }
        }
        const std::vector<T> original1 = image1;
        TypeParam::match(image1.data(), image2.data(), own ? image1.data() : padded1.data(), padded2.data(),
                         motion.data(), blockSize, overlap, maxDisplacement, rows, cols, p1Rows, p1Cols, p2Rows, p2Cols);
        ASSERT_EQ(motion, want) << "trial " << trial;
        ASSERT_EQ(padded2, want2) << "trial " << trial;
        ASSERT_EQ(own ? image1 : padded1, own ? original1 : want1) << "trial " << trial;
    }
}

} // namespace

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "ornex_rt.h"

namespace {

using Point = std::array<int32_t, 2>;

struct Clipped {
    int32_t result;
    Point p1, p2;
};

Clipped clip(Point p1, Point p2, std::array<int32_t, 4> rect)
{
    const int32_t result = ORNEX_ClipLine(p1.data(), p2.data(), rect.data());
    return {result, p1, p2};
}

TEST(ClipLine, SegmentsInsideAreKeptAsGiven)
{
    const Clipped c = clip({3, 4}, {7, 1}, {0, 9, 0, 9});
    EXPECT_EQ(c.result, 1);
    EXPECT_EQ(c.p1, (Point{3, 4}));
    EXPECT_EQ(c.p2, (Point{7, 1}));
    // The bounds are inclusive.
    EXPECT_EQ(clip({0, 0}, {9, 9}, {0, 9, 0, 9}).result, 1);
    EXPECT_EQ(clip({5, 5}, {5, 5}, {0, 9, 0, 9}).result, 1);
    EXPECT_EQ(clip({5, 10}, {5, 10}, {0, 9, 0, 9}).result, 0);
}

TEST(ClipLine, IntersectionsRoundHalvesAwayFromZero)
{
    // (0,-1)-(1,1) cut at column 0: row 0 + 1*1/2, and 0.5 rounds up to 1.
    const Clipped c = clip({0, -1}, {1, 1}, {0, 10, 0, 10});
    EXPECT_EQ(c.result, 1);
    EXPECT_EQ(c.p1, (Point{1, 0}));
    EXPECT_EQ(c.p2, (Point{1, 1}));
    // Mirrored: (0,11)-(1,9) at column 10 gives row 0 + (-1)(1)/(-2) = 0.5 -> 1.
    EXPECT_EQ(clip({0, 11}, {1, 9}, {0, 10, 0, 10}).p1, (Point{1, 10}));
    // (10,-3)-(0,1) at column 0: row 10 + 3*(-10)/4 = 2.5 -> 10 - 8 = 2.
    EXPECT_EQ(clip({10, -3}, {0, 1}, {0, 10, 0, 10}).p1, (Point{2, 0}));
}

TEST(ClipLine, EveryPassStartsFromTheGivenEndPoint)
{
    // (-8,-8)-(4,2) in [0,9]x[0,9]. Pass 1 cuts at row 0: column -8 +
    // round(8*10/12) = -8 + 7 = -1, still left of the rectangle. Pass 2 puts
    // p1 back at (-8,-8) and cuts at column 0: row -8 + round(8*12/10) =
    // -8 + 10 = 2. Cutting from (0,-1) instead would give row 1.
    const Clipped c = clip({-8, -8}, {4, 2}, {0, 9, 0, 9});
    EXPECT_EQ(c.result, 1);
    EXPECT_EQ(c.p1, (Point{2, 0}));
    EXPECT_EQ(c.p2, (Point{4, 2}));
}

TEST(ClipLine, RejectionCanComeAfterSeveralPassesAndLeavesPointsMoved)
{
    // (-8,-8)-(15,2) passes below the bottom-left corner of [0,9]x[0,9].
    // Pass 1: row 0, column -8 + round(80/23) = -5. Pass 2 (from (-8,-8)):
    // column 0, row -8 + round(184/10) = 10, below the rectangle like p2.
    const Clipped c = clip({-8, -8}, {15, 2}, {0, 9, 0, 9});
    EXPECT_EQ(c.result, 0);
    EXPECT_EQ(c.p1, (Point{10, 0}));
    EXPECT_EQ(c.p2, (Point{15, 2}));

    // Both end-points beyond the same border: rejected at once, untouched.
    const Clipped above = clip({-5, 2}, {-1, 30}, {0, 9, 0, 9});
    EXPECT_EQ(above.result, 0);
    EXPECT_EQ(above.p1, (Point{-5, 2}));
    EXPECT_EQ(above.p2, (Point{-1, 30}));
}

TEST(ClipLine, ProductsWrapAt32Bits)
{
    // (-3000000,0)-(3000,1000) in [0,1000]x[0,1000]. Pass 1 at row 0:
    // n = 3000000*1000 wraps to -1294967296, 2n wraps to 1705032704,
    // q = 1705032704/3003000 = 567, and with n and d of different signs
    // the column is (567 - 1)/2 = 283 (the exact answer would be 999).
    // Pass 2 moves p2 to row 1000: column 1000 + round(-2000*717/3000) = 522.
    const Clipped c = clip({-3000000, 0}, {3000, 1000}, {0, 1000, 0, 1000});
    EXPECT_EQ(c.result, 1);
    EXPECT_EQ(c.p1, (Point{0, 283}));
    EXPECT_EQ(c.p2, (Point{1000, 522}));
}

} // namespace

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

using Corners = std::array<int32_t, 8>; // (row, column) of corners 0..3

struct Point {
    double column, row;
};

// [x y 1] * T for a column-order matrix, as (column, row) = (p/w, q/w).
template <class T>
Point apply(const T *matrix, double x, double y)
{
    const double p = x * matrix[0] + y * matrix[1] + matrix[2];
    const double q = x * matrix[3] + y * matrix[4] + matrix[5];
    const double w = x * matrix[6] + y * matrix[7] + matrix[8];
    return {p / w, q / w};
}

template <class T>
std::vector<T> transform(const Corners &corners, std::array<int32_t, 4> rect, uint32_t rows, uint32_t cols,
                         int32_t mode, int32_t inverseOffset, bool useRect)
{
    std::vector<T> block(18, T(-1));
    if constexpr (std::is_same_v<T, double>) {
        ORNEX_CalculateXformMtrx_D(corners.data(), rect.data(), rows, cols, mode, inverseOffset, useRect, block.data());
    } else {
        ORNEX_CalculateXformMtrx_R(corners.data(), rect.data(), rows, cols, mode, inverseOffset, useRect, block.data());
    }
    return block;
}

template <class T>
class ProjectiveMatrix : public ::testing::Test {};
using ElementTypes = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ProjectiveMatrix, ElementTypes);

TYPED_TEST(ProjectiveMatrix, RectangleOntoItselfIsTheIdentity)
{
    using T = TypeParam;
    // H = 4, W = 6: corners (0,0), (0,6), (4,6), (4,0).
    const auto block = transform<T>({0, 0, 0, 6, 4, 6, 4, 0}, {99, 99, 99, 99}, 5, 7, 1, 0, false);
    const std::vector<T> identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_EQ(std::vector<T>(block.begin(), block.begin() + 9), identity);
    EXPECT_EQ(std::vector<T>(block.begin() + 9, block.end()), identity);
}

TYPED_TEST(ProjectiveMatrix, RectangleCornersLandOnTheQuadrilateral)
{
    using T = TypeParam;
    const double tolerance = std::is_same_v<T, double> ? 1e-9 : 2e-3;
    std::mt19937 random(11);
    std::uniform_int_distribution<int32_t> jitter(-30, 30);
    for (int trial = 0; trial < 50; ++trial) {
        // A convex quadrilateral: a square with its corners moved a little.
        const Corners q = {10 + jitter(random),  20 + jitter(random),  15 + jitter(random),  220 + jitter(random),
                           190 + jitter(random), 210 + jitter(random), 200 + jitter(random), 5 + jitter(random)};
        const uint32_t rows = 61, cols = 81; // H = 60, W = 80
        const auto block = transform<T>(q, {0, 0, 0, 0}, rows, cols, 1, 0, false);
        const double rect[4][2] = {{0, 0}, {80, 0}, {80, 60}, {0, 60}}; // (x, y)
        for (int k = 0; k < 4; ++k) {
            const Point mapped = apply(block.data(), rect[k][0], rect[k][1]);
            EXPECT_NEAR(mapped.row, q[2 * k], tolerance * 200) << "trial " << trial << " corner " << k;
            EXPECT_NEAR(mapped.column, q[2 * k + 1], tolerance * 200) << "trial " << trial << " corner " << k;
            // The adjugate takes the corner back (the scale cancels).
            const Point back = apply(block.data() + 9, q[2 * k + 1], q[2 * k]);
            EXPECT_NEAR(back.column, rect[k][0], tolerance * 100);
            EXPECT_NEAR(back.row, rect[k][1], tolerance * 100);
        }
    }
}

TYPED_TEST(ProjectiveMatrix, OriginMovesForwardOrAdjugateByMode)
{
    using T = TypeParam;
    const double tolerance = std::is_same_v<T, double> ? 1e-9 : 1e-2;
    const Corners q = {12, 31, 8, 140, 95, 150, 101, 25};
    const std::array<int32_t, 4> rect = {40, 70, 31, 51}; // origin row 40, column 70; H = 30, W = 50
    const auto unmoved = transform<T>(q, {0, 0, 31, 51}, 0, 0, 3, 0, false);

    // Mode 2 without the switch: the forward matrix takes image coordinates
    // (image point (70 + 50, 40) is the rectangle's corner 1), the adjugate
    // stays that of the unmoved matrix.
    const auto forwardOnly = transform<T>(q, rect, 0, 0, 2, 0, false);
    const Point corner1 = apply(forwardOnly.data(), 70 + 50, 40);
    EXPECT_NEAR(corner1.row, q[2], tolerance * 100);
    EXPECT_NEAR(corner1.column, q[3], tolerance * 100);
    EXPECT_EQ(std::vector<T>(forwardOnly.begin() + 9, forwardOnly.end()),
              std::vector<T>(unmoved.begin() + 9, unmoved.end()));
    // Other modes behave like mode 2 without the switch, whatever it says.
    EXPECT_EQ(transform<T>(q, rect, 0, 0, 3, 1, false), forwardOnly);

    // With the switch the adjugate inverts the moved matrix: corner 2 goes
    // back to image point (70 + 50, 40 + 30).
    const auto both = transform<T>(q, rect, 0, 0, 2, 1, false);
    EXPECT_EQ(std::vector<T>(both.begin(), both.begin() + 9),
              std::vector<T>(forwardOnly.begin(), forwardOnly.begin() + 9));
    const Point back = apply(both.data() + 9, q[5], q[4]);
    EXPECT_NEAR(back.column, 120, tolerance * 100);
    EXPECT_NEAR(back.row, 70, tolerance * 100);

    // Mode 1 with the rectangle: the forward matrix stays, the adjugate adds
    // the origin.
    const auto adjugateOnly = transform<T>(q, rect, 0, 0, 1, 0, true);
    EXPECT_EQ(std::vector<T>(adjugateOnly.begin(), adjugateOnly.begin() + 9),
              std::vector<T>(unmoved.begin(), unmoved.begin() + 9));
    const Point back1 = apply(adjugateOnly.data() + 9, q[5], q[4]);
    EXPECT_NEAR(back1.column, 120, tolerance * 100);
    EXPECT_NEAR(back1.row, 70, tolerance * 100);

    // Mode 1 without the rectangle ignores it, size included.
    EXPECT_EQ(transform<T>(q, rect, 31, 51, 1, 1, false), unmoved);
}

TYPED_TEST(ProjectiveMatrix, SameQuadrilateralTwiceGivesDeterminantTimesIdentity)
{
    using T = TypeParam;
    const Corners q = {3, 4, 6, 90, 70, 85, 80, 2};
    std::vector<T> block(54, T(-5));
    auto run = [&](bool both) {
        if constexpr (std::is_same_v<T, double>) {
            ORNEX_CalculateQ2QXformMtrx_D(q.data(), 41, 61, block.data(), q.data(), both);
        } else {
            ORNEX_CalculateQ2QXformMtrx_R(q.data(), 41, 61, block.data(), q.data(), both);
        }
    };
    run(false);
    EXPECT_EQ(std::vector<T>(block.begin() + 45, block.end()), std::vector<T>(9, T(-5))) << "written unasked";
    const T *a = block.data();
    const double det = a[0] * (a[4] * 1.0 - a[7] * a[5]) - a[3] * (a[1] * 1.0 - a[7] * a[2]) +
                       a[6] * (a[1] * a[5] - a[4] * a[2]);
    const double tolerance = std::fabs(det) * (std::is_same_v<T, double> ? 1e-9 : 1e-3);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(block[36 + r + 3 * c], r == c ? det : 0.0, tolerance) << r << "," << c;
        }
    }
    EXPECT_GT(std::fabs(det - 1.0), 0.1) << "the product is not normalised";
    run(true);
    for (int i = 0; i < 9; ++i) {
        EXPECT_NEAR(block[45 + i], block[36 + i], tolerance);
    }
}

TEST(Collinearity, CornersOneToThreeOnly)
{
    const int32_t square[8] = {0, 0, 0, 10, 10, 10, 10, 0};
    EXPECT_EQ(ORNEX_Are3PtsCollinear(square), 0);
    // Corner 2 on the line from corner 1 to corner 3.
    const int32_t corner2[8] = {0, 0, 0, 10, 5, 5, 10, 0};
    EXPECT_EQ(ORNEX_Are3PtsCollinear(corner2), 1);
    // Corner 0 between corners 3 and 1: the triple 3-0-1 is not tested.
    const int32_t corner0[8] = {5, 5, 0, 10, 10, 10, 10, 0};
    EXPECT_EQ(ORNEX_Are3PtsCollinear(corner0), 0);
    // Two equal consecutive corners make a zero edge.
    const int32_t repeated[8] = {0, 0, 0, 10, 0, 10, 10, 0};
    EXPECT_EQ(ORNEX_Are3PtsCollinear(repeated), 1);
}

TEST(Collinearity, CrossProductsWrapAt32Bits)
{
    // At corner 1 the edges (65536, 0) and (0, 65536) are perpendicular, but
    // 65536 * 65536 wraps to 0 = 0 * 0, so the corner counts as collinear.
    const int32_t points[8] = {65536, 0, 0, 0, 0, -65536, 70000, -70000};
    EXPECT_EQ(ORNEX_Are3PtsCollinear(points), 1);
    const int32_t smaller[8] = {4096, 0, 0, 0, 0, -4096, 5000, -5000};
    EXPECT_EQ(ORNEX_Are3PtsCollinear(smaller), 0);
}

} // namespace

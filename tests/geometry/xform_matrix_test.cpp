#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

using Corners = std::array<int32_t, 8>; // (row, column) of corners 0..3
using Rect = std::array<int32_t, 4>;

// The closed form, its adjugate and the origin moves, written out.
template <class T>
std::vector<T> plainBlock(const Corners &q, const Rect &rect, int rows, int cols, int mode, int inverseOffset,
                          bool useRect)
{
    const bool fromRect = mode != 1 || useRect;
    const T sign = mode == 1 ? 1 : -1;
    const T c = fromRect ? sign * T(rect[1]) : 0, r = fromRect ? sign * T(rect[0]) : 0;
    const T H = T((fromRect ? rect[2] : rows) - 1), W = T((fromRect ? rect[3] : cols) - 1);
    const T x0 = T(q[1]), x1 = T(q[3]), x2 = T(q[5]), x3 = T(q[7]), y0 = T(q[0]), y1 = T(q[2]), y2 = T(q[4]), y3 = T(q[6]);
    const T sx = x0 - x1 + x2 - x3, sy = y0 - y1 + y2 - y3, dx1 = x1 - x2, dx2 = x3 - x2, dy1 = y1 - y2, dy2 = y3 - y2;
    const T D = dx2 * dy1 - dx1 * dy2, g = (dx2 * sy - dy2 * sx) / (W * D), h = (sx * dy1 - dx1 * sy) / (H * D);
    std::vector<T> m = {x1 * g + (x1 - x0) / W, x3 * h + (x3 - x0) / H, x0, y1 * g + (y1 - y0) / W,
                        y3 * h + (y3 - y0) / H, y0, g, h, 1};
    m.insert(m.end(), {m[4] - m[7] * m[5], m[7] * m[2] - m[1], m[5] * m[1] - m[4] * m[2], m[6] * m[5] - m[3],
                       m[0] - m[6] * m[2], m[3] * m[2] - m[5] * m[0], m[7] * m[3] - m[6] * m[4], m[6] * m[1] - m[7] * m[0],
                       m[4] * m[0] - m[3] * m[1]});
    for (int k = 0; k < 3; ++k) {
        if (mode == 1) {
            if (c != 0) m[9 + k] = m[9 + k] + c * m[15 + k];
            if (r != 0) m[12 + k] = m[12 + k] + r * m[15 + k];
        } else {
            if (c != 0) m[2 + 3 * k] = m[2 + 3 * k] + c * m[3 * k];
            if (r != 0) m[2 + 3 * k] = m[2 + 3 * k] + r * m[1 + 3 * k];
            if (mode == 2 && inverseOffset >= 1 && c != 0) m[9 + k] = m[9 + k] - c * m[15 + k];
            if (mode == 2 && inverseOffset >= 1 && r != 0) m[12 + k] = m[12 + k] - r * m[15 + k];
        }
    }
    return m;
}

template <class T>
std::vector<T> block(const Corners &q, const Rect &rect, int rows, int cols, int mode, int inverseOffset, bool useRect)
{
    std::vector<T> b(20, T(-1));
    if constexpr (std::is_same_v<T, double>)
        ORNEX_CalculateXformMtrx_D(q.data(), rect.data(), rows, cols, mode, inverseOffset, useRect, b.data() + 1);
    else
        ORNEX_CalculateXformMtrx_R(q.data(), rect.data(), rows, cols, mode, inverseOffset, useRect, b.data() + 1);
    EXPECT_EQ(b.front(), T(-1));
    EXPECT_EQ(b.back(), T(-1));
    return std::vector<T>(b.begin() + 1, b.end() - 1);
}

template <class T>
class ProjectiveMatrix : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ProjectiveMatrix, Precisions);

TYPED_TEST(ProjectiveMatrix, BlocksMatchTheClosedFormAndMapCornersToCorners)
{
    using T = TypeParam;
    std::mt19937 random(11);
    auto any = [&](int lo, int hi) { return int32_t(lo + int(random() % (hi - lo + 1))); };
    for (int trial = 0; trial < 400; ++trial) {
        const Corners q = {any(-5, 30), any(-5, 30), any(-5, 30), any(170, 220), any(150, 210), any(180, 230),
                           any(160, 200), any(-20, 10)};
        const Rect rect = {any(-40, 40), any(-40, 40), any(2, 90), any(2, 90)};
        const int rows = any(2, 90), cols = any(2, 90), mode = any(0, 3), inverseOffset = any(0, 2);
        const bool useRect = random() % 2;
        const auto b = block<T>(q, rect, rows, cols, mode, inverseOffset, useRect);
        ASSERT_EQ(b, plainBlock<T>(q, rect, rows, cols, mode, inverseOffset, useRect)) << trial;
        // Unmoved (mode 1 without the rectangle), the rectangle's corners land
        // on the quadrilateral and the adjugate takes them back.
        const auto m = block<double>(q, rect, rows, cols, 1, 0, false);
        const double W = cols - 1, H = rows - 1, corner[4][2] = {{0, 0}, {W, 0}, {W, H}, {0, H}};
        for (int k = 0; k < 4; ++k) {
            const double x = corner[k][0], y = corner[k][1], w = x * m[6] + y * m[7] + m[8];
            EXPECT_NEAR((x * m[0] + y * m[1] + m[2]) / w, q[2 * k + 1], 1e-9);
            EXPECT_NEAR((x * m[3] + y * m[4] + m[5]) / w, q[2 * k], 1e-9);
            const double X = q[2 * k + 1], Y = q[2 * k], v = X * m[15] + Y * m[16] + m[17];
            EXPECT_NEAR((X * m[9] + Y * m[10] + m[11]) / v, x, 1e-9);
            EXPECT_NEAR((X * m[12] + Y * m[13] + m[14]) / v, y, 1e-9);
        }
    }
    // The rectangle onto itself is the identity, and so is its adjugate.
    const std::vector<T> identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const auto unit = block<T>({0, 0, 0, 6, 4, 6, 4, 0}, {9, 9, 9, 9}, 5, 7, 1, 1, false);
    EXPECT_EQ(unit, [&] { auto v = identity; v.insert(v.end(), identity.begin(), identity.end()); return v; }());
}

TYPED_TEST(ProjectiveMatrix, QuadrilateralToQuadrilateralProducts)
{
    using T = TypeParam;
    std::mt19937 random(12);
    for (int trial = 0; trial < 100; ++trial) {
        Corners first, second;
        for (int k = 0; k < 8; ++k) first[k] = (k >= 3 && k <= 6 ? 100 : 0) + int(random() % 20);
        second = trial % 4 == 0 ? first : Corners{};
        if (trial % 4) for (int k = 0; k < 8; ++k) second[k] = (k >= 3 && k <= 6 ? 120 : 0) + int(random() % 30);
        const int rows = 2 + random() % 60, cols = 2 + random() % 60;
        std::vector<T> b(56, T(-5));
        const bool both = trial % 2;
        if constexpr (std::is_same_v<T, double>)
            ORNEX_CalculateQ2QXformMtrx_D(first.data(), rows, cols, b.data() + 1, second.data(), both);
        else
            ORNEX_CalculateQ2QXformMtrx_R(first.data(), rows, cols, b.data() + 1, second.data(), both);
        auto A = plainBlock<T>(first, {0, 0, rows, cols}, rows, cols, 3, 0, false);
        const auto B = plainBlock<T>(second, {0, 0, rows, cols}, rows, cols, 1, 0, false);
        std::vector<T> expected = {T(-5)};
        expected.insert(expected.end(), A.begin(), A.end());
        expected.insert(expected.end(), B.begin(), B.end());
        for (int pass = 0; pass < 2; ++pass) {
            const T *left = pass ? A.data() + 9 : B.data() + 9, *right = pass ? B.data() : A.data();
            for (int c = 0; c < 3; ++c)
                for (int r = 0; r < 3; ++r) {
                    T s = 0;
                    for (int k = 0; k < 3; ++k) s = s + left[r + 3 * k] * (k == 2 && c == 2 ? T(1) : right[k + 3 * c]);
                    expected.push_back(pass && !both ? T(-5) : s);
                }
        }
        expected.push_back(T(-5));
        ASSERT_EQ(b, expected) << trial;
        if (trial % 4 == 0) { // the same quadrilateral twice: det(A) times the identity
            const double det = A[0] * (A[4] - A[7] * A[5]) - A[3] * (A[1] - A[7] * A[2]) + A[6] * (A[1] * A[5] - A[4] * A[2]);
            for (int i = 0; i < 9; ++i) EXPECT_NEAR(b[37 + i], i % 4 == 0 ? det : 0, std::fabs(det) * 1e-3);
        }
    }
}

TEST(Collinearity, CornersOneToThreeExactlyWithWrapAround)
{
    // Corner 2 on the line 1-3: collinear; corner 0 between 3 and 1: not
    // tested; a repeated corner makes a zero edge; 65536 * 65536 wraps to 0.
    const Corners cases[] = {{0, 0, 0, 10, 10, 10, 10, 0}, {0, 0, 0, 10, 5, 5, 10, 0}, {5, 5, 0, 10, 10, 10, 10, 0},
                             {0, 0, 0, 10, 0, 10, 10, 0}, {65536, 0, 0, 0, 0, -65536, 70000, -70000},
                             {4096, 0, 0, 0, 0, -4096, 5000, -5000}};
    const uint8_t expected[] = {0, 1, 0, 1, 1, 0};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(ORNEX_Are3PtsCollinear(cases[i].data()), expected[i]) << i;
    std::mt19937 random(13);
    for (int trial = 0; trial < 20000; ++trial) {
        Corners p;
        const uint32_t span = trial % 2 ? 4 : 0xFFFFFFFFu;
        for (auto &v : p) v = int32_t(random() % (span + 1ull) - (span == 4 ? 2 : 0));
        bool any = false;
        for (int k = 1; k <= 3; ++k) {
            auto d = [&](int i, int j) { return uint32_t(p[2 * (i % 4) + j]) - uint32_t(p[2 * ((i + 1) % 4) + j]); };
            any = any || d(k, 1) * d(k - 1, 0) == d(k, 0) * d(k - 1, 1);
        }
        ASSERT_EQ(ORNEX_Are3PtsCollinear(p.data()), any) << trial;
    }
}

} // namespace
